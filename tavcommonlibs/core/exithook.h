#pragma once

#include <QtGlobal>

#include <functional>

/// Runs an action when something calls exit() while this lives, as the platform plug-in does in the
/// middle of the event loop when the display has gone: nothing on the stack is left then, and what
/// lies there is never destroyed. One at a time.
///
/// The action runs in the thread that made this, before any static object is destroyed, and not at
/// all when another thread calls exit(). It must not run an event loop.
class ExitHook
{
    Q_DISABLE_COPY_MOVE(ExitHook)

public:
    explicit ExitHook(std::function<void()> action);
    ~ExitHook();
};
