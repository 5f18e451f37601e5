#include "modemsenvs.h"

QStringList ModemsEnvs::extraPorts() const
{
    // A list in quotes arrives as one text.
    const QString joined
        = value(QStringLiteral("modems/extraPorts")).toStringList().join(QLatin1Char(','));
    QStringList ports;
    const QStringList parts = joined.split(QLatin1Char(','));
    for (const QString &part : parts) {
        const QString port = part.trimmed();
        if (!port.isEmpty() && !ports.contains(port))
            ports << port;
    }
    return ports;
}

QString ModemsEnvs::operatorsFile() const
{
    return value(QStringLiteral("modems/operators")).toString().trimmed();
}
