// Registers as an agent on the system bus, says how that went (an empty line or the name of the
// error) and stays until its input ends: for tests that need a client of another user.

#include "busconnection.h"
#include "busnames.h"

#include <QCoreApplication>
#include <QDBusError>
#include <QDBusMessage>
#include <QDebug>

#include <iostream>
#include <string>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    tavbus::BusConnection connection;
    if (!connection.open(QStringLiteral("system"), QDeadlineTimer(10000)))
        qFatal("no bus: %s", qPrintable(connection.bus().lastError().message()));
    auto message = QDBusMessage::createMethodCall(tavbus::BROKER_SERVICE, tavbus::BROKER_PATH,
        tavbus::BROKER_INTERFACE, QStringLiteral("registerAgent"));
    message.setArguments({QCoreApplication::arguments().value(1), true});
    std::cout << connection.bus().call(message).errorName().toStdString() << std::endl;
    std::string line;
    std::getline(std::cin, line);
    return 0;
}
