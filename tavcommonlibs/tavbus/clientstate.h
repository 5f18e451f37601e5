#pragma once

#include <QDateTime>
#include <QVariantMap>

namespace tavbus {

/**
 * What a service last said about itself: a value. The same types as in ClientSettings.
 */
class ClientState
{
public:
    /// When the service published it, by the service's clock; whether that is too long ago is the
    /// reader's to judge.
    QDateTime dt() const { return m_dt; }
    void setDt(const QDateTime &dt) { m_dt = dt; }

    QVariantMap body() const { return m_body; }
    void setBody(const QVariantMap &body) { m_body = body; }

    friend bool operator==(const ClientState &a, const ClientState &b)
    {
        return a.m_dt == b.m_dt && a.m_body == b.m_body;
    }
    friend bool operator!=(const ClientState &a, const ClientState &b) { return !(a == b); }

private:
    QDateTime m_dt;
    QVariantMap m_body;
};

} // namespace tavbus

Q_DECLARE_METATYPE(tavbus::ClientState)
