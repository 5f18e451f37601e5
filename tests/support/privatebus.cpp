#include "privatebus.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QThread>

#include <csignal>
#include <sys/prctl.h>

namespace {

const QString kService = QStringLiteral("org.ovrel.TavBus");
const QByteArray kVariable = QByteArrayLiteral("DBUS_SESSION_BUS_ADDRESS");
constexpr int kPatienceMs = 30000;

// Ends with the test program, even one that crashes.
class Daemon : public QProcess
{
protected:
    void setupChildProcess() override { ::prctl(PR_SET_PDEATHSIG, SIGKILL); }
};

void write(const QString &path, const QString &text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
        qFatal("cannot write %s", qUtf8Printable(path));
}

template <typename Condition>
void waitUntil(Condition condition, const char *what)
{
    const QDeadlineTimer deadline(kPatienceMs);
    while (!condition()) {
        if (deadline.hasExpired())
            qFatal("timed out waiting until %s", what);
        QThread::msleep(1);
    }
}

// A zombie has ended: its files are closed, only its parent has not looked yet.
bool hasEnded(qint64 pid)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
    return !file.open(QIODevice::ReadOnly) || file.readAll().contains(") Z ");
}

// A connection for one question, so that none is left on a bus that ends.
class Question
{
    Q_DISABLE_COPY_MOVE(Question)

public:
    explicit Question(const QString &address)
        : m_bus(QDBusConnection::connectToBus(address, m_name))
    {
    }
    ~Question()
    {
        m_bus = QDBusConnection(QString());
        QDBusConnection::disconnectFromBus(m_name);
    }

    QDBusConnectionInterface *bus() const
    {
        if (!m_bus.isConnected())
            qFatal("cannot connect to the private bus: %s",
                qUtf8Printable(m_bus.lastError().message()));
        return m_bus.interface();
    }

private:
    const QString m_name = QStringLiteral("privatebus");
    QDBusConnection m_bus;
};

} // namespace

PrivateBus::PrivateBus()
    : PrivateBus(Options())
{
}

PrivateBus::PrivateBus(const Options &options)
    // Others cannot pass through the directories that a test usually has.
    : m_directory(options.forOtherUsers ? QStringLiteral("/tmp/tavbus.XXXXXX")
                                        : QDir::tempPath() + QStringLiteral("/bus.XXXXXX"))
    , m_address(QStringLiteral("unix:path=") + m_directory.filePath(QStringLiteral("socket")))
    , m_formerAddress(qgetenv(kVariable.constData()))
    , m_hadFormerAddress(qEnvironmentVariableIsSet(kVariable.constData()))
{
    if (!m_directory.isValid())
        qFatal("cannot make a directory: %s", qUtf8Printable(m_directory.errorString()));
    if (options.forOtherUsers)
        QFile::setPermissions(m_directory.path(), QFile::Permissions(0x7755));
    QDir(m_directory.path()).mkdir(QStringLiteral("services"));
    writeConfiguration(options);
    qputenv(kVariable.constData(), m_address.toUtf8());
    start();
}

PrivateBus::~PrivateBus()
{
    stop();
    if (m_hadFormerAddress)
        qputenv(kVariable.constData(), m_formerAddress);
    else
        qunsetenv(kVariable.constData());
}

void PrivateBus::start()
{
    if (m_daemon)
        return;
    QFile::remove(m_directory.filePath(QStringLiteral("socket")));
    m_daemon = std::make_unique<Daemon>();
    m_daemon->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_daemon->start(QStringLiteral("dbus-daemon"),
        {QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
            QStringLiteral("--print-address"),
            QStringLiteral("--config-file=") + m_directory.filePath(QStringLiteral("bus.conf"))});
    // It prints the address once it listens there.
    if (!m_daemon->waitForStarted(kPatienceMs) || !m_daemon->waitForReadyRead(kPatienceMs))
        qFatal("dbus-daemon does not start: %s", qUtf8Printable(m_daemon->errorString()));
}

void PrivateBus::stop()
{
    if (!m_daemon)
        return;
    thaw();
    // As its user would: a broker that is killed leaves neither a count of what it reached nor a
    // word on what it leaked.
    thawBroker();
    endBroker();
    m_daemon->terminate();
    if (!m_daemon->waitForFinished(kPatienceMs))
        qFatal("dbus-daemon does not end");
    m_daemon.reset();
}

void PrivateBus::freeze()
{
    ::kill(pid_t(pid()), SIGSTOP);
}

void PrivateBus::thaw()
{
    ::kill(pid_t(pid()), SIGCONT);
}

int PrivateBus::connections() const
{
    const QStringList names = Question(m_address).bus()->registeredServiceNames();
    return names.filter(QRegularExpression(QStringLiteral("^:"))).size() - 1; // the asking one
}

qint64 PrivateBus::brokerPid() const
{
    const QDBusReply<uint> pid = Question(m_address).bus()->servicePid(kService);
    return pid.isValid() ? qint64(pid.value()) : 0;
}

qint64 PrivateBus::startBroker() const
{
    const Question question(m_address);
    const QDBusReply<void> started = question.bus()->startService(kService);
    if (!started.isValid())
        qFatal("the broker does not start: %s", qUtf8Printable(started.error().message()));
    return brokerPid();
}

void PrivateBus::killBroker() const
{
    signalBroker(SIGKILL);
}

void PrivateBus::endBroker() const
{
    signalBroker(SIGTERM);
}

void PrivateBus::signalBroker(int number) const
{
    const qint64 pid = brokerPid();
    if (pid == 0)
        return;
    ::kill(pid_t(pid), number);
    waitUntil([&] { return hasEnded(pid) && brokerPid() != pid; }, "the broker has ended");
}

void PrivateBus::freezeBroker() const
{
    ::kill(pid_t(startBroker()), SIGSTOP);
}

void PrivateBus::thawBroker() const
{
    if (const qint64 pid = brokerPid(); pid != 0)
        ::kill(pid_t(pid), SIGCONT);
}

void PrivateBus::writeConfiguration(const Options &options) const
{
    const QString everybody = QStringLiteral("  <policy context=\"default\">\n"
                                             "    <allow user=\"*\"/>\n"
                                             "    <allow own=\"*\"/>\n"
                                             "    <allow send_destination=\"*\"/>\n"
                                             "    <allow receive_sender=\"*\"/>\n"
                                             "  </policy>\n");
    // What the system bus starts from, before the files of its services.
    const QString systemLike
        = QStringLiteral("  <policy context=\"default\">\n"
                         "    <allow user=\"*\"/>\n"
                         "    <deny own=\"*\"/>\n"
                         "    <deny send_type=\"method_call\"/>\n"
                         "    <allow send_type=\"signal\"/>\n"
                         "    <allow send_requested_reply=\"true\" send_type=\"method_return\"/>\n"
                         "    <allow send_requested_reply=\"true\" send_type=\"error\"/>\n"
                         "    <allow receive_type=\"method_call\"/>\n"
                         "    <allow receive_type=\"method_return\"/>\n"
                         "    <allow receive_type=\"error\"/>\n"
                         "    <allow receive_type=\"signal\"/>\n"
                         "    <allow send_destination=\"org.freedesktop.DBus\"\n"
                         "           send_interface=\"org.freedesktop.DBus\"/>\n"
                         "  </policy>\n"
                         "  <include>%1</include>\n")
              .arg(options.policy);
    const QString limits = QStringLiteral("  <limit name=\"max_completed_connections\">%1</limit>\n"
                                          "  <limit name=\"max_connections_per_user\">%1</limit>\n")
                               .arg(options.maxConnections);
    write(m_directory.filePath(QStringLiteral("bus.conf")),
        QStringLiteral("<!DOCTYPE busconfig PUBLIC"
                       " \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
                       " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
                       "<busconfig>\n"
                       "  <type>session</type>\n"
                       "  <listen>%1</listen>\n"
                       "  <auth>EXTERNAL</auth>\n"
                       "  <servicedir>%2/services</servicedir>\n"
                       "%3%4"
                       "</busconfig>\n")
            .arg(m_address, m_directory.path(), options.policy.isEmpty() ? everybody : systemLike,
                options.maxConnections > 0 ? limits : QString()));
    if (options.withBroker)
        write(m_directory.filePath(QStringLiteral("services/%1.service").arg(kService)),
            QStringLiteral("[D-BUS Service]\nName=%1\nExec=%2\n")
                .arg(kService,
                    options.brokerCommand.isEmpty()
                        ? QStringLiteral(TAVBUSD " --address %1 --database %2")
                              .arg(m_address, databaseFile())
                        : options.brokerCommand));
}
