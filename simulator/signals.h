#pragma once

#include <csignal>

/// Blocks the signals that a supervising process waits for (its children's ends and what is to be
/// passed on) for as long as it lives, and gives back what was before.
class SignalBlock
{
public:
    SignalBlock();
    ~SignalBlock();
    SignalBlock(const SignalBlock &) = delete;
    SignalBlock &operator=(const SignalBlock &) = delete;

    const sigset_t &set() const { return m_set; }

    /// Makes the calling process, a child about to become another program, take signals again.
    static void release();

private:
    sigset_t m_set;
    sigset_t m_before;
};

/// Whether the signal was sent with kill(). One that the terminal sent for a key went to the whole
/// process group and is not to be passed on once more.
bool isFromProcess(const siginfo_t &signal);

/// The exit status that a shell would show for waitpid()'s status: 128 + n for signal n.
int exitStatusOf(int waitStatus);
