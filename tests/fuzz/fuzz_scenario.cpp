// What the simulated terminal is described by: scenarios and profiles of modems. A modem that was
// accepted is switched on and asked.

#include "atcommands.h"
#include "fuzzinput.h"
#include "modemstate.h"

namespace {

void ask(const ModemProfile &profile, const ScenarioModem &scenario)
{
    ModemState modem(profile, scenario);
    AtCommands commands(&modem);
    commands.powerUp();
    for (const char *command : {"+CPIN?", "+CREG=2", "+CREG?", "+COPS?", "+CSQ", "+CNUM", "+CIMI",
             "+CPMS?", "+CMGF=0", "+CMGL=4", "+CMGF=1", "+CMGL=\"ALL\"", "+CGSN", "+CCID",
             "+CUSD=1,\"*100#\",15", "+CFUN?", "I"}) {
        const CommandReply reply = commands.execute(command);
        require(reply.kind != CommandReply::Kind::Final || !reply.result.isEmpty(),
            "a command is answered");
        if (reply.later)
            reply.later();
    }
}

void readScenario(const QByteArray &json)
{
    Scenario scenario;
    QString error;
    const bool isRead = Scenario::parse(json, &scenario, &error);
    require(isRead == error.isEmpty(), "a scenario is read, or it says why not");
    if (!isRead)
        require(scenario.modems.isEmpty(), "what is no scenario changes nothing");
    for (const ScenarioModem &modem : qAsConst(scenario.modems)) {
        ModemProfile profile;
        require(ModemProfile::load(modem.profile, &profile, &error), "its profiles are there");
        ask(profile, modem);
    }
}

void readProfile(const QByteArray &json)
{
    ModemProfile profile;
    QString error;
    const bool isRead = ModemProfile::parse(json, &profile, &error);
    require(isRead == error.isEmpty(), "a profile is read, or it says why not");
    if (isRead)
        ask(profile, ScenarioModem());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray json = FuzzInput(data, size).rest();
    readScenario(json);
    readProfile(json);
    return 0;
}
