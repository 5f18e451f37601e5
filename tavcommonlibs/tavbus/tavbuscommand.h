#pragma once

#include "message.h"

#include <QMap>
#include <QString>
#include <QVariant>

/**
 * A command to, or at, an agent: a value.
 */
class TavBusCommand
{
public:
    /// Bus name of the agent that is to obey.
    QString agent() const { return m_agent; }
    void setAgent(const QString &agent) { m_agent = agent; }

    QString name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }

    /// Named arguments; of the types that ClientSettings lists.
    QMap<QString, QVariant> data() const { return m_data; }
    void setData(const QMap<QString, QVariant> &data) { m_data = data; }

    tavbus::Message toOutgoingMessage() const;

    friend bool operator==(const TavBusCommand &a, const TavBusCommand &b)
    {
        return a.m_agent == b.m_agent && a.m_name == b.m_name && a.m_data == b.m_data;
    }
    friend bool operator!=(const TavBusCommand &a, const TavBusCommand &b) { return !(a == b); }

private:
    QString m_agent;
    QString m_name;
    QMap<QString, QVariant> m_data;
};

Q_DECLARE_METATYPE(TavBusCommand)
