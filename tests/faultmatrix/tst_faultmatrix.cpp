#include "fault.h"
#include "openfiles.h"
#include "runtimeenvironment.h"
#include "saboteur.h"
#include "terminal.h"

#include "busnames.h"
#include "modemackwidget.h"
#include "searchwidget.h"
#include "tavbuscommand.h"
#include "tavbusqueryhandler.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QToolButton>

#include <memory>
#include <mutex>

// Every fault at every step of every operation, with the real window, dialer and broker in the
// simulated terminal. A test function an operation, or a step of one that takes long; a row a cell.
// Whatever strikes: the window comes back to idle, the services run again, or the log says why not,
// once it is closed, the settings are as they were, and nothing is left behind. The program's end
// by a signal or without its display is tst_endings.

namespace {

constexpr int kLongest = 150000; // ms; two waits of a minute for a service, and some air
constexpr int kSettled = 25000; // ms; a dead broker is started by the next call
constexpr int kSpareFiles = 4;
constexpr int kSpareThreads = 2;
constexpr int kPatience = 30000; // ms; a dialer that a modem talks to without end never ends
constexpr int kDialling = 1000; // ms of a dial under the fault before it is stopped

const QString gsm1 = QStringLiteral("gsm1");
const QString kApplyQuestion = QStringLiteral("Network settings applying");

struct LogLine
{
    QtMsgType type;
    QString category;
    QString text;
};

std::mutex logMutex; // not Qt's, whose waiting the thread sanitizer does not see
QVector<LogLine> logLines;

void keepLine(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", qPrintable(text));
    const std::lock_guard<std::mutex> lock(logMutex);
    logLines.append({type, QString::fromUtf8(context.category), text});
}

struct Step
{
    QString name;
    Saboteur::Reached reached;
};

using Terminal1 = OrgOvrelTerminalSim1Interface;

// Events are "milliseconds text".
bool hasEvent(Terminal1 &terminal, int since, const QString &prefix)
{
    const QStringList lines = terminal.journal().value().mid(since);
    for (const QString &line : lines) {
        if (line.section(QLatin1Char(' '), 1).startsWith(prefix))
            return true;
    }
    return false;
}

int threads()
{
    return QDir(QStringLiteral("/proc/self/task"))
        .entryList(QDir::Dirs | QDir::NoDotAndDotDot)
        .size();
}

QStringList childProcesses()
{
    QStringList names;
    const QByteArray self = QByteArray::number(QCoreApplication::applicationPid());
    const QStringList pids = QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")});
    for (const QString &pid : pids) {
        QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QByteArray stat = file.readAll(); // pid (name) state parent
        const QList<QByteArray> rest = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        if (rest.value(1) == self)
            names << QString::fromUtf8(stat.left(stat.lastIndexOf(')') + 1));
    }
    return names;
}

QStringList dialers()
{
    QStringList names;
    const QStringList pids = QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")});
    for (const QString &pid : pids) {
        QFile file(QStringLiteral("/proc/%1/comm").arg(pid));
        const QByteArray name = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        if (name.contains("wvdial") || name.contains("pppd") || name.contains("sudo"))
            names << QString::fromUtf8(name);
    }
    return names;
}

// What an operation may leave on the disks.
QStringList files()
{
    QStringList names;
    for (const QString &folder : {QDir::tempPath(), QStringLiteral("/var/lib/ovrel"),
             QStringLiteral("/var/lib/ovrel/modems"), QStringLiteral("/etc/network")}) {
        const QStringList in = QDir(folder).entryList(QDir::Files | QDir::Hidden);
        for (const QString &name : in)
            names << folder + QLatin1Char('/') + name;
    }
    return names;
}

} // namespace

class FaultMatrixTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qInstallMessageHandler(keepLine);
        m_terminal = std::make_unique<Terminal>();
        QVERIFY(m_terminal->isValid());
        m_saved = savedModems();
        QVERIFY(!m_saved.isEmpty());
    }
    void cleanupTestCase()
    {
        m_terminal.reset();
        qInstallMessageHandler(nullptr);
        qInfo("%d cells", m_cells);
    }

    void init()
    {
        m_terminal->restore();
        QTRY_VERIFY(QFile::exists(QStringLiteral("/dev/ttyUSB0")));
        {
            const std::lock_guard<std::mutex> lock(logMutex);
            logLines.clear();
        }
        m_dialog = std::make_unique<MainDialog>();
        m_dialog->show();
        m_store = ModemSettings().toSettingsList();
        QVERIFY(!ModemSettings().modems().isEmpty());
        m_mark = m_terminal->mark();
    }
    void cleanup()
    {
        for (const Fault &fault : faults())
            fault.mend(*m_terminal);
        if (QTest::currentTestFailed()) {
            std::fprintf(stderr, "%s\n%s\n", qPrintable(logText()),
                qPrintable(m_terminal->events(m_mark).join(QLatin1Char('\n'))));
        }
        m_dialog.reset();
        // For the next cell: what this one left stopped with a reason in the log.
        if (!servicesRun()) {
            tavbus::TavBusQueryHandler handler(tavbus::BUSNAME_TESTDEALER);
            QTRY_VERIFY(handler.open());
            for (const QString &service : services()) {
                TavBusCommand command;
                command.setAgent(service);
                command.setName(service == tavbus::BUSNAME_ACCEPTORS ? QStringLiteral("enable")
                                                                     : QStringLiteral("restart"));
                handler.sendMessage(command.toOutgoingMessage());
            }
            QTRY_VERIFY_WITH_TIMEOUT(servicesRun(), kSettled);
        }
        QTRY_COMPARE(savedModems(), m_saved);
        // The next window is to load the modem service's.
        tavbus::TavBusQueryHandler handler(tavbus::BUSNAME_TESTDEALER);
        QTRY_VERIFY(handler.open() && handler.removeSettings(tavbus::BUSNAME_TESTDEALER, false));
        m_storeMayChange = false;
    }

    void dialStopping_data() { addCells({happens("stopping the service", "tavmodems < stop")}); }
    void dialStopping() { dial(); }
    void dialResetting_data() { addCells({happens("resetting the modem", "gsm1 < AT")}); }
    void dialResetting() { dial(); }
    void dialDialling_data() { addCells({happens("dialling", "gsm1 < ATDT")}); }
    void dialDialling()
    {
        QFETCH(int, step);
        if (step >= 0) // without a fault the call is answered, and ends by itself
            m_terminal->modemFault(gsm1, QStringLiteral("busy")).waitForFinished();
        dial(kDialling);
    }
    void dialRestarting_data()
    {
        addCells({happens("restarting the service", "tavmodems < restart")});
    }
    void dialRestarting() { dial(); }

    void queryStopping_data() { addCells({happens("stopping the service", "tavmodems < stop")}); }
    void queryStopping() { query(); }
    void queryAsking_data() { addCells({happens("asking", "gsm1 < AT")}); }
    void queryAsking() { query(); }
    void queryRestarting_data()
    {
        addCells({happens("restarting the service", "tavmodems < restart")});
    }
    void queryRestarting() { query(); }

    void searchStopping_data()
    {
        addCells({happens("stopping the services", "acceptors < disable")});
    }
    void searchStopping() { search(); }
    void searchAsking_data() { addCells({happens("asking", "gsm1 < AT")}); }
    void searchAsking() { search(); }
    void searchRestarting_data()
    {
        addCells({happens("restarting the services", "terminalgui < runTouch")});
    }
    void searchRestarting() { search(); }

    void save_data() { addCells({atOnce("saving")}); }
    void save()
    {
        bool isDone = false;
        runCell(
            [&] {
                waitForTheStrike();
                click("pbSaveSettings");
                isDone = true;
            },
            [&] { return isDone; });
    }

    void close_data() { addCells({atOnce("sending the settings"), boxIsOpen("asking")}); }
    void close()
    {
        bool isDone = false;
        runCell(
            [&] {
                if (QByteArray(QTest::currentDataTag()).startsWith("sending"))
                    waitForTheStrike();
                m_dialog->close();
                isDone = true;
            },
            [&] { return isDone && !m_dialog->isVisible(); });
    }

    void network_data()
    {
        const QString written = QDir::tempPath() + QStringLiteral("/interfaces.tmp");
        addCells({atOnce("writing the file"),
            {QStringLiteral("taking the interfaces down"),
                [written](Terminal1 &) { return QFile::exists(written); }}});
    }
    void network()
    {
        QFile::remove(QDir::tempPath() + QStringLiteral("/interfaces.tmp"));
        turnTo("pbEth");
        auto *const apply = m_dialog->findChild<QPushButton *>(QStringLiteral("pbApply"));
        runCell(
            [&] {
                if (QByteArray(QTest::currentDataTag()).startsWith("writing"))
                    waitForTheStrike();
                click("pbApply");
            },
            [&] { return apply->isEnabled() && childProcesses().isEmpty(); });
        QFile::remove(QDir::tempPath() + QStringLiteral("/interfaces.tmp"));
    }

private:
    void dial(int patience = kPatience)
    {
        auto *const page = m_dialog->findChild<TestDialWidget *>();
        const QSignalSpy finished(page, &TestDialWidget::finished);
        DialPage widgets(page);
        widgets.choose(gsm1);
        runCell([&] { widgets.press("cbDial"); }, [&] { return finished.count() == 1; },
            [&] { widgets.press("pbStop"); }, patience);
    }
    void query()
    {
        turnTo("pbAskPage");
        const QSignalSpy finished(
            m_dialog->findChild<ModemAckWidget *>(), &ModemAckWidget::finished);
        runCell([&] { click("pbAsk"); }, [&] { return finished.count() == 1; });
    }
    void search()
    {
        turnTo("pbSearchPage");
        const QSignalSpy finished(m_dialog->findChild<SearchWidget *>(), &SearchWidget::finished);
        m_storeMayChange = true; // what is found takes the place of what was known
        runCell([&] { click("tbSearch"); }, [&] { return finished.count() == 1; });
    }

    static QStringList services()
    {
        return {tavbus::BUSNAME_TAVMODEMS, tavbus::BUSNAME_ACCEPTORS, tavbus::BUSNAME_PRINTSERVICE,
            tavbus::BUSNAME_WATCHDOGS};
    }
    static QVariantList savedModems()
    {
        tavbus::TavBusQueryHandler handler(tavbus::BUSNAME_TESTDEALER);
        tavbus::ClientSettings settings;
        return handler.open() && handler.loadSettings(tavbus::BUSNAME_TAVMODEMS, settings)
            ? settings.settings()
            : QVariantList();
    }

    Step happens(const char *name, const char *event) const
    {
        const QString prefix = QString::fromLatin1(event);
        return {QString::fromLatin1(name),
            [this, prefix](Terminal1 &terminal) { return hasEvent(terminal, m_mark, prefix); }};
    }
    static Step atOnce(const char *name)
    {
        return {QString::fromLatin1(name), [](Terminal1 &) { return true; }};
    }
    Step boxIsOpen(const char *name) const
    {
        return {QString::fromLatin1(name), [this](Terminal1 &) { return m_boxIsOpen.load(); }};
    }

    void addCells(const QList<Step> &steps)
    {
        m_steps = steps;
        QTest::addColumn<int>("step");
        QTest::addColumn<int>("fault");
        // First without any: what is then open stays open.
        QTest::newRow("no fault") << -1 << -1;
        for (int step = 0; step < steps.size(); ++step) {
            for (int fault = 0; fault < faults().size(); ++fault)
                QTest::addRow("%s: %s", qPrintable(steps.at(step).name), faults().at(fault).name)
                    << step << fault;
        }
    }

    void runCell(
        const std::function<void()> &begin, const std::function<bool()> &hasEnded,
        const std::function<void()> &stop = [] {}, int patience = kPatience)
    {
        QFETCH(int, step);
        QFETCH(int, fault);
        const bool isFaulty = fault >= 0;
        if (isFaulty)
            m_saboteur = std::make_unique<Saboteur>(m_steps.at(step).reached, faults().at(fault));
        m_boxIsOpen = false;
        QTimer boxes;
        connect(&boxes, &QTimer::timeout, this, &FaultMatrixTest::answerBoxes);
        boxes.start(20);
        QElapsedTimer dialling;
        QTimer stopper; // a dial goes on until it is stopped
        connect(&stopper, &QTimer::timeout, this, [&] {
            if (!m_saboteur || !m_saboteur->hasStruck())
                return;
            if (!dialling.isValid())
                dialling.start();
            else if (dialling.hasExpired(patience)) {
                stopper.stop();
                stop();
            }
        });
        stopper.start(100);
        begin();
        const bool ended = QTest::qWaitFor(hasEnded, kLongest);
        const bool struck = !isFaulty || m_saboteur->hasStruck();
        m_saboteur.reset();
        stopper.stop();
        if (isFaulty)
            faults().at(fault).mend(*m_terminal);
        QVERIFY2(struck, "the step was not reached");
        QVERIFY2(ended, "the operation does not end");
        m_cells += isFaulty ? 1 : 0;

        for (const char *name : {"pbDialPage", "pbAskPage", "pbSearchPage", "pbSaveSettings"})
            QVERIFY2(
                m_dialog->findChild<QWidget *>(QLatin1String(name))->isEnabledTo(m_dialog.get()),
                name);
        if (!m_storeMayChange)
            QCOMPARE(ModemSettings().toSettingsList(), m_store);
        m_dialog->close();
        QTRY_VERIFY2_WITH_TIMEOUT(
            servicesRun() || logSaysWhy(), "services are stopped and nothing says why", kSettled);
        QTRY_COMPARE_WITH_TIMEOUT(savedModems(), m_saved, kSettled);
        m_dialog.reset();
        QTRY_COMPARE(childProcesses(), QStringList());
        QCOMPARE(dialers(), QStringList());
        if (!isFaulty) {
            m_files = files();
            m_openFiles = openFiles();
            m_threads = threads();
        }
        // A thread that Qt keeps for half a minute, lest more comes, may come or go; what leaks
        // adds up from cell to cell.
        QTRY_VERIFY2(
            openFiles() <= m_openFiles + kSpareFiles, qPrintable(QString::number(openFiles())));
        QTRY_VERIFY2(
            threads() <= m_threads + kSpareThreads, qPrintable(QString::number(threads())));
        for (const QString &file : files())
            QVERIFY2(m_files.contains(file), qPrintable(file));
    }

    void waitForTheStrike()
    {
        if (m_saboteur)
            QTRY_VERIFY(m_saboteur->hasStruck());
    }

    void answerBoxes()
    {
        auto *const box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box)
            return;
        m_boxIsOpen = true;
        if (box->windowTitle() != kApplyQuestion && m_saboteur && !m_saboteur->hasStruck())
            return;
        // What a search has found is not to become the next cell's.
        const bool canDecline = m_storeMayChange && box->button(QMessageBox::No);
        for (const auto button :
            {canDecline ? QMessageBox::No : QMessageBox::Save, QMessageBox::Yes, QMessageBox::Ok}) {
            if (box->button(button)) {
                box->button(button)->click();
                return;
            }
        }
    }

    /// The last that each service did is to run.
    bool servicesRun()
    {
        QMap<QString, QString> last;
        const QStringList events = m_terminal->events();
        for (const QString &event : events) {
            for (const QString &service : services()) {
                for (const char *separator : {": ", " < "}) {
                    const QString begin = service + QLatin1String(separator);
                    if (event.startsWith(begin) && !event.contains(QLatin1String("fault")))
                        last[service] = event.mid(begin.size());
                }
            }
        }
        for (const QString &what : qAsConst(last)) {
            if (what != QLatin1String("running"))
                return false;
        }
        return true;
    }

    static bool logSaysWhy()
    {
        const std::lock_guard<std::mutex> lock(logMutex);
        return std::any_of(logLines.cbegin(), logLines.cend(), [](const LogLine &line) {
            return line.type == QtWarningMsg && line.category == QLatin1String("guilogger");
        });
    }
    static QString logText()
    {
        const std::lock_guard<std::mutex> lock(logMutex);
        QStringList lines;
        for (const LogLine &line : qAsConst(logLines))
            lines << QStringLiteral("%1 %2 %3").arg(line.type).arg(line.category, line.text);
        return lines.join(QLatin1Char('\n'));
    }

    void click(const char *name)
    {
        QTest::mouseClick(m_dialog->findChild<QWidget *>(QLatin1String(name)), Qt::LeftButton);
    }
    void turnTo(const char *name)
    {
        click(name);
        QCoreApplication::processEvents();
    }

    std::unique_ptr<Terminal> m_terminal;
    std::unique_ptr<MainDialog> m_dialog;
    std::unique_ptr<Saboteur> m_saboteur; // while a cell runs
    QList<Step> m_steps;
    QVariantList m_saved; // the modem service's record
    QVariantList m_store;
    bool m_storeMayChange = false;
    std::atomic<int> m_mark{0};
    std::atomic<bool> m_boxIsOpen{false};
    QStringList m_files;
    int m_openFiles = 0;
    int m_threads = 0;
    int m_cells = 0;
};

int main(int argc, char **argv)
{
    RuntimeEnvironment::prepare();
    // Of a test function with all its rows, ms.
    qputenv("QTEST_FUNCTION_TIMEOUT", "1800000");
    QApplication application(argc, argv);
    FaultMatrixTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_faultmatrix.moc"
