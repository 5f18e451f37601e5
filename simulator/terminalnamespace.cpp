#include "terminalnamespace.h"

#include "signals.h"

#include <QFile>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

bool writeFile(const char *path, const QByteArray &text)
{
    QFile file(QString::fromLatin1(path));
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)
        && file.write(text) == text.size();
}

// PR_SET_PDEATHSIG says nothing about a parent that was gone before it was set; the pipe, whose
// other end only the parent holds, does.
bool dieWithParent(int parentAlive)
{
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0)
        return false;
    pollfd alive{parentAlive, POLLIN, 0};
    return poll(&alive, 1, 0) == 0;
}

} // namespace

int TerminalNamespace::refuse(const char *what)
{
    m_errorText = QStringLiteral(
        "no namespaces for the simulated terminal: %1: %2.\n"
        "The kernel must allow user namespaces: check that the sysctls "
        "user.max_user_namespaces and (where it exists) kernel.unprivileged_userns_clone are "
        "not 0 and that kernel.apparmor_restrict_unprivileged_userns is not 1; in a container, "
        "start it with --privileged.")
                      .arg(QString::fromLatin1(what), QString::fromLocal8Bit(std::strerror(errno)));
    return kRefused;
}

bool TerminalNamespace::enter()
{
    const uid_t user = geteuid();
    const gid_t group = getegid();
    if (unshare(
            CLONE_NEWUSER | CLONE_NEWNS | CLONE_NEWPID | CLONE_NEWNET | CLONE_NEWIPC | CLONE_NEWUTS)
        != 0) {
        refuse("unshare");
        return false;
    }
    // The kernel wants setgroups given up before an ordinary user may map a group.
    if (!writeFile("/proc/self/setgroups", "deny")
        || !writeFile("/proc/self/uid_map", "0 " + QByteArray::number(user) + " 1")
        || !writeFile("/proc/self/gid_map", "0 " + QByteArray::number(group) + " 1")) {
        refuse("mapping the user");
        return false;
    }
    return true;
}

int TerminalNamespace::run(const std::function<int()> &firstProcess)
{
    const SignalBlock block;
    if (!enter())
        return kRefused;

    int alive[2];
    if (pipe(alive) != 0)
        return refuse("pipe");
    const pid_t child = fork();
    if (child < 0)
        return refuse("fork");
    if (child == 0) {
        close(alive[1]);
        _exit(dieWithParent(alive[0]) ? firstProcess() : kRefused);
    }
    close(alive[0]);
    for (;;) {
        siginfo_t signal{};
        sigwaitinfo(&block.set(), &signal);
        if (signal.si_signo == SIGCHLD) {
            int status = 0;
            if (waitpid(child, &status, WNOHANG) == child)
                return exitStatusOf(status);
        } else if (signal.si_signo > 0 && isFromProcess(signal)) {
            kill(child, signal.si_signo);
        }
    }
}
