#pragma once

#include <QtGlobal>

#include <csignal>
#include <sys/resource.h>

/// Stands in for a full disk while it lives: this process can make no file grow beyond so many
/// bytes, and is told so by an error alone.
class FullDisk
{
    Q_DISABLE_COPY_MOVE(FullDisk)

public:
    explicit FullDisk(rlim_t mostBytes)
        : m_formerHandler(std::signal(SIGXFSZ, SIG_IGN))
    {
        if (::getrlimit(RLIMIT_FSIZE, &m_former) != 0)
            qFatal("no limit of files");
        limitTo({mostBytes, m_former.rlim_max});
    }
    ~FullDisk()
    {
        limitTo(m_former);
        std::signal(SIGXFSZ, m_formerHandler);
    }

private:
    static void limitTo(const rlimit &limit)
    {
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
            qFatal("cannot limit files");
    }

    rlimit m_former{};
    void (*m_formerHandler)(int);
};
