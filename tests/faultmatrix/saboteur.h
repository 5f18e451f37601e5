#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

class OrgOvrelTerminalSim1Interface;
struct Fault;

/// Waits in a thread of its own for a step of the work, which may block the GUI thread, and lets a
/// fault strike then.
class Saboteur
{
public:
    using Reached = std::function<bool(OrgOvrelTerminalSim1Interface &)>;

    /// `fault` outlives this.
    Saboteur(Reached reached, const Fault &fault);
    ~Saboteur();
    Saboteur(const Saboteur &) = delete;
    Saboteur &operator=(const Saboteur &) = delete;

    bool hasStruck() const { return m_hasStruck; }

private:
    std::atomic<bool> m_hasStruck{false};
    std::atomic<bool> m_isOver{false};
    std::thread m_thread;
};
