#include "dragout.h"
#include "searchbench.h"
#include "storedmodems.h"
#include "touchstyle.h"

#include "loggermanager.h"
#include "privatebus.h"

#include <QApplication>
#include <QDir>

namespace {

constexpr int kLong = 30000; // ms; polls of a second and a search fit in many times
const QByteArray imeiA = "353142033840706";
const QByteArray imeiB = "866884040012345";
const QString old = QStringLiteral("old");

} // namespace

/// A search from its button on: services of a bus, modems on pseudo-terminals.
class ModemSearchTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QApplication::setStyle(new TouchStyle);
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
        store({modemOn(QString(), old)});
        m_terminal = std::make_unique<FakeTerminal>();
        m_terminal->publishRunning();
    }
    void cleanup() { m_terminal.reset(); }

    void searchListsWhatItFindsInPlaceOfWhatWasKnown()
    {
        SearchBench bench;
        for (const QByteArray &imei : {imeiA, imeiB})
            bench.add(imei).start();
        QTest::mousePress(bench.button("tbSearch"), Qt::LeftButton);
        QCOMPARE(bench.started.count(), 0); // it acts when it is let go
        QTest::mouseRelease(bench.button("tbSearch"), Qt::LeftButton);
        QCOMPARE(bench.started.count(), 1);
        QCOMPARE(bench.names(), QStringList());
        QVERIFY(!bench.button("tbSearch")->isEnabled());
        QVERIFY(!bench.list()->isEnabled());
        QTRY_COMPARE_WITH_TIMEOUT(bench.finished.count(), 1, kLong);
        QVERIFY(bench.isIdle());
        QCOMPARE(bench.names().size(), 2);
        QVERIFY(bench.names().first() < bench.names().last());
        QCOMPARE(ModemSettings().connectionsOrder(), bench.names());
        const QMap<QString, ModemInfo> modems = ModemSettings().modems();
        QCOMPARE(modems.keys(), bench.names());
        QStringList ports;
        for (const ModemInfo &modem : modems)
            ports.append(modem.portName());
        ports.sort();
        QStringList expected{bench.modems[0]->path(), bench.modems[1]->path()};
        expected.sort();
        QCOMPARE(ports, expected);
    }

    void servicesAreStoppedBeforeAndStartedAfter()
    {
        SearchBench bench;
        bench.add(imeiA).start();
        bench.press("tbSearch");
        QTRY_COMPARE_WITH_TIMEOUT(bench.finished.count(), 1, kLong);
        const QStringList stopAndRestart{QStringLiteral("stop"), QStringLiteral("restart")};
        QCOMPARE(m_terminal->modems.commands(), stopAndRestart);
        QCOMPARE(m_terminal->watchdogs.commands(), stopAndRestart);
        QCOMPARE(m_terminal->printers.commands(), stopAndRestart);
        QCOMPARE(m_terminal->acceptors.commands(),
            QStringList({QStringLiteral("disable"), QStringLiteral("enable")}));
        QCOMPARE(m_terminal->gui.commands(), QStringList{QStringLiteral("runTouch")});
    }

    void noPortIsTouchedBeforeTheServicesHaveStopped()
    {
        SearchBench bench;
        const ScriptedModem &modem = [&bench]() -> ScriptedModem & {
            ScriptedModem &added = bench.add(imeiA);
            added.start();
            return added;
        }();
        m_terminal->makeDeaf();
        bench.press("tbSearch");
        QVERIFY(!bench.finished.wait(2500)); // it has looked twice by then
        QVERIFY(!bench.finder->isRunning());
        QVERIFY(modem.commands().isEmpty());
        QSignalSpy found(bench.finder, &ModemsFinder::finished);
        m_terminal->publishStopped();
        QVERIFY(found.wait(kLong));
        QCOMPARE(bench.finished.count(), 0); // not before the services are back
        m_terminal->publishRunning();
        QTRY_COMPARE_WITH_TIMEOUT(bench.finished.count(), 1, kLong);
        QVERIFY(!modem.commands().isEmpty());
    }

    void nothingFoundIsToldAndTheServicesComeBack()
    {
        SearchBench bench;
        bench.add(imeiA).silent = true;
        bench.modems.front()->start();
        int commandsAtBox = -1;
        ModalBoxes boxes({[this, &commandsAtBox](QMessageBox *box) {
            commandsAtBox = m_terminal->modems.commands().size();
            box->button(QMessageBox::Ok)->click();
        }});
        bench.press("tbSearch");
        QTRY_COMPARE_WITH_TIMEOUT(bench.finished.count(), 1, kLong);
        QCOMPARE(boxes.shown.size(), 1);
        QCOMPARE(boxes.shown.first().title, QStringLiteral("No modems"));
        QVERIFY(!boxes.shown.first().text.isEmpty());
        QCOMPARE(commandsAtBox, 1); // stopped, not started yet
        QCOMPARE(m_terminal->modems.commands().last(), QStringLiteral("restart"));
        QVERIFY(bench.isIdle());
        QCOMPARE(bench.names(), QStringList());
        QVERIFY(ModemSettings().modems().isEmpty());
        QCOMPARE(ModemSettings().connectionsOrder(), QStringList{old});
    }

    // Stopping is asked for first: without a bus it is over before the page says that it works.
    void withoutABusTheSearchRunsAtOnce()
    {
        m_terminal.reset();
        const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
        SearchBench bench;
        bench.add(imeiA).start();
        bool ranAtStarted = false;
        QObject::connect(bench.page.get(), &SearchWidget::started, bench.page.get(),
            [&] { ranAtStarted = bench.finder->isRunning(); });
        bench.press("tbSearch");
        QVERIFY(ranAtStarted);
        QTRY_COMPARE_WITH_TIMEOUT(bench.finished.count(), 1, kLong);
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        QVERIFY(bench.isIdle());
        QCOMPARE(bench.names().size(), 1);
    }

    void withoutABusAndAPortTheSearchEndsIdle()
    {
        m_terminal.reset();
        const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
        SearchBench bench;
        ModalBoxes boxes({ModalBoxes::click(QMessageBox::Ok)});
        bench.press("tbSearch");
        QTRY_COMPARE_WITH_TIMEOUT(bench.finished.count(), 1, kLong);
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        QCOMPARE(bench.started.count(), 1);
        QVERIFY(bench.isIdle());
        QCOMPARE(boxes.shown.size(), 1);
    }

    void afterASearchARowCanBeChosenAndSearchedForAgain()
    {
        SearchBench bench;
        bench.add(imeiA).start();
        for (int i = 1; i <= 2; ++i) {
            bench.press("tbSearch");
            QTRY_COMPARE_WITH_TIMEOUT(bench.finished.count(), i, kLong);
            QVERIFY(!bench.button("tbRemove")->isEnabled());
            QTest::mouseClick(bench.list()->viewport(), Qt::LeftButton, Qt::NoModifier,
                bench.list()->visualRect(bench.list()->model()->index(0, 0)).center());
            QVERIFY(bench.button("tbRemove")->isEnabled());
        }
    }

    void slidingOffTheButtonSearches()
    {
        SearchBench bench;
        bench.add(imeiA).start();
        dragOut(bench.button("tbSearch"));
        QCOMPARE(bench.started.count(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(bench.finished.count(), 1, kLong);
    }

    void pageThatGoesInTheMiddleOfASearchTakesItAlong()
    {
        SearchBench bench;
        bench.add(imeiA).silent = true;
        bench.modems.front()->start();
        bench.press("tbSearch");
        QTRY_VERIFY_WITH_TIMEOUT(bench.finder->isRunning(), kLong);
        bench.page.reset();
        QCOMPARE(bench.finished.count(), 0);
        QCOMPARE(ModemSettings().connectionsOrder(), QStringList{old});
    }

private:
    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<FakeTerminal> m_terminal;
};

QTEST_MAIN(ModemSearchTest)
#include "tst_modemsearch.moc"
