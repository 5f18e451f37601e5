#pragma once

#include <QTcpServer>

/// One page of the Internet as the terminal's check sees it: a plain-HTTP page on the loopback that
/// answers, or refuses connections.
class WebPage : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WebPage)

public:
    WebPage(const QString &name, quint16 port, QObject *parent = nullptr);

    bool setAnswering(bool answers);

private:
    void serve();

    const QString m_name;
    const quint16 m_port;
    QTcpServer m_server;
};
