#pragma once

#include "signalnotifier.h"

#include <csignal>
#include <memory>

/// While it lives the program is told to end, as SignalNotifier::flag() has it.
class ToldToEnd
{
    Q_DISABLE_COPY_MOVE(ToldToEnd)

public:
    ToldToEnd() { std::raise(SIGTERM); }
    ~ToldToEnd()
    {
        m_notifier.reset();
        const SignalNotifier forgetsIt;
    }

private:
    std::unique_ptr<SignalNotifier> m_notifier = std::make_unique<SignalNotifier>();
};
