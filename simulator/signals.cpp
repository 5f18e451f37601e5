#include "signals.h"

#include <initializer_list>
#include <sys/wait.h>

SignalBlock::SignalBlock()
{
    sigemptyset(&m_set);
    for (const int number : {SIGCHLD, SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2})
        sigaddset(&m_set, number);
    sigprocmask(SIG_BLOCK, &m_set, &m_before);
}

SignalBlock::~SignalBlock()
{
    sigprocmask(SIG_SETMASK, &m_before, nullptr);
}

void SignalBlock::release()
{
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

bool isFromProcess(const siginfo_t &signal)
{
    return signal.si_code == SI_USER || signal.si_code == SI_QUEUE || signal.si_code == SI_TKILL;
}

int exitStatusOf(int waitStatus)
{
    return WIFSIGNALED(waitStatus) ? 128 + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
}
