#pragma once

#include "clientstate.h"

#include <QVector>

/// State of the payment acceptors: a value. Its body on the bus is
/// {"acceptors": list of {"thread_id": int, "disabled": bool}}.
class AcceptorState
{
public:
    /// One of them: a value.
    struct Acceptor
    {
        int threadId = 0; ///< by which the service tells its acceptors apart
        bool disabled = false; ///< takes no money

        friend bool operator==(const Acceptor &a, const Acceptor &b)
        {
            return a.threadId == b.threadId && a.disabled == b.disabled;
        }
    };

    /// False, with no acceptors, when any part of the body is not what it must be.
    bool loadFromClientState(const tavbus::ClientState &state);

    const QVector<Acceptor> &acceptors() const { return m_acceptors; }
    void setAcceptors(const QVector<Acceptor> &acceptors) { m_acceptors = acceptors; }

    /// True of no acceptors as well: there is none that takes money.
    bool allDisabled() const;

    QVariantMap toStateBody() const;

private:
    QVector<Acceptor> m_acceptors;
};
