#include "ethernetconfigurator.h"

#include "interfacesfile.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QNetworkConfigurationManager>
#include <QTextCodec>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace {

QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED // Qt 5.15 deprecates these and has nothing in their place

    QNetworkConfigurationManager *
    makeManager(QObject *parent)
{
    return new QNetworkConfigurationManager(parent);
}

void lookAgain(QNetworkConfigurationManager &manager)
{
    manager.updateConfigurations();
}

QVector<QPair<QString, bool>> ethernetInterfacesOf(const QNetworkConfigurationManager &manager)
{
    QVector<QPair<QString, bool>> interfaces;
    const auto configurations = manager.allConfigurations();
    for (const auto &configuration : configurations) {
        if (configuration.bearerType() == QNetworkConfiguration::BearerEthernet)
            interfaces.append({configuration.name(),
                configuration.state().testFlag(QNetworkConfiguration::Active)});
    }
    return interfaces;
}

QT_WARNING_POP

QTextCodec *utf8()
{
    return QTextCodec::codecForName("UTF-8");
}

// One argument for QProcess::splitCommand(), which takes three quotes for one.
QString argument(const QString &text)
{
    const bool isWord = std::none_of(
        text.cbegin(), text.cend(), [](QChar c) { return c.isSpace() || c == QLatin1Char('"'); });
    if (isWord)
        return text;
    const QString quote(QLatin1Char('"'));
    return quote + QString(text).replace(quote, QStringLiteral("\"\"\"")) + quote;
}

} // namespace

EthernetConfigurator::EthernetConfigurator(QObject *parent, const QString &interfacesFile)
    : QObject(parent)
    , m_interfacesFile(interfacesFile)
    , m_manager(makeManager(this))
    , m_process(new QProcess(this))
{
    m_process->setProcessEnvironment(QProcessEnvironment::systemEnvironment());
    connect(m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
        &EthernetConfigurator::processFinished);
    connect(m_process, &QProcess::errorOccurred, this, &EthernetConfigurator::processError);
    connect(m_process, &QProcess::readyReadStandardError, this,
        &EthernetConfigurator::processReadyRead);
    connect(m_process, &QProcess::readyReadStandardOutput, this,
        &EthernetConfigurator::processReadyRead);
}

EthernetConfigurator::~EthernetConfigurator() = default;

QHash<QString, bool> EthernetConfigurator::availableEthernetInterfaces() const
{
    QHash<QString, bool> interfaces;
    const QVector<Interface> all = ethernetInterfaces();
    for (const Interface &interface : all)
        interfaces[interface.first] = interface.second;
    return interfaces;
}

QHash<QString, InterfaceSettings> EthernetConfigurator::availableEthernetSettings() const
{
    QStringList candidates;
    const QVector<Interface> all = ethernetInterfaces();
    for (const Interface &interface : all)
        candidates += interface.first;
    QFile file(m_interfacesFile);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return interfacesfile::read(file, candidates);
}

void EthernetConfigurator::applySettings(const QHash<QString, InterfaceSettings> &settings)
{
    const QString path = QStringLiteral("%1/interfaces.tmp").arg(QDir::tempPath());
    if (!write(path, settings))
        return;
    m_commands.clear();
    const QHash<QString, bool> interfaces = availableEthernetInterfaces();
    for (auto it = interfaces.cbegin(); it != interfaces.cend(); ++it) {
        if (interfacesfile::isPlainName(it.key()))
            m_commands += QStringLiteral("sudo ifconfig %1 down").arg(it.key());
        else
            qWarning() << "Not taken down, for its name:" << it.key();
    }
    m_commands += QStringLiteral("sudo cp %1 %2").arg(argument(path), argument(m_interfacesFile));
    m_commands += QStringLiteral("sudo service networking restart");
    startProcessing();
}

void EthernetConfigurator::finishApplying()
{
    m_isFinishing = true;
    const QDeadlineTimer deadline(longestFinish());
    while (m_process->state() != QProcess::NotRunning || !m_commands.isEmpty()) {
        if (m_process->state() == QProcess::NotRunning)
            startNext();
        if (!m_process->waitForFinished(static_cast<int>(deadline.remainingTime()))
            && deadline.hasExpired()) {
            qWarning() << "The network is left half applied, still to be done:"
                       << QStringList(m_process->program()) + m_process->arguments() << m_commands;
            return;
        }
    }
}

bool EthernetConfigurator::isOnline() const
{
    return m_manager && m_manager->isOnline();
}

void EthernetConfigurator::processFinished(int exitCode, QProcess::ExitStatus exitStatus)
{
    Q_UNUSED(exitCode)
    Q_UNUSED(exitStatus)
    if (std::exchange(m_isCopying, false))
        flushToDisk();
    // The commands have changed what is active, and the manager looks only every ten seconds.
    if (m_commands.isEmpty() && m_manager)
        lookAgain(*m_manager);
    startProcessing();
}

void EthernetConfigurator::processError(QProcess::ProcessError error)
{
    qWarning() << error << (m_process ? m_process->errorString() : QString());
}

void EthernetConfigurator::processReadyRead()
{
    if (!m_process || !m_errorDecoder)
        return;
    const QString errors = m_errorDecoder->toUnicode(m_process->readAllStandardError());
    const QString output = m_outputDecoder->toUnicode(m_process->readAllStandardOutput());
    if (!errors.isEmpty())
        emit logMessage(errors);
    if (!output.isEmpty())
        emit logMessage(output);
}

void EthernetConfigurator::startProcessing()
{
    if (m_commands.isEmpty() || m_isFinishing)
        return;
    const QPointer<EthernetConfigurator> self(this);
    QCoreApplication::processEvents(); // what is due appears before the pause
    if (!self || m_isFinishing)
        return;
    QThread::msleep(static_cast<unsigned long>(pauseBeforeCommand().count()));
    // Events may have started the last command meanwhile.
    if (!m_commands.isEmpty() && m_process)
        startNext();
}

void EthernetConfigurator::startNext()
{
    QStringList arguments = QProcess::splitCommand(m_commands.takeFirst());
    const QString program = arguments.takeFirst();
    if (m_process->state() == QProcess::NotRunning) {
        m_errorDecoder.reset(utf8()->makeDecoder());
        m_outputDecoder.reset(utf8()->makeDecoder());
        // The copy empties the file first. A journal that has nothing else to write meanwhile
        // writes that together with the new text.
        m_isCopying = arguments.contains(m_interfacesFile);
        if (m_isCopying)
            flushToDisk();
    }
    m_process->start(program, arguments); // refused while a command runs: this one is lost then
}

QVector<EthernetConfigurator::Interface> EthernetConfigurator::ethernetInterfaces() const
{
    return m_manager ? ethernetInterfacesOf(*m_manager) : QVector<Interface>();
}

std::chrono::milliseconds EthernetConfigurator::pauseBeforeCommand() const
{
    return std::chrono::milliseconds(1000);
}

void EthernetConfigurator::flushToDisk() const
{
    const QString folder = QFileInfo(m_interfacesFile).absolutePath();
    const int descriptor
        = open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0 || syncfs(descriptor) != 0)
        qWarning("Not flushed to the disk: %s: %s", qUtf8Printable(folder), std::strerror(errno));
    if (descriptor >= 0)
        close(descriptor);
}

std::chrono::milliseconds EthernetConfigurator::longestFinish() const
{
    return std::chrono::seconds(30);
}

bool EthernetConfigurator::write(
    const QString &path, const QHash<QString, InterfaceSettings> &settings) const
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    // In a directory that a group shares, the next to apply may be another user of the group. Of
    // another user's file this changes nothing.
    if (QFileInfo(QFileInfo(path).path()).permission(QFile::WriteGroup))
        file.setPermissions(file.permissions() | QFile::ReadGroup | QFile::WriteGroup);
    const QByteArray text = interfacesfile::text(settings);
    // A file cut short, as by a full disk, must not replace the good one. A write that took a part
    // does not know why; the next one does, or takes the rest.
    if (file.write(text) == text.size() && (file.flush() || file.flush()))
        return true;
    qWarning() << file.fileName() << file.errorString();
    return false;
}
