#include "dragout.h"
#include "marktranslator.h"
#include "modalbox.h"
#include "modemackwidget.h"
#include "modemswidget.h"
#include "savedrecord.h"
#include "searchwidget.h"
#include "testdialwidget.h"
#include "touchstyle.h"

#include "loggermanager.h"
#include "modemsettings.h"
#include "privatebus.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QListView>
#include <QPushButton>
#include <QStackedWidget>
#include <QTest>

#include <memory>

namespace {

ModemInfo modem(const QString &name)
{
    ModemInfo info;
    info.setConnectionName(name);
    info.setPortName(QStringLiteral("ttyUSB0"));
    return info;
}

void store(const QStringList &names)
{
    QMap<QString, ModemInfo> modems;
    for (const QString &name : names)
        modems.insert(name, modem(name));
    ModemSettings().setModems(modems);
    ModemSettings().setConnectionsOrder(names);
}

QStringList stored()
{
    return ModemSettings().connectionsOrder();
}

/// Saves a record that holds connections of these names under an owner.
void save(const QString &owner, const QStringList &names)
{
    const QVariantList before = ModemSettings().toSettingsList();
    store(names);
    tavbus::ClientSettings settings;
    settings.setOwner(owner);
    settings.setDt(QDateTime::currentDateTime());
    settings.setSettings(ModemSettings().toSettingsList());
    ModemSettings().setSettingsList(before);
    tavbus::TavBusQueryHandler handler(tavbus::BUSNAME_TESTDEALER);
    QVERIFY(handler.open());
    QVERIFY(handler.saveSettings(settings));
}

QPushButton *button(const QWidget &page, const char *name)
{
    return page.findChild<QPushButton *>(QLatin1String(name));
}

const QStringList theirs{QStringLiteral("theirs")};
const QStringList ours{QStringLiteral("ours")};
const std::initializer_list<const char *> buttonNames
    = {"pbDialPage", "pbAskPage", "pbSearchPage", "pbSaveSettings"};

/// Keeps the warnings of the default category while it lives.
class Warnings
{
public:
    Warnings()
    {
        LoggerManager::setOutputs(QStringLiteral("default"),
            [this](QtMsgType type, const QMessageLogContext &, const QString &text) {
                if (type == QtWarningMsg)
                    lines.append(text);
            });
    }
    ~Warnings() { LoggerManager::removeOutput(QStringLiteral("default")); }
    Warnings(const Warnings &) = delete;
    Warnings &operator=(const Warnings &) = delete;

    QStringList lines;
};

} // namespace

class ModemsWidgetTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setStyle(new TouchStyle); }
    void init()
    {
        m_bus = std::make_unique<PrivateBus>();
        store({});
    }
    void cleanup() { m_bus.reset(); }

    void form()
    {
        ModemsWidget page;
        page.show();
        QCOMPARE(page.windowTitle(), QStringLiteral("Form"));
        QCOMPARE(button(page, "pbDialPage")->text(), QStringLiteral("Dial test"));
        QCOMPARE(button(page, "pbAskPage")->text(), QStringLiteral("Ask modem"));
        QCOMPARE(button(page, "pbSearchPage")->text(), QStringLiteral("Settings"));
        QCOMPARE(button(page, "pbSaveSettings")->text(), QStringLiteral("Save settings"));
        for (const char *name : buttonNames) {
            QCOMPARE(button(page, name)->minimumSize(), QSize(80, 60));
            QCOMPARE(button(page, name)->font().pointSize(), 18);
        }
        QVERIFY(button(page, "pbDialPage")->isCheckable());
        QVERIFY(button(page, "pbAskPage")->isCheckable());
        QVERIFY(button(page, "pbSearchPage")->isCheckable());
        QVERIFY(!button(page, "pbSaveSettings")->isCheckable());
        QVERIFY(button(page, "pbDialPage")->isChecked());
        const auto *stack = page.findChild<QStackedWidget *>(QStringLiteral("stackedWidget"));
        QCOMPARE(stack->currentIndex(), 0);
        QCOMPARE(stack->widget(0)->objectName(), QStringLiteral("pageDial"));
        QVERIFY(qobject_cast<TestDialWidget *>(stack->widget(0)));
        QCOMPARE(stack->widget(1)->objectName(), QStringLiteral("pageAsk"));
        QVERIFY(qobject_cast<ModemAckWidget *>(stack->widget(1)));
        QCOMPARE(stack->widget(2)->objectName(), QStringLiteral("pageSearch"));
        QVERIFY(qobject_cast<SearchWidget *>(stack->widget(2)));
        QCOMPARE(stack->count(), 3);
        QVERIFY(stack->y() > button(page, "pbDialPage")->y());
        QVERIFY(!page.workIsStarted());
    }

    void pageButtonsAreAnExclusiveGroup()
    {
        const ModemsWidget page;
        const auto *group = page.findChild<QButtonGroup *>();
        QVERIFY(group);
        QVERIFY(group->exclusive());
        QCOMPARE(group->id(button(page, "pbDialPage")), 0);
        QCOMPARE(group->id(button(page, "pbAskPage")), 1);
        QCOMPARE(group->id(button(page, "pbSearchPage")), 2);
    }

    void pageButtonsShowTheirPages()
    {
        ModemsWidget page;
        page.show();
        const auto *const stack = page.findChild<QStackedWidget *>(QStringLiteral("stackedWidget"));
        const auto press = [&page](const char *name) {
            QVERIFY(button(page, name)->isVisible());
            QTest::mouseClick(button(page, name), Qt::LeftButton);
            QVERIFY(button(page, name)->isChecked());
        };
        press("pbSearchPage");
        QCOMPARE(stack->currentIndex(), 2);
        press("pbAskPage");
        QCOMPARE(stack->currentIndex(), 1);
        press("pbDialPage");
        QCOMPARE(stack->currentIndex(), 0);
        QVERIFY(!button(page, "pbAskPage")->isChecked());
        QVERIFY(!button(page, "pbSearchPage")->isChecked());
    }

    void withoutARecordTheSettingsPageListsNothing()
    {
        ModemsWidget page;
        page.show();
        QTest::mouseClick(button(page, "pbSearchPage"), Qt::LeftButton);
        const auto *list = page.findChild<QListView *>(QStringLiteral("listView"));
        QVERIFY(list->isVisible());
        QCOMPARE(list->model()->rowCount(), 0);
    }

    void loadedConnectionsAreOnEveryPage()
    {
        save(tavbus::BUSNAME_TAVMODEMS, theirs);
        ModemsWidget page;
        page.show();
        const auto listed = [](QWidget *where) {
            return where->findChild<QComboBox *>(QStringLiteral("cbModem"))->itemText(0);
        };
        QCOMPARE(listed(page.findChild<TestDialWidget *>()), theirs.first());
        QTest::mouseClick(button(page, "pbAskPage"), Qt::LeftButton);
        QCOMPARE(listed(page.findChild<ModemAckWidget *>()), theirs.first());
        QTest::mouseClick(button(page, "pbSearchPage"), Qt::LeftButton);
        const auto *list = page.findChild<QListView *>(QStringLiteral("listView"));
        QCOMPARE(list->model()->index(0, 0).data().toString(), theirs.first());
    }

    // The button lets go as soon as it is left, and that counts.
    void slidingOffTheSaveButtonSaves()
    {
        ModemsWidget page;
        page.show();
        dragOut(button(page, "pbSaveSettings"));
        QVERIFY(savedRecord(tavbus::BUSNAME_TAVMODEMS));
    }

    void withoutARecordTheStoreStaysEmpty()
    {
        const ModemsWidget page;
        QCOMPARE(stored(), QStringList());
        QVERIFY(ModemSettings().modems().isEmpty());
    }

    void ownRecordIsLoadedFirst()
    {
        save(tavbus::BUSNAME_TAVMODEMS, theirs);
        save(tavbus::BUSNAME_TESTDEALER, ours);
        const ModemsWidget page;
        QCOMPARE(stored(), ours);
    }

    void modemServicesRecordIsLoadedElse()
    {
        save(tavbus::BUSNAME_TAVMODEMS, theirs);
        const ModemsWidget page;
        QCOMPARE(stored(), theirs);
        QCOMPARE(
            ModemSettings().modems().value(theirs.first()).portName(), QStringLiteral("ttyUSB0"));
    }

    void withoutABusTheStoreIsLeftAsItIs()
    {
        store(ours);
        m_bus->stop();
        const Warnings log;
        const ModemsWidget page;
        QCOMPARE(stored(), ours);
        QCOMPARE(log.lines,
            QStringList{
                QStringLiteral("The modems settings are not loaded: the bus cannot be reached")});
        m_bus->start();
    }

    void withoutARecordTheStoreIsLeftAsItIs()
    {
        store(ours);
        const Warnings log;
        const ModemsWidget page;
        QCOMPARE(stored(), ours);
        QCOMPARE(log.lines, QStringList()); // nothing is wrong
    }

    void withoutABrokerTheLogTellsWhyTheListIsEmpty()
    {
        PrivateBus::Options options;
        options.withBroker = false;
        m_bus.reset();
        m_bus = std::make_unique<PrivateBus>(options);
        store(ours);
        const Warnings log;
        const ModemsWidget page;
        QCOMPARE(stored(), ours);
        QVERIFY2(!log.lines.isEmpty(), qPrintable(log.lines.join(QLatin1Char('\n'))));
    }

    void recordThatIsNoneOfOursChangesNothing()
    {
        store(ours);
        tavbus::ClientSettings settings;
        settings.setOwner(tavbus::BUSNAME_TESTDEALER);
        settings.setDt(QDateTime::currentDateTime());
        settings.setSettings({QStringLiteral("rubbish"), 42});
        tavbus::TavBusQueryHandler handler(tavbus::BUSNAME_TESTDEALER);
        QVERIFY(handler.open());
        QVERIFY(handler.saveSettings(settings));
        const Warnings log;
        const ModemsWidget page;
        QCOMPARE(stored(), ours);
        QCOMPARE(log.lines,
            QStringList{QStringLiteral("The modems settings of %1 are refused")
                            .arg(tavbus::BUSNAME_TESTDEALER)});
    }

    void saveGoesToTheModemServicesRecord()
    {
        ModemsWidget page;
        page.show();
        store(ours);
        const QDateTime before = QDateTime::currentDateTime();
        QTest::mousePress(button(page, "pbSaveSettings"), Qt::LeftButton);
        QVERIFY(!savedRecord(tavbus::BUSNAME_TAVMODEMS));
        QTest::mouseRelease(button(page, "pbSaveSettings"), Qt::LeftButton);
        const auto record = savedRecord(tavbus::BUSNAME_TAVMODEMS);
        QVERIFY(record);
        QCOMPARE(record->owner(), tavbus::BUSNAME_TAVMODEMS);
        QCOMPARE(record->description(), QStringLiteral("From test dealer"));
        QCOMPARE(record->settings(), ModemSettings().toSettingsList());
        QVERIFY(record->dt() >= before.addMSecs(-1));
        QVERIFY(record->dt() <= QDateTime::currentDateTime());
        QVERIFY(!savedRecord(tavbus::BUSNAME_TESTDEALER));
        QVERIFY(page.saveSettings());
    }

    void failedSaveShowsOneBoxAndKeepsTheStore()
    {
        ModemsWidget page;
        page.show();
        store(ours);
        m_bus->stop();
        ModalBoxes boxes({ModalBoxes::click(QMessageBox::Ok)});
        QVERIFY(!page.saveSettings());
        QCOMPARE(boxes.shown.size(), 1);
        QCOMPARE(boxes.shown.first().title, QStringLiteral("Settings saving error"));
        QCOMPARE(boxes.shown.first().text, QStringLiteral("Modems settings saving error"));
        QCOMPARE(boxes.shown.first().buttons, QStringList{QStringLiteral("OK")});
        QCOMPARE(boxes.shown.first().icon, QMessageBox::Critical);
        QVERIFY(boxes.shown.first().lowestButton >= 48);
        QCOMPARE(stored(), ours);
        // The bus is back: nothing was lost.
        m_bus->start();
        QVERIFY(page.saveSettings());
        QVERIFY(savedRecord(tavbus::BUSNAME_TAVMODEMS));
    }

    void workOfAnyPageHoldsTheButtons_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("dial test") << QStringLiteral("pageDial");
        QTest::newRow("query") << QStringLiteral("pageAsk");
        QTest::newRow("search") << QStringLiteral("pageSearch");
    }
    void workOfAnyPageHoldsTheButtons()
    {
        QFETCH(QString, name);
        ModemsWidget page;
        page.show();
        auto *const worker = page.findChild<QWidget *>(name);
        const auto emitSignal
            = [worker](const char *signal) { QVERIFY(QMetaObject::invokeMethod(worker, signal)); };
        emitSignal("started");
        QVERIFY(page.workIsStarted());
        for (const char *each : buttonNames)
            QVERIFY(!button(page, each)->isEnabled());
        // A second one changes nothing, and the first end is the end.
        emitSignal("started");
        QVERIFY(page.workIsStarted());
        emitSignal("finished");
        QVERIFY(!page.workIsStarted());
        for (const char *each : buttonNames)
            QVERIFY(button(page, each)->isEnabled());
    }

    void textsFollowTheLanguage()
    {
        const ModemsWidget page;
        auto translator = std::make_unique<MarkTranslator>("ModemsWidget");
        QTRY_COMPARE(button(page, "pbDialPage")->text(), QStringLiteral("xDial test"));
        QCOMPARE(button(page, "pbAskPage")->text(), QStringLiteral("xAsk modem"));
        QCOMPARE(button(page, "pbSearchPage")->text(), QStringLiteral("xSettings"));
        QCOMPARE(button(page, "pbSaveSettings")->text(), QStringLiteral("xSave settings"));
        translator.reset();
        QTRY_COMPARE(button(page, "pbDialPage")->text(), QStringLiteral("Dial test"));
    }

private:
    std::unique_ptr<PrivateBus> m_bus;
};

QTEST_MAIN(ModemsWidgetTest)
#include "tst_modemswidget.moc"
