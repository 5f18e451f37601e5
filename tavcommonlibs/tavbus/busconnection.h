#pragma once

#include <QDBusConnection>
#include <QDeadlineTimer>
#include <QObject>

namespace tavbus {

/**
 * A private D-Bus connection of its owner, closed with it.
 */
class BusConnection : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(BusConnection)

public:
    explicit BusConnection(QObject *parent = nullptr);
    ~BusConnection() override;

    /// Connects to \a address: "system", "session" or a D-Bus address. A bus that does not answer
    /// by the deadline is refused. Closes an earlier connection.
    bool open(const QString &address, QDeadlineTimer deadline);
    bool isOpen() const;
    void close();

    QDBusConnection bus() const { return m_bus; }

signals:
    /// The bus has closed the connection.
    void lost();

private:
    const QString m_name; // in Qt's list of connections
    QDBusConnection m_bus;
};

} // namespace tavbus
