#include "modemalone.h"

#include <QRegularExpression>

#include <algorithm>

std::optional<QByteArray> modemAlone(const QByteArray &command, const QList<QByteArray> &lines)
{
    static const QRegularExpression device(
        QStringLiteral("^\\^SETPORT: *([0-9A-F]{1,2}): *(?:[34]G )?(MODEM|PCUI)$"));
    QByteArray modem;
    QByteArray control;
    for (const QByteArray &line : lines) {
        const auto match = device.match(QString::fromLatin1(line));
        if (!match.hasMatch())
            continue;
        // The first of each kind: older ones stand before newer ones.
        QByteArray &code = match.capturedRef(2) == QLatin1String("MODEM") ? modem : control;
        if (code.isEmpty())
            code = match.captured(1).toLatin1();
    }
    if (modem.isEmpty())
        return std::nullopt;
    // FF: nothing before the computer's own driver takes over, so that no drive shows.
    const QByteArray codes = control.isEmpty() ? modem : modem + ',' + control;
    return command + "=\"FF;" + codes + '"';
}

bool tellsFailure(const QList<QByteArray> &lines)
{
    return std::any_of(lines.begin(), lines.end(),
        [](const QByteArray &line) { return line.contains("FAIL") && line.endsWith(":0"); });
}
