#pragma once

#include "atinterpreter.h"
#include "modemstate.h"

#include <QTest>

#include <memory>

// One modem with one port; what it says is collected.
class Conversation : public QObject
{
public:
    explicit Conversation(
        const ScenarioModem &scenario = {}, const QString &profileName = QStringLiteral("generic"))
    {
        ModemProfile profile;
        QString error;
        if (!ModemProfile::load(profileName, &profile, &error))
            qFatal("%s", qPrintable(error));
        ScenarioModem modem = scenario;
        modem.latencyMs = scenario.latencyMs == 5 ? 0 : scenario.latencyMs;
        modem.connectMs = scenario.connectMs == 200 ? 0 : scenario.connectMs;
        if (modem.imei.isEmpty())
            modem.imei = profile.imei;
        state = std::make_unique<ModemState>(profile, modem);
        port = std::make_unique<AtInterpreter>(state.get());
        connect(port.get(), &AtInterpreter::send, this,
            [this](const QByteArray &bytes) { said += bytes; });
        port->receive("ATE0\r");
        waitFor("OK");
        said.clear();
    }

    bool waitFor(const QByteArray &text)
    {
        return QTest::qWaitFor([this, text] { return said.contains(text); }, 5000);
    }

    // Sends a line and gives everything up to its final result code.
    QByteArray ask(const QByteArray &line)
    {
        said.clear();
        port->receive(line + '\r');
        const bool answered = QTest::qWaitFor(
            [this] {
                for (const char *result : {"\r\nOK\r\n", "\r\nERROR\r\n", " ERROR: ", "CONNECT",
                         "\r\nNO ", "\r\nBUSY\r\n", "> "}) {
                    if (said.contains(result))
                        return true;
                }
                return false;
            },
            5000);
        return answered ? said : "(no answer) " + said;
    }

    QByteArray said;
    std::unique_ptr<ModemState> state;
    std::unique_ptr<AtInterpreter> port;
};

inline QByteArray info(const QByteArray &text)
{
    return "\r\n" + text + "\r\n\r\nOK\r\n";
}

const QByteArray kOk = "\r\nOK\r\n";
const QByteArray kError = "\r\nERROR\r\n";

inline ScenarioModem withSim()
{
    ScenarioModem modem;
    modem.sim.imsi = QStringLiteral("250011234567890");
    modem.sim.iccid = QStringLiteral("8970101");
    modem.sim.number = QStringLiteral("+79161234567");
    modem.sim.ussd = {{QStringLiteral("*100#"), QStringLiteral("Balance: 150.50")},
        {QStringLiteral("*101#"), QString::fromUtf8("Да")}};
    modem.sim.smsAnswers = {{QStringLiteral("111"), QStringLiteral("Number 7")}};
    return modem;
}

inline ScenarioSms waitingSms(const char *sender, const char *time, const char *text)
{
    ScenarioSms sms;
    sms.sender = QString::fromUtf8(sender);
    sms.time = QString::fromUtf8(time);
    sms.text = QString::fromUtf8(text);
    return sms;
}
