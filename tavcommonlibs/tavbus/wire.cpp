#include "wire.h"

#include <QDBusArgument>
#include <QDBusVariant>
#include <QDataStream>

#include <algorithm>
#include <limits>

namespace tavbus::wire {

namespace {

constexpr qint64 kNoStamp = std::numeric_limits<qint64>::min();
constexpr qint64 kFirstStamp = -62135596800000; // 0001-01-01 00:00:00.000 UTC
constexpr qint64 kLastStamp = 253402300799999; // 9999-12-31 23:59:59.999 UTC
constexpr auto kPackFormat = QDataStream::Qt_5_15;

/// Takes a value out of its wrappings and counts the bytes that it will take packed, as it goes:
/// one that is too large is given up before it is copied whole.
class Unwrapper
{
public:
    explicit Unwrapper(qint64 limit)
        : m_left(limit)
    {
    }

    std::optional<QVariant> value(const QVariant &value, int depth)
    {
        if (value.userType() == qMetaTypeId<QDBusVariant>())
            return this->value(value.value<QDBusVariant>().variant(), depth); // D-Bus allows 64
        if (value.userType() == qMetaTypeId<QDBusArgument>())
            return marshalled(value.value<QDBusArgument>(), depth + 1);
        if (!takes(kVariantHead))
            return {};
        switch (value.userType()) {
        case QMetaType::QVariantList:
            return list(value.toList(), depth + 1);
        case QMetaType::QVariantMap:
            return map(value.toMap(), depth + 1);
        default:
            return passes(value) ? std::optional(value) : std::nullopt;
        }
    }

private:
    // QDataStream's sizes.
    static constexpr int kVariantHead = 5; // type and null flag
    static constexpr int kCount = 4; // of characters or items

    bool takes(qint64 bytes)
    {
        m_left -= bytes;
        return m_left >= 0;
    }

    bool passes(const QString &text) { return takes(kCount + 2 * text.size()) && isText(text); }

    bool passes(const QVariant &value)
    {
        switch (value.userType()) {
        case QMetaType::Bool:
            return takes(1);
        case QMetaType::Int:
        case QMetaType::UInt:
            return takes(4);
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Double:
            return takes(8);
        case QMetaType::QByteArray:
            return takes(kCount + value.toByteArray().size());
        case QMetaType::QString:
            return passes(value.toString());
        case QMetaType::QStringList: {
            const QStringList texts = value.toStringList();
            return takes(kCount)
                && std::all_of(texts.cbegin(), texts.cend(),
                    [this](const QString &text) { return passes(text); });
        }
        default:
            return false;
        }
    }

    std::optional<QVariant> list(const QVariantList &items, int depth)
    {
        QVariantList plain;
        plain.reserve(items.size());
        if (depth > kMaxDepth || !takes(kCount))
            return {};
        for (const QVariant &item : items) {
            const auto unwrapped = value(item, depth);
            if (!unwrapped)
                return {};
            plain.append(*unwrapped);
        }
        return plain;
    }

    std::optional<QVariant> map(const QVariantMap &items, int depth)
    {
        QVariantMap plain;
        if (depth > kMaxDepth || !takes(kCount))
            return {};
        for (auto it = items.cbegin(); it != items.cend(); ++it) {
            const auto unwrapped
                = passes(it.key()) ? value(it.value(), depth) : std::optional<QVariant>();
            if (!unwrapped)
                return {};
            plain.insert(plain.cend(), it.key(), *unwrapped);
        }
        return plain;
    }

    // What Qt has not taken apart itself: maps, lists, and typed arrays of other clients (of
    // integers, say), which become lists.
    std::optional<QVariant> marshalled(const QDBusArgument &argument, int depth)
    {
        if (!takes(kVariantHead))
            return {};
        if (argument.currentType() == QDBusArgument::ArrayType) {
            QVariantList items;
            argument.beginArray();
            while (!argument.atEnd())
                items.append(argument.asVariant());
            argument.endArray();
            return list(items, depth);
        }
        if (argument.currentType() != QDBusArgument::MapType)
            return {};
        QVariantMap items;
        argument.beginMap();
        while (!argument.atEnd()) {
            argument.beginMapEntry();
            const QVariant key = argument.asVariant();
            const QVariant item = argument.asVariant();
            argument.endMapEntry();
            if (key.userType() != QMetaType::QString)
                return {};
            items.insert(key.toString(), item);
        }
        argument.endMap();
        return map(items, depth);
    }

    qint64 m_left; // bytes
};

/// Reads what packed() wrote, and only that: QDataStream itself would make room for as many values
/// as damaged bytes claim, go as deep as they do, and make objects of any type that they name.
class Unpacker
{
public:
    explicit Unpacker(const QByteArray &bytes)
        : m_size(static_cast<quint32>(bytes.size()))
        , m_stream(bytes)
    {
        m_stream.setVersion(kPackFormat);
    }

    std::optional<QVariant> all()
    {
        const QVariant value = this->value(0);
        if (!value.isValid() || m_stream.status() != QDataStream::Ok || !m_stream.atEnd())
            return {};
        return value;
    }

private:
    // Invalid when it cannot be read.
    QVariant value(int depth)
    {
        quint32 type = QMetaType::UnknownType;
        qint8 isNull = 0;
        m_stream >> type >> isNull;
        switch (type) {
        case QMetaType::Bool:
            return take<bool>();
        case QMetaType::Int:
            return take<int>();
        case QMetaType::UInt:
            return take<uint>();
        case QMetaType::LongLong:
            return take<qlonglong>();
        case QMetaType::ULongLong:
            return take<qulonglong>();
        case QMetaType::Double:
            return take<double>();
        case QMetaType::QByteArray:
            return take<QByteArray>();
        case QMetaType::QString:
            return take<QString>();
        case QMetaType::QStringList:
            return texts();
        case QMetaType::QVariantList:
            return list(depth + 1);
        case QMetaType::QVariantMap:
            return map(depth + 1);
        default:
            return {};
        }
    }

    template <typename T>
    QVariant take()
    {
        T value{};
        m_stream >> value;
        return m_stream.status() == QDataStream::Ok ? QVariant(value) : QVariant();
    }

    // False when the bytes cannot hold so many.
    bool takeCount(quint32 &count)
    {
        m_stream >> count;
        return m_stream.status() == QDataStream::Ok && count <= m_size / kCount;
    }

    QVariant texts()
    {
        quint32 count = 0;
        if (!takeCount(count))
            return {};
        QStringList texts;
        for (; count > 0; --count) {
            QString text;
            m_stream >> text;
            if (m_stream.status() != QDataStream::Ok)
                return {};
            texts.append(text);
        }
        return texts;
    }

    QVariant list(int depth)
    {
        quint32 count = 0;
        if (depth > kMaxDepth || !takeCount(count))
            return {};
        QVariantList items;
        for (; count > 0; --count) {
            const QVariant item = value(depth);
            if (!item.isValid())
                return {};
            items.append(item);
        }
        return items;
    }

    QVariant map(int depth)
    {
        quint32 count = 0;
        if (depth > kMaxDepth || !takeCount(count))
            return {};
        QVariantMap items;
        for (; count > 0; --count) {
            QString key;
            m_stream >> key;
            const QVariant item = value(depth);
            if (!item.isValid() || items.contains(key))
                return {};
            items.insert(key, item);
        }
        return items;
    }

    static constexpr quint32 kCount = 4; // bytes that the smallest item takes

    const quint32 m_size;
    QDataStream m_stream;
};

bool isSane(qint64 stamp)
{
    return stamp >= kFirstStamp && stamp <= kLastStamp;
}

template <typename Container>
std::optional<Container> checkedContainer(const Container &container, int limit)
{
    const std::optional<QVariant> plain = Unwrapper(limit).value(container, 0);
    return plain ? std::optional(plain->value<Container>()) : std::nullopt;
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
    return Unpacker(bytes).all();
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
    const qint64 stamp = dt.isValid() ? dt.toMSecsSinceEpoch() : kNoStamp;
    return isSane(stamp) ? stamp : kNoStamp;
}

QDateTime toDateTime(qint64 stamp)
{
    return isSane(stamp) ? QDateTime::fromMSecsSinceEpoch(stamp) : QDateTime();
}

} // namespace tavbus::wire
