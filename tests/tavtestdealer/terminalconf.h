#pragma once

#include <QFile>
#include <QTemporaryDir>

/// A terminal configuration of the test's own beside the one that it is given: further lines are
/// laid over that one for as long as this lives.
class TerminalConf
{
public:
    explicit TerminalConf(const QString &furtherLines)
        : m_former(qgetenv("TAV_TERMINAL_CONF"))
    {
        // The simulated terminal has it where a real one has it.
        QFile given(m_former.isEmpty() ? QStringLiteral("/etc/ovrel/terminalV4.conf")
                                       : QFile::decodeName(m_former));
        QFile own(m_directory.filePath(QStringLiteral("terminalV4.conf")));
        if (!given.open(QIODevice::ReadOnly) || !own.open(QIODevice::WriteOnly))
            qFatal("the terminal's configuration cannot be copied");
        own.write(given.readAll());
        own.write(furtherLines.toUtf8());
        qputenv("TAV_TERMINAL_CONF", QFile::encodeName(own.fileName()));
    }
    ~TerminalConf()
    {
        if (m_former.isEmpty())
            qunsetenv("TAV_TERMINAL_CONF");
        else
            qputenv("TAV_TERMINAL_CONF", m_former);
    }

    TerminalConf(const TerminalConf &) = delete;
    TerminalConf &operator=(const TerminalConf &) = delete;

private:
    QTemporaryDir m_directory;
    QByteArray m_former;
};
