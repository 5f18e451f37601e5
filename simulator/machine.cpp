#include "machine.h"

#include "busnames.h"
#include "modemsettings.h"
#include "portuser.h"
#include "privatefiles.h"
#include "simulatedservice.h"
#include "tavbusqueryhandler.h"
#include "webpage.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QFileInfo>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace {

struct Page
{
    QString name;
    QString host;
    quint16 port;
};

const QList<Page> &pages()
{
    static const QList<Page> list{
        {QStringLiteral("maker"), QStringLiteral("check.maker.example"), 8081},
        {QStringLiteral("public"), QStringLiteral("www.public.example"), 8082}};
    return list;
}

QByteArray urlOf(const Page &page)
{
    return "http://" + page.host.toLatin1() + ':' + QByteArray::number(page.port) + '/';
}

bool bringUp(const char *interface)
{
    const int any = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq request{};
    std::strncpy(request.ifr_name, interface, IFNAMSIZ - 1);
    bool up = ioctl(any, SIOCGIFFLAGS, &request) == 0;
    request.ifr_flags = static_cast<short>(request.ifr_flags | IFF_UP);
    up = up && ioctl(any, SIOCSIFFLAGS, &request) == 0;
    close(any);
    return up;
}

} // namespace

Machine::Machine(
    const Scenario &scenario, QString brokerProgram, const UsbBus &usb, QObject *parent)
    : QObject(parent)
    , m_scenario(scenario)
    , m_brokerProgram(std::move(brokerProgram))
    , m_modems(scenario.modems, &m_journal, usb)
{
}

Machine::~Machine() = default;

bool Machine::writeFiles(const Scenario &scenario, const TerminalLanguage &language, QString *error)
{
    QByteArray hosts = "127.0.0.1 localhost\n";
    char hostName[256] = {};
    if (gethostname(hostName, sizeof hostName - 1) == 0)
        hosts += QByteArrayLiteral("127.0.1.1 ").append(hostName).append('\n');
    for (const Page &page : pages()) {
        // Through the call the peer's 10.0.2.2 is this loopback; without one it has no route.
        const bool overPpp = scenario.pages.value(page.name) == QLatin1String("ppp");
        hosts += (overPpp ? "10.0.2.2 " : "127.0.0.1 ") + page.host.toLatin1() + '\n';
    }
    const QByteArray configuration = "[paths]\nworkDir=/var/lib/ovrel\nlogger=/var/log/ovrel\n"
                                     "versions=/var/lib/ovrel/versions\ntranslations="
        + language.translations.toUtf8() + "\n\n[locale]\nname=" + language.locale.toUtf8()
        + "\n\n[bus]\naddress=system\n\n[internet]\nmakerPage=" + urlOf(pages().at(0))
        + "\npublicPage=" + urlOf(pages().at(1)) + '\n';
    bool written = PrivateFiles::write(QStringLiteral("/etc/hosts"), hosts)
        && PrivateFiles::write(QStringLiteral("/etc/ovrel/terminalV4.conf"), configuration)
        && PrivateFiles::write(
            QStringLiteral("/etc/network/interfaces"), scenario.interfaces.toUtf8())
        && PrivateFiles::write(QStringLiteral("/run/terminal/bin/sudo"),
            "#!/bin/sh\n"
            "# Everybody in the simulated terminal is root.\n"
            "while :; do\n"
            "    case \"${1:-}\" in\n"
            "    --) shift; break ;;\n"
            "    -u | -g) shift 2 ;;\n"
            "    -*) shift ;;\n"
            "    *) break ;;\n"
            "    esac\n"
            "done\n"
            "exec \"$@\"\n",
            0755);
    if (!written)
        *error = QStringLiteral("cannot write the terminal's files");
    return written;
}

void Machine::setEnvironment()
{
    const QByteArray bus = MessageBus::address();
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", bus);
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus);
    qunsetenv("TAV_TERMINAL_CONF");
    // The terminal's programs come before whatever stands first for the caller.
    qputenv("PATH", "/run/terminal/bin:/usr/sbin:/usr/bin:/sbin:/bin:" + qgetenv("PATH"));
    // An X server's key is found through the home directory unless it is named.
    const QByteArray key = qgetenv("HOME") + "/.Xauthority";
    if (!qEnvironmentVariableIsSet("XAUTHORITY") && QFileInfo::exists(QFile::decodeName(key)))
        qputenv("XAUTHORITY", key);
    // System V memory cannot be shared with an X server outside.
    qputenv("QT_X11_NO_MITSHM", "1");
    qputenv("HOME", "/run/terminal/home");
    qputenv("TMPDIR", "/run/terminal/tmp");
    qputenv("XDG_RUNTIME_DIR", "/run/user/0");
    for (const char *name :
        {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"})
        qunsetenv(name);
    // libudev would else show only what is on the kernel's own /sys.
    qputenv("SYSTEMD_DEVICE_VERIFY_SYSFS", "0");
}

bool Machine::start(QString *error)
{
    const bool ownBus = !m_brokerProgram.isEmpty();
    return startNetwork(error) && (!ownBus || m_bus.start(m_brokerProgram, error))
        && m_modems.start(error) && writePppOptions(error) && startServices(error)
        && saveConnections(error);
}

QStringList Machine::modemNames() const
{
    QStringList names;
    for (const ScenarioModem &modem : m_scenario.modems)
        names.append(modem.name);
    return names;
}

bool Machine::startNetwork(QString *error)
{
    if (!bringUp("lo")) {
        *error = QStringLiteral("cannot bring up the loopback interface");
        return false;
    }
    // Without a bus of its own it is on a machine that keeps its own network.
    if (!m_brokerProgram.isEmpty() && !m_wiredNetwork.start(m_scenario.ethernet))
        std::fprintf(stderr, "terminalsim: %s\n", qUtf8Printable(m_wiredNetwork.errorText()));
    for (const Page &page : pages()) {
        auto *web = new WebPage(page.name, page.port, this);
        m_pages.insert(page.name, web);
        const bool answers = m_scenario.pages.value(page.name) != QLatin1String("never");
        if (!web->setAnswering(answers)) {
            *error = QStringLiteral("cannot serve the page \"%1\"").arg(page.name);
            return false;
        }
    }
    return true;
}

bool Machine::startServices(QString *error)
{
    for (auto it = m_scenario.services.begin(); it != m_scenario.services.end(); ++it) {
        if (!it->present)
            continue;
        const QStringList ports = it->holdsPorts ? m_modems.dataPorts() : QStringList();
        auto *service = new SimulatedService(it.key(), it.value(), ports, &m_journal, this);
        m_services.insert(it.key(), service);
        if (!service->start()) {
            *error
                = QStringLiteral("the service \"%1\" does not get onto the bus; is %2 the broker?")
                      .arg(it.key(), m_brokerProgram);
            return false;
        }
    }
    return true;
}

// The peer would offer 0.0.0.0 as its own address, which the PPP daemon refuses.
bool Machine::writePppOptions(QString *error)
{
    const QStringList ports = m_modems.dataPorts();
    for (const QString &port : ports) {
        if (!PrivateFiles::write(QStringLiteral("/etc/ppp/options.") + port, ":10.0.2.2\n")) {
            *error = QStringLiteral("cannot write the PPP options of %1").arg(port);
            return false;
        }
    }
    return true;
}

bool Machine::saveConnections(QString *error)
{
    ModemSettings store;
    QMap<QString, ModemInfo> records;
    QStringList order;
    for (const ScenarioModem &modem : m_scenario.modems) {
        if (!modem.hasConnection)
            continue;
        ModemInfo record;
        record.setConnectionName(modem.connection.name);
        record.setPortName(m_modems.dataPort(modem.name));
        record.setBaudrate(modem.connection.baudrate);
        record.setUserName(modem.connection.user);
        record.setPassword(modem.connection.password);
        record.setPhone(modem.connection.phone);
        record.setInitLines(modem.connection.initLines);
        records.insert(modem.connection.name, record);
        order.append(modem.connection.name);
    }
    if (records.isEmpty())
        return true;
    store.setModems(records);
    store.setConnectionsOrder(order);
    tavbus::ClientSettings settings;
    settings.setOwner(tavbus::BUSNAME_TAVMODEMS);
    settings.setDescription(QStringLiteral("Modem service"));
    settings.setDt(QDateTime::currentDateTime());
    settings.setSettings(store.toSettingsList());
    tavbus::TavBusQueryHandler bus(tavbus::BUSNAME_TAVMODEMS);
    if (bus.open() && bus.saveSettings(settings))
        return true;
    *error = QStringLiteral("the connections cannot be saved on the bus");
    return false;
}

bool Machine::holdPort(const QString &modem, bool held)
{
    const QString port = m_modems.dataPort(modem);
    if (port.isEmpty())
        return false;
    m_journal.add(port + (held ? QStringLiteral(": taken") : QStringLiteral(": given back")));
    std::unique_ptr<PortUser> &holder = m_otherHolders[modem];
    if (!held) {
        holder.reset();
        return true;
    }
    if (!holder)
        holder = std::make_unique<PortUser>(port);
    return holder->hold();
}

bool Machine::setPage(const QString &page, bool answers)
{
    WebPage *const web = m_pages.value(page);
    return web != nullptr && web->setAnswering(answers);
}

uint Machine::brokerPid() const
{
    return QDBusConnection::systemBus().interface()->servicePid(tavbus::BROKER_SERVICE);
}

void Machine::killBroker()
{
    const uint pid = brokerPid();
    m_journal.add(QStringLiteral("broker killed"));
    if (pid > 0)
        kill(static_cast<pid_t>(pid), SIGKILL);
}
