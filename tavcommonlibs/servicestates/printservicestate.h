#pragma once

/// State of the printer service: a value.
class PrintServiceState
{
public:
    /// The states in which the service leaves its printers alone; all others are its working ones.
    static constexpr int STOPPED = 5;
    static constexpr int DISABLED = 6;

    PrintServiceState() = default;
    explicit PrintServiceState(int serviceState);

    int serviceState() const { return m_serviceState; }
    bool isStopped() const;

private:
    int m_serviceState = 0;
};
