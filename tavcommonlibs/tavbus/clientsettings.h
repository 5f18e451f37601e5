#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QVariant>

namespace tavbus {

/**
 * The settings of one agent, as kept by the broker: a value.
 *
 * The variants may hold bool, int, uint, qlonglong, qulonglong, double, QString, QByteArray,
 * QStringList, QVariantList and QVariantMap, and come back as exactly these types.
 */
class ClientSettings
{
public:
    /// Bus name of the agent whose settings these are.
    QString owner() const { return m_owner; }
    void setOwner(const QString &owner) { m_owner = owner; }

    /// Where the record comes from, for people.
    QString description() const { return m_description; }
    void setDescription(const QString &description) { m_description = description; }

    /// When the record was made; kept to the millisecond, comes back in local time.
    QDateTime dt() const { return m_dt; }
    void setDt(const QDateTime &dt) { m_dt = dt; }

    QList<QVariant> settings() const { return m_settings; }
    void setSettings(const QList<QVariant> &settings) { m_settings = settings; }

    friend bool operator==(const ClientSettings &a, const ClientSettings &b)
    {
        return a.m_owner == b.m_owner && a.m_description == b.m_description && a.m_dt == b.m_dt
            && a.m_settings == b.m_settings;
    }
    friend bool operator!=(const ClientSettings &a, const ClientSettings &b) { return !(a == b); }

private:
    QString m_owner;
    QString m_description;
    QDateTime m_dt;
    QList<QVariant> m_settings;
};

} // namespace tavbus

Q_DECLARE_METATYPE(tavbus::ClientSettings)
