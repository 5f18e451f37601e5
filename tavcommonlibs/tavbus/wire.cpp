#include "wire.h"

#include <QDBusArgument>
#include <QDBusVariant>
#include <QDataStream>

#include <algorithm>
#include <limits>

namespace tavbus::wire {

namespace {

constexpr qint64 kNoStamp = std::numeric_limits<qint64>::min();
constexpr auto kPackFormat = QDataStream::Qt_5_15;

std::optional<QVariant> unwrap(const QVariant &value, int depth);

std::optional<QVariant> unwrapList(const QVariantList &list, int depth)
{
    QVariantList plain;
    plain.reserve(list.size());
    for (const QVariant &item : list) {
        const auto value = unwrap(item, depth);
        if (!value)
            return {};
        plain.append(*value);
    }
    return plain;
}

std::optional<QVariant> unwrapMap(const QVariantMap &map, int depth)
{
    QVariantMap plain;
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        const auto value = unwrap(it.value(), depth);
        if (!value || !isText(it.key()))
            return {};
        plain.insert(it.key(), *value);
    }
    return plain;
}

// A typed array of another client (of integers, say) becomes a list of variants.
std::optional<QVariant> unwrapArray(const QDBusArgument &argument, int depth)
{
    QVariantList list;
    argument.beginArray();
    while (!argument.atEnd())
        list.append(argument.asVariant());
    argument.endArray();
    return unwrapList(list, depth);
}

std::optional<QVariant> unwrapDictionary(const QDBusArgument &argument, int depth)
{
    QVariantMap map;
    argument.beginMap();
    while (!argument.atEnd()) {
        argument.beginMapEntry();
        const QVariant key = argument.asVariant();
        const QVariant value = argument.asVariant();
        argument.endMapEntry();
        if (key.userType() != QMetaType::QString)
            return {};
        map.insert(key.toString(), value);
    }
    argument.endMap();
    return unwrapMap(map, depth);
}

std::optional<QVariant> unwrap(const QVariant &value, int depth)
{
    if (depth > kMaxDepth)
        return {};
    switch (value.userType()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::QByteArray:
        return value;
    case QMetaType::QString:
        return isText(value.toString()) ? std::optional(value) : std::nullopt;
    case QMetaType::QStringList: {
        const QStringList list = value.toStringList();
        return std::all_of(list.cbegin(), list.cend(), isText) ? std::optional(value)
                                                               : std::nullopt;
    }
    case QMetaType::QVariantList:
        return unwrapList(value.toList(), depth + 1);
    case QMetaType::QVariantMap:
        return unwrapMap(value.toMap(), depth + 1);
    default:
        break;
    }
    if (value.userType() == qMetaTypeId<QDBusVariant>())
        return unwrap(value.value<QDBusVariant>().variant(), depth + 1);
    if (value.userType() == qMetaTypeId<QDBusArgument>()) {
        const auto argument = value.value<QDBusArgument>();
        if (argument.currentType() == QDBusArgument::ArrayType)
            return unwrapArray(argument, depth + 1);
        if (argument.currentType() == QDBusArgument::MapType)
            return unwrapDictionary(argument, depth + 1);
    }
    return {};
}

template <typename Container>
std::optional<Container> checkedContainer(const Container &container, int limit)
{
    const std::optional<QVariant> plain = unwrapped(container);
    if (!plain || packed(*plain).size() > limit)
        return {};
    return plain->value<Container>();
}

} // namespace

bool isName(const QString &name)
{
    const auto allowed = [](QChar c) {
        return (c >= QLatin1Char('a') && c <= QLatin1Char('z'))
            || (c >= QLatin1Char('A') && c <= QLatin1Char('Z'))
            || (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('.')
            || c == QLatin1Char('_') || c == QLatin1Char('-');
    };
    return !name.isEmpty() && name.size() <= kMaxName
        && std::all_of(name.cbegin(), name.cend(), allowed);
}

bool isText(const QString &text)
{
    return !text.contains(QChar(QChar::Null)) && text.isValidUtf16();
}

std::optional<QVariant> unwrapped(const QVariant &value)
{
    return unwrap(value, 0);
}

QByteArray packed(const QVariant &value)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(kPackFormat);
    stream << value;
    return bytes;
}

std::optional<QVariant> unpacked(const QByteArray &bytes)
{
    QDataStream stream(bytes);
    stream.setVersion(kPackFormat);
    QVariant value;
    stream >> value;
    if (stream.status() != QDataStream::Ok || !stream.atEnd())
        return {};
    return value;
}

std::optional<QVariantList> checked(const QVariantList &list, int limit)
{
    return checkedContainer(list, limit);
}

std::optional<QVariantMap> checked(const QVariantMap &map, int limit)
{
    return checkedContainer(map, limit);
}

qint64 fromDateTime(const QDateTime &dt)
{
    return dt.isValid() ? dt.toMSecsSinceEpoch() : kNoStamp;
}

QDateTime toDateTime(qint64 stamp)
{
    return stamp == kNoStamp ? QDateTime() : QDateTime::fromMSecsSinceEpoch(stamp);
}

} // namespace tavbus::wire
