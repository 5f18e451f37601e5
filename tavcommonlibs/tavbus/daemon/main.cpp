#include "broker.h"
#include "busconnection.h"
#include "initconfig.h"
#include "store.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSocketNotifier>

#include <csignal>
#include <sys/signalfd.h>

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kBusLimit = 5s;

// Blocked before the first thread starts, so that the signals wait in the descriptor.
int endingSignals()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGINT);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    return signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
}

} // namespace

int main(int argc, char *argv[])
{
    const int signalDescriptor = endingSignals();
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tavbusd"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Broker of the terminal's message bus; started by D-Bus when needed."));
    parser.addHelpOption();
    const QCommandLineOption database(QStringLiteral("database"),
        QStringLiteral("Keep settings and states in <file>, instead of tavbus/tavbus.db in the "
                       "terminal's work directory."),
        QStringLiteral("file"));
    const QCommandLineOption address(QStringLiteral("address"),
        QStringLiteral("Use the bus at <address>: system, session or a D-Bus address; the "
                       "terminal's configuration names it otherwise."),
        QStringLiteral("address"));
    parser.addOptions({database, address});
    parser.process(app);

    const InitConfig config;
    tavbus::Store store;
    const QString file = parser.isSet(database)
        ? parser.value(database)
        : config.workDir() + QStringLiteral("/tavbus/tavbus.db");
    if (!store.open(file)) {
        qCritical("cannot open the store: %s", qUtf8Printable(store.errorText()));
        return 1;
    }
    tavbus::BusConnection bus;
    if (!bus.open(parser.isSet(address) ? parser.value(address) : config.busAddress(),
            QDeadlineTimer(kBusLimit))) {
        qCritical("cannot connect to the bus");
        return 1;
    }
    tavbus::Broker broker(&store, bus.bus());
    if (!broker.start())
        return 1;

    // Without its bus nobody can reach it; the next bus starts its own.
    QObject::connect(&bus, &tavbus::BusConnection::lost, &app, &QCoreApplication::quit);
    QSocketNotifier ending(signalDescriptor, QSocketNotifier::Read);
    QObject::connect(&ending, &QSocketNotifier::activated, &app, &QCoreApplication::quit);
    return QCoreApplication::exec();
}
