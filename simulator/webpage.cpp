#include "webpage.h"

#include <QTcpSocket>

WebPage::WebPage(const QString &name, quint16 port, QObject *parent)
    : QObject(parent)
    , m_name(name)
    , m_port(port)
    , m_server(this)
{
    connect(&m_server, &QTcpServer::newConnection, this, &WebPage::serve);
}

bool WebPage::setAnswering(bool answers)
{
    if (answers)
        return m_server.isListening() || m_server.listen(QHostAddress::LocalHost, m_port);
    m_server.close();
    return true;
}

void WebPage::serve()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
            if (!socket->peek(8192).contains("\r\n\r\n"))
                return;
            socket->readAll();
            const QByteArray body = "<!DOCTYPE html><title>" + m_name.toUtf8()
                + "</title><p>This page answers.</p>\n";
            socket->write("HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\n"
                          "Connection: close\r\nContent-Length: "
                + QByteArray::number(body.size()) + "\r\n\r\n" + body);
            socket->disconnectFromHost();
        });
    }
}
