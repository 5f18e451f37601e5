#include "dragout.h"
#include "fakedialer.h"
#include "fakemodemservice.h"
#include "marktranslator.h"
#include "portspeed.h"
#include "scriptedmodem.h"
#include "stallwatch.h"
#include "storedmodems.h"
#include "testdialwidget.h"
#include "testmodemscfg.h"

#include "loggermanager.h"
#include "privatebus.h"

#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>

#include <memory>
#include <mutex>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

const QString noPort = QStringLiteral("/dev/nowhere");
constexpr int kLong = 20000; // ms; two polls of a second and a dial fit in many times

/// A file that can be read and that nobody, root included, can write.
class SealedFile
{
public:
    explicit SealedFile(const QByteArray &text)
        : m_file(::memfd_create("sealed", MFD_CLOEXEC | MFD_ALLOW_SEALING))
    {
        if (::write(m_file, text.constData(), static_cast<size_t>(text.size())) != text.size()
            || ::fcntl(m_file, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE) != 0)
            qFatal("no sealed file");
    }
    ~SealedFile() { ::close(m_file); }
    SealedFile(const SealedFile &) = delete;
    SealedFile &operator=(const SealedFile &) = delete;

    QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(m_file); }

private:
    const int m_file;
};

/// The page as the user has it, with its widgets by their names.
class Page : public TestDialWidget
{
public:
    explicit Page(const QString &dialer)
        : TestDialWidget(nullptr, dialer)
        , startedSpy(this, &TestDialWidget::started)
        , finishedSpy(this, &TestDialWidget::finished)
    {
        resize(780, 500);
        show();
    }

    void press(const char *name) { QTest::mouseClick(button(name), Qt::LeftButton); }
    QPushButton *button(const char *name) const
    {
        return findChild<QPushButton *>(QLatin1String(name));
    }
    QTextBrowser *log() const { return findChild<QTextBrowser *>(QStringLiteral("tbLog")); }
    QComboBox *modems() const { return findChild<QComboBox *>(QStringLiteral("cbModem")); }
    QString text() const { return log()->toPlainText(); }
    bool isIdle() const { return button("cbDial")->isEnabled() && !button("pbStop")->isEnabled(); }
    QColor colourOf(const QString &begin) const
    {
        for (QTextBlock block = log()->document()->begin(); block.isValid(); block = block.next()) {
            if (block.text().startsWith(begin))
                return block.begin().fragment().charFormat().foreground().color();
        }
        return QColor();
    }

    QSignalSpy startedSpy;
    QSignalSpy finishedSpy;
};

} // namespace

class TestDialWidgetTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        LoggerManager::initLog(QDir::tempPath(), 2, false, QtDebugMsg);
        m_bus = std::make_unique<PrivateBus>();
    }
    void cleanupTestCase()
    {
        m_bus.reset();
        LoggerManager::releaseLog();
    }

    void init()
    {
        TestModemsCfg::setConfigPath();
        QFile::remove(TestModemsCfg::configPath());
        QDir().rmdir(TestModemsCfg::configPath());
        store({modemOn(noPort)});
        m_service = std::make_unique<FakeModemService>();
    }
    void cleanup() { m_service.reset(); }

    void form()
    {
        const FakeDialer dialer;
        const Page page(dialer.program());
        QCOMPARE(page.windowTitle(), QStringLiteral("Form"));
        QCOMPARE(page.button("cbDial")->text(), QStringLiteral("Dial"));
        QCOMPARE(page.button("pbStop")->text(), QStringLiteral("Stop"));
        QCOMPARE(page.button("cbDial")->minimumSize(), QSize(60, 60));
        QCOMPARE(page.button("pbStop")->minimumSize(), QSize(60, 60));
        QCOMPARE(page.modems()->minimumSize(), QSize(0, 60));
        QCOMPARE(page.modems()->sizeAdjustPolicy(), QComboBox::AdjustToContents);
        const auto *label = page.findChild<QLabel *>(QStringLiteral("label"));
        QCOMPARE(label->text(), QStringLiteral("Modem"));
        const QList<QWidget *> large{page.findChild<QWidget *>(QStringLiteral("label")),
            page.modems(), page.button("cbDial"), page.button("pbStop")};
        for (const QWidget *widget : large)
            QCOMPARE(widget->font().pointSize(), 18);
        QCOMPARE(page.layout()->objectName(), QStringLiteral("verticalLayout"));
        QCOMPARE(page.layout()->contentsMargins(), QMargins(1, 1, 1, 1));
        QCOMPARE(page.findChild<QLayout *>(QStringLiteral("horizontalLayout"))->spacing(), 16);
        QVERIFY(page.log()->y() > page.modems()->y());
        QVERIFY(page.isIdle());
    }

    void connectionsAreListedInTheirOrderAtEveryShow()
    {
        const FakeDialer dialer;
        store({modemOn(noPort, QStringLiteral("z")), modemOn(noPort, QStringLiteral("a"))});
        Page page(dialer.program());
        QCOMPARE(page.modems()->count(), 2);
        QCOMPARE(page.modems()->itemText(0), QStringLiteral("z"));
        QCOMPARE(page.modems()->itemText(1), QStringLiteral("a"));
        page.hide();
        store({modemOn(noPort, QStringLiteral("модем"))});
        page.show();
        QCOMPARE(page.modems()->count(), 1);
        QCOMPARE(page.modems()->currentText(), QStringLiteral("модем"));
    }

    void dialWithoutAModemOnlyClearsTheLog()
    {
        const FakeDialer dialer;
        store({});
        Page page(dialer.program());
        page.log()->append(QStringLiteral("old"));
        page.press("cbDial");
        QCOMPARE(page.text(), QString());
        QCOMPARE(page.startedSpy.count(), 0);
        QVERIFY(!TestModemsCfg::hasConfig());
        QVERIFY(!page.finishedSpy.wait(1500));
        QCOMPARE(m_service->commands, QStringList());
    }

    void dialDropsWhatIsStillToFollowOfAFlood()
    {
        const FakeDialer dialer;
        Page page(dialer.program());
        for (int i = 0; i < 20000; ++i)
            qCDebug(DIALUP, "old line %d", i);
        const int shown = page.log()->document()->blockCount();
        QVERIFY2(shown < 20000, qPrintable(QString::number(shown))); // the rest is waiting
        page.press("cbDial");
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        QVERIFY(page.text().contains(QStringLiteral("Wvdial closed successfully")));
        QVERIFY2(
            !page.text().contains(QStringLiteral("old line")), qPrintable(page.text().left(200)));
    }

    void buttonsActOnRelease()
    {
        const FakeDialer dialer;
        Page page(dialer.program());
        QTest::mousePress(page.button("cbDial"), Qt::LeftButton);
        QCOMPARE(page.startedSpy.count(), 0);
        QTest::mouseRelease(page.button("cbDial"), Qt::LeftButton);
        QCOMPARE(page.startedSpy.count(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
    }

    // The button lets go as soon as it is left, and that counts; on a touch screen a finger that
    // slides off has dialled.
    void slidingOffAButtonIsARelease()
    {
        const FakeDialer dialer("exec sleep 600");
        Page page(dialer.program());
        dragOut(page.button("cbDial"));
        QCOMPARE(page.startedSpy.count(), 1);
        QTRY_VERIFY_WITH_TIMEOUT(page.text().contains(QStringLiteral("wvdial is started")), kLong);
        dragOut(page.button("pbStop"));
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        QVERIFY(page.text().contains(QStringLiteral("Unknown exit code")));
    }

    void portIsOpenedNoFasterThanItMay()
    {
        const FakeDialer dialer;
        ScriptedModem modem;
        std::mutex mutex;
        QList<unsigned int> speeds;
        modem.onCommand = [&](const QByteArray &command) {
            const std::lock_guard<std::mutex> lock(mutex);
            if (command == "ATZ")
                speeds.append(speedOf(modem.path()));
        };
        modem.start();
        ModemInfo info = modemOn(modem.path());
        info.setBaudrate(115200);
        store({info});
        Page page(dialer.program());
        page.press("cbDial");
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        const std::lock_guard<std::mutex> lock(mutex);
        QCOMPARE(speeds, QList<unsigned int>({57600U, 57600U})); // the page's reset, the dial's
    }

    void otherChoiceWhileTheServiceIsStopping()
    {
        const FakeDialer dialer;
        const QString other = QStringLiteral("other");
        ScriptedModem modem;
        modem.start();
        store({modemOn(noPort), modemOn(modem.path(), other)});
        Page page(dialer.program());
        page.modems()->setCurrentText(gsm1);
        page.press("cbDial");
        page.modems()->setCurrentText(other);
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        // The page resets the modem that is chosen by then; the dialer's file holds the one of the
        // press, which is dialled. The other one follows, and is not in the file.
        QCOMPARE(modem.commands().count("ATZ"), 1);
        QCOMPARE(dialer.arguments(),
            QStringList({gsm1, QStringLiteral("--config=") + TestModemsCfg::configPath()}));
        QVERIFY(page.text().contains(QStringLiteral("There are no modem config for other")));
        QVERIFY(page.isIdle());
    }

    void wholeDialAndStop()
    {
        const FakeDialer dialer("echo '--> Sending: ATDT*99#'; echo CONNECT; exec sleep 600");
        ScriptedModem modem;
        modem.start();
        ModemInfo info = modemOn(modem.path());
        info.setBaudrate(115200);
        store({modemOn(noPort, QStringLiteral("other")), info});
        Page page(dialer.program());
        page.modems()->setCurrentText(gsm1);
        page.log()->append(QStringLiteral("old"));

        page.press("cbDial");
        QCOMPARE(page.startedSpy.count(), 1);
        QVERIFY(!page.button("cbDial")->isEnabled());
        QVERIFY(page.button("pbStop")->isEnabled());
        QCOMPARE(page.text(), QString());
        // The file holds the one modem; nothing is dialled while the service may hold the port.
        QCOMPARE(TestModemsCfg().modems().keys(), QStringList{gsm1});
        QCOMPARE(TestModemsCfg::activeModemName(), gsm1);
        QCOMPARE(modem.commands(), QList<QByteArray>());

        QTRY_VERIFY_WITH_TIMEOUT(page.text().contains(QStringLiteral("CONNECT")), kLong);
        QCOMPARE(m_service->commands, QStringList{QStringLiteral("stop")});
        QCOMPARE(dialer.arguments(),
            QStringList({gsm1, QStringLiteral("--config=") + TestModemsCfg::configPath()}));
        // First whatever still runs is ended, then the dial begins.
        QCOMPARE(dialer.calls(),
            QStringList({QStringLiteral("ps -A"), QStringLiteral("ps -A"),
                QStringLiteral("killall pppd")}));
        QCOMPARE(modem.commands().count("ATZ"), 2); // reset by the page and by the dial
        QVERIFY(page.text().contains(QStringLiteral("Start modem resetting")));
        QVERIFY(page.text().contains(QStringLiteral("wvdial is started")));
        QCOMPARE(page.colourOf(QStringLiteral("Start modem")), QColor(Qt::black));
        QCOMPARE(page.finishedSpy.count(), 0);

        page.press("pbStop");
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        QVERIFY(page.isIdle());
        QCOMPARE(
            m_service->commands, QStringList({QStringLiteral("stop"), QStringLiteral("restart")}));
        QVERIFY(page.text().contains(QStringLiteral("Unknown exit code"))); // ended by a signal
        QCOMPARE(page.colourOf(QStringLiteral("Unknown exit code")), QColor(Qt::red));
        QCOMPARE(page.startedSpy.count(), 1);
    }

    void dialerThatEndsByItselfEndsTheTest()
    {
        const FakeDialer dialer("exit 0");
        Page page(dialer.program());
        page.press("cbDial");
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        QVERIFY(page.isIdle());
        QCOMPARE(page.colourOf(QStringLiteral("Wvdial closed")), QColor(Qt::blue));
        // And the next dial starts afresh.
        page.press("cbDial");
        QCOMPARE(page.text(), QString());
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 2, kLong);
        QCOMPARE(m_service->commands.count(QStringLiteral("stop")), 2);
        QCOMPARE(m_service->commands.count(QStringLiteral("restart")), 2);
    }

    void portThatDoesNotOpenDoesNotStopTheTest()
    {
        const FakeDialer dialer("exit 1");
        Page page(dialer.program());
        page.press("cbDial");
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        QVERIFY(page.text().contains(QStringLiteral("The porg /dev/nowhere is not opened: ")));
        QCOMPARE(dialer.arguments().size(), 2);
        QCOMPARE(page.colourOf(QStringLiteral("Pppd has finished")), QColor(Qt::red));
    }

    void dialThatCannotStartEndsIdleWithTheReason_data()
    {
        QTest::addColumn<QString>("what");
        QTest::addColumn<QString>("reason");
        QTest::newRow("dialer missing")
            << QStringLiteral("dialer") << QStringLiteral("Wvdial error (0): ");
        QTest::newRow("connection without a record")
            << QStringLiteral("record") << QStringLiteral("Connection name is empty!");
        QTest::newRow("configuration file cannot be written")
            << QStringLiteral("file") << QStringLiteral("The dialer's file ");
        QTest::newRow("name that the dialer would misread")
            << QStringLiteral("name") << QStringLiteral("The dialer would take the name a=b");
    }
    void dialThatCannotStartEndsIdleWithTheReason()
    {
        QFETCH(QString, what);
        QFETCH(QString, reason);
        const FakeDialer dialer;
        if (what == QLatin1String("record"))
            ModemSettings().setModems({});
        else if (what == QLatin1String("file"))
            QVERIFY(QDir().mkdir(TestModemsCfg::configPath()));
        else if (what == QLatin1String("name"))
            store({modemOn(noPort, QStringLiteral("a=b"))});
        Page page(what == QLatin1String("dialer") ? dialer.file("missing") : dialer.program());
        page.press("cbDial");
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        QVERIFY2(page.text().contains(reason), qPrintable(page.text()));
        QVERIFY(page.isIdle());
        QCOMPARE(page.startedSpy.count(), 1);
        QCOMPARE(dialer.arguments(), QStringList());
        QCOMPARE(
            m_service->commands, QStringList({QStringLiteral("stop"), QStringLiteral("restart")}));
    }

    void oldFileThatCannotBeWrittenIsDialledWithAWarning_data()
    {
        QTest::addColumn<QByteArray>("section");
        QTest::addColumn<bool>("isDialled");
        QTest::newRow("it has the connection") << QByteArray("gsm1") << true;
        QTest::newRow("it has another one") << QByteArray("gsm2") << false;
    }
    void oldFileThatCannotBeWrittenIsDialledWithAWarning()
    {
        QFETCH(QByteArray, section);
        QFETCH(bool, isDialled);
        const FakeDialer dialer;
        const SealedFile old("[Dialer " + section + "]\nModem=/dev/old\n");
        QVERIFY(QFile::link(old.path(), TestModemsCfg::configPath()));
        Page page(dialer.program());
        page.press("cbDial");
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        const QString failure = QStringLiteral("The dialer's file %1 was not written: "
                                               "Operation not permitted")
                                    .arg(TestModemsCfg::configPath());
        const QString hint = QStringLiteral(". The dialer goes by what the file held before.");
        QVERIFY2(page.text().contains(failure), qPrintable(page.text()));
        QCOMPARE(page.text().contains(failure + hint), isDialled);
        QCOMPARE(page.text().contains(QStringLiteral("Open port /dev/old")), isDialled);
        QCOMPARE(dialer.arguments().isEmpty(), !isDialled);
        QVERIFY(page.isIdle());
    }

    void recordUnderAnotherKey_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("reason");
        QTest::addColumn<QStringList>("dialled");
        // The page knows it by its key, the dialer's file by its name.
        QTest::newRow("another name")
            << QStringLiteral("key") << gsm1 << QStringLiteral("There are no modem config for key")
            << QStringList{gsm1};
        QTest::newRow("name with an equals sign")
            << gsm1 << QStringLiteral("PPPD Path=x")
            << QStringLiteral("The dialer would take the name PPPD Path=x for an option")
            << QStringList();
        QTest::newRow("name with a leading dash")
            << gsm1 << QStringLiteral("--config")
            << QStringLiteral("The dialer would take the name --config for an option")
            << QStringList();
        QTest::newRow("key with a leading dash")
            << QStringLiteral("--config") << gsm1
            << QStringLiteral("There are no modem config for --config") << QStringList{gsm1};
        QTest::newRow("no name") << gsm1 << QString() << QStringLiteral("Connection name is empty!")
                                 << QStringList();
    }
    void recordUnderAnotherKey()
    {
        QFETCH(QString, key);
        QFETCH(QString, name);
        QFETCH(QString, reason);
        QFETCH(QStringList, dialled);
        const FakeDialer dialer;
        ModemSettings().setModems({{key, modemOn(noPort, name)}});
        ModemSettings().setConnectionsOrder({key});
        Page page(dialer.program());
        page.press("cbDial");
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        QVERIFY2(page.text().contains(reason), qPrintable(page.text()));
        QVERIFY(page.isIdle());
        for (const QString &argument : qAsConst(dialled))
            QVERIFY(dialer.arguments().contains(argument));
        QCOMPARE(dialer.arguments().size(), dialled.size() * 2);
        QCOMPARE(
            m_service->commands, QStringList({QStringLiteral("stop"), QStringLiteral("restart")}));
    }

    void stopWhileTheServiceIsStoppingKillsStrayDialersOnly()
    {
        FakeDialer dialer("exit 0");
        m_service->isObedient = false;
        dialer.showProcesses("  42 ?  00:00:00 wvdial\n");
        Page page(dialer.program());
        page.press("cbDial");
        page.press("pbStop");
        QVERIFY(dialer.calls().contains(QStringLiteral("killall wvdial")));
        QVERIFY(!page.finishedSpy.wait(1500));
        QCOMPARE(dialer.arguments(), QStringList());
        // The test goes on when the service has stopped.
        m_service->isObedient = true;
        m_service->publish(FakeModemService::kStopped);
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        QCOMPARE(dialer.arguments().size(), 2);
    }

    void withoutABusTheDialGoesOnAtOnce()
    {
        const FakeDialer dialer("exit 0");
        m_service.reset();
        const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
        Page page(dialer.program());
        bool startedFirst = false;
        connect(&page, &TestDialWidget::finished, &page,
            [&page, &startedFirst] { startedFirst = page.startedSpy.count() == 1; });
        page.press("cbDial");
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        QVERIFY(startedFirst);
        QVERIFY(page.isIdle());
        QCOMPARE(dialer.arguments().size(), 2);
    }

    void withoutAModemServiceTheDialGoesOn()
    {
        const FakeDialer dialer("exit 0");
        m_service.reset();
        Page page(dialer.program());
        page.press("cbDial");
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        QVERIFY(page.isIdle());
        QCOMPARE(dialer.arguments().size(), 2);
    }

    void floodOfOutputKeepsTheEventLoopRunning()
    {
        const FakeDialer dialer(
            "i=0; while [ $i -lt 20000 ]; do echo \"--> Carrier lost, line $i\"; i=$((i+1)); done");
        Page page(dialer.program());
        page.press("cbDial");
        QTRY_VERIFY_WITH_TIMEOUT(page.text().contains(QStringLiteral("wvdial is started")), kLong);
        const StallWatch watch;
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, 60000);
        QTRY_COMPARE_WITH_TIMEOUT(
            page.text().count(QStringLiteral("Carrier lost, line ")), 20000, 60000);
        QVERIFY2(watch.longest() <= 100, qPrintable(QString::number(watch.longest())));
    }

    void pageThatIsGoneShowsNothing()
    {
        const FakeDialer dialer;
        auto page = std::make_unique<Page>(dialer.program());
        qCWarning(DIALUP, "seen");
        QVERIFY(page->text().contains(QStringLiteral("seen")));
        // The browser outlives the page here, to see what still reaches it.
        const std::unique_ptr<QTextBrowser> browser(page->log());
        browser->setParent(nullptr);
        page.reset();
        qCWarning(DIALUP, "later");
        QTest::qWait(0);
        QCOMPARE(browser->toPlainText(), QStringLiteral("seen"));
    }

    void textsFollowTheLanguage()
    {
        const FakeDialer dialer;
        const Page page(dialer.program());
        auto translator = std::make_unique<MarkTranslator>("TestDialWidget");
        QTRY_COMPARE(page.button("cbDial")->text(), QStringLiteral("xDial"));
        QCOMPARE(page.button("pbStop")->text(), QStringLiteral("xStop"));
        QCOMPARE(
            page.findChild<QLabel *>(QStringLiteral("label"))->text(), QStringLiteral("xModem"));
        QCOMPARE(page.windowTitle(), QStringLiteral("xForm"));
        translator.reset();
        QTRY_COMPARE(page.button("cbDial")->text(), QStringLiteral("Dial"));
    }

private:
    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<FakeModemService> m_service;
};

QTEST_MAIN(TestDialWidgetTest)
#include "tst_testdialwidget.moc"
