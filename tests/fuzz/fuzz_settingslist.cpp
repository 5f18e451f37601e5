// The list of settings that the bus keeps of the modems.

#include "fuzzinput.h"
#include "modemsettings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    QVariantList list;
    while (!input.isAtEnd())
        list.append(input.variant());
    ModemSettings settings;
    const QVariantList before = settings.toSettingsList();
    if (!settings.setSettingsList(list)) {
        require(settings.toSettingsList() == before, "a list that is refused changes nothing");
        return 0;
    }
    const QVariantList taken = settings.toSettingsList();
    const auto modems = settings.modems();
    const QStringList order = settings.connectionsOrder();
    require(taken.size() == modems.size() + 1, "there is a map for each record, and a header");
    require(settings.setSettingsList(taken) && settings.modems() == modems
            && settings.connectionsOrder() == order && settings.toSettingsList() == taken,
        "what comes out goes in again");
    // What this program does not know is kept.
    for (const QVariant &record : list.mid(1)) {
        const QVariantMap map = record.toMap();
        for (const QVariant &kept : taken.mid(1)) {
            const QVariantMap now = kept.toMap();
            if (now.value(QStringLiteral("key")) != map.value(QStringLiteral("key")))
                continue;
            for (auto it = map.cbegin(); it != map.cend(); ++it)
                require(now.contains(it.key()), "no key of a record is lost");
        }
    }
    settings.setSettingsList(before);
    return 0;
}
