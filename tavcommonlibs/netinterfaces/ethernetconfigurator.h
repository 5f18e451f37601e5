#pragma once

#include "interfacesettings.h"

#include <QHash>
#include <QObject>
#include <QPair>
#include <QPointer>
#include <QProcess>
#include <QStringList>
#include <QTextDecoder>
#include <QVector>

#include <chrono>
#include <memory>

class QNetworkConfigurationManager;

/// The terminal's wired interfaces and their settings in the interfaces file (interfaces(5)).
/// Reads the file, writes a whole new one, and puts it into force with commands run through `sudo`,
/// which must not ask for a password. Maps are unordered and nothing here sorts them.
/// GUI thread only.
class EthernetConfigurator : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(EthernetConfigurator)

public:
    explicit EthernetConfigurator(QObject *parent = nullptr,
        const QString &interfacesFile = QStringLiteral("/etc/network/interfaces"));
    ~EthernetConfigurator() override;

    /// Every wired interface of the system, with true for those that are active now.
    QHash<QString, bool> availableEthernetInterfaces() const;

    /// What the interfaces file says, by name; empty when it cannot be read. A search for words in
    /// lines, not a grammar: comments count like any other line. An interface on DHCP is filed
    /// under the literal word "iface", never under its name.
    QHash<QString, InterfaceSettings> availableEthernetSettings() const;

    /// Writes the settings to "interfaces.tmp" in the temporary directory, then takes all
    /// interfaces down, copies the file into place and restarts the network, each command a second
    /// after the one before. Once copied, the file is on the disk before anything else happens; a
    /// power cut leaves the old file or the new one, unless it comes in the moment of copying and
    /// another program has its own data written to the same disk in that very moment.
    /// Does nothing when the temporary file cannot be written. There is no
    /// sign of the end but the commands' output; the list of interfaces is fresh a moment later.
    /// Called while a command still runs, the new first command is lost.
    ///
    /// A name that is no single plain word, or that a program would take for an option, is left out
    /// of the file and of the commands. A line break in a value becomes a space, and backslashes at
    /// its end go: the next line is none of it.
    void applySettings(const QHash<QString, InterfaceSettings> &settings);

    /// Puts what is being applied into force to its end, without the event loop and the pauses, and
    /// applies nothing any more; half of it would leave the terminal without its network. Blocks
    /// for longestFinish() at most, then the rest is left undone and logged.
    void finishApplying();

    /// True while any interface of the system is active, wired or not.
    bool isOnline() const;

signals:
    /// A piece of what a command printed, as it came.
    void logMessage(const QString &text);

public slots:
    void processFinished(int exitCode, QProcess::ExitStatus exitStatus);
    void processError(QProcess::ProcessError error);
    void processReadyRead();
    /// Blocks for pauseBeforeCommand() before it starts the next command of the queue.
    void startProcessing();

protected:
    using Interface = QPair<QString, bool>; // name, active

    /// The system's wired interfaces in the system's order; a name may occur twice.
    virtual QVector<Interface> ethernetInterfaces() const;
    virtual std::chrono::milliseconds pauseBeforeCommand() const;
    /// Blocks until the file system of the interfaces file has all of itself on its disk.
    virtual void flushToDisk() const;
    virtual std::chrono::milliseconds longestFinish() const;

private:
    void startNext();
    bool write(const QString &path, const QHash<QString, InterfaceSettings> &settings) const;

    const QString m_interfacesFile;
    QPointer<QNetworkConfigurationManager> m_manager; // child of this
    QPointer<QProcess> m_process; // child of this
    QStringList m_commands; // the head is started next
    bool m_isCopying = false;
    bool m_isFinishing = false;
    // A character may come in two pieces, and each channel has its own.
    std::unique_ptr<QTextDecoder> m_errorDecoder;
    std::unique_ptr<QTextDecoder> m_outputDecoder;
};
