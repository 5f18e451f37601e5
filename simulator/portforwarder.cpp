#include "portforwarder.h"

#include <QTcpSocket>
#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

int PortForwarder::listenOn(quint16 port)
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int yes = 1;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr generic{};
    memcpy(&generic, &address, sizeof generic);
    if (bind(listener, &generic, sizeof generic) == 0 && listen(listener, 16) == 0)
        return listener;
    if (listener >= 0)
        close(listener);
    return -1;
}

PortForwarder::PortForwarder(int listener, quint16 port, QObject *parent)
    : QObject(parent)
    , m_port(port)
    , m_server(this)
{
    connect(&m_server, &QTcpServer::newConnection, this, &PortForwarder::forward);
    m_server.setSocketDescriptor(listener);
}

void PortForwarder::join(QTcpSocket *from, QTcpSocket *to)
{
    connect(from, &QTcpSocket::readyRead, to, [from, to] { to->write(from->readAll()); });
    connect(from, &QTcpSocket::disconnected, to, [from, to] {
        to->write(from->readAll());
        to->disconnectFromHost();
        from->deleteLater();
    });
}

void PortForwarder::forward()
{
    while (QTcpSocket *outer = m_server.nextPendingConnection()) {
        auto *inner = new QTcpSocket(this);
        outer->setParent(this);
        join(inner, outer);
        connect(inner, &QTcpSocket::errorOccurred, outer, [inner, outer] {
            outer->disconnectFromHost();
            inner->deleteLater();
        });
        connect(inner, &QTcpSocket::connected, outer, [inner, outer] {
            join(outer, inner);
            inner->write(outer->readAll());
        });
        inner->connectToHost(QHostAddress(QHostAddress::LocalHost), m_port);
    }
}
