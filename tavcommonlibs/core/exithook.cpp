#include "exithook.h"

#include <utility>

namespace {

// Of the thread rather than of the process: exit() destroys what belongs to the calling thread
// before any static object (N4659 6.6.4, [basic.start.term]), those that came later included.
struct Hook
{
    Hook() = default;
    ~Hook()
    {
        if (action)
            std::exchange(action, {})();
    }
    Q_DISABLE_COPY_MOVE(Hook)

    std::function<void()> action;
};

thread_local Hook theHook;

} // namespace

ExitHook::ExitHook(std::function<void()> action)
{
    theHook.action = std::move(action);
}

ExitHook::~ExitHook()
{
    theHook.action = {};
}
