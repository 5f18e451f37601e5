#include "foundmodem.h"

#include <QMap>

#include <algorithm>

namespace {

// USB interfaces of the port for data calls, the most usual first: Quectel and SIMCom by their
// Linux USB guides (EC2x, SIM7x00), Sierra by that of the AirPrime MC/EM series; ZTE's differ by
// product. Other makers put it first.
QList<int> dataInterfaces(const QString &dialect)
{
    static const QMap<QString, QList<int>> documented{
        {QStringLiteral("Quectel"), {3}},
        {QStringLiteral("SIMCom"), {3}},
        {QStringLiteral("Sierra"), {3}},
        {QStringLiteral("ZTE"), {3, 2, 4}},
    };
    return documented.value(dialect);
}

// What comes first is the better data port.
int rank(const AnsweringPort &answering)
{
    const int interface = answering.port.usbInterface;
    const QList<int> preferred = dataInterfaces(answering.dialect);
    const int place = preferred.indexOf(interface);
    return place >= 0 ? place - preferred.size() : interface;
}

bool isSameModem(const AnsweringPort &one, const AnsweringPort &other)
{
    if (!one.imei.isEmpty() && !other.imei.isEmpty())
        return one.imei == other.imei;
    return !one.port.usbDevice.isEmpty() && one.port.usbDevice == other.port.usbDevice;
}

// Only what no file, shell or program takes for something else.
QString plain(const QString &text)
{
    QString result;
    for (const QChar c : text) {
        const ushort code = c.unicode();
        const bool isPlain = (code >= '0' && code <= '9') || (code >= 'A' && code <= 'Z')
            || (code >= 'a' && code <= 'z') || code == '.' || code == '_' || code == '-';
        if (isPlain)
            result += c;
        else if (!result.isEmpty() && !result.endsWith(QLatin1Char('_')))
            result += QLatin1Char('_');
    }
    while (result.endsWith(QLatin1Char('_')))
        result.chop(1);
    while (result.startsWith(QLatin1Char('-'))) // the dialer would take it for an option
        result.remove(0, 1);
    return result;
}

QString connectionName(const FoundModem &modem)
{
    const QString model = plain(modem.model.isEmpty() ? modem.manufacturer : modem.model);
    QString port = modem.info.portName();
    if (port.startsWith(QLatin1String("/dev/")))
        port.remove(0, 5);
    return QStringLiteral("%1-%2").arg(
        model.isEmpty() ? QStringLiteral("modem") : model, plain(port));
}

FoundModem merged(QList<AnsweringPort> ports)
{
    std::stable_sort(ports.begin(), ports.end(),
        [](const AnsweringPort &a, const AnsweringPort &b) { return rank(a) < rank(b); });
    FoundModem modem;
    modem.info.setPortName(ports.first().port.name);
    modem.info.setBaudrate(ports.first().baudrate);
    OperatorData operatorData;
    for (const AnsweringPort &answering : qAsConst(ports)) {
        modem.ports << answering.port.name;
        // A port that does not tell is helped out by the others.
        const auto fill = [](QString &field, const QString &value) {
            if (field.isEmpty())
                field = value;
        };
        fill(modem.manufacturer, answering.manufacturer);
        fill(modem.model, answering.model);
        fill(modem.imei, answering.imei);
        if (operatorData == OperatorData())
            operatorData = answering.operatorData;
    }
    if (!operatorData.modemInitLine().isEmpty())
        modem.info.addInitLine(operatorData.modemInitLine());
    modem.info.setUserName(operatorData.userName());
    modem.info.setPassword(operatorData.password());
    return modem;
}

} // namespace

QList<FoundModem> modemsBehind(const QList<AnsweringPort> &ports)
{
    QList<QList<AnsweringPort>> groups;
    // Those with an IMEI first, so that the others find their modem whatever the order.
    for (const bool hasImei : {true, false}) {
        for (const AnsweringPort &port : ports) {
            if (port.imei.isEmpty() == hasImei)
                continue;
            const auto group = std::find_if(
                groups.begin(), groups.end(), [&](const QList<AnsweringPort> &known) {
                    return isSameModem(known.first(), port);
                });
            if (group != groups.end())
                group->append(port);
            else
                groups.append({port});
        }
    }

    QMap<QString, FoundModem> modems;
    for (const QList<AnsweringPort> &group : qAsConst(groups)) {
        FoundModem modem = merged(group);
        const QString name = connectionName(modem);
        QString free = name; // paths may become alike when they are made plain
        for (int number = 2; modems.contains(free); ++number)
            free = QStringLiteral("%1-%2").arg(name).arg(number);
        modem.info.setConnectionName(free);
        modems.insert(free, modem);
    }
    return modems.values();
}
