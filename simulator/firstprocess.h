#pragma once

#include <QStringList>
#include <functional>

/// The terminal's process 1: starts the simulated hardware and services in one child and, when
/// that says it is ready, the program in another; passes signals on to the program and reaps every
/// orphan (a zombie named "pppd" would otherwise stay in `ps -A` for ever).
class FirstProcess
{
public:
    /// `machine` is called in the child that plays the hardware and services, with a file
    /// descriptor to write one byte to when the terminal is up; it is not expected to return.
    FirstProcess(std::function<int(int readyFd)> machine, QStringList program);

    /// Returns the program's exit status (128 + n for a signal, 127 or 126 when it cannot be
    /// started, 125 when the machine fails).
    int run();

private:
    int superviseAll(int readyFd);
    bool reap(int *exitStatus);
    void startProgram();

    const std::function<int(int)> m_machine;
    const QStringList m_program;
    pid_t m_machinePid = -1;
    pid_t m_programPid = -1;
};
