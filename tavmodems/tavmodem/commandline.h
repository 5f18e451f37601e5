#pragma once

#include <QString>
#include <QStringList>

/** What the user asks of the program. */
struct CommandLine
{
    enum class Command { List, Info, Cells, Signal, Balance, Number, Ussd, Sms, ModemOnly };

    QString port; ///< empty: the only modem that there is
    int baudrate = 0; ///< bits per second
    bool json = false;
    Command command = Command::List;
    QString code; ///< of Ussd
    bool take = false; ///< of Sms
};

/** Reads a command line. */
class CommandLineReader
{
public:
    enum class Outcome {
        Run, ///< commandLine() is to be run
        Tell, ///< text() was asked for: the help or the version
        Wrong ///< text() says in one line what is wrong
    };

    /** `arguments` begin with the program's name. */
    Outcome read(const QStringList &arguments);

    CommandLine commandLine() const { return m_commandLine; }
    QString text() const { return m_text; }

private:
    Outcome wrong(const QString &text);

    CommandLine m_commandLine;
    QString m_text;
};
