#include "display.h"
#include "runtimeenvironment.h"
#include "terminal.h"

#include "busnames.h"
#include "clientsettings.h"
#include "initconfig.h"
#include "portlock.h"
#include "tavbusqueryhandler.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <csignal>
#include <functional>
#include <memory>

// The program is told to end, or loses its display, in the middle of its work: the real one with
// the real dialer, in the simulated terminal. Nothing may be left behind, and the services must
// run.

namespace {

constexpr int kLong = 30000; // ms
// A slow service takes 5 s: it is told to start and not waited for. Of the rest a hung modem is
// broken off in a tenth of a second, and a dialer hangs up in one or two.
constexpr int kLongestEnd = 4500;
// That the display has gone is found out when the event loop comes round, which it does not while
// two resets wait for a hung modem, 3 s each. By then the dialer is on its way up: told to end, it
// asks the modem first, for 10 s.
constexpr int kLongestEndWithoutDisplay = 22000;

const QString kWindow = QStringLiteral("Tav test dialer");
const QString gsm1 = QStringLiteral("gsm1");
const QString tavmodems = QStringLiteral("tavmodems");

QStringList processes(const QStringList &names)
{
    QStringList found;
    const QStringList numbers = QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")});
    for (const QString &number : numbers) {
        QFile file(QStringLiteral("/proc/%1/comm").arg(number));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QString name = QString::fromLocal8Bit(file.readAll()).trimmed();
        if (names.contains(name))
            found << name;
    }
    return found;
}

QByteArray programLog()
{
    QByteArray log;
    const QFileInfoList files = QDir(InitConfig().loggerPath()).entryInfoList(QDir::Files);
    for (const QFileInfo &info : files) {
        QFile file(info.filePath());
        if (info.fileName().contains(QLatin1String("tavtestdialer"))
            && file.open(QIODevice::ReadOnly))
            log += file.readAll();
    }
    return log;
}

// The processes that hold a port by its lock file.
QList<qint64> portHolders()
{
    QList<qint64> holders;
    const QFileInfoList locks
        = QDir(PortLock::DIRECTORY).entryInfoList({QStringLiteral("LCK..*")}, QDir::Files);
    for (const QFileInfo &lock : locks) {
        QFile file(lock.filePath());
        if (file.open(QIODevice::ReadOnly))
            holders << file.readLine().trimmed().toLongLong(); // Qt's has more lines
    }
    return holders;
}

class Program : public QProcess
{
protected:
    // However the test was started: a background job ignores the interrupt.
    void setupChildProcess() override
    {
        for (const int number : {SIGTERM, SIGINT, SIGHUP})
            std::signal(number, SIG_DFL);
    }
};

} // namespace

Q_DECLARE_METATYPE(std::function<void()>)

class EndingsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_terminal = std::make_unique<Terminal>();
        QVERIFY(m_terminal->isValid());
        m_saved = record(tavbus::BUSNAME_TAVMODEMS);
        QVERIFY(!m_saved.isEmpty());
        findPlaces();
    }
    void cleanupTestCase() { m_terminal.reset(); }

    void init()
    {
        m_terminal->restore();
        for (const QString &service : services())
            m_terminal->serviceFault(service, QString()).waitForFinished();
        QDir(InitConfig().loggerPath()).removeRecursively();
        QDir().mkpath(InitConfig().loggerPath());
        tavbus::TavBusQueryHandler handler(tavbus::BUSNAME_TESTDEALER);
        QVERIFY(handler.open() && handler.removeSettings(tavbus::BUSNAME_TESTDEALER, false));
        m_display = std::make_unique<Display>();
        m_program = std::make_unique<Program>();
        m_program->setProcessEnvironment(m_display->environment());
        m_program->setProcessChannelMode(QProcess::ForwardedChannels);
    }
    void cleanup()
    {
        if (QTest::currentTestFailed())
            qInfo("%s", programLog().constData());
        if (m_program->state() != QProcess::NotRunning) {
            m_program->kill();
            m_program->waitForFinished(kLong);
        }
        m_display.reset();
        QTRY_VERIFY_WITH_TIMEOUT(servicesRun(), kLong);
    }

    void endsCleanly_data()
    {
        QTest::addColumn<std::function<void()>>("reachStep");
        QTest::addColumn<int>("signal"); // 0: the display goes
        const struct
        {
            const char *name;
            void (EndingsTest::*reach)();
        } steps[] = {
            {"idle", &EndingsTest::reachIdle},
            {"dial: stopping the service", &EndingsTest::reachDialStopping},
            {"dial: resetting the modem", &EndingsTest::reachDialReset},
            {"dial: dialling", &EndingsTest::reachDialling},
            {"dial: restarting the service", &EndingsTest::reachDialRestarting},
            {"query: stopping the service", &EndingsTest::reachQueryStopping},
            {"query: asking", &EndingsTest::reachQuery},
            {"search: stopping the services", &EndingsTest::reachSearchStopping},
            {"search: asking", &EndingsTest::reachSearch},
            {"search: nothing found", &EndingsTest::reachNothingFound},
            {"close: asking whether to save", &EndingsTest::reachClosing},
            {"network: applying", &EndingsTest::reachApplying},
        };
        const struct
        {
            const char *name;
            int signal;
        } ends[] = {{"SIGTERM", SIGTERM}, {"SIGINT", SIGINT}, {"display", 0}};
        for (const auto &step : steps) {
            for (const auto &end : ends)
                QTest::addRow("%s, %s", step.name, end.name)
                    << std::function<void()>([this, step] { (this->*step.reach)(); }) << end.signal;
        }
    }
    void endsCleanly()
    {
        QFETCH(std::function<void()>, reachStep);
        QFETCH(int, signal);
        m_started = m_terminal->mark();
        m_program->start(QStringLiteral(TAVTESTDIALER), QStringList());
        QTRY_VERIFY_WITH_TIMEOUT(m_display->shows(kWindow), kLong);
        reachStep();
        if (QTest::currentTestFailed())
            return;
        QCOMPARE(m_program->state(), QProcess::Running);

        QElapsedTimer clock;
        clock.start();
        if (signal != 0)
            QCOMPARE(::kill(static_cast<pid_t>(m_program->processId()), signal), 0);
        else
            m_display->end();
        QVERIFY(m_program->waitForFinished(kLong));
        const qint64 elapsed = clock.elapsed();
        QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
        QCOMPARE(m_program->exitCode(), signal != 0 ? 0 : 1);
        const QByteArray log = programLog();
        const QByteArray reason = signal == SIGTERM ? "Told to end by signal 15 (Terminated)"
            : signal == SIGINT                      ? "Told to end by signal 2 (Interrupt)"
                                                    : "The program ends without its display";
        QVERIFY2(log.contains(reason), log.constData());
        if (signal == 0)
            QVERIFY2(log.contains("The X11 connection broke"), log.constData());
        QVERIFY2(elapsed < (signal != 0 ? kLongestEnd : kLongestEndWithoutDisplay),
            qPrintable(QString::number(elapsed)));

        QCOMPARE(processes({QStringLiteral("wvdial"), QStringLiteral("pppd"),
                     QStringLiteral("sudo"), QStringLiteral("ifup"), QStringLiteral("ifdown")}),
            QStringList());
        const QList<qint64> holders = portHolders();
        for (const qint64 holder : holders) // the modem service may be one
            QVERIFY2(holder > 0 && ::kill(static_cast<pid_t>(holder), 0) == 0, "a lock is left");
        // The settings are handed over as closing does; the modem service's own stay.
        QCOMPARE(record(tavbus::BUSNAME_TAVMODEMS), m_saved);
        QCOMPARE(record(tavbus::BUSNAME_TESTDEALER).isEmpty(), false);
        if (!QByteArray(QTest::currentDataTag()).contains("nothing found"))
            QCOMPARE(record(tavbus::BUSNAME_TESTDEALER), m_saved);
        QTRY_VERIFY2_WITH_TIMEOUT(servicesRun(),
            qPrintable(m_terminal->events(m_started).join(QLatin1Char('\n'))), kLong);
    }

private:
    static QStringList services()
    {
        return {tavbus::BUSNAME_TAVMODEMS, tavbus::BUSNAME_ACCEPTORS, tavbus::BUSNAME_PRINTSERVICE,
            tavbus::BUSNAME_WATCHDOGS};
    }

    static QVariantList record(const QString &owner)
    {
        tavbus::TavBusQueryHandler handler(tavbus::BUSNAME_TESTDEALER);
        tavbus::ClientSettings settings;
        return handler.open() && handler.loadSettings(owner, settings) ? settings.settings()
                                                                       : QVariantList();
    }

    /// The last that each service was told, and has done, is to run.
    bool servicesRun()
    {
        QMap<QString, QString> last;
        const QStringList events = m_terminal->events();
        static const QRegularExpression did(QStringLiteral("^(\\w+)(?:: | < )(\\w+)$"));
        for (const QString &event : events) {
            const QRegularExpressionMatch match = did.match(event);
            if (services().contains(match.captured(1)))
                last[match.captured(1)] = match.captured(2);
        }
        for (const QString &what : qAsConst(last)) {
            if (what != QLatin1String("running"))
                return false;
        }
        return true;
    }

    void reachIdle() { }
    void reachDialStopping()
    {
        slow(tavmodems);
        click("cbDial");
        waitFor(QStringLiteral("tavmodems < stop"));
    }
    void reachDialReset()
    {
        m_terminal->modemFault(gsm1, QStringLiteral("hung")).waitForFinished();
        click("cbDial");
        waitForModem();
    }
    void reachDialling()
    {
        m_terminal->modemFault(gsm1, QStringLiteral("busy")).waitForFinished();
        click("cbDial");
        waitFor(QStringLiteral("gsm1 < ATDT*99#"));
    }
    void reachDialRestarting()
    {
        m_terminal->modemFault(gsm1, QStringLiteral("busy")).waitForFinished();
        click("cbDial");
        waitFor(QStringLiteral("gsm1 < ATDT*99#"));
        slow(tavmodems);
        click("pbStop");
        waitFor(QStringLiteral("tavmodems < restart"));
    }
    void reachQueryStopping()
    {
        slow(tavmodems);
        click("pbAskPage");
        click("pbAsk");
        waitFor(QStringLiteral("tavmodems < stop"));
    }
    void reachQuery()
    {
        m_terminal->modemFault(gsm1, QStringLiteral("hung")).waitForFinished();
        click("pbAskPage");
        click("pbAsk");
        waitForModem();
    }
    void reachSearchStopping()
    {
        for (const QString &service : services())
            slow(service);
        click("pbSearchPage");
        click("tbSearch");
        waitFor(QStringLiteral("acceptors < disable"));
    }
    void reachSearch()
    {
        m_terminal->modemFault(gsm1, QStringLiteral("hung")).waitForFinished();
        click("pbSearchPage");
        click("tbSearch");
        waitForModem();
    }
    void reachNothingFound()
    {
        m_terminal->modemFault(gsm1, QStringLiteral("silent")).waitForFinished();
        click("pbSearchPage");
        click("tbSearch");
        QTRY_VERIFY_WITH_TIMEOUT(m_display->shows(QStringLiteral("No modems")), kLong);
    }
    void reachClosing()
    {
        click("pbClose");
        QTRY_VERIFY_WITH_TIMEOUT(m_display->shows(QStringLiteral("Test dealer closing")), kLong);
    }
    void reachApplying()
    {
        const QString question = QStringLiteral("Network settings applying");
        click("pbEth");
        click("pbApply");
        QTRY_VERIFY_WITH_TIMEOUT(m_display->shows(question), kLong);
        m_display->press(question, QStringLiteral("alt+y"));
        QTRY_VERIFY_WITH_TIMEOUT(
            QFile::exists(QDir::tempPath() + QStringLiteral("/interfaces.tmp")), kLong);
    }

    void slow(const QString &service)
    {
        m_terminal->serviceFault(service, QStringLiteral("slow")).waitForFinished();
    }
    void waitFor(const QString &event)
    {
        QTRY_VERIFY2_WITH_TIMEOUT(m_terminal->events(m_started).contains(event),
            qPrintable(m_terminal->events(m_started).join(QLatin1Char('\n'))), kLong);
    }
    void waitForModem()
    {
        QTRY_VERIFY_WITH_TIMEOUT(programLog().contains("/dev/ttyUSB0 -> AT"), kLong);
    }

    void click(const char *button)
    {
        m_display->click(kWindow, m_places.value(QLatin1String(button)));
    }

    /// Where the buttons are, by a window of the test's own.
    void findPlaces()
    {
        MainDialog dialog;
        dialog.show();
        const auto note = [&](const char *name) {
            auto *const widget = dialog.findChild<QWidget *>(QLatin1String(name));
            QVERIFY2(widget && widget->isVisible(), name);
            m_places[QLatin1String(name)] = widget->mapTo(&dialog, widget->rect().center());
        };
        const auto turnTo = [&](const char *name) {
            note(name);
            QTest::mouseClick(dialog.findChild<QWidget *>(QLatin1String(name)), Qt::LeftButton);
            QCoreApplication::processEvents();
        };
        for (const char *name : {"cbDial", "pbStop", "pbClose"})
            note(name);
        turnTo("pbAskPage");
        note("pbAsk");
        turnTo("pbSearchPage");
        note("tbSearch");
        turnTo("pbEth");
        note("pbApply");
    }

    std::unique_ptr<Terminal> m_terminal;
    QVariantList m_saved; // the modem service's record
    QMap<QString, QPoint> m_places; // in the window, by name
    std::unique_ptr<Display> m_display;
    std::unique_ptr<Program> m_program;
    int m_started = 0; // mark
};

int main(int argc, char **argv)
{
    RuntimeEnvironment::prepare();
    QApplication application(argc, argv);
    EndingsTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_endings.moc"
