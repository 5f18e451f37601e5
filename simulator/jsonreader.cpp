#include "jsonreader.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>

JsonReader::JsonReader(const QJsonValue &value, const QString &place, QString *error)
    : m_object(value.toObject())
    , m_place(place)
    , m_error(error)
{
    if (!value.isObject())
        fail({}, QStringLiteral("must be an object"));
}

JsonReader JsonReader::ofFile(const QByteArray &json, QString *error)
{
    QJsonParseError jsonError{};
    const QJsonDocument document = QJsonDocument::fromJson(json, &jsonError);
    error->clear();
    if (jsonError.error != QJsonParseError::NoError)
        *error = QStringLiteral("not JSON: %1 at byte %2")
                     .arg(jsonError.errorString())
                     .arg(jsonError.offset);
    return JsonReader(document.isObject() ? document.object() : QJsonValue(), {}, error);
}

QString JsonReader::placeOf(const QString &key) const
{
    if (m_place.isEmpty() || key.isEmpty())
        return m_place + key;
    return m_place + QLatin1Char('.') + key;
}

void JsonReader::fail(const QString &key, const QString &what)
{
    if (!m_error->isEmpty())
        return;
    const QString place = placeOf(key);
    *m_error = QStringLiteral("%1: %2").arg(
        place.isEmpty() ? QStringLiteral("the whole file") : place, what);
}

bool JsonReader::take(const QString &key, QJsonValue *value)
{
    m_known.insert(key);
    *value = m_object.value(key);
    return !value->isUndefined();
}

QJsonValue JsonReader::raw(const QString &key)
{
    QJsonValue value;
    take(key, &value);
    return value;
}

QString JsonReader::text(const QString &key, const QString &fallback)
{
    QJsonValue value;
    if (!take(key, &value))
        return fallback;
    if (value.isString())
        return value.toString();
    fail(key, QStringLiteral("must be a text"));
    return fallback;
}

QString JsonReader::word(const QString &key, const QStringList &words)
{
    QString value = text(key, words.first());
    if (words.contains(value))
        return value;
    fail(key,
        QStringLiteral("\"%1\" is none of \"%2\"")
            .arg(value, words.join(QStringLiteral("\", \""))));
    return words.first();
}

bool JsonReader::flag(const QString &key, bool fallback)
{
    QJsonValue value;
    if (!take(key, &value))
        return fallback;
    if (value.isBool())
        return value.toBool();
    fail(key, QStringLiteral("must be true or false"));
    return fallback;
}

int JsonReader::number(const QString &key, int fallback, int least, int most)
{
    QJsonValue value;
    if (!take(key, &value))
        return fallback;
    const double number = value.toDouble(least - 1.0);
    if (value.isDouble() && number >= least && number <= most && number == static_cast<int>(number))
        return static_cast<int>(number);
    fail(key, QStringLiteral("must be a whole number from %1 to %2").arg(least).arg(most));
    return fallback;
}

QStringList JsonReader::texts(const QString &key)
{
    QJsonValue value;
    if (!take(key, &value))
        return {};
    const QJsonArray array = value.toArray();
    const bool allTexts = std::all_of(
        array.begin(), array.end(), [](const QJsonValue &item) { return item.isString(); });
    if (!value.isArray() || !allTexts) {
        fail(key, QStringLiteral("must be a list of texts"));
        return {};
    }
    QStringList texts;
    for (const QJsonValue &item : array)
        texts.append(item.toString());
    return texts;
}

QList<int> JsonReader::numbers(const QString &key, int least, int most)
{
    QJsonValue value;
    if (!take(key, &value))
        return {};
    const QJsonArray array = value.toArray();
    QList<int> numbers;
    for (const QJsonValue &item : array) {
        const int number = item.toInt(least - 1);
        if (number >= least && number <= most)
            numbers.append(number);
    }
    if (!value.isArray() || numbers.size() != array.size()) {
        fail(key,
            QStringLiteral("must be a list of whole numbers from %1 to %2").arg(least).arg(most));
        return {};
    }
    return numbers;
}

QMap<QString, QString> JsonReader::textMap(const QString &key)
{
    QMap<QString, QString> map;
    if (!has(key))
        return map;
    JsonReader inner = object(key);
    for (const QString &name : inner.keys())
        map.insert(name, inner.text(name));
    return map;
}

QMap<QString, int> JsonReader::numberMap(const QString &key, int least, int most)
{
    QMap<QString, int> map;
    if (!has(key))
        return map;
    JsonReader inner = object(key);
    for (const QString &name : inner.keys())
        map.insert(name, inner.number(name, least, least, most));
    return map;
}

JsonReader JsonReader::object(const QString &key)
{
    QJsonValue value;
    if (!take(key, &value))
        value = QJsonObject();
    return JsonReader(value, placeOf(key), m_error);
}

QList<JsonReader> JsonReader::objects(const QString &key)
{
    QJsonValue value;
    QList<JsonReader> readers;
    if (!take(key, &value))
        return readers;
    if (!value.isArray())
        fail(key, QStringLiteral("must be a list"));
    const QJsonArray array = value.toArray();
    for (int i = 0; i < array.size(); ++i)
        readers.append(
            JsonReader(array.at(i), placeOf(key) + QStringLiteral("[%1]").arg(i), m_error));
    return readers;
}

void JsonReader::finish()
{
    const QStringList keys = m_object.keys();
    for (const QString &key : keys) {
        if (!m_known.contains(key))
            fail(key, QStringLiteral("is not known"));
    }
}
