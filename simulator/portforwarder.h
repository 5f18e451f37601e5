#pragma once

#include <QTcpServer>

class QTcpSocket;

/// Carries connections from a port of the machine's loopback to the same port of the terminal's.
class PortForwarder : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PortForwarder)

public:
    /// Listens on the loopback of the network namespace it is called in; -1 when it cannot.
    static int listenOn(quint16 port);

    /// `listener` comes from listenOn(), called before the terminal's namespaces were entered.
    PortForwarder(int listener, quint16 port, QObject *parent = nullptr);

private:
    void forward();
    static void join(QTcpSocket *from, QTcpSocket *to);

    const quint16 m_port;
    QTcpServer m_server;
};
