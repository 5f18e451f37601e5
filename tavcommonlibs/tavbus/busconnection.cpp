#include "busconnection.h"

#include "busprobe.h"

#include <QAtomicInteger>
#include <QStringList>

namespace tavbus {

namespace {

QString uniqueName()
{
    static QAtomicInteger<quint64> count;
    return QStringLiteral("tavbus-%1").arg(count.fetchAndAddRelaxed(1));
}

// Resolved here, since libdbus reads these variables once in a process's life.
QString resolved(const QString &address)
{
    if (address == QLatin1String("system"))
        return qEnvironmentVariable(
            "DBUS_SYSTEM_BUS_ADDRESS", QStringLiteral("unix:path=/run/dbus/system_bus_socket"));
    if (address == QLatin1String("session"))
        return qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS", QStringLiteral("unix:runtime=yes"));
    return address;
}

} // namespace

BusConnection::BusConnection(QObject *parent)
    : QObject(parent)
    , m_name(uniqueName())
    , m_bus(QString())
{
}

BusConnection::~BusConnection()
{
    close();
}

bool BusConnection::open(const QString &address, QDeadlineTimer deadline)
{
    close();
    const QStringList entries = resolved(address).split(QLatin1Char(';'), Qt::SkipEmptyParts);
    for (const QString &entry : entries) {
        // libdbus itself would wait for a frozen bus, with all other connections of the process.
        if (!busAnswers(entry, deadline))
            continue;
        m_bus = QDBusConnection::connectToBus(entry, m_name);
        if (m_bus.isConnected()) {
            // Qt offers this signal of libdbus's own in no other form.
            m_bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                SIGNAL(lost()));
            return true;
        }
        close();
    }
    return false;
}

bool BusConnection::isOpen() const
{
    return m_bus.isConnected();
}

void BusConnection::close()
{
    m_bus = QDBusConnection(QString());
    QDBusConnection::disconnectFromBus(m_name);
}

} // namespace tavbus
