#include "wvdial.h"

#include "modemreset.h"
#include "modemsenvs.h"
#include "signalnotifier.h"
#include "testmodemscfg.h"

#include <cstdlib>

Q_LOGGING_CATEGORY(DIALUP, "dialup")

const QString Wvdial::WVDIAL_COMMAND = QStringLiteral("/usr/bin/wvdial");

namespace {

void run(const char *shellCommand)
{
    // 127 or no process of that name: there was nothing to end.
    if (std::system(shellCommand) == -1)
        qCWarning(DIALUP, "\"%s\" could not be run", shellCommand);
}

void logStep(QtMsgType type, const QString &text)
{
    if (type == QtWarningMsg)
        qCWarning(DIALUP).noquote() << text;
    else
        qCDebug(DIALUP).noquote() << text;
}

void logOutput(const QByteArray &bytes)
{
    // Up to the first zero byte, if there is one.
    const QString chunk = QString::fromUtf8(bytes.constData());
    const QString lower = chunk.toLower();
    if (lower.contains(QLatin1String("error")) || lower.contains(QLatin1String("critical"))
        || lower.contains(QLatin1String("fatal")))
        qCCritical(DIALUP) << chunk;
    else if (lower.contains(QLatin1String("warning")))
        qCWarning(DIALUP) << chunk;
    else
        qCDebug(DIALUP) << chunk;
}

} // namespace

Wvdial::Wvdial(QObject *parent, const QString &command)
    : QObject(parent)
    , m_process(new QProcess(this))
{
    QLoggingCategory::setFilterRules(QStringLiteral("dialup.debug=true"));
    m_process->setInputChannelMode(QProcess::ManagedInputChannel);
    m_process->setProcessChannelMode(QProcess::SeparateChannels);
    m_process->setProcessEnvironment(QProcessEnvironment::systemEnvironment());
    m_process->setProgram(command);
    m_process->setWorkingDirectory(ModemsEnvs().workDir());
    connect(m_process, &QProcess::errorOccurred, this, &Wvdial::wvDialError);
    connect(m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
        &Wvdial::wvDialFinished);
    connect(
        m_process, &QProcess::readyReadStandardError, this, &Wvdial::wvDialReadyReadStandardError);
    connect(m_process, &QProcess::readyReadStandardOutput, this,
        &Wvdial::wvDialReadyReadStandardOutput);
    connect(m_process, &QProcess::started, this, &Wvdial::wvDialStarted);
    connect(m_process, &QProcess::stateChanged, this, &Wvdial::wvDialStateChanged);
}

Wvdial::~Wvdial() = default;

bool Wvdial::isDialling() const
{
    return m_process && m_process->state() != QProcess::NotRunning;
}

void Wvdial::start(const QString &connection)
{
    m_pending = QStringList{connection};
    run("killall pppd");
    // The active connection goes first; `connection`, where it is another one, follows when that
    // dialer has ended.
    startWvDial(TestModemsCfg::activeModemName());
}

void Wvdial::stop()
{
    m_pending.clear();
    if (isDialling()) {
        m_process->terminate();
        // The end arrives within this wait and dialdowned() with it: the modem service is told to
        // start again while strays may still be running, a pppd of that dialer's among them. The
        // order stays: who waits for the end of the dial is not to wait for theirs, which has no
        // limit; the service takes its time to start and they are ended right after.
        m_process->waitForFinished(processWait());
    }
    endAll(QStringLiteral("wvdial"));
    endAll(QStringLiteral("pppd"));
}

void Wvdial::endAll(const QString &program)
{
    const QByteArray command = "killall " + program.toLatin1();
    while (runningProcesses().contains(program)) {
        run(command.constData());
        // A dialer of ours that outlived terminate() stays in the list as a zombie until it is
        // reaped, and no event loop runs here to do it.
        if (isDialling())
            m_process->waitForFinished(0);
    }
}

QString Wvdial::runningProcesses() const
{
    QProcess ps;
    ps.start(QStringLiteral("ps"), {QStringLiteral("-A")});
    ps.waitForReadyRead(processWait());
    QByteArray output = ps.readAllStandardOutput();
    ps.waitForFinished(processWait());
    output += ps.readAllStandardOutput();
    return QString::fromLocal8Bit(output);
}

void Wvdial::startWvDial(const QString &name)
{
    m_pending.removeAll(name);
    const QMap<QString, ModemInfo> modems = TestModemsCfg().modems();
    if (name.isEmpty()) {
        qCWarning(DIALUP, "Connection name is empty!");
        return notStarted();
    }
    if (!modems.contains(name)) {
        qCWarning(DIALUP).noquote() << QStringLiteral("There are no modem config for %1").arg(name);
        return notStarted();
    }
    if (!isDialable(name)) {
        qCWarning(DIALUP).noquote()
            << QStringLiteral("The dialer would take the name %1 for an option").arg(name);
        return notStarted();
    }
    qCDebug(DIALUP).noquote() << name;
    ModemReset::run(modems.value(name), this, logStep);
    // The end of the program would wait for a dialer that is told to end while it starts: it asks
    // the modem first, for ten seconds when that is silent.
    if (*SignalNotifier::flag()) {
        qCDebug(DIALUP, "The program is to end: the dialer is not started");
        return notStarted();
    }

    QStringList arguments{name};
    if (!TestModemsCfg::hasConfig()) {
        qCWarning(DIALUP, "There are no any dialer config files");
        return notStarted();
    }
    arguments += QStringLiteral("--config=") + TestModemsCfg::configPath();
    qCDebug(DIALUP).noquote() << arguments.last();
    if (m_process) {
        m_process->setArguments(arguments);
        m_process->start(QIODevice::ReadWrite);
    }
}

// Names come from the bus. The dialer takes "OPTION=value" for a setting laid over the file's,
// where "PPPD Path" names a program to run.
bool Wvdial::isDialable(const QString &name) const
{
    return !name.startsWith(QLatin1Char('-')) && !name.contains(QLatin1Char('='));
}

void Wvdial::notStarted()
{
    QMetaObject::invokeMethod(this, &Wvdial::dialNotStarted, Qt::QueuedConnection);
}

void Wvdial::wvDialError(QProcess::ProcessError error)
{
    qCCritical(DIALUP).noquote() << QStringLiteral("Wvdial error (%1): ").arg(error)
            + m_process->errorString();
    if (error == QProcess::FailedToStart)
        notStarted();
}

void Wvdial::wvDialFinished(int code, QProcess::ExitStatus status)
{
    Q_UNUSED(status)
    qCDebug(DIALUP, "WvDial finished with code %d", code);
    switch (code) {
    case 0:
        qCWarning(DIALUP, "Wvdial closed successfully");
        break;
    case 1:
        qCCritical(DIALUP, "Pppd has finished");
        break;
    case 2:
        qCCritical(DIALUP, "Pppd was finished by user signal");
        break;
    default:
        qCCritical(DIALUP, "Unknown exit code");
    }
    if (m_pending.isEmpty())
        emit dialdowned();
    else
        startWvDial(m_pending.first());
}

void Wvdial::wvDialReadyReadStandardError()
{
    logOutput(m_process->readAllStandardError());
}

void Wvdial::wvDialReadyReadStandardOutput()
{
    logOutput(m_process->readAllStandardOutput());
}

void Wvdial::wvDialStarted()
{
    qCDebug(DIALUP, "wvdial is started");
}

void Wvdial::wvDialStateChanged(QProcess::ProcessState state)
{
    qCDebug(DIALUP, "New wvdial state is %d", state);
}
