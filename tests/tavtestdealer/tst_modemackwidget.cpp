#include "dragout.h"
#include "fakemodemservice.h"
#include "marktranslator.h"
#include "modemackwidget.h"
#include "painted.h"
#include "portspeed.h"
#include "querymodem.h"
#include "storedmodems.h"
#include "toldtoend.h"
#include "touchstyle.h"

#include "atmodem.h"
#include "atmodemlog.h"
#include "connectionquery.h"
#include "loggermanager.h"
#include "privatebus.h"
#include "runningtimers.h"
#include "servicescontroller.h"

#include <QApplication>
#include <QBoxLayout>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>

#include <memory>
#include <mutex>

namespace {

const QString noPort = QStringLiteral("/dev/nowhere");
constexpr int kLong = 20000; // ms; two polls of a second and a query fit in many times

/// Waits for a network but a moment.
class QuickModem : public AtModem
{
public:
    using AtModem::AtModem;

protected:
    std::chrono::milliseconds registrationLimit() const override
    {
        return std::chrono::milliseconds(10);
    }
};

/// The page as the user has it, with its widgets by their names.
class Page : public ModemAckWidget
{
public:
    Page()
        : ModemAckWidget(new QuickModem)
        , startedSpy(this, &ModemAckWidget::started)
        , finishedSpy(this, &ModemAckWidget::finished)
    {
        resize(794, 460);
        show();
    }

    void press() { QTest::mouseClick(button(), Qt::LeftButton); }
    QPushButton *button() const { return findChild<QPushButton *>(QStringLiteral("pbAsk")); }
    QTextBrowser *results() const
    {
        return findChild<QTextBrowser *>(QStringLiteral("tbModemData"));
    }
    QTextBrowser *log() const { return findChild<QTextBrowser *>(QStringLiteral("tbLog")); }
    QComboBox *modems() const { return findChild<QComboBox *>(QStringLiteral("cbModem")); }
    ServicesController *controller() const { return findChild<ServicesController *>(); }
    AtModem *driver() const { return findChild<AtModem *>(); }
    QStringList resultLines() const
    {
        return results()->toPlainText().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }
    QStringList logLines() const { return log()->toPlainText().split(QLatin1Char('\n')); }
    bool logs(const char *line) const { return logLines().contains(QString::fromUtf8(line)); }
    QColor colourOf(const char *line) const
    {
        for (QTextBlock block = log()->document()->begin(); block.isValid(); block = block.next()) {
            if (block.text() == QString::fromUtf8(line))
                return block.begin().fragment().charFormat().foreground().color();
        }
        return QColor();
    }

    QSignalSpy startedSpy;
    QSignalSpy finishedSpy;
};

QStringList lines(const char *text) // "a|b"
{
    return QString::fromUtf8(text).split(QLatin1Char('|'), Qt::SkipEmptyParts);
}

const QByteArray ERROR_ANSWER = "\r\nERROR\r\n";

} // namespace

class ModemAckWidgetTest : public QObject
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
        store({modemOn(noPort)});
        m_service = std::make_unique<FakeModemService>();
    }
    void cleanup() { m_service.reset(); }

    void form()
    {
        const Page page;
        QCOMPARE(page.windowTitle(), QStringLiteral("Form"));
        QCOMPARE(page.button()->text(), QStringLiteral("Ask modem"));
        QCOMPARE(page.button()->minimumSize(), QSize(60, 60));
        QCOMPARE(page.modems()->minimumSize(), QSize(0, 60));
        QCOMPARE(page.modems()->sizeAdjustPolicy(), QComboBox::AdjustToContents);
        auto *label = page.findChild<QLabel *>(QStringLiteral("label"));
        QCOMPARE(label->text(), QStringLiteral("Modem"));
        for (const QWidget *widget :
            std::initializer_list<const QWidget *>{label, page.modems(), page.button()})
            QCOMPARE(widget->font().pointSize(), 18);
        const auto *outer = qobject_cast<QVBoxLayout *>(page.layout());
        QCOMPARE(outer->objectName(), QStringLiteral("verticalLayout"));
        QCOMPARE(outer->contentsMargins(), QMargins(1, 1, 1, 1));
        const auto *top = outer->findChild<QHBoxLayout *>(QStringLiteral("horizontalLayout"));
        QCOMPARE(top->indexOf(label), 0);
        QCOMPARE(top->indexOf(page.modems()), 1);
        QVERIFY(top->itemAt(2)->spacerItem());
        QCOMPARE(top->indexOf(page.button()), 3);
        const auto *lower = outer->findChild<QHBoxLayout *>(QStringLiteral("horizontalLayout_2"));
        QCOMPARE(lower->indexOf(page.results()), 0);
        QCOMPARE(lower->indexOf(page.log()), 1);
        QCOMPARE(lower->stretch(0), 1);
        QCOMPARE(lower->stretch(1), 3);
        QVERIFY(page.log()->y() > page.modems()->y());
        QVERIFY(page.button()->isEnabled());
        QCOMPARE(page.driver()->parent(), &page);
    }

    void untouchedPageRunsNoTimer()
    {
        constexpr int second = 1000; // those of Qt's widgets, to lay themselves out, are of no time
        const QSet<int> before = runningTimers(second);
        const ModemAckWidget page;
        QCOMPARE(runningTimers(second), before);
    }

    void connectionsAreListedInTheirOrderAtEveryShow()
    {
        store({modemOn(noPort, QStringLiteral("z")), modemOn(noPort, QStringLiteral("a"))});
        Page page;
        QCOMPARE(page.modems()->count(), 2);
        QCOMPARE(page.modems()->itemText(0), QStringLiteral("z"));
        QCOMPARE(page.modems()->itemText(1), QStringLiteral("a"));
        page.hide();
        store({modemOn(noPort, QStringLiteral("модем"))});
        page.show();
        QCOMPARE(page.modems()->count(), 1);
        QCOMPARE(page.modems()->currentText(), QStringLiteral("модем"));
    }

    void longNameDoesNotCutTheButton()
    {
        store({modemOn(noPort, QString(60, QLatin1Char('W')))});
        const Page page;
        QVERIFY(page.button()->width() >= page.button()->sizeHint().width());
        QVERIFY(page.rect().contains(page.button()->geometry()));
        QVERIFY(page.modems()->height() >= 60);
    }

    void wholeQuery()
    {
        ScriptedModem modem;
        answerQuery(modem);
        modem.start();
        store({modemOn(noPort, QStringLiteral("other")), modemOn(modem.path())});
        Page page;
        page.modems()->setCurrentText(gsm1);
        page.results()->append(QStringLiteral("old"));
        qCDebug(AT_MODEM, "old");

        QTest::mousePress(page.button(), Qt::LeftButton);
        QCOMPARE(page.startedSpy.count(), 0); // it acts when it is let go
        QTest::mouseRelease(page.button(), Qt::LeftButton);
        QCOMPARE(page.startedSpy.count(), 1);
        QVERIFY(!page.button()->isEnabled());
        // Nothing is asked while the service may hold the port.
        QCOMPARE(modem.commands(), QList<QByteArray>());
        QCOMPARE(page.resultLines(), lines("old"));

        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        QVERIFY(page.button()->isEnabled());
        QCOMPARE(
            m_service->commands, QStringList({QStringLiteral("stop"), QStringLiteral("restart")}));
        QCOMPARE(page.resultLines(),
            lines("gsm1|MCC: 999|MNC: 1|LAC: 1A2B|CID: C3F4D5|Operator: All & Everything|"
                  "Sim number: +79161234567|Balance: 150.5|Signal level: -71 dB"));
        QVERIFY(!page.logs("old"));
        QVERIFY(page.logs("Ask gsm1"));
        QVERIFY(page.logs("imei: 353142031234567"));
        // The pane takes a "<" for markup: what the modem answers must not hide behind one.
        QVERIFY(page.logs(qUtf8Printable(modem.path() + QStringLiteral(" -> AT+CSQ"))));
        QVERIFY(page.logs(qUtf8Printable(modem.path() + QStringLiteral(": +CSQ: 21,99"))));
        QVERIFY(page.logs("gsmCells [{\"cid\":\"C3F4D5\",\"lac\":\"1A2B\"}]"));
        QVERIFY(!page.log()->toPlainText().contains(QStringLiteral("gsmCells:")));
        const QDateTime time(QDate(2026, 3, 2), QTime(8, 30), Qt::OffsetFromUTC, 3 * 3600);
        const QString sms = QStringLiteral("SMS %1: +79160000001 -> Баланс")
                                .arg(QLocale::system().toString(time, QLocale::ShortFormat));
        QVERIFY2(page.logs(qUtf8Printable(sms)), qPrintable(page.log()->toPlainText()));
        // The port is free again.
        QVERIFY(!page.driver()->isOpen());
        AtModem next;
        QVERIFY2(next.open(modem.path(), 57600, 1), qPrintable(next.lastError()));
    }

    // The order in which the modem hears of the steps.
    void stepsComeInTheirOrder()
    {
        ScriptedModem modem;
        answerQuery(modem);
        modem.start();
        store({modemOn(modem.path())});
        Page page;
        QVERIFY(page.queryModem());
        const QList<QByteArray> heard = modem.commands();
        const QList<QByteArray> expected{"AT", "ATZ", "AT+CREG?", "AT+COPS=3,2", "AT+CREG=2",
            "AT+CGMR", "AT+CUSD=1,\"*111#\",15", "AT+CUSD=1,\"*100#\",15", "AT+CSQ", "AT+CMGL=4",
            "AT+CMGD=1", "AT+CREG=0"};
        int from = 0;
        for (const QByteArray &command : expected) {
            const int at = heard.indexOf(command, from);
            QVERIFY2(at >= from, command.constData());
            from = at + 1;
        }
        // Results stand in the order of the steps, and so do the log's lines.
        const QString log = page.log()->toPlainText();
        int last = -1;
        for (const char *line : {"imei: ", "\nBalance ", "\nSMS "}) {
            const int at = log.indexOf(QLatin1String(line));
            QVERIFY2(at > last, line);
            last = at;
        }
    }

    void resultsAreRichTextOfTheExactForm()
    {
        ScriptedModem modem;
        answerQuery(modem);
        modem.start();
        QMap<QString, ModemInfo> modems{{gsm1, modemOn(modem.path())}};
        AtModem driver;
        QStringList shown;
        ConnectionQuery query(driver, [&shown](const QString &html) { shown.append(html); });
        QVERIFY(query.run(gsm1, modems));
        QCOMPARE(shown,
            QStringList({QStringLiteral("<b><u>gsm1</u></b>"), QStringLiteral("<b>MCC:</b> 999"),
                QStringLiteral("<b>MNC:</b> 1"), QStringLiteral("<b>LAC:</b> 1A2B"),
                QStringLiteral("<b>CID:</b> C3F4D5"),
                QStringLiteral("<b>Operator:</b> All &amp; Everything"),
                QStringLiteral("<b>Sim number:</b> +79161234567"),
                QStringLiteral("<b>Balance:</b> 150.5"),
                QStringLiteral("<b>Signal level:</b> -71 dB")}));
    }

    // The event loop stands still, the screen does not.
    void userSeesHowFarTheQueryIs()
    {
        ScriptedModem modem;
        answerQuery(modem);
        Page page;
        Painted results(page.results());
        Painted log(page.log());
        std::atomic<bool> nameAtFirst{false};
        std::atomic<bool> codesAtInfo{false};
        std::atomic<bool> logAtInfo{false};
        std::atomic<bool> operatorAtBalance{false};
        modem.onCommand = [&](const QByteArray &command) {
            if (command == "AT")
                nameAtFirst = results.contains("gsm1");
            if (command == "AT+CGMR") {
                codesAtInfo = results.contains("CID: C3F4D5");
                logAtInfo = log.contains("AT+COPS?");
            }
            if (command.startsWith("AT+CUSD"))
                operatorAtBalance = results.contains("Operator: ");
        };
        modem.start();
        store({modemOn(modem.path())});
        page.hide();
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        QVERIFY(page.queryModem());
        QVERIFY(nameAtFirst);
        QVERIFY(codesAtInfo);
        QVERIFY(logAtInfo);
        QVERIFY(operatorAtBalance);
    }

    void portIsOpenedAtTheRecordsRate()
    {
        ScriptedModem modem;
        answerQuery(modem);
        std::mutex mutex;
        QList<unsigned int> speeds;
        modem.onCommand = [&](const QByteArray &command) {
            const std::lock_guard<std::mutex> lock(mutex);
            if (command == "ATZ")
                speeds.append(speedOf(modem.path()));
        };
        modem.start();
        ModemInfo info = modemOn(modem.path());
        info.setBaudrate(115200); // no cap here
        store({info});
        Page page;
        QVERIFY(page.queryModem());
        const std::lock_guard<std::mutex> lock(mutex);
        QCOMPARE(speeds, QList<unsigned int>{115200U});
    }

    void portIsTriedThreeTimes()
    {
        ScriptedModem modem;
        modem.answerToAll = ERROR_ANSWER;
        modem.start();
        store({modemOn(modem.path())});
        Page page;
        QVERIFY(!page.queryModem());
        QCOMPARE(modem.commands(), QList<QByteArray>({"AT", "ATQ0V1", "ATQ0V1"}));
    }

    void settingsAreNotSaved()
    {
        ScriptedModem modem;
        answerQuery(modem);
        modem.start();
        store({modemOn(modem.path())});
        const QVariantList before = ModemSettings().toSettingsList();
        Page page;
        QVERIFY(page.queryModem());
        QCOMPARE(ModemSettings().toSettingsList(), before);
    }

    void recordIsCompletedFromTheOperator()
    {
        ScriptedModem modem;
        answerQuery(modem);
        modem.start();
        QMap<QString, ModemInfo> modems{{gsm1, modemOn(modem.path())}};
        AtModem driver;
        ConnectionQuery query(driver, [](const QString &) {});
        QVERIFY(query.run(gsm1, modems));
        QCOMPARE(modems.value(gsm1).userName(), QStringLiteral("guest"));
        QCOMPARE(modems.value(gsm1).password(), QStringLiteral("open"));
        QCOMPARE(modems.value(gsm1).initLines(),
            QStringList{QStringLiteral("AT+CGDCONT=1,\"IP\",\"all.example\"")});
    }

    void completionAddsOnlyWhatIsMissing_data()
    {
        QTest::addColumn<QStringList>("initLines");
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("password");
        QTest::addColumn<QStringList>("initLinesAfter");
        QTest::addColumn<QString>("userAfter");
        QTest::addColumn<QString>("passwordAfter");
        const QString line = QStringLiteral("AT+CGDCONT=1,\"IP\",\"x\"");
        const QString other = QStringLiteral("AT&F");
        const QString mine = QStringLiteral("mine");
        const QString guest = QStringLiteral("guest");
        const QString open = QStringLiteral("open");
        QTest::newRow("empty record")
            << QStringList() << QString() << QString() << QStringList{line} << guest << open;
        QTest::newRow("another line") << QStringList{other} << QString() << QString()
                                      << QStringList({other, line}) << guest << open;
        QTest::newRow("the same line") << QStringList({line, other}) << QString() << QString()
                                       << QStringList({line, other}) << guest << open;
        QTest::newRow("own user") << QStringList{line} << mine << QString() << QStringList{line}
                                  << mine << open;
        QTest::newRow("own password")
            << QStringList{line} << QString() << mine << QStringList{line} << guest << mine;
    }
    void completionAddsOnlyWhatIsMissing()
    {
        QFETCH(QStringList, initLines);
        QFETCH(QString, user);
        QFETCH(QString, password);
        QFETCH(QStringList, initLinesAfter);
        QFETCH(QString, userAfter);
        QFETCH(QString, passwordAfter);
        OperatorData data;
        data.setModemInitLine(QStringLiteral("AT+CGDCONT=1,\"IP\",\"x\""));
        data.setUserName(QStringLiteral("guest"));
        data.setPassword(QStringLiteral("open"));
        ModemInfo info;
        info.setInitLines(initLines);
        info.setUserName(user);
        info.setPassword(password);
        ConnectionQuery::complete(info, data);
        QCOMPARE(info.initLines(), initLinesAfter);
        QCOMPARE(info.userName(), userAfter);
        QCOMPARE(info.password(), passwordAfter);
    }

    void operatorWithoutALineAddsNone()
    {
        ModemInfo info;
        ConnectionQuery::complete(info, OperatorData());
        QCOMPARE(info, ModemInfo());
    }

    void withoutModemsThereIsNothingToAsk()
    {
        store({});
        Page page;
        page.results()->append(QStringLiteral("old"));
        page.press();
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        QCOMPARE(page.resultLines(), QStringList());
        QCOMPARE(page.logLines(), lines("There are no any modems"));
        QCOMPARE(page.colourOf("There are no any modems"), QColor(Qt::red));
        QCOMPARE(
            m_service->commands, QStringList({QStringLiteral("stop"), QStringLiteral("restart")}));
        QVERIFY(page.button()->isEnabled());
        QVERIFY(!page.queryModem());
    }

    // The order may be empty where modems are not.
    void withoutAChoiceTheEmptyNameIsAsked()
    {
        ModemSettings().setConnectionsOrder({});
        Page page;
        QCOMPARE(page.modems()->currentIndex(), -1);
        page.press();
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        QCOMPARE(page.resultLines(), QStringList());
        QVERIFY2(page.logs("is not opened"), qPrintable(page.log()->toPlainText()));

        QMap<QString, ModemInfo> modems;
        AtModem driver;
        QStringList shown;
        ConnectionQuery query(driver, [&shown](const QString &html) { shown.append(html); });
        QVERIFY(!query.run(QString(), modems));
        QCOMPARE(modems.keys(), QStringList{QString()});
        QCOMPARE(modems.first(), ModemInfo());
        QCOMPARE(shown, QStringList{QStringLiteral("<b><u></u></b>")});
    }

    void failureEndsTheQueryWithItsReason_data()
    {
        using Answers = QMap<QByteArray, QByteArray>;
        QTest::addColumn<Answers>("answers");
        QTest::addColumn<QByteArray>("warning");
        QTest::addColumn<bool>("goesOn");
        QTest::addColumn<QStringList>("shown");
        const QString codes = QStringLiteral("MCC: 999|MNC: %1|LAC: 1A2B|CID: C3F4D5");
        QTest::newRow("port does not answer")
            << Answers{{"*", ""}} << QByteArray("gsm1 is not opened") << false << lines("gsm1");
        QTest::newRow("no network codes")
            << Answers{{"AT+COPS?", ERROR_ANSWER}, {"AT+CIMI", ERROR_ANSWER}}
            << QByteArray("mcc and mnc loading error") << false << lines("gsm1");
        QTest::newRow("no cell")
            << Answers{{"AT+CREG=2", ERROR_ANSWER}} << QByteArray("lac and cid loading error")
            << true
            << lines("gsm1|MCC: 999|MNC: 1|LAC: |CID: |Operator: All & Everything|"
                     "Sim number: +79161234567|Balance: 150.5|Signal level: -71 dB");
        QTest::newRow("unknown operator")
            << Answers{{"AT+COPS?", ScriptedModem::ok("+COPS: 0,2,\"99999\"")}}
            << QByteArray("Operator data loading error") << false
            << lines("gsm1|MCC: 999|MNC: 99|LAC: 1A2B|CID: C3F4D5");
    }
    void failureEndsTheQueryWithItsReason()
    {
        using Answers = QMap<QByteArray, QByteArray>;
        QFETCH(Answers, answers);
        QFETCH(QByteArray, warning);
        QFETCH(bool, goesOn);
        QFETCH(QStringList, shown);
        ScriptedModem modem;
        answerQuery(modem);
        modem.silent = answers.contains("*");
        for (auto it = answers.cbegin(); it != answers.cend(); ++it)
            modem.answers.insert(it.key(), it.value());
        modem.start();
        store({modemOn(modem.path())});
        Page page;
        page.press();
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        QCOMPARE(page.resultLines(), shown);
        QVERIFY2(page.logs(warning.constData()), qPrintable(page.log()->toPlainText()));
        QCOMPARE(page.colourOf(warning.constData()), QColor(Qt::blue));
        QCOMPARE(
            m_service->commands, QStringList({QStringLiteral("stop"), QStringLiteral("restart")}));
        QVERIFY(page.button()->isEnabled());
        QVERIFY(!page.driver()->isOpen());
        // And the answer of the slot is the same.
        if (!modem.silent)
            QCOMPARE(page.queryModem(), goesOn);
    }

    void endOfTheProgramBreaksTheQueryOff()
    {
        ScriptedModem modem;
        answerQuery(modem);
        modem.start();
        store({modemOn(modem.path())});
        Page page;
        const ToldToEnd toldToEnd;
        QVERIFY(!page.queryModem());
        QVERIFY(page.log()->toPlainText().contains(QLatin1String(" was broken off.")));
        QVERIFY(!page.driver()->isOpen());
    }

    void whatTheModemDoesNotTellIsLeftOut_data()
    {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<QString>("line");
        QTest::newRow("number") << QByteArray("AT+CUSD=1,\"*111#\",15")
                                << QStringLiteral("Sim number: +79161234567");
        QTest::newRow("balance") << QByteArray("AT+CUSD=1,\"*100#\",15")
                                 << QStringLiteral("Balance: 150.5");
        QTest::newRow("signal") << QByteArray("AT+CSQ") << QStringLiteral("Signal level: -71 dB");
        QTest::newRow("messages") << QByteArray("AT+CMGF=0") << QString();
    }
    void whatTheModemDoesNotTellIsLeftOut()
    {
        QFETCH(QByteArray, command);
        QFETCH(QString, line);
        ScriptedModem modem;
        answerQuery(modem);
        modem.answers.insert(command, ERROR_ANSWER);
        modem.start();
        store({modemOn(modem.path())});
        Page page;
        QVERIFY(page.queryModem());
        QStringList expected
            = lines("gsm1|MCC: 999|MNC: 1|LAC: 1A2B|CID: C3F4D5|Operator: All & Everything|"
                    "Sim number: +79161234567|Balance: 150.5|Signal level: -71 dB");
        expected.removeAll(line);
        QCOMPARE(page.resultLines(), expected);
        QCOMPARE(page.log()->toPlainText().contains(QStringLiteral("\nSMS ")), !line.isEmpty());
    }

    void numberThatTheCardKnowsIsNeitherAskedNorShown()
    {
        ScriptedModem modem;
        answerQuery(modem);
        modem.answers.insert("AT+CNUM", ScriptedModem::ok("+CNUM: ,\"+79260000000\",145"));
        modem.start();
        store({modemOn(modem.path())});
        Page page;
        QVERIFY(page.queryModem());
        QVERIFY(!page.results()->toPlainText().contains(QStringLiteral("Sim number")));
        QVERIFY(page.logs("simNumber: +79260000000"));
        QVERIFY(!modem.commands().contains("AT+CUSD=1,\"*111#\",15"));
    }

    void numberIsAskedAsTheOperatorHasIt()
    {
        ScriptedModem modem;
        answerQuery(modem);
        modem.answers.insert("AT+COPS?", ScriptedModem::ok("+COPS: 0,2,\"99902\""));
        modem.start();
        store({modemOn(modem.path())});
        Page page;
        QVERIFY(page.queryModem());
        // By a message, for which this modem has no command.
        const QList<QByteArray> heard = modem.commands();
        QVERIFY(std::any_of(heard.begin(), heard.end(),
            [](const QByteArray &command) { return command.startsWith("AT+CMGS="); }));
        QVERIFY(!page.results()->toPlainText().contains(QStringLiteral("Sim number")));
    }

    void operatorOfWhomOnlyTheNameIsKnown()
    {
        ScriptedModem modem;
        answerQuery(modem);
        modem.answers.insert("AT+COPS?", ScriptedModem::ok("+COPS: 0,2,\"99903\""));
        modem.start();
        store({modemOn(modem.path())});
        Page page;
        QVERIFY(page.queryModem());
        QCOMPARE(page.resultLines(),
            lines("gsm1|MCC: 999|MNC: 3|LAC: 1A2B|CID: C3F4D5|Operator: Name Only|"
                  "Signal level: -71 dB"));
    }

    void balanceIsWrittenAsShortAsItIsExact_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<QString>("shown");
        QTest::newRow("a half") << QByteArray("Balance: 150.50 r.") << QStringLiteral("150.5");
        QTest::newRow("whole") << QByteArray("Balance: 100.00 r.") << QStringLiteral("100");
        QTest::newRow("debt") << QByteArray("Balance: -12.34 r.") << QStringLiteral("-12.34");
        QTest::newRow("nothing") << QByteArray("Balance: 0.00 r.") << QStringLiteral("0");
        QTest::newRow("kopecks") << QByteArray("Balance: 1234.07 r.") << QStringLiteral("1234.07");
        // General notation: whichever is shorter.
        QTest::newRow("round and large")
            << QByteArray("Balance: 1000000.00 r.") << QStringLiteral("1e+06");
        QTest::newRow("large") << QByteArray("Balance: 123456.78 r.")
                               << QStringLiteral("123456.78");
        QTest::newRow("no amount") << QByteArray("Try again later") << QStringLiteral("nan");
    }
    void balanceIsWrittenAsShortAsItIsExact()
    {
        QFETCH(QByteArray, answer);
        QFETCH(QString, shown);
        ScriptedModem modem;
        answerQuery(modem);
        modem.answers.insert("AT+CUSD=1,\"*100#\",15",
            ScriptedModem::ok() + "\r\n+CUSD: 0,\"" + answer + "\",15\r\n");
        modem.start();
        store({modemOn(modem.path())});
        Page page;
        QVERIFY(page.queryModem());
        QVERIFY2(page.resultLines().contains(QStringLiteral("Balance: ") + shown),
            qPrintable(page.results()->toPlainText()));
        // What the operator said word for word is in the log.
        QVERIFY(page.logs(("Balance " + answer).constData()));
    }

    void serviceThatHasStoppedStartsTheQuery()
    {
        store({});
        Page page;
        emit page.controller()->modemsServiceStopped();
        QVERIFY(page.logs("There are no any modems"));
    }

    void serviceThatIsBackFinishesTheWork()
    {
        Page page;
        emit page.started();
        QVERIFY(!page.button()->isEnabled());
        emit page.controller()->modemsServiceStarted();
        QCOMPARE(page.finishedSpy.count(), 1);
        QVERIFY(page.button()->isEnabled());
    }

    void queryWaitsForTheServiceToStop()
    {
        m_service->isObedient = false;
        Page page;
        page.press();
        QTRY_COMPARE_WITH_TIMEOUT(m_service->commands, QStringList{QStringLiteral("stop")}, kLong);
        QVERIFY(!page.finishedSpy.wait(1500));
        QCOMPARE(page.resultLines(), QStringList());
        m_service->isObedient = true;
        m_service->publish(FakeModemService::kStopped);
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        QCOMPARE(page.resultLines(), lines("gsm1"));
    }

    void startedComesBeforeTheServiceIsStopped()
    {
        m_service.reset();
        const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
        Page page;
        bool wasAsked = true;
        connect(&page, &ModemAckWidget::started, &page,
            [&] { wasAsked = !page.resultLines().isEmpty(); });
        // Without a bus all of it happens at once.
        page.press();
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        QVERIFY(!wasAsked);
        QCOMPARE(page.startedSpy.count(), 1);
        QCOMPARE(page.finishedSpy.count(), 1);
        QVERIFY(page.button()->isEnabled());
        QCOMPARE(page.resultLines(), lines("gsm1"));
    }

    void withoutAModemServiceTheQueryRuns()
    {
        m_service.reset();
        Page page;
        page.press();
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        QCOMPARE(page.resultLines(), lines("gsm1"));
    }

    void otherChoiceWhileTheServiceIsStopping()
    {
        store({modemOn(noPort), modemOn(noPort, QStringLiteral("other"))});
        Page page;
        page.press();
        page.modems()->setCurrentText(QStringLiteral("other"));
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
        QCOMPARE(page.resultLines(), lines("other"));
    }

    // The button lets go as soon as it is left, and that counts.
    void slidingOffTheButtonAsks()
    {
        Page page;
        dragOut(page.button());
        QCOMPARE(page.startedSpy.count(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, kLong);
    }

    void nextQueryStartsAfresh()
    {
        Page page;
        for (int i = 1; i <= 2; ++i) {
            page.press();
            QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), i, kLong);
            QCOMPARE(page.resultLines(), lines("gsm1"));
            QCOMPARE(page.logLines().count(QStringLiteral("gsm1 is not opened")), 1);
        }
    }

    void namesOfAnyKindAreShownAsTheyAre()
    {
        const QString name = QStringLiteral("<i>a & %1 %2</i>");
        store({modemOn(noPort, name)});
        Page page;
        QVERIFY(!page.queryModem());
        QCOMPARE(page.resultLines(), QStringList{name});
    }

    void hostileNetworkIsShownAndNothingElse_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("isShown"); // in the log, with its markup taken for markup
        QTest::newRow("markup") << QByteArray(
            "<h1>Hello</h1><img src=/etc/passwd><a href=/etc>x</a>")
                                << true;
        QTest::newRow("script") << QByteArray("<script>Hello()</script>") << false;
        QTest::newRow("tables in tables")
            << QByteArray("Hello<table><tr><td>").repeated(30) << true;
        QTest::newRow("markup that does not end")
            << QByteArray("Hello <b <i \\ & &#0; &#x110000;") << true;
        QTest::newRow("control characters")
            << QByteArray("Hello\x01\x07\x08\x0b\x0c\x1b[2J\x7f") << true;
        QTest::newRow("wrong letters") << QByteArray("Hello\xff\xfe\xc0\xaf\xed\xa0\x80") << true;
        QTest::newRow("a megabyte without a line end") << QByteArray(1 << 20, 'x') << false;
    }
    void hostileNetworkIsShownAndNothingElse()
    {
        QFETCH(QByteArray, text);
        QFETCH(bool, isShown);
        ScriptedModem modem;
        answerQuery(modem);
        const auto ok = [](const QByteArray &line) { return ScriptedModem::ok(line); };
        modem.answers["AT+CSQ"] = ok("+CSQ: " + text);
        if (text.size() < 1 << 20) { // else it is waited for in vain, for half a minute each
            modem.answers["AT+CUSD=1,\"*111#\",15"] = ok("+CUSD: 0,\"" + text + "\",15");
            modem.answers["AT+CUSD=1,\"*100#\",15"] = ok("+CUSD: 0,\"" + text + " 5 rub\",15");
        }
        modem.answers["AT+CUSD=2"] = ok({});
        modem.answers["AT+CGMR"] = ok(text);
        modem.answers["AT+CMGL=4"] = ok("+CMGL: 1,0,,31\r\n" + text);
        modem.start();
        store({modemOn(modem.path())});
        Page page;
        page.show();
        page.press();
        QTRY_COMPARE_WITH_TIMEOUT(page.finishedSpy.count(), 1, 100000);
        page.grab();
        // The page has what the modem told without the network, and no word of the rest.
        const QStringList shown = page.resultLines();
        QCOMPARE(shown.mid(0, 6),
            lines("gsm1|MCC: 999|MNC: 1|LAC: 1A2B|CID: C3F4D5|Operator: All & Everything"));
        for (const QString &line : shown.mid(6))
            QVERIFY2(line.startsWith(QStringLiteral("Balance: "))
                    || line == QStringLiteral("Sim number: +79161234567"),
                qPrintable(line));
        QCOMPARE(page.log()->toPlainText().contains(QStringLiteral("Hello")), isShown);
        QCOMPARE(page.log()->source(), QUrl());
        QVERIFY(page.button()->isEnabled());
    }

    void pageThatIsGoneShowsNothing()
    {
        auto page = std::make_unique<Page>();
        qCWarning(AT_MODEM, "seen");
        QVERIFY(page->logs("seen"));
        // The browser outlives the page here, to see what still reaches it.
        const std::unique_ptr<QTextBrowser> browser(page->log());
        browser->setParent(nullptr);
        page.reset();
        qCWarning(AT_MODEM, "later");
        QTest::qWait(0);
        QCOMPARE(browser->toPlainText(), QStringLiteral("seen"));
    }

    void textsFollowTheLanguage()
    {
        ScriptedModem modem;
        answerQuery(modem);
        modem.start();
        store({modemOn(modem.path())});
        Page page;
        auto translator = std::make_unique<MarkTranslator>("ModemAckWidget");
        QTRY_COMPARE(page.button()->text(), QStringLiteral("xAsk modem"));
        QCOMPARE(
            page.findChild<QLabel *>(QStringLiteral("label"))->text(), QStringLiteral("xModem"));
        QCOMPARE(page.windowTitle(), QStringLiteral("xForm"));
        QVERIFY(page.queryModem());
        QCOMPARE(page.resultLines(),
            lines("gsm1|xMCC: 999|xMNC: 1|xLAC: 1A2B|xCID: C3F4D5|xOperator: All & Everything|"
                  "xSim number: +79161234567|xBalance: 150.5|xSignal level: -71 dB"));
        translator.reset();
        QTRY_COMPARE(page.button()->text(), QStringLiteral("Ask modem"));
    }

private:
    const TestOperators m_operators;
    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<FakeModemService> m_service;
};

QTEST_MAIN(ModemAckWidgetTest)
#include "tst_modemackwidget.moc"
