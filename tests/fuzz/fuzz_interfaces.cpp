// The interfaces file, read and written.

#include "fuzzinput.h"
#include "interfacesfile.h"

#include <QBuffer>

#include <algorithm>

namespace {

using Settings = QHash<QString, InterfaceSettings>;

QStringList candidates()
{
    return {QStringLiteral("eth0"), QStringLiteral("enp3s0"), QStringLiteral("wired")};
}

Settings read(QByteArray text)
{
    QBuffer buffer(&text);
    buffer.open(QIODevice::ReadOnly);
    return interfacesfile::read(buffer, candidates());
}

bool isAddress(const QString &text)
{
    const QStringList octets = text.split(QLatin1Char('.'));
    return octets.size() == 4
        && std::all_of(octets.cbegin(), octets.cend(),
            [](const QString &octet) { return !octet.isEmpty() && octet.toInt() <= 255; });
}

// Options are found by words in a line, so a value may look like another option.
bool looksLikeOption(const QString &text)
{
    const auto has = [&text](const char *word) { return text.contains(QLatin1String(word)); };
    return has("address") || has("netmask") || has("gateway") || has("iface")
        || has("dns-nameservers")
        || std::any_of(text.cbegin(), text.cend(), [](QChar c) { return !c.isPrint(); })
        || text.endsWith(QLatin1Char('\\'));
}

// What was read comes back when it is written and read again.
void writeBack(Settings settings)
{
    for (InterfaceSettings &values : settings) {
        if (looksLikeOption(values.dnsServers()))
            values.setDnsServers({});
    }
    settings.remove(QStringLiteral("iface")); // one on DHCP, whose name is not kept
    require(read(interfacesfile::text(settings)) == settings, "a file that was written is read");
}

// Whatever the values are, one interface's stay out of the others'.
void writeAny(FuzzInput &input)
{
    Settings settings;
    InterfaceSettings good;
    good.setUseDhcp(false);
    good.setAddress(QStringLiteral("10.0.0.1"));
    good.setNetMask(QStringLiteral("255.0.0.0"));
    InterfaceSettings any = good;
    const QString name = input.text();
    any.setAddress(input.text());
    any.setNetMask(input.text());
    any.setGateway(input.text());
    any.setDnsServers(input.text());
    settings.insert(QStringLiteral("eth0"), good);
    settings.insert(name, any);
    const QByteArray text = interfacesfile::text(settings);
    const int stanzas = text.count("\nauto ") - 1; // beside the loopback's
    const int named = static_cast<int>(std::count_if(settings.keyBegin(), settings.keyEnd(),
        [](const QString &key) { return interfacesfile::isPlainName(key); }));
    require(text.count("\niface ") - 1 == stanzas && stanzas == named,
        "a value starts no stanza of its own");
    require(!text.contains("\\\n") && !text.contains('\r') && !text.contains('\0'),
        "a value ends with its line");
}

void readAny(FuzzInput &input)
{
    const Settings settings = read(input.rest());
    for (auto it = settings.cbegin(); it != settings.cend(); ++it) {
        require(it.key() == QLatin1String("iface") || candidates().contains(it.key()),
            "an interface is one of the system's");
        for (const QString &value : {it->address(), it->netMask(), it->gateway()})
            require(value.isEmpty() || isAddress(value), "an address is one");
    }
    writeBack(settings);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    readOrWrite(input, readAny, writeAny);
    return 0;
}
