#include "signalnotifier.h"

#include <QDebug>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr std::array<int, 3> kSignals = {SIGTERM, SIGINT, SIGHUP};

// What the handler uses. A pipe rather than a signalfd(2): that needs the signals blocked, and
// programs started meanwhile would inherit the block.
std::atomic<bool> theFlag{false};
std::atomic<int> theWriteEnd{-1};
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free,
    "both are used in a signal handler");
int theReadEnd = -1;
std::array<struct sigaction, kSignals.size()> theFormer;

void handle(int number)
{
    const int error = errno;
    theFlag = true;
    const auto byte = static_cast<char>(number);
    // Cannot fail for want of room: each signal is caught once.
    [[maybe_unused]] const ssize_t written = ::write(theWriteEnd, &byte, 1);
    errno = error;
}

} // namespace

SignalNotifier::SignalNotifier(QObject *parent)
    : QObject(parent)
{
    Q_ASSERT(theWriteEnd < 0);
    theFlag = false;
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
        qWarning("Signals are not caught: %s", qUtf8Printable(qt_error_string(errno)));
        return;
    }
    theReadEnd = ends[0];
    theWriteEnd = ends[1];
    auto *const reader = new QSocketNotifier(theReadEnd, QSocketNotifier::Read, this);
    connect(reader, &QSocketNotifier::activated, this, &SignalNotifier::readNumbers);
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        struct sigaction action = {};
        action.sa_handler = handle;
        action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
        ::sigaction(kSignals[i], nullptr, &theFormer[i]);
        if (theFormer[i].sa_handler != SIG_IGN)
            ::sigaction(kSignals[i], &action, nullptr);
    }
}

SignalNotifier::~SignalNotifier()
{
    if (theWriteEnd < 0)
        return;
    for (std::size_t i = 0; i < kSignals.size(); ++i)
        ::sigaction(kSignals[i], &theFormer[i], nullptr);
    ::close(theWriteEnd.exchange(-1));
    ::close(theReadEnd);
}

const std::atomic<bool> *SignalNotifier::flag()
{
    return &theFlag;
}

void SignalNotifier::readNumbers()
{
    char number = 0;
    while (::read(theReadEnd, &number, 1) == 1)
        emit caught(number);
}
