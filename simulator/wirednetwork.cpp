#include "wirednetwork.h"

#include "journal.h"
#include "privatefiles.h"

#include <QFile>

namespace {

const QString kIp = QStringLiteral("ip");
const QString kLan = QStringLiteral("lan"); // the namespace, and the switch in it

// A boot does not wait for ever for an address that nobody gives.
constexpr int kConfigureMs = 8000;

constexpr char kRecorder[] = "#!/bin/sh\n"
                             "# The real one would be of no use in here: only notes the call.\n"
                             "echo \"recorded: ${0##*/} $*\" | tee -a /run/terminal/commands\n";

} // namespace

WiredNetwork::WiredNetwork(Journal *journal, QObject *parent)
    : QObject(parent)
    , m_journal(journal)
{
}

WiredNetwork::~WiredNetwork()
{
    m_dhcpServer.kill();
    m_dhcpServer.waitForFinished();
}

bool WiredNetwork::start(const QStringList &interfaces)
{
    // First: while it lays over /sbin, nothing can be started from there.
    const bool haveIfupdown = m_ifupdown.putInPlace();
    if (!interfaces.isEmpty() && !makeNetwork(interfaces)) {
        record({QStringLiteral("ifconfig"), QStringLiteral("service")});
    } else if (!haveIfupdown) {
        m_errorText = m_ifupdown.errorText();
        record({QStringLiteral("service")});
    } else {
        configure();
    }
    return m_errorText.isEmpty();
}

bool WiredNetwork::makeNetwork(const QStringList &interfaces)
{
    QByteArray lan = "link set lo up\n"
                     "link add lan type bridge\n"
                     "address add 192.168.0.1/24 dev lan\n"
                     "link set lan up\n"
                     "route add unreachable default\n";
    QByteArray terminal;
    for (const QString &each : interfaces) {
        const QByteArray name = each.toUtf8();
        terminal += "link add " + name + " type veth peer name " + name + " netns lan\n";
        lan += "link set " + name + " master lan up\n";
    }
    const QString batch = QStringLiteral("-batch");
    const QString standardInput = QStringLiteral("-");
    if (!run(kIp, {QStringLiteral("netns"), QStringLiteral("add"), kLan})
        || !run(kIp, {batch, standardInput}, terminal)
        || !run(kIp, {QStringLiteral("-n"), kLan, batch, standardInput}, lan)
        || !run(kIp,
            {QStringLiteral("netns"), QStringLiteral("exec"), kLan, QStringLiteral("sh"),
                QStringLiteral("-c"), QStringLiteral("echo 1 >/proc/sys/net/ipv4/ip_forward")}))
        return false;
    startDhcpServer();
    return true;
}

bool WiredNetwork::run(
    const QString &program, const QStringList &arguments, const QByteArray &input)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (process.waitForFinished() && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0)
        return true;
    m_errorText = QStringLiteral("%1 %2: %3")
                      .arg(program, arguments.join(QLatin1Char(' ')),
                          process.error() == QProcess::UnknownError
                              ? QString::fromLocal8Bit(process.readAll().trimmed())
                              : process.errorString());
    return false;
}

void WiredNetwork::startDhcpServer()
{
    const QString server = m_ifupdown.find(QStringLiteral("busybox"));
    if (server.isEmpty()) {
        m_journal->add(QStringLiteral("lan: there is no busybox: nobody gives out addresses"));
        return;
    }
    const QString configuration = QStringLiteral("/run/terminal/udhcpd.conf");
    const QString leases = QStringLiteral("/run/terminal/udhcpd.leases");
    PrivateFiles::write(configuration,
        "interface lan\nstart 192.168.0.100\nend 192.168.0.199\nmax_leases 100\n"
        "option subnet 255.255.255.0\noption router 192.168.0.1\noption dns 192.168.0.1\n"
        "lease_file "
            + leases.toUtf8() + '\n');
    PrivateFiles::write(leases, {});
    connect(&m_dhcpServer, &QProcess::readyRead, this, [this] {
        while (m_dhcpServer.canReadLine())
            m_journal->add(QStringLiteral("lan: ")
                + QString::fromLocal8Bit(m_dhcpServer.readLine().trimmed()));
    });
    connect(&m_dhcpServer, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
        [this] { m_journal->add(QStringLiteral("lan: the DHCP server has ended")); });
    m_dhcpServer.setProcessChannelMode(QProcess::MergedChannels);
    // Asks for a few milliseconds only whether somebody has the address already.
    m_dhcpServer.start(kIp,
        {QStringLiteral("netns"), QStringLiteral("exec"), kLan, server, QStringLiteral("udhcpd"),
            QStringLiteral("-f"), QStringLiteral("-a"), QStringLiteral("50"), configuration});
}

void WiredNetwork::configure()
{
    QProcess service;
    service.setStandardInputFile(QProcess::nullDevice());
    service.setProcessChannelMode(QProcess::MergedChannels);
    service.start(
        QStringLiteral("service"), {QStringLiteral("networking"), QStringLiteral("start")});
    const bool finished = service.waitForFinished(kConfigureMs);
    const QStringList lines
        = QString::fromLocal8Bit(service.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &line : lines)
        m_journal->add(QStringLiteral("networking: ") + line);
    if (!finished) {
        m_journal->add(QStringLiteral("networking: left to itself"));
        service.kill();
        service.waitForFinished();
    }
}

void WiredNetwork::record(const QStringList &commands)
{
    for (const QString &name : commands)
        PrivateFiles::write(QStringLiteral("/run/terminal/bin/") + name, kRecorder, 0755);
    m_errorText += QStringLiteral("; only recorded: ") + commands.join(QStringLiteral(", "));
}
