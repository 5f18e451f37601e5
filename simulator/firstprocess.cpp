#include "firstprocess.h"

#include "signals.h"
#include "terminalnamespace.h"

#include <QFile>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

// fork(), which tells why there is no process.
pid_t startProcess()
{
    const pid_t pid = fork();
    if (pid < 0)
        std::fprintf(stderr, "terminalsim: no further process: %s\n", std::strerror(errno));
    return pid;
}

} // namespace

FirstProcess::FirstProcess(std::function<int(int)> machine, QStringList program)
    : m_machine(std::move(machine))
    , m_program(std::move(program))
{
}

int FirstProcess::run()
{
    int ready[2];
    if (pipe2(ready, O_CLOEXEC) != 0)
        return TerminalNamespace::kRefused;
    m_machinePid = startProcess();
    if (m_machinePid == 0) {
        close(ready[0]);
        SignalBlock::release();
        setpgid(0, 0); // keys pressed at the terminal are for the program alone
        _exit(m_machine(ready[1]));
    }
    close(ready[1]);
    return superviseAll(ready[0]);
}

int FirstProcess::superviseAll(int readyFd)
{
    const SignalBlock block;
    const int signalFd = signalfd(-1, &block.set(), SFD_CLOEXEC);
    pollfd waiting[] = {{signalFd, POLLIN, 0}, {readyFd, POLLIN, 0}};
    for (;;) {
        const bool started = m_programPid > 0;
        if (poll(waiting, started ? 1 : 2, -1) < 0)
            continue;
        char byte = 0;
        if (!started && waiting[1].revents != 0 && read(readyFd, &byte, 1) == 1) {
            startProgram();
            if (m_programPid < 0)
                return TerminalNamespace::kRefused;
        }
        signalfd_siginfo signal{};
        if ((waiting[0].revents & POLLIN) == 0
            || read(signalFd, &signal, sizeof signal) != sizeof signal) {
            if (!started && m_programPid < 0)
                return TerminalNamespace::kRefused; // the machine said why
            continue;
        }
        int exitStatus = 0;
        const auto number = static_cast<int>(signal.ssi_signo);
        if (number == SIGCHLD) {
            if (reap(&exitStatus))
                return exitStatus;
        } else if (m_programPid <= 0) {
            return 128 + number;
        } else if (signal.ssi_code <= 0) { // sent by a process, not for a key
            kill(m_programPid, number);
        }
    }
}

bool FirstProcess::reap(int *exitStatus)
{
    int status = 0;
    bool over = false;
    for (pid_t pid = 0; (pid = waitpid(-1, &status, WNOHANG)) > 0;) {
        if (pid == m_programPid) {
            *exitStatus = exitStatusOf(status);
            return true;
        }
        if (pid == m_machinePid) {
            std::fprintf(stderr, "terminalsim: the simulated hardware ended with status %d\n",
                exitStatusOf(status));
            *exitStatus = TerminalNamespace::kRefused;
            over = true;
        }
    }
    return over;
}

void FirstProcess::startProgram()
{
    m_programPid = startProcess();
    if (m_programPid != 0)
        return;
    SignalBlock::release();
    std::vector<QByteArray> words;
    words.reserve(static_cast<size_t>(m_program.size()));
    for (const QString &word : m_program)
        words.push_back(QFile::encodeName(word));
    std::vector<char *> arguments;
    arguments.reserve(words.size() + 1);
    for (QByteArray &word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    execvp(arguments.front(), arguments.data());
    const int error = errno;
    std::fprintf(
        stderr, "terminalsim: cannot start %s: %s\n", arguments.front(), std::strerror(error));
    _exit(error == ENOENT ? 127 : 126);
}
