#include "atcell.h"

#include "atfields.h"

namespace {

// Leading zeros tell how the modem writes, not where it is. All ones, and zero: not known.
QString code(const QByteArray &field)
{
    const QByteArray bare = atfields::unquoted(field).trimmed();
    bool ok = false;
    const quint64 value = bare.toULongLong(&ok, 16);
    if (!ok || bare.size() > 9 || value == 0 || value == 0xFFFF || value == 0x0FFFFFFF
        || value == 0xFFFFFFFF)
        return {};
    return QStringLiteral("%1").arg(value, 4, 16, QLatin1Char('0')).toUpper();
}

std::optional<int> smallNumber(const QByteArray &field)
{
    bool ok = false;
    const int value = field.toInt(&ok);
    return ok && value >= 0 && field.size() <= 2 ? std::optional<int>(value) : std::nullopt;
}

std::optional<AtCell> cellOf(const QList<QByteArray> &fields)
{
    const auto registration = smallNumber(fields.value(0));
    if (!registration || *registration > static_cast<int>(AtRegistration::RoamingNoFallback))
        return std::nullopt;
    AtCell cell;
    cell.registration = static_cast<AtRegistration>(*registration);
    const QString area = code(fields.value(1));
    const QString identity = code(fields.value(2));
    if (!area.isEmpty() && !identity.isEmpty()) {
        cell.area = area;
        cell.cell = identity;
    }
    cell.technology = smallNumber(fields.value(3));
    return cell;
}

} // namespace

std::optional<AtCell> parseCell(const QByteArray &name, const QList<QByteArray> &lines)
{
    std::optional<AtCell> unsolicited;
    for (const QByteArray &line : lines) {
        const auto value = atfields::valueOf(name, {line});
        if (!value)
            continue;
        QList<QByteArray> fields = atfields::split(*value);
        // A second number of one or two digits is the state; an area code is quoted or longer.
        const bool isRead = smallNumber(fields.at(0)) && smallNumber(fields.value(1));
        if (isRead)
            fields.removeFirst();
        auto cell = cellOf(fields);
        if (cell && isRead)
            return cell;
        if (cell)
            unsolicited = cell;
    }
    return unsolicited;
}
