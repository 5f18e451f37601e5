#include "fakemodemservice.h"
#include "openfiles.h"
#include "querymodem.h"
#include "searchbench.h"
#include "storedmodems.h"
#include "touchstyle.h"

#include "atmodemlog.h"
#include "loggermanager.h"
#include "modemackwidget.h"
#include "privatebus.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QPushButton>
#include <QTextBrowser>

#include <algorithm>
#include <functional>
#include <memory>

namespace {

const QByteArray imei = "353142033840706";
constexpr int kLong = 30000; // ms

/// What AT_MODEM logs while it lives, from any thread.
class AtLog
{
public:
    AtLog()
    {
        LoggerManager::setOutputs(QString::fromUtf8(AT_MODEM().categoryName()),
            [this](QtMsgType, const QMessageLogContext &, const QString &text) {
                lines.append(text);
            });
    }
    ~AtLog() { LoggerManager::removeOutput(QString::fromUtf8(AT_MODEM().categoryName())); }
    AtLog(const AtLog &) = delete;
    AtLog &operator=(const AtLog &) = delete;

    QStringList lines;
};

const char *const gone = "has gone: its port was unplugged or hung up.";

} // namespace

/// The modem is pulled out at every single command of a query and of a search: each ends idle, with
/// the service started again and the reason in the log, and leaves nothing open.
class UnpluggedTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QApplication::setStyle(new TouchStyle);
        LoggerManager::initLog(QDir::tempPath(), 2, false, QtDebugMsg);
        m_bus = std::make_unique<PrivateBus>();
        // Whatever is made once in a process is there before files are counted.
        m_queryCommands = query(0).commands;
        m_byMessageCommands = query(0, answerByMessage).commands;
        m_searchCommands = search(0).commands;
    }
    void cleanupTestCase()
    {
        m_bus.reset();
        LoggerManager::releaseLog();
    }

    void undisturbedWorkIsWhole()
    {
        QVERIFY2(m_queryCommands.size() > 25, qPrintable(QString::number(m_queryCommands.size())));
        QVERIFY(m_queryCommands.contains("AT+CMGL=4"));
        QVERIFY2(
            m_searchCommands.size() >= 4, qPrintable(QString::number(m_searchCommands.size())));
        QVERIFY(m_byMessageCommands.contains("AT+CNMI=2,1"));
        QVERIFY(std::any_of(m_byMessageCommands.begin(), m_byMessageCommands.end(),
            [](const QByteArray &heard) { return heard.endsWith('\x1a'); })); // the text
        QVERIFY(m_byMessageCommands.contains("AT+CMGD=2")); // the operator's answer
        QCOMPARE(m_searchCommands.first(), QByteArray("AT"));
    }

    void inAQuery_data() { commandRows(m_queryCommands); }
    void inAQuery()
    {
        QFETCH(int, number);
        endsWell([number] { return query(number); }, number);
    }

    void inAQueryThatAsksForTheNumberByAMessage_data()
    {
        // Up to there it is the same.
        commandRows(m_byMessageCommands, m_byMessageCommands.indexOf("AT+CNMI=2,1"));
    }
    void inAQueryThatAsksForTheNumberByAMessage()
    {
        QFETCH(int, number);
        endsWell([number] { return query(number, answerByMessage); }, number);
    }

    void inASearch_data() { commandRows(m_searchCommands); }
    void inASearch()
    {
        QFETCH(int, number);
        const int files = openFiles();
        const Run run = search(number);
        QCOMPARE(run.commands.size(), number);
        QVERIFY(run.endedIdle);
        QCOMPARE(
            run.serviceCommands, QStringList({QStringLiteral("stop"), QStringLiteral("restart")}));
        QVERIFY2(run.log.contains(QLatin1String(gone)), qPrintable(run.log));
        // The other modem is found all the same.
        QCOMPARE(run.shown.size(), 1);
        QCOMPARE(openFiles(), files);
    }

private:
    struct Run
    {
        QList<QByteArray> commands; ///< that the modem heard
        QStringList serviceCommands;
        QStringList shown; ///< lines of results, names of connections
        QString log;
        bool endedIdle = false;
    };

    static void endsWell(const std::function<Run()> &query, int number)
    {
        const int files = openFiles();
        const Run run = query();
        QCOMPARE(run.commands.size(), number); // nothing was asked any more
        QVERIFY(run.endedIdle);
        QCOMPARE(
            run.serviceCommands, QStringList({QStringLiteral("stop"), QStringLiteral("restart")}));
        QVERIFY2(run.log.contains(QLatin1String(gone)), qPrintable(run.log));
        QCOMPARE(run.shown.first(), gsm1);
        QCOMPARE(openFiles(), files);
    }

    static void commandRows(const QList<QByteArray> &commands, int first = 0)
    {
        QTest::addColumn<int>("number");
        for (int i = first; i < commands.size(); ++i)
            QTest::addRow("%d: %s", i + 1, commands.at(i).constData()) << i + 1;
    }

    // Asks a modem that goes at its command of that number; at none when it is 0.
    static Run query(int unpluggedAt, const std::function<void(ScriptedModem &)> &teach = {})
    {
        Run run;
        FakeModemService service;
        ScriptedModem modem;
        answerQuery(modem);
        if (teach)
            teach(modem);
        modem.hangUpAt = unpluggedAt;
        modem.start();
        store({modemOn(modem.path())});
        ModemAckWidget page;
        page.show();
        QSignalSpy finished(&page, &ModemAckWidget::finished);
        auto *const button = page.findChild<QPushButton *>(QStringLiteral("pbAsk"));
        QTest::mouseClick(button, Qt::LeftButton);
        finished.wait(kLong);
        run.endedIdle = finished.count() == 1 && button->isEnabled();
        run.commands = modem.commands();
        run.serviceCommands = service.commands;
        const auto text = [&page](const char *name) {
            return page.findChild<QTextBrowser *>(QLatin1String(name))->toPlainText();
        };
        run.shown = text("tbModemData").split(QLatin1Char('\n'));
        run.log = text("tbLog");
        return run;
    }

    // Searches two modems, of which one goes at its command of that number.
    static Run search(int unpluggedAt)
    {
        Run run;
        FakeTerminal terminal;
        terminal.publishRunning();
        const AtLog log;
        SearchBench bench;
        bench.add("866884040012345").start();
        ScriptedModem &modem = bench.add(imei);
        modem.hangUpAt = unpluggedAt;
        modem.start();
        bench.press("tbSearch");
        bench.finished.wait(kLong);
        run.endedIdle = bench.finished.count() == 1 && bench.isIdle();
        run.commands = modem.commands();
        run.serviceCommands = terminal.modems.commands();
        run.shown = bench.names();
        run.log = log.lines.join(QLatin1Char('\n'));
        return run;
    }

    const TestOperators m_operators;
    std::unique_ptr<PrivateBus> m_bus;
    QList<QByteArray> m_queryCommands;
    QList<QByteArray> m_byMessageCommands;
    QList<QByteArray> m_searchCommands;
};

QTEST_MAIN(UnpluggedTest)
#include "tst_unplugged.moc"
