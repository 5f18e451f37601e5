#include "ppppeer.h"

#include "scenario.h"

#include <QSocketNotifier>
#include <cstdlib>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace {

// The daemon has its end of the link and its list of secrets in namespaces of its own, since those
// outside are the caller's, and another name, so that who ends the callers' daemons leaves it
// alone. Takes the terminal, the protocol, the user and the password.
const QString kAuthenticator = QStringLiteral(R"(
mount -t tmpfs -o mode=700 none /run
printf '"%s" * "%s" *\n' "$3" "$4" >/run/secrets
for protocol in pap chap; do
    mount --bind /run/secrets "/etc/ppp/$protocol-secrets"
done
ln -s /usr/sbin/pppd /run/network
exec /run/network "$1" nodetach local nocrtscts nolock "require-$2" 10.0.2.2:10.0.2.15
)");

} // namespace

PppPeer::PppPeer(QObject *parent)
    : QObject(parent)
    , m_process(this)
{
    connect(&m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
        &PppPeer::ended);
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            emit ended();
    });
}

PppPeer::~PppPeer()
{
    m_process.disconnect(this);
    m_process.kill();
    m_process.waitForFinished();
    if (m_line >= 0)
        close(m_line);
}

void PppPeer::Process::setupChildProcess()
{
    dup2(line, STDIN_FILENO);
    dup2(line, STDOUT_FILENO);
}

bool PppPeer::start(const ScenarioLogin &login)
{
    m_line = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    char path[64] = {};
    if (m_line < 0 || unlockpt(m_line) != 0 || ptsname_r(m_line, path, sizeof path) != 0)
        return false;
    const int outer = open(path, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings{};
    if (outer < 0 || tcgetattr(outer, &settings) != 0)
        return false;
    cfmakeraw(&settings);
    tcsetattr(outer, TCSANOW, &settings);
    m_reader = new QSocketNotifier(m_line, QSocketNotifier::Read, this);
    connect(m_reader, &QSocketNotifier::activated, this, &PppPeer::readBytes);
    m_writer = new QSocketNotifier(m_line, QSocketNotifier::Write, this);
    m_writer->setEnabled(false);
    connect(m_writer, &QSocketNotifier::activated, this, &PppPeer::writeRest);
    m_process.line = outer;
    m_process.setStandardErrorFile(QProcess::nullDevice());
    if (login.user.isEmpty()) {
        // ppp_exit: the call is over when the caller ends PPP, not only when the line goes.
        m_process.start(
            QStringLiteral("slirp-fullbolt"), {QStringLiteral("ppp_exit"), QStringLiteral("-P")});
    } else {
        m_process.start(QStringLiteral("unshare"),
            {QStringLiteral("--net"), QStringLiteral("--mount"), QStringLiteral("sh"),
                QStringLiteral("-ec"), kAuthenticator, QStringLiteral("network"),
                QString::fromLatin1(path), login.protocol, login.user, login.password});
    }
    const bool started = m_process.waitForStarted();
    close(outer);
    return started;
}

void PppPeer::readBytes()
{
    char bytes[4096];
    const ssize_t count = read(m_line, bytes, sizeof bytes);
    if (count > 0)
        emit received(QByteArray(bytes, static_cast<int>(count)));
    else if (count == 0 || errno != EAGAIN)
        m_reader->setEnabled(false); // the end of the process is told by itself
}

void PppPeer::write(const QByteArray &bytes)
{
    m_unsent += bytes;
    writeRest();
}

void PppPeer::writeRest()
{
    while (!m_unsent.isEmpty()) {
        const ssize_t count
            = ::write(m_line, m_unsent.constData(), static_cast<size_t>(m_unsent.size()));
        if (count < 0)
            break;
        m_unsent.remove(0, static_cast<int>(count));
    }
    m_writer->setEnabled(!m_unsent.isEmpty());
}
