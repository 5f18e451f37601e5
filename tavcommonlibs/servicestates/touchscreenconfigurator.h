#pragma once

#include <chrono>

/// Takes the touch screen from the customers' GUI, locally: by the command that the terminal's
/// configuration names under "touch/stopCommand".
class TouchScreenConfigurator
{
public:
    /// `limit`: how long the command may take before it is killed.
    explicit TouchScreenConfigurator(std::chrono::milliseconds limit = std::chrono::seconds(5));

    /// Runs the command, without a shell, and waits for its end. True when it succeeded; what went
    /// wrong, no command at all included, is logged.
    bool stopTouches();

private:
    const std::chrono::milliseconds m_limit;
};
