#include "modalbox.h"
#include "savedrecord.h"
#include "settingspage.h"
#include "terminal.h"

#include "initconfig.h"
#include "loggermanager.h"
#include "modemswidget.h"
#include "runtimeenvironment.h"
#include "servicescontroller.h"

#include <QApplication>
#include <QProcess>
#include <QSerialPortInfo>

#include <cstdio>
#include <memory>

// The technician's work in a terminal: search, edit, save, close, and start the tool again.

namespace {

constexpr int kLong = 60000; // ms

/// The main dialog on its Settings page.
class Tool
{
public:
    Tool()
        : page(dialog.findChild<SearchWidget *>())
    {
        dialog.show();
        press("pbSearchPage");
    }

    QPushButton *button(const char *name) const
    {
        return dialog.findChild<QPushButton *>(QLatin1String(name));
    }
    void press(const char *name) { QTest::mouseClick(button(name), Qt::LeftButton); }

    MainDialog dialog;
    SettingsPage page;
};

/// All that the Settings page shows, a line for each field.
QStringList shownOn(SettingsPage &page)
{
    QStringList lines{QStringLiteral("list: ") + page.names().join(QLatin1Char(' '))};
    for (int row = 0; row < page.names().size(); ++row) {
        page.select(row);
        for (const char *name :
            {"leName", "leUser", "lePassword", "leDialCmd", "leISDN", "leModemType"})
            lines.append(QLatin1String(name) + QStringLiteral(": ") + page.line(name)->text());
        for (const char *name : {"cbNewPppd", "cbStupidMode"})
            lines.append(QLatin1String(name)
                + (page.box(name)->isChecked() ? QStringLiteral(": on") : QStringLiteral(": off")));
        lines.append(QStringLiteral("cbPort: ") + page.port()->currentText());
        lines.append(QStringLiteral("cbBaudrate: ") + page.baudrate()->currentText());
        for (const char *tab : {"tabPhones", "tabAPN"})
            lines.append(QLatin1String(tab) + QStringLiteral(": ")
                + page.editor(tab)->strings().join(QLatin1Char('|')));
    }
    return lines;
}

/// Starts the tool in a process of its own and tells what its Settings page shows.
QStringList shownAfterRestart()
{
    QProcess tool;
    tool.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    tool.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--show")});
    if (!tool.waitForFinished(kLong) || tool.exitCode() != 0)
        return {QStringLiteral("the second process ended with %1").arg(tool.exitCode())};
    return QString::fromUtf8(tool.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

int showInThisProcess()
{
    Tool tool;
    const QStringList lines = shownOn(tool.page);
    for (const QString &line : lines)
        std::printf("%s\n", qUtf8Printable(line));
    return 0;
}

} // namespace

class SettingsRoundTripTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        LoggerManager::initLog(InitConfig().loggerPath(), 2, false, QtDebugMsg);
        m_terminal = std::make_unique<Terminal>();
        QVERIFY(m_terminal->isValid());
        m_theirs = savedSettings(tavbus::BUSNAME_TAVMODEMS);
        QVERIFY(!m_theirs.isEmpty());
    }
    void cleanupTestCase()
    {
        m_terminal.reset();
        LoggerManager::releaseLog();
    }
    void init()
    {
        m_terminal->restore();
        QTRY_VERIFY(QFile::exists(QStringLiteral("/dev/ttyUSB0")));
        QTRY_VERIFY(!QSerialPortInfo(QStringLiteral("ttyUSB0")).isNull());
        restoreRecords();
    }

    void portsAreThoseOfTheTerminalAndTheModemsMakerCounts()
    {
        Tool tool;
        tool.page.select(0);
        const QStringList ports = portsOf(tool.page);
        QVERIFY2(
            ports.contains(QStringLiteral("ttyUSB0")), qPrintable(ports.join(QLatin1Char(' '))));
        QCOMPARE(tool.page.port()->currentText(), QStringLiteral("ttyUSB0"));
        QVERIFY(tool.page.modemOnly()->isEnabled()); // made by huawei
    }

    void portListFollowsThePlug()
    {
        Tool tool;
        tool.page.select(0);
        QVERIFY(portsOf(tool.page).contains(QStringLiteral("ttyUSB0")));
        m_terminal->unplug(QStringLiteral("gsm1")).waitForFinished();
        QTRY_VERIFY(!QFile::exists(QStringLiteral("/dev/ttyUSB0")));
        tool.page.select(0);
        QVERIFY(!portsOf(tool.page).contains(QStringLiteral("ttyUSB0")));
        QCOMPARE(tool.page.port()->currentIndex(), -1);
        QVERIFY(!tool.page.modemOnly()->isEnabled());
    }

    void searchedEditedSavedAndBackAfterARestart()
    {
        QStringList edited;
        QVariantList store;
        {
            Tool tool;
            QSignalSpy finished(tool.dialog.findChild<SearchWidget *>(), &SearchWidget::finished);
            tool.page.press("tbSearch");
            QVERIFY(tool.dialog.findChild<ModemsWidget *>()->workIsStarted());
            for (const char *name : {"pbDialPage", "pbAskPage", "pbSearchPage", "pbSaveSettings"})
                QVERIFY(!tool.button(name)->isEnabled());
            // Closing is refused meanwhile, without a word.
            tool.press("pbClose");
            QVERIFY(tool.dialog.isVisible());
            QVERIFY(tool.dialog.isEnabled());
            QVERIFY(finished.wait(kLong));
            for (const char *name : {"pbDialPage", "pbAskPage", "pbSearchPage", "pbSaveSettings"})
                QVERIFY(tool.button(name)->isEnabled());
            QCOMPARE(tool.page.names().size(), 1);

            editEverything(tool.page);
            edited = shownOn(tool.page);
            store = ModemSettings().toSettingsList();
            QVERIFY(savedSettings(tavbus::BUSNAME_TAVMODEMS) != store);
            tool.press("pbSaveSettings");
            QCOMPARE(savedSettings(tavbus::BUSNAME_TAVMODEMS), store);
        }
        for (const char *part :
            {"leUser: петя & co", "lePassword: p@ss \"word\"", "leDialCmd: ATDP", "leISDN: 42",
                "leModemType: USB Modem", "cbNewPppd: off", "cbStupidMode: off", "cbPort: ttyUSB1",
                "cbBaudrate: 9600", "tabPhones: *99***1#|p1|p2|p3", "tabAPN: AT&F|ATX3"})
            QVERIFY2(edited.contains(QString::fromUtf8(part)),
                qPrintable(edited.join(QLatin1Char('\n'))));
        QCOMPARE(shownAfterRestart(), edited);
        // A fresh store and fresh windows in this process see the same.
        ModemSettings().setSettingsList({});
        Tool again;
        QCOMPARE(shownOn(again.page), edited);
        QCOMPARE(ModemSettings().toSettingsList(), store);
    }

    void closeWithEdits_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("closes");
        QTest::addColumn<bool>("isSavedForTheService");
        QTest::newRow("Save") << int(QMessageBox::Save) << true << true;
        QTest::newRow("No") << int(QMessageBox::No) << true << false;
        QTest::newRow("Cancel") << int(QMessageBox::Cancel) << false << false;
    }
    void closeWithEdits()
    {
        QFETCH(int, answer);
        QFETCH(bool, closes);
        QFETCH(bool, isSavedForTheService);
        Tool tool;
        tool.page.select(0);
        tool.page.type(tool.page.line("leUser"), QStringLiteral("edited"));
        const QVariantList store = ModemSettings().toSettingsList();
        const QStringList shown = shownOn(tool.page);
        QVariantList ownAtTheQuestion;
        ModalBoxes boxes({[&](QMessageBox *box) {
            ownAtTheQuestion = savedSettings(tavbus::BUSNAME_TESTDEALER);
            box->button(static_cast<QMessageBox::StandardButton>(answer))->click();
        }});
        tool.press("pbClose");
        QCOMPARE(boxes.shown.size(), 1);
        QCOMPARE(boxes.shown.first().text, QStringLiteral("Save modems settings?"));
        QCOMPARE(ownAtTheQuestion, store); // sent before it asks
        QCOMPARE(tool.dialog.isVisible(), !closes);
        QCOMPARE(tool.dialog.isEnabled(), !closes);
        QCOMPARE(savedSettings(tavbus::BUSNAME_TAVMODEMS), isSavedForTheService ? store : m_theirs);
        QCOMPARE(ModemSettings().toSettingsList(), store);
        // The tool's own record comes back first, whatever the service's one is.
        QCOMPARE(shownAfterRestart(), shown);
        if (closes)
            return;
        // After Cancel the page goes on, and a later save saves.
        tool.page.select(0);
        tool.page.type(tool.page.line("leUser"), QStringLiteral("edited again"));
        tool.press("pbSaveSettings");
        QCOMPARE(savedSettings(tavbus::BUSNAME_TAVMODEMS), ModemSettings().toSettingsList());
    }

    // The page stops no service for it: whoever holds the port keeps it.
    void modemOnlyNeedsAFreePort()
    {
        Tool tool;
        tool.page.select(0);
        {
            const ModalBoxes none({}); // ends the test at any box
            tool.page.touch(tool.page.modemOnly());
        }
        QVERIFY(!commandsOf(QStringLiteral("gsm1")).contains(QStringLiteral("AT^U2DIAG=0")));

        ServicesController controller(tavbus::BUSNAME_TESTDEALER);
        QSignalSpy stopped(&controller, &ServicesController::modemsServiceStopped);
        controller.stopModemsService();
        QVERIFY(stopped.wait(kLong));
        ModalBoxes boxes({ModalBoxes::click(QMessageBox::Ok)});
        tool.page.touch(tool.page.modemOnly());
        QCOMPARE(boxes.shown.size(), 1);
        QCOMPARE(boxes.shown.first().title, QStringLiteral("To modem only mode"));
        QVERIFY(commandsOf(QStringLiteral("gsm1")).contains(QStringLiteral("AT^U2DIAG=0")));
        QSignalSpy started(&controller, &ServicesController::modemsServiceStarted);
        controller.startModemsService();
        QVERIFY(started.wait(kLong));
    }

private:
    QStringList commandsOf(const QString &modem)
    {
        return m_terminal->modemCommands(modem).value();
    }

    static QStringList portsOf(const SettingsPage &page)
    {
        QStringList ports;
        for (int i = 0; i < page.port()->count(); ++i)
            ports.append(page.port()->itemText(i));
        return ports;
    }

    static void chooseByKeys(QComboBox *box, const QString &text)
    {
        box->setFocus();
        QTest::keyClick(box, Qt::Key_Home);
        for (int i = 0; i < box->count() && box->currentText() != text; ++i)
            QTest::keyClick(box, Qt::Key_Down);
        QCOMPARE(box->currentText(), text);
    }

    static void editEverything(SettingsPage &page)
    {
        page.select(0);
        chooseByKeys(page.port(), QStringLiteral("ttyUSB1"));
        chooseByKeys(page.baudrate(), QStringLiteral("9600"));
        page.type(page.line("leUser"), QStringLiteral("петя & co"));
        page.type(page.line("lePassword"), QStringLiteral("p@ss \"word\""));
        page.type(page.line("leDialCmd"), QStringLiteral("ATDP"));
        page.type(page.line("leISDN"), QStringLiteral("42"));
        page.type(page.line("leModemType"), QStringLiteral("USB Modem"));
        page.tick("cbNewPppd");
        page.tick("cbStupidMode");
        const auto typeAll = [&page](const char *tab, const QStringList &texts) {
            for (int i = 0; i < 4; ++i)
                page.type(page.editor(tab)->findChild<QLineEdit *>(QStringLiteral("le%1").arg(i)),
                    texts.value(i));
        };
        typeAll("tabPhones",
            {QStringLiteral("*99***1#"), QStringLiteral("p1"), QStringLiteral("p2"),
                QStringLiteral("p3")});
        typeAll("tabAPN", {QStringLiteral("AT&F"), QStringLiteral("ATX3")});
    }

    // As the terminal came up: the modem service's record alone.
    void restoreRecords()
    {
        tavbus::TavBusQueryHandler handler(tavbus::BUSNAME_TESTDEALER);
        QVERIFY(handler.open());
        handler.removeSettings(tavbus::BUSNAME_TESTDEALER, true);
        tavbus::ClientSettings settings;
        settings.setOwner(tavbus::BUSNAME_TAVMODEMS);
        settings.setDt(QDateTime::currentDateTime());
        settings.setSettings(m_theirs);
        QVERIFY(handler.saveSettings(settings));
        ModemSettings().setSettingsList({});
    }

    std::unique_ptr<Terminal> m_terminal;
    QVariantList m_theirs;
};

int main(int argc, char **argv)
{
    RuntimeEnvironment::prepare();
    QApplication application(argc, argv);
    if (application.arguments().value(1) == QLatin1String("--show"))
        return showInThisProcess();
    SettingsRoundTripTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_settingsroundtrip.moc"
