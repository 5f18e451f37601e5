#pragma once

#include <QHostAddress>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

/// A web server on the loopback address that gives every request the same answer, at once or, held
/// back, when it is told to.
class WebServer : public QTcpServer
{
public:
    explicit WebServer(const QByteArray &status = "200 OK", const QByteArray &body = "hello")
        : m_answer("HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size())
            + "\r\nConnection: close\r\n\r\n" + body)
    {
        if (!listen(QHostAddress::LocalHost))
            qFatal("no port to listen on");
        connect(this, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = nextPendingConnection()) {
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { serve(socket); });
                connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            }
        });
    }

    QUrl url() const { return QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(serverPort())); }
    int requests() const { return m_requests; }

    void hold() { m_isHolding = true; }
    void answerFirstHeld() { answer(m_held.takeFirst()); } ///< goes on holding
    void answerHeld()
    {
        m_isHolding = false;
        for (const QPointer<QTcpSocket> &socket : m_held)
            answer(socket);
        m_held.clear();
    }

private:
    void serve(QTcpSocket *socket)
    {
        if (!socket->readAll().contains("\r\n\r\n"))
            return; // the rest of a header; no test sends one in parts
        ++m_requests;
        if (m_isHolding)
            m_held.append(socket);
        else
            answer(socket);
    }
    void answer(QTcpSocket *socket)
    {
        if (!socket)
            return;
        socket->write(m_answer);
        socket->disconnectFromHost();
    }

    QByteArray m_answer;
    QList<QPointer<QTcpSocket>> m_held;
    int m_requests = 0;
    bool m_isHolding = false;
};

/// An address where nobody listens.
inline QUrl deadUrl()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(server.serverPort()));
}
