#include "interfacesfile.h"

#include <QDebug>
#include <QIODevice>
#include <QRegularExpression>
#include <QTextStream>

#include <algorithm>

namespace {

// The first address of the line, or nothing.
QString addressIn(const QString &line)
{
    static const QRegularExpression pattern(
        QStringLiteral("\\b(?:(?:25[0-5]|2[0-4][0-9]|[01]?[0-9][0-9]?)\\.){3}"
                       "(?:25[0-5]|2[0-4][0-9]|[01]?[0-9][0-9]?)\\b"));
    return pattern.match(line).captured(0);
}

// The first option found in the line decides: a "hwaddress" line counts as the address.
void readOption(const QString &line, InterfaceSettings &settings)
{
    const QLatin1String dns("dns-nameservers");
    if (line.contains(QLatin1String("address")))
        settings.setAddress(addressIn(line));
    else if (line.contains(QLatin1String("netmask")))
        settings.setNetMask(addressIn(line));
    else if (line.contains(QLatin1String("gateway")))
        settings.setGateway(addressIn(line));
    else if (line.contains(dns))
        settings.setDnsServers(QString(line).remove(dns).trimmed());
}

// A value ends where its line ends: it starts no other line and does not draw the next one in.
QString oneLine(QString value)
{
    for (const char lineBreak : {'\n', '\r', '\0'})
        value.replace(QLatin1Char(lineBreak), QLatin1Char(' '));
    while (value.endsWith(QLatin1Char('\\')))
        value.chop(1);
    return value;
}

} // namespace

QHash<QString, InterfaceSettings> interfacesfile::read(
    QIODevice &device, const QStringList &candidates)
{
    QTextStream stream(&device);
    stream.setCodec("UTF-8");
    QHash<QString, InterfaceSettings> result;
    QString current;
    InterfaceSettings settings;
    const auto forget = [&] {
        current.clear();
        settings = InterfaceSettings();
    };
    while (!stream.atEnd()) {
        const QString line = stream.readLine();
        if (!line.contains(QLatin1String("iface")) || !line.contains(QLatin1String("inet"))) {
            if (!current.isEmpty())
                readOption(line, settings);
            continue;
        }
        if (!current.isEmpty())
            result[current] = settings;
        forget();
        const auto candidate = std::find_if(candidates.cbegin(), candidates.cend(),
            [&line](const QString &name) { return line.contains(name); });
        if (candidate == candidates.cend())
            continue;
        if (line.contains(QLatin1String("dhcp"))) {
            // Under this very word: looked up by its name, the interface gets the defaults.
            result[QStringLiteral("iface")] = settings;
        } else if (line.contains(QLatin1String("static"))) {
            current = *candidate;
            settings.setUseDhcp(false);
        }
    }
    if (!current.isEmpty())
        result[current] = settings;
    return result;
}

QByteArray interfacesfile::text(const QHash<QString, InterfaceSettings> &settings)
{
    QStringList lines = {
        QStringLiteral("# This file describes the network interfaces available on your system"),
        QStringLiteral("# and how to activate them. For more information, see interfaces(5)."),
        QString(),
        QStringLiteral("# The loopback network interface"),
        QStringLiteral("auto lo"),
        QStringLiteral("iface lo inet loopback"),
        QString(),
        QStringLiteral("#Network interfaces"),
        QString(),
    };
    for (auto it = settings.cbegin(); it != settings.cend(); ++it) {
        const QString &name = it.key();
        const InterfaceSettings &values = it.value();
        if (!isPlainName(name)) {
            if (!name.isEmpty())
                qWarning() << "Not written, for its name:" << name;
            continue;
        }
        lines += QStringLiteral("auto %1").arg(name);
        lines += QStringLiteral("allow-hotplug %1").arg(name);
        lines
            += QStringLiteral("iface %1 inet %2")
                   .arg(name, values.useDhcp() ? QStringLiteral("dhcp") : QStringLiteral("static"));
        if (!values.useDhcp()) {
            lines += QStringLiteral("\taddress %1").arg(oneLine(values.address()));
            lines += QStringLiteral("\tnetmask %1").arg(oneLine(values.netMask()));
            lines += QStringLiteral("\tgateway %1").arg(oneLine(values.gateway()));
            if (!values.dnsServers().isEmpty())
                lines += QStringLiteral("\tdns-nameservers %1").arg(oneLine(values.dnsServers()));
        }
        lines += QString();
    }
    return lines.join(QLatin1Char('\n')).toUtf8();
}

bool interfacesfile::isPlainName(const QString &name)
{
    const auto isPlain = [](QChar c) {
        return c.isPrint() && !c.isSpace() && c != QLatin1Char('"') && c != QLatin1Char('\'')
            && c != QLatin1Char('\\') && c != QLatin1Char('/');
    };
    return !name.isEmpty() && !name.startsWith(QLatin1Char('-'))
        && std::all_of(name.cbegin(), name.cend(), isPlain);
}
