#pragma once

#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

/// Reads one JSON object strictly: the first wrong type, value out of range or unknown key is kept
/// as an error that names its place ("modems[1].sim.pin: ..."), and everything after it reads as
/// the fallbacks. The error text is shared by all readers made from one and outlives them.
class JsonReader
{
public:
    JsonReader(const QJsonValue &value, const QString &place, QString *error);
    /// Of a whole file; a syntax error is the first one to be kept. Empties the error before.
    static JsonReader ofFile(const QByteArray &json, QString *error);

    bool has(const QString &key) const { return m_object.contains(key); }
    QString text(const QString &key, const QString &fallback = {});
    /// One of `words`, the first of which is the fallback.
    QString word(const QString &key, const QStringList &words);
    bool flag(const QString &key, bool fallback);
    int number(const QString &key, int fallback, int least, int most);
    QStringList texts(const QString &key);
    QList<int> numbers(const QString &key, int least, int most);
    QMap<QString, QString> textMap(const QString &key);
    QMap<QString, int> numberMap(const QString &key, int least, int most);
    JsonReader object(const QString &key);
    QList<JsonReader> objects(const QString &key);
    QStringList keys() const { return m_object.keys(); }
    QJsonValue raw(const QString &key);

    /// To be called last: refuses the keys that nobody asked for.
    void finish();
    void fail(const QString &key, const QString &what);

private:
    QString placeOf(const QString &key) const;
    bool take(const QString &key, QJsonValue *value);

    QJsonObject m_object;
    QString m_place;
    QString *m_error;
    QSet<QString> m_known;
};
