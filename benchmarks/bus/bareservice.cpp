// Usage: bench_bus_bare ADDRESS

#include "bareservice.h"

#include <QCoreApplication>
#include <QDBusConnection>

void BareService::setState(qlonglong stamp, const QVariantMap &body)
{
    m_stamp = stamp;
    m_body = body;
}

qlonglong BareService::loadState(const QString & /*agent*/, QVariantMap &body)
{
    body = m_body;
    return m_stamp;
}

void BareService::saveSettings(const QString & /*owner*/, const QString & /*description*/,
    qlonglong /*stamp*/, const QVariantList & /*settings*/)
{
}

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    BareService service;
    auto bus = QDBusConnection::connectToBus(
        QCoreApplication::arguments().value(1), QStringLiteral("bare"));
    if (!bus.registerObject(
            QStringLiteral("/org/ovrel/Bare"), &service, QDBusConnection::ExportAllSlots)
        || !bus.registerService(QStringLiteral("org.ovrel.Bare")))
        return 1;
    return QCoreApplication::exec();
}
