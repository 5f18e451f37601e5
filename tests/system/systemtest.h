#pragma once

#include "guide.h"

/**
 * The scenarios of the system test: a technician at the real window, in the guest whose kernel,
 * bus, dialer and devices are real, and after each step a look at the window, the bus and the
 * kernel.
 */
class SystemTest : private Guide
{
public:
    using Guide::Guide;

    /** False when there is no scenario of that name. */
    bool walk(const QString &scenario);

private:
    void dial();
    void takeover();
    void search();
    void refused();
    void unplugged();

    void opens();
    void startsDial(const QString &connection);
    void isConnected();
    void isRefused(const QString &fault, const QString &told);
    void stopsDial();
    void closes();
    void services(const QStringList &told);
};
