#include "modemackwidget.h"
#include "operatorsfile.h"
#include "terminal.h"

#include "busnames.h"
#include "initconfig.h"
#include "loggermanager.h"
#include "modemsettings.h"
#include "runtimeenvironment.h"
#include "searchwidget.h"

#include <QApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTextBrowser>

// The Ask modem page before every family of modems that the terminal can simulate: it shows what
// the scenario holds, letter for letter. A modem added to the scenario is a row more.

namespace {

constexpr int kLong = 120000; // ms

QJsonArray scenarioModems()
{
    QFile file(QStringLiteral(SCENARIO));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no scenario %s", SCENARIO);
    return QJsonDocument::fromJson(file.readAll())
        .object()
        .value(QLatin1String("modems"))
        .toArray();
}

/// As 3GPP TS 27.007 10.1.20 has them, without the leading zeros that one modem pads with and
/// another does not; four digits at least.
QString cellCode(const QString &text)
{
    QString code = text.toUpper();
    while (code.size() > 4 && code.startsWith(QLatin1Char('0')))
        code.remove(0, 1);
    return code;
}

/// 3GPP TS 27.007 8.5
int dBm(int rssi)
{
    return -113 + 2 * rssi;
}

QStringList expectedLines(const QJsonObject &modem)
{
    const QJsonObject network = modem.value(QLatin1String("network")).toObject();
    const QJsonObject sim = modem.value(QLatin1String("sim")).toObject();
    const int mcc = network.value(QLatin1String("mcc")).toInt();
    const int mnc = network.value(QLatin1String("mnc")).toInt();
    OperatorData data;
    if (!ModemSettings().getOperatorData(mcc, mnc, data))
        qFatal("the operator %d-%d is in no table", mcc, mnc);
    QStringList lines{QStringLiteral("MCC: %1").arg(mcc), QStringLiteral("MNC: %1").arg(mnc),
        QStringLiteral("LAC: %1").arg(cellCode(network.value(QLatin1String("lac")).toString())),
        QStringLiteral("CID: %1").arg(cellCode(network.value(QLatin1String("cid")).toString())),
        QStringLiteral("Operator: %1").arg(data.name())};
    const QString number = sim.value(QLatin1String("number")).toString();
    if (!sim.value(QLatin1String("numberOnCard")).toBool(true))
        lines.append(QStringLiteral("Sim number: %1").arg(number));
    const QString balance = sim.value(QLatin1String("balance")).toString().remove(QLatin1Char(' '));
    lines.append(
        QStringLiteral("Balance: %1")
            .arg(QString::number(balance.toDouble(), 'g', QLocale::FloatingPointShortest)));
    lines.append(QStringLiteral("Signal level: %1 dB")
                     .arg(dBm(network.value(QLatin1String("rssi")).toInt())));
    return lines;
}

QStringList expectedMessages(const QJsonObject &modem)
{
    QStringList lines;
    const QJsonArray messages
        = modem.value(QLatin1String("sim")).toObject().value(QLatin1String("sms")).toArray();
    for (const QJsonValue &message : messages) {
        const QDateTime time
            = QDateTime::fromString(message[QLatin1String("time")].toString(), Qt::ISODate);
        lines.append(QStringLiteral("%1: %2 -> %3")
                         .arg(QLocale::system().toString(time, QLocale::ShortFormat),
                             message[QLatin1String("sender")].toString(),
                             message[QLatin1String("text")].toString()));
    }
    return lines;
}

/// Where some operators tell a card its number, by a code and by a message: Debian's table does not
/// have it.
const char *const numberServices = R"(<serviceproviders format="2.0"><country code="xx">
<provider><name>One</name><gsm><network-id mcc="250" mnc="01"/>
<msisdn-query><sms>111</sms></msisdn-query></gsm></provider>
<provider><name>Two</name><gsm><network-id mcc="250" mnc="02"/>
<msisdn-query><ussd>*205#</ussd></msisdn-query></gsm></provider>
<provider><name>Three</name><gsm><network-id mcc="257" mnc="01"/>
<msisdn-query><ussd>*147#</ussd></msisdn-query></gsm></provider>
</country></serviceproviders>)";

} // namespace

class ProfileQueriesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        LoggerManager::initLog(InitConfig().loggerPath(), 2, false, QtDebugMsg);
        Terminal terminal;
        QVERIFY(terminal.isValid());
        MainDialog dialog;
        dialog.show();
        const auto press = [&dialog](const char *name) {
            QTest::mouseClick(dialog.findChild<QWidget *>(QLatin1String(name)), Qt::LeftButton);
        };
        press("pbSearchPage");
        QSignalSpy searched(dialog.findChild<SearchWidget *>(), &SearchWidget::finished);
        press("tbSearch");
        QVERIFY(searched.wait(kLong));
        m_found = ModemSettings().connectionsOrder();
        press("pbAskPage");
        for (const QString &name : qAsConst(m_found)) {
            const int before = terminal.serviceCommands(tavbus::BUSNAME_TAVMODEMS).value().size();
            Asked asked = ask(dialog.findChild<ModemAckWidget *>(), name);
            asked.serviceCommands
                = terminal.serviceCommands(tavbus::BUSNAME_TAVMODEMS).value().mid(before);
            m_asked.insert(asked.imsi, asked);
        }
    }
    void cleanupTestCase() { LoggerManager::releaseLog(); }

    void searchFindsEveryModemOnce()
    {
        const QJsonArray modems = scenarioModems();
        QVERIFY(modems.size() >= 10);
        QCOMPARE(m_found.size(), modems.size());
    }

    void queryShowsWhatTheScenarioHolds_data()
    {
        QTest::addColumn<QJsonObject>("modem");
        const QJsonArray modems = scenarioModems();
        for (const QJsonValue &modem : modems)
            QTest::newRow(qUtf8Printable(modem[QLatin1String("profile")].toString()))
                << modem.toObject();
    }
    void queryShowsWhatTheScenarioHolds()
    {
        QFETCH(QJsonObject, modem);
        const QJsonObject sim = modem.value(QLatin1String("sim")).toObject();
        const QString imsi = sim.value(QLatin1String("imsi")).toString();
        QVERIFY2(m_asked.contains(imsi), "it was not found, or did not tell its card");
        const Asked asked = m_asked.value(imsi);
        QVERIFY(asked.isDone);
        QCOMPARE(asked.shown.first(), asked.name);
        QVERIFY2(asked.shown.mid(1) == expectedLines(modem),
            qPrintable(asked.shown.join(QLatin1Char('\n')) + QStringLiteral("\nin place of\n")
                + expectedLines(modem).join(QLatin1Char('\n')) + QStringLiteral("\n\n")
                + asked.log));
        const QString messages = expectedMessages(modem).join(QLatin1Char('\n'));
        QVERIFY2(asked.log.contains(QStringLiteral("\nSMS ") + messages), qPrintable(asked.log));
        QVERIFY2(asked.log.contains(
                     QStringLiteral("\niccid: ") + sim.value(QLatin1String("iccid")).toString()),
            qPrintable(asked.log));
        QCOMPARE(asked.serviceCommands,
            QStringList({QStringLiteral("stop"), QStringLiteral("restart")}));
    }

private:
    struct Asked
    {
        QString name; ///< of the connection
        QString imsi; ///< in the log
        QStringList shown;
        QString log;
        QStringList serviceCommands;
        bool isDone = false;
    };

    static Asked ask(ModemAckWidget *page, const QString &name)
    {
        Asked asked;
        asked.name = name;
        const auto text = [page](const char *pane) {
            return page->findChild<QTextBrowser *>(QLatin1String(pane))->toPlainText();
        };
        page->findChild<QComboBox *>(QStringLiteral("cbModem"))->setCurrentText(name);
        QSignalSpy finished(page, &ModemAckWidget::finished);
        QTest::mouseClick(page->findChild<QWidget *>(QStringLiteral("pbAsk")), Qt::LeftButton);
        asked.isDone = finished.wait(kLong);
        asked.shown = text("tbModemData").split(QLatin1Char('\n'));
        asked.log = text("tbLog");
        static const QRegularExpression imsi(QStringLiteral("\nimsi: (\\d+)\n"));
        asked.imsi = imsi.match(asked.log).captured(1);
        return asked;
    }

    const OperatorsFile m_operators{numberServices};
    QStringList m_found;
    QMap<QString, Asked> m_asked; // by IMSI
};

int main(int argc, char **argv)
{
    RuntimeEnvironment::prepare();
    QApplication application(argc, argv);
    ProfileQueriesTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_profilequeries.moc"
