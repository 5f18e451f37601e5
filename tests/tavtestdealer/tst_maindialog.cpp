#include "dragout.h"
#include "ethernetwidget.h"
#include "fakesudo.h"
#include "maindialog.h"
#include "marktranslator.h"
#include "modalbox.h"
#include "modemackwidget.h"
#include "modemswidget.h"
#include "savedrecord.h"
#include "storedmodems.h"
#include "terminalconf.h"
#include "testdialwidget.h"
#include "touchstyle.h"
#include "webserver.h"

#include "abstractworkerthread.h"
#include "privatebus.h"
#include "tavbusagent.h"
#include "tavbusqueryhandler.h"

#include <QButtonGroup>
#include <QCloseEvent>
#include <QLayout>
#include <QPushButton>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTest>
#include <QToolButton>

#include <atomic>
#include <memory>

namespace {

void storeModem(const QString &name)
{
    store({modemOn(QString(), name)});
}

QPushButton *button(const QWidget &dialog, const char *name)
{
    return dialog.findChild<QPushButton *>(QLatin1String(name));
}

QToolButton *indicator(const QWidget &dialog)
{
    return dialog.findChild<QToolButton *>(QStringLiteral("toolButton"));
}

QImage iconOf(const QToolButton *shown)
{
    return shown->icon().pixmap(32, 32).toImage();
}

QImage image(const QString &path)
{
    return QIcon(path).pixmap(32, 32).toImage();
}

bool isTesting(const QWidget &dialog)
{
    return dialog.findChild<AbstractWorkerThread *>()->isRunning();
}

} // namespace

class MainDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QApplication::setStyle(new TouchStyle);
        QApplication::setQuitOnLastWindowClosed(false);
    }
    void init()
    {
        m_bus = std::make_unique<PrivateBus>();
        storeModem(QStringLiteral("gsm1"));
    }
    void cleanup() { m_bus.reset(); }

    void form()
    {
        MainDialog dialog;
        dialog.show();
        QCOMPARE(dialog.objectName(), QStringLiteral("MainDialog"));
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Tav test dialer"));
        QCOMPARE(dialog.size(), QSize(800, 600));
        QCOMPARE(dialog.layout()->objectName(), QStringLiteral("verticalLayout"));
        QCOMPARE(dialog.layout()->spacing(), 3);
        QCOMPARE(dialog.layout()->contentsMargins(), QMargins(3, 3, 3, 3));
        const auto *stack = dialog.findChild<QStackedWidget *>(
            QStringLiteral("stackedWidget"), Qt::FindDirectChildrenOnly);
        QCOMPARE(stack->currentIndex(), 0);
        QCOMPARE(stack->widget(0)->objectName(), QStringLiteral("pageModems"));
        QVERIFY(qobject_cast<ModemsWidget *>(stack->widget(0)));
        QCOMPARE(stack->widget(1)->objectName(), QStringLiteral("pageEth"));
        QVERIFY(qobject_cast<EthernetWidget *>(stack->widget(1)));
        QCOMPARE(stack->count(), 2);
        const auto *row = dialog.layout()->findChild<QLayout *>(QStringLiteral("horizontalLayout"));
        QCOMPARE(row->spacing(), 6);
        QCOMPARE(row->indexOf(button(dialog, "pbModems")), 0);
        QCOMPARE(row->indexOf(button(dialog, "pbEth")), 1);
        QCOMPARE(row->indexOf(indicator(dialog)), 3);
        QCOMPARE(row->indexOf(button(dialog, "pbClose")), 5);
        QCOMPARE(button(dialog, "pbModems")->text(), QStringLiteral("Modems"));
        QCOMPARE(button(dialog, "pbEth")->text(), QStringLiteral("Local network"));
        QCOMPARE(button(dialog, "pbClose")->text(), QStringLiteral("Close"));
        for (const char *name : {"pbModems", "pbEth", "pbClose"}) {
            QCOMPARE(button(dialog, name)->minimumSize(), QSize(80, 60));
            QCOMPARE(button(dialog, name)->font().pointSize(), 18);
            QVERIFY(button(dialog, name)->isVisible());
        }
        QCOMPARE(indicator(dialog)->text(), QStringLiteral("..."));
        QCOMPARE(indicator(dialog)->iconSize(), QSize(32, 32));
        QVERIFY(indicator(dialog)->icon().isNull());
        QCOMPARE(indicator(dialog)->toolTip(), QString());
    }

    void sizeIsFixed()
    {
        MainDialog dialog;
        dialog.show();
        dialog.resize(1000, 900);
        QCOMPARE(dialog.size(), QSize(800, 600));
        dialog.resize(300, 200);
        QCOMPARE(dialog.size(), QSize(800, 600));
    }

    void pageButtonsAreAGroupThatActsOnRelease()
    {
        MainDialog dialog;
        dialog.show();
        const auto *group = dialog.findChild<QButtonGroup *>(QString(), Qt::FindDirectChildrenOnly);
        QVERIFY(group);
        QVERIFY(group->exclusive());
        QCOMPARE(group->id(button(dialog, "pbModems")), 0);
        QCOMPARE(group->id(button(dialog, "pbEth")), 1);
    }

    void releasedButtonShowsItsPage()
    {
        MainDialog dialog;
        dialog.show();
        auto *const modems = dialog.findChild<ModemsWidget *>();
        auto *const network = dialog.findChild<EthernetWidget *>();
        for (int round = 0; round < 2; ++round) {
            QTest::mousePress(button(dialog, "pbEth"), Qt::LeftButton);
            QVERIFY2(modems->isVisible(), "a press alone shows nothing");
            QTest::mouseRelease(button(dialog, "pbEth"), Qt::LeftButton);
            QVERIFY(network->isVisible());
            QVERIFY(!modems->isVisible());

            QTest::mousePress(button(dialog, "pbModems"), Qt::LeftButton);
            QVERIFY(network->isVisible());
            QTest::mouseRelease(button(dialog, "pbModems"), Qt::LeftButton);
            QVERIFY(modems->isVisible());
            QVERIFY(!network->isVisible());
        }
    }

    // The page is as high as the window leaves it: nothing is pressed together or cut off.
    void networkPageHasItsRoom()
    {
        MainDialog dialog;
        dialog.show();
        QTest::mouseClick(button(dialog, "pbEth"), Qt::LeftButton);
        const auto *network = dialog.findChild<EthernetWidget *>();
        QCOMPARE(dialog.size(), QSize(800, 600));
        QVERIFY(network->height() >= network->minimumSizeHint().height());
        QVERIFY(network->width() >= network->minimumSizeHint().width());
    }

    // Modem work locks the pages of the modems alone.
    void networkPageIsOpenDuringModemWork()
    {
        MainDialog dialog;
        dialog.show();
        emit dialog.findChild<TestDialWidget *>()->started();
        QTest::mouseClick(button(dialog, "pbEth"), Qt::LeftButton);
        QVERIFY(dialog.findChild<EthernetWidget *>()->isVisible());
    }

    // A button lets go as soon as it is left, and that counts.
    void slidingOffAButtonIsARelease()
    {
        MainDialog dialog;
        dialog.show();
        auto *const stack = dialog.findChild<QStackedWidget *>(
            QStringLiteral("stackedWidget"), Qt::FindDirectChildrenOnly);
        dragOut(button(dialog, "pbEth"));
        QCOMPARE(stack->currentIndex(), 1);
        dragOut(button(dialog, "pbModems"));
        QCOMPARE(stack->currentIndex(), 0);

        ModalBoxes boxes({ModalBoxes::click(QMessageBox::Cancel)});
        dragOut(button(dialog, "pbClose"));
        QCOMPARE(boxes.shown.size(), 1);
        QVERIFY(dialog.isVisible());
    }

    void indicatorFollowsEveryResult()
    {
        MainDialog dialog;
        QCOMPARE(QPixmap(QStringLiteral(":/greenled.png")).size(), QSize(64, 64));
        QCOMPARE(QPixmap(QStringLiteral(":/redled.png")).size(), QSize(64, 64));
        dialog.connectionTested(true);
        QCOMPARE(iconOf(indicator(dialog)), image(QStringLiteral(":/greenled.png")));
        QCOMPARE(indicator(dialog)->toolTip(), QStringLiteral("Connection on"));
        dialog.connectionTested(false);
        QCOMPARE(iconOf(indicator(dialog)), image(QStringLiteral(":/redled.png")));
        QCOMPARE(indicator(dialog)->toolTip(), QStringLiteral("Connection off"));
        dialog.connectionTested(true);
        QCOMPARE(indicator(dialog)->toolTip(), QStringLiteral("Connection on"));
        // Repeated results are applied like any other.
        indicator(dialog)->setToolTip(QString());
        dialog.connectionTested(true);
        QCOMPARE(indicator(dialog)->toolTip(), QStringLiteral("Connection on"));
    }

    void checkerReportsToTheIndicator()
    {
        WebServer page;
        const TerminalConf conf(QStringLiteral("\n[internet]\nmakerPage=%1\npublicPage=%1\n")
                                    .arg(page.url().toString()));
        MainDialog dialog;
        dialog.show();
        QTRY_COMPARE_WITH_TIMEOUT(
            indicator(dialog)->toolTip(), QStringLiteral("Connection on"), 30000);
    }

    void deadPagesTurnTheIndicatorOff()
    {
        MainDialog dialog; // the pages of the sandbox are dead ones
        dialog.show();
        QTRY_COMPARE_WITH_TIMEOUT(
            indicator(dialog)->toolTip(), QStringLiteral("Connection off"), 30000);
    }

    void closeIsRefusedWhileWorkRuns()
    {
        MainDialog dialog;
        dialog.show();
        emit dialog.findChild<TestDialWidget *>()->started();
        QVERIFY(!dialog.close());
        button(dialog, "pbClose")->click();
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QVERIFY(dialog.isVisible());
        QVERIFY(dialog.isEnabled());
        QVERIFY(isTesting(dialog));
        QVERIFY(!savedRecord(tavbus::BUSNAME_TESTDEALER));
    }

    // Half of it would leave the terminal without its network.
    void networkSettingsAreAppliedToTheirEnd_data()
    {
        QTest::addColumn<bool>("saveFails");
        QTest::newRow("closed with No") << false;
        QTest::newRow("closed with a Save that fails") << true;
    }
    void networkSettingsAreAppliedToTheirEnd()
    {
        QFETCH(bool, saveFails);
        const FakeSudo sudo;
        MainDialog dialog;
        dialog.show();
        const auto save = [this](QMessageBox *box) {
            m_bus->stop();
            box->button(QMessageBox::Save)->click();
        };
        const ModalBoxes boxes({ModalBoxes::click(QMessageBox::Yes),
            saveFails ? ModalBoxes::Answer(save) : ModalBoxes::click(QMessageBox::No),
            ModalBoxes::click(QMessageBox::Ok)});
        dialog.findChild<EthernetWidget *>()->apply();
        QTRY_VERIFY(!sudo.calls().isEmpty());
        dialog.close();
        QVERIFY(!dialog.isVisible());
        QCOMPARE(sudo.calls().last(), QStringLiteral("[service][networking][restart]"));
    }

    void everyWayOfClosingAsks_data()
    {
        QTest::addColumn<QString>("way");
        QTest::newRow("Close button") << QStringLiteral("button");
        QTest::newRow("window control") << QStringLiteral("window");
        QTest::newRow("Escape") << QStringLiteral("escape");
    }
    void everyWayOfClosingAsks()
    {
        QFETCH(QString, way);
        MainDialog dialog;
        dialog.show();
        ModalBoxes boxes({ModalBoxes::click(QMessageBox::Cancel)});
        if (way == QLatin1String("button"))
            QTest::mouseClick(button(dialog, "pbClose"), Qt::LeftButton);
        else if (way == QLatin1String("window"))
            dialog.close();
        else
            QTest::keyClick(&dialog, Qt::Key_Escape);
        QCOMPARE(boxes.shown.size(), 1);
        QVERIFY(dialog.isVisible());
    }

    void questionShowsThreeButtonsAndNoDefault()
    {
        MainDialog dialog;
        dialog.show();
        bool wasDisabled = false;
        bool wasStopped = false;
        ModalBoxes boxes({[&](QMessageBox *box) {
            wasDisabled = !dialog.isEnabled();
            wasStopped = !isTesting(dialog);
            box->button(QMessageBox::Cancel)->click();
        }});
        dialog.close();
        QCOMPARE(boxes.shown.size(), 1);
        const ModalBoxes::Shown &box = boxes.shown.first();
        QCOMPARE(box.title, QStringLiteral("Test dealer closing"));
        QCOMPARE(box.text, QStringLiteral("Save modems settings?"));
        QCOMPARE(box.buttons,
            QStringList({QStringLiteral("Save"), QStringLiteral("No"), QStringLiteral("Cancel")}));
        QVERIFY(!box.hasDefault);
        QCOMPARE(box.icon, QMessageBox::Question);
        QCOMPARE(box.parent, &dialog);
        QVERIFY(box.lowestButton >= 48);
        QVERIFY(wasDisabled);
        QVERIFY(wasStopped);
    }

    // Without a window manager nothing else sets the question off from the window below.
    void questionHasAnEdge()
    {
        MainDialog dialog;
        dialog.show();
        QImage shown;
        ModalBoxes boxes({[&](QMessageBox *box) {
            shown = box->grab().toImage();
            box->button(QMessageBox::Cancel)->click();
        }});
        dialog.close();
        const QColor edge = dialog.palette().color(QPalette::Active, QPalette::Highlight);
        QCOMPARE(shown.pixelColor(0, shown.height() / 2), edge);
        QCOMPARE(shown.pixelColor(shown.width() - 1, shown.height() / 2), edge);
        QCOMPARE(shown.pixelColor(shown.width() / 2, 0), edge);
        QCOMPARE(shown.pixelColor(shown.width() / 2, shown.height() - 1), edge);
    }

    void storeIsSentBeforeTheQuestion()
    {
        MainDialog dialog;
        dialog.show();
        storeModem(QStringLiteral("edited"));
        std::unique_ptr<tavbus::ClientSettings> record;
        const QDateTime before = QDateTime::currentDateTime();
        ModalBoxes boxes({[&](QMessageBox *box) {
            record = savedRecord(tavbus::BUSNAME_TESTDEALER);
            box->button(QMessageBox::Cancel)->click();
        }});
        dialog.close();
        QVERIFY(record);
        QCOMPARE(record->owner(), tavbus::BUSNAME_TESTDEALER);
        QCOMPARE(record->description(), QStringLiteral("From test dealer"));
        QCOMPARE(record->settings(), ModemSettings().toSettingsList());
        QVERIFY(record->dt() >= before.addMSecs(-1));
        QVERIFY(record->dt() <= QDateTime::currentDateTime());
    }

    void checkerStopsBeforeTheStoreIsSent()
    {
        // Nothing is captured: the thread sanitizer does not see that Qt hands the slot over in
        // order.
        static std::atomic<qint64> stopped;
        stopped = 0;
        MainDialog dialog;
        dialog.show();
        const auto *const thread = dialog.findChild<AbstractWorkerThread *>();
        connect(
            thread, &QThread::finished, thread,
            [] { stopped = QDateTime::currentMSecsSinceEpoch(); }, Qt::DirectConnection);
        ModalBoxes boxes({ModalBoxes::click(QMessageBox::Cancel)});
        dialog.close();
        QVERIFY(stopped > 0);
        const auto record = savedRecord(tavbus::BUSNAME_TESTDEALER);
        QVERIFY(record);
        QVERIFY(record->dt().toMSecsSinceEpoch() >= stopped);
    }

    void cancelKeepsItOpenWithoutTheChecker_data()
    {
        QTest::addColumn<bool>("byEscape");
        QTest::newRow("Cancel") << false;
        QTest::newRow("Escape in the box") << true;
    }
    void cancelKeepsItOpenWithoutTheChecker()
    {
        QFETCH(bool, byEscape);
        MainDialog dialog;
        dialog.show();
        dialog.connectionTested(true);
        ModalBoxes boxes({[byEscape](QMessageBox *box) {
                              if (byEscape)
                                  QTest::keyClick(box, Qt::Key_Escape);
                              else
                                  box->button(QMessageBox::Cancel)->click();
                          },
            ModalBoxes::click(QMessageBox::No)});
        QVERIFY(!dialog.close());
        QVERIFY(dialog.isVisible());
        QVERIFY(dialog.isEnabled());
        QVERIFY(!isTesting(dialog));
        QVERIFY(!savedRecord(tavbus::BUSNAME_TAVMODEMS));
        // It can be closed later on, without the thread.
        QVERIFY(dialog.close());
        QCOMPARE(boxes.shown.size(), 2);
    }

    void saveSavesAndCloses()
    {
        MainDialog dialog;
        QSignalSpy rejected(&dialog, &QDialog::rejected);
        dialog.show();
        ModalBoxes boxes({ModalBoxes::click(QMessageBox::Save)});
        QVERIFY(dialog.close());
        QVERIFY(!dialog.isVisible());
        QCOMPARE(rejected.count(), 1); // the base class has closed it
        const auto record = savedRecord(tavbus::BUSNAME_TAVMODEMS);
        QVERIFY(record);
        QCOMPARE(record->settings(), ModemSettings().toSettingsList());
    }

    void noClosesWithoutSaving()
    {
        MainDialog dialog;
        QSignalSpy rejected(&dialog, &QDialog::rejected);
        dialog.show();
        ModalBoxes boxes({ModalBoxes::click(QMessageBox::No)});
        QVERIFY(dialog.close());
        QVERIFY(!dialog.isVisible());
        QCOMPARE(rejected.count(), 1);
        QVERIFY(!savedRecord(tavbus::BUSNAME_TAVMODEMS));
        QVERIFY(savedRecord(tavbus::BUSNAME_TESTDEALER));
    }

    void failedSaveClosesAllTheSame()
    {
        MainDialog dialog;
        QSignalSpy rejected(&dialog, &QDialog::rejected);
        dialog.show();
        // The bus goes while the question is asked: the page tells, and the window closes as it is.
        ModalBoxes boxes({[this](QMessageBox *box) {
                              m_bus->stop();
                              box->button(QMessageBox::Save)->click();
                          },
            ModalBoxes::click(QMessageBox::Ok)});
        QVERIFY(dialog.close());
        QCOMPARE(boxes.shown.size(), 2);
        QCOMPARE(boxes.shown.last().text, QStringLiteral("Modems settings saving error"));
        QVERIFY(!dialog.isVisible());
        QVERIFY(!dialog.isEnabled());
        QCOMPARE(rejected.count(), 0); // not by the base class
    }

    void serviceThatMayStayStoppedIsToldAgain_data()
    {
        QTest::addColumn<bool>("isRefused");
        QTest::newRow("closed without saving") << false;
        QTest::newRow("save refused") << true;
    }
    void serviceThatMayStayStoppedIsToldAgain()
    {
        QFETCH(bool, isRefused);
        tavbus::TavBusAgent service(tavbus::BUSNAME_TAVMODEMS); // does not tell how it is
        QVERIFY(service.open());
        QStringList commands;
        connect(&service, &tavbus::TavBusAgent::commandReceived, this,
            [&commands](const TavBusCommand &command) { commands << command.name(); });
        MainDialog dialog;
        dialog.show();
        auto *const page = dialog.findChild<ModemAckWidget *>();
        QSignalSpy finished(page, &ModemAckWidget::finished);
        page->start();
        QVERIFY(finished.wait(30000));
        QCOMPARE(commands, QStringList(QStringLiteral("stop")));

        QVector<ModalBoxes::Answer> answers{ModalBoxes::click(QMessageBox::No)};
        if (isRefused)
            answers = {[](QMessageBox *box) {
                           storeModem(QString(1024 * 1024, QLatin1Char('x'))); // no broker takes it
                           box->button(QMessageBox::Save)->click();
                       },
                ModalBoxes::click(QMessageBox::Ok)};
        ModalBoxes boxes(answers);
        QVERIFY(dialog.close());
        QCOMPARE(boxes.shown.size(), answers.size());
        QTRY_COMPARE(commands, QStringList({QStringLiteral("stop"), QStringLiteral("restart")}));
    }

    void deadBusLeavesOneAnswer_data()
    {
        QTest::addColumn<bool>("byEscape");
        QTest::newRow("Yes") << false;
        QTest::newRow("Escape") << true;
    }
    void deadBusLeavesOneAnswer()
    {
        QFETCH(bool, byEscape);
        MainDialog dialog;
        QSignalSpy rejected(&dialog, &QDialog::rejected);
        dialog.show();
        m_bus->stop();
        bool wasDisabled = false;
        bool wasStopped = false;
        ModalBoxes boxes({[&](QMessageBox *box) {
            wasDisabled = !dialog.isEnabled();
            wasStopped = !isTesting(dialog);
            if (byEscape)
                QTest::keyClick(box, Qt::Key_Escape);
            else
                box->button(QMessageBox::Yes)->click();
        }});
        QVERIFY(dialog.close());
        QCOMPARE(boxes.shown.size(), 1);
        const ModalBoxes::Shown &box = boxes.shown.first();
        QCOMPARE(box.title, QStringLiteral("Settings saving error"));
        QCOMPARE(box.text, QStringLiteral("Modems settings saving error. Continue exit?"));
        QCOMPARE(box.buttons, QStringList{QStringLiteral("Yes")});
        QVERIFY(wasDisabled);
        QVERIFY(wasStopped);
        QCOMPARE(box.parent, &dialog);
        QVERIFY(box.lowestButton >= 48);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(rejected.count(), 1);
    }

    void deadBrokerIsTheSame()
    {
        PrivateBus::Options options;
        options.withBroker = false;
        m_bus.reset();
        m_bus = std::make_unique<PrivateBus>(options);
        MainDialog dialog;
        dialog.show();
        ModalBoxes boxes({ModalBoxes::click(QMessageBox::Yes)});
        QVERIFY(dialog.close());
        QCOMPARE(boxes.shown.first().title, QStringLiteral("Settings saving error"));
    }

    void secondRequestDuringTheCloseIsIgnored()
    {
        MainDialog dialog;
        dialog.show();
        bool closedWithin = true;
        ModalBoxes boxes({[&](QMessageBox *box) {
            QCloseEvent request;
            QCoreApplication::sendEvent(&dialog, &request);
            closedWithin = request.isAccepted();
            dialog.reject();
            box->button(QMessageBox::Cancel)->click();
        }});
        dialog.close();
        QCOMPARE(boxes.shown.size(), 1);
        QVERIFY(!closedWithin);
        QVERIFY(dialog.isVisible());
        QVERIFY(dialog.isEnabled());
    }

    void nothingIsLeftOfTheBusClient()
    {
        MainDialog dialog;
        dialog.show();
        ModalBoxes boxes({ModalBoxes::click(QMessageBox::Cancel)});
        dialog.close();
        QVERIFY(
            !dialog.findChild<tavbus::TavBusQueryHandler *>(QString(), Qt::FindDirectChildrenOnly));
    }

    void closingEndsRequestsThatAreOut()
    {
        WebServer silent;
        silent.hold();
        const TerminalConf conf(QStringLiteral("\n[internet]\nmakerPage=%1\npublicPage=%1\n")
                                    .arg(silent.url().toString()));
        MainDialog dialog;
        dialog.show();
        QTRY_COMPARE_WITH_TIMEOUT(silent.requests(), 2, 30000);
        ModalBoxes boxes({ModalBoxes::click(QMessageBox::No)});
        QVERIFY(dialog.close());
        QVERIFY(!isTesting(dialog));
    }

    void settingsAreThePages()
    {
        MainDialog dialog;
        QVERIFY(dialog.saveSettings());
        QVERIFY(savedRecord(tavbus::BUSNAME_TAVMODEMS));
        storeModem(QStringLiteral("other"));
        dialog.loadSettings();
        QCOMPARE(ModemSettings().connectionsOrder(), QStringList{QStringLiteral("gsm1")});
    }

    void textsFollowTheLanguage()
    {
        MainDialog dialog;
        auto translator = std::make_unique<MarkTranslator>("MainDialog");
        QTRY_COMPARE(dialog.windowTitle(), QStringLiteral("xTav test dialer"));
        QCOMPARE(button(dialog, "pbModems")->text(), QStringLiteral("xModems"));
        QCOMPARE(button(dialog, "pbEth")->text(), QStringLiteral("xLocal network"));
        QCOMPARE(button(dialog, "pbClose")->text(), QStringLiteral("xClose"));
        QCOMPARE(indicator(dialog)->text(), QStringLiteral("x..."));
        const MarkTranslator network("EthernetWidget");
        QTRY_COMPARE(button(dialog, "pbApply")->text(), QStringLiteral("xApply"));
        dialog.connectionTested(true);
        QCOMPARE(indicator(dialog)->toolTip(), QStringLiteral("xConnection on"));
        translator.reset();
        QEvent change(QEvent::LanguageChange);
        QCoreApplication::sendEvent(&dialog, &change); // before the checker tells
        QCOMPARE(indicator(dialog)->toolTip(), QStringLiteral("Connection on"));
        translator = std::make_unique<MarkTranslator>("MainDialog");
        dialog.show();
        ModalBoxes boxes({ModalBoxes::click(QMessageBox::Cancel)});
        dialog.close();
        QCOMPARE(boxes.shown.first().title, QStringLiteral("xTest dealer closing"));
        QCOMPARE(boxes.shown.first().text, QStringLiteral("xSave modems settings?"));
        QCOMPARE(savedRecord(tavbus::BUSNAME_TESTDEALER)->description(),
            QStringLiteral("xFrom test dealer"));
    }

private:
    std::unique_ptr<PrivateBus> m_bus;
};

QTEST_MAIN(MainDialogTest)
#include "tst_maindialog.moc"
