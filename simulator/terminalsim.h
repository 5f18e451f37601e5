#pragma once

#include "machine.h"
#include "scenario.h"

#include <QStringList>

/// The whole program behind its command line.
class TerminalSim
{
public:
    /// Runs what the arguments (without the program's own name) ask for and returns the exit
    /// status: that of the program in the terminal, or 125 when there is no terminal to be had.
    int run(const QStringList &arguments);

private:
    bool readArguments(const QStringList &arguments);
    int runMachine(int readyFd) const;

    Scenario m_scenario;
    QStringList m_program;
    QString m_broker;
    TerminalLanguage m_language;
    bool m_helpWanted = false;
    int m_published = -1; // listening socket outside
    quint16 m_publishedPort = 0;
};
