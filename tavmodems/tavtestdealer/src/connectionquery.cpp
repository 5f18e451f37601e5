#include "connectionquery.h"

#include "atmodem.h"
#include "atmodemlog.h"
#include "modemsettings.h"

#include <QJsonDocument>
#include <QLocale>

#include <utility>

namespace {

constexpr int kOpenAttempts = 3;

} // namespace

ConnectionQuery::ConnectionQuery(AtModem &driver, Show show)
    : m_driver(driver)
    , m_show(std::move(show))
{
}

bool ConnectionQuery::run(const QString &name, QMap<QString, ModemInfo> &modems)
{
    m_show(QStringLiteral("<b><u>%1</u></b>").arg(name.toHtmlEscaped()));
    const bool isDone = ask(name, modems[name]);
    m_driver.close();
    return isDone;
}

void ConnectionQuery::complete(ModemInfo &modem, const OperatorData &operatorData)
{
    const QString line = operatorData.modemInitLine();
    if (!line.isEmpty() && !modem.initLines().contains(line))
        modem.addInitLine(line);
    if (modem.userName().isEmpty())
        modem.setUserName(operatorData.userName());
    if (modem.password().isEmpty())
        modem.setPassword(operatorData.password());
}

bool ConnectionQuery::ask(const QString &name, ModemInfo &modem)
{
    qCDebug(AT_MODEM).noquote() << "Ask" << name;
    if (!m_driver.open(modem.portName(), modem.baudrate(), kOpenAttempts)) {
        qCWarning(AT_MODEM).noquote() << name << "is not opened";
        return false;
    }
    m_driver.reset(true);
    OperatorData operatorData;
    if (!identify(operatorData))
        return false;
    complete(modem, operatorData);
    askNumber(operatorData);
    askBalance(operatorData);
    askSignal();
    takeMessages();
    m_driver.beforeDial();
    return true;
}

bool ConnectionQuery::identify(OperatorData &operatorData)
{
    int mcc = 0;
    int mnc = 0;
    if (!m_driver.getMnc(mcc, mnc)) {
        qCWarning(AT_MODEM, "mcc and mnc loading error");
        return false;
    }
    QString lac;
    QString cid;
    if (!m_driver.getGsmCells(lac, cid))
        qCWarning(AT_MODEM, "lac and cid loading error");
    show(tr("MCC"), QString::number(mcc));
    show(tr("MNC"), QString::number(mnc));
    show(tr("LAC"), lac);
    show(tr("CID"), cid);
    if (!ModemSettings().getOperatorData(mcc, mnc, operatorData)) {
        qCWarning(AT_MODEM, "Operator data loading error");
        return false;
    }
    show(tr("Operator"), operatorData.name());
    return true;
}

void ConnectionQuery::askNumber(const OperatorData &operatorData)
{
    QMap<QString, QVariant> info;
    m_driver.getInfo(info);
    QStringList lines;
    for (auto it = info.cbegin(); it != info.cend(); ++it) {
        if (it.key() == QLatin1String("gsmCells"))
            qCDebug(AT_MODEM).noquote()
                << "gsmCells"
                << QString::fromUtf8(
                       QJsonDocument::fromVariant(it.value()).toJson(QJsonDocument::Compact));
        else
            lines.append(QStringLiteral("%1: %2").arg(it.key(), it.value().toString()));
    }
    qCDebug(AT_MODEM).noquote() << lines.join(QLatin1Char('\n'));

    // A number that the card itself knows stands in these lines and costs no request.
    if (!info.value(QStringLiteral("simNumber")).toString().isEmpty())
        return;
    QString number;
    if (m_driver.requestSelfNumber(
            operatorData.selfNumberFromSms(), operatorData.selfNumberPhone(), number))
        show(tr("Sim number"), number);
}

void ConnectionQuery::askBalance(const OperatorData &operatorData)
{
    QString answer;
    if (m_driver.sendUSSD(operatorData.balancePhone(), answer))
        show(tr("Balance"),
            QString::number(
                AtModem::parseModemBalance(answer), 'g', QLocale::FloatingPointShortest));
    qCDebug(AT_MODEM).noquote() << "Balance" << answer;
}

void ConnectionQuery::askSignal()
{
    int level = 0;
    if (m_driver.getSignalLevel(level))
        m_show(QStringLiteral("<b>%1:</b> %2 dB").arg(tr("Signal level")).arg(level));
}

void ConnectionQuery::takeMessages()
{
    QList<AtModem::SSms> messages;
    if (!m_driver.takeMessages(messages))
        return;
    const QLocale locale = QLocale::system();
    QStringList lines;
    for (const AtModem::SSms &sms : qAsConst(messages))
        lines.append(
            QStringLiteral("%1: %2 -> %3")
                .arg(locale.toString(sms.time, QLocale::ShortFormat), sms.sender, sms.text));
    qCDebug(AT_MODEM).noquote() << "SMS" << lines.join(QLatin1Char('\n'));
}

void ConnectionQuery::show(const QString &label, const QString &value)
{
    m_show(QStringLiteral("<b>%1:</b> %2").arg(label, value.toHtmlEscaped()));
}
