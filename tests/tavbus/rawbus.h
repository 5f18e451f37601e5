#pragma once

#include <QByteArray>
#include <QString>

/**
 * A D-Bus connection by hand, which can say what no library would: wrong bytes. Little-endian, as
 * D-Bus defines its message protocol.
 */
class RawBus
{
    Q_DISABLE_COPY_MOVE(RawBus)

public:
    /// \a address: of the kind unix:path=.
    explicit RawBus(const QString &address);
    ~RawBus();

    /// Authenticates and says Hello.
    bool open();
    bool send(const QByteArray &bytes);
    /// Ends the connection, also under another thread that sends.
    void hangUp();
    /// Waits until the text has come in.
    bool hears(const QByteArray &text);
    /// Waits until the bus has closed the connection.
    bool isDisconnected();

    static QByteArray string(const QByteArray &text);
    static QByteArray methodCall(const QString &service, const QString &path,
        const QString &interface, const QString &method, const QByteArray &signature,
        const QByteArray &body);

private:
    const QByteArray m_path;
    int m_descriptor = -1;
};
