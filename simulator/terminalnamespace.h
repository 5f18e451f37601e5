#pragma once

#include <QString>
#include <functional>

/// Runs a function as the first process of namespaces of its own (users, mounts, processes,
/// network, System V objects, host name), where it is root and can reach nothing of the machine's
/// processes and network. Everything started in there dies with that first process, and that
/// process dies with this one, however this one ends.
///
/// Needs no privilege where the kernel lets users make namespaces. The caller must have no threads.
class TerminalNamespace
{
public:
    /// What run() returns when there are no namespaces to be had; errorText() tells why.
    static constexpr int kRefused = 125;

    /// Calls `firstProcess` in the new namespaces and returns what it returned. Signals sent to the
    /// caller meanwhile are passed on to it. Afterwards the caller can start no threads and no
    /// processes any more: they would belong to the namespaces that have ended.
    int run(const std::function<int()> &firstProcess);

    QString errorText() const { return m_errorText; }

private:
    bool enter();
    int refuse(const char *what);

    QString m_errorText;
};
