#pragma once

#include <QObject>
#include <QProcess>

/// The terminal's D-Bus: a real daemon that serves as system and as session bus, with the broker
/// started by it on demand.
class MessageBus : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MessageBus)

public:
    explicit MessageBus(QObject *parent = nullptr);
    ~MessageBus() override;

    /// Where it listens, known before it runs.
    static QByteArray address() { return "unix:path=/run/dbus/system_bus_socket"; }

    /// `broker` is the path of the broker's program.
    bool start(const QString &broker, QString *error);

private:
    QProcess m_daemon;
};
