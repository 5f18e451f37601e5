#pragma once

#include "guide.h"

/**
 * What a technician does and sees in every scenario of the system test: hands on the real window,
 * and eyes for the window, the bus and the kernel of the guest, in which kernel, bus, dialer and
 * devices are real.
 *
 * The looks at the window are for the GUI thread, that is, for mustShow().
 */
class Technician : protected Guide
{
public:
    using Guide::Guide;

protected:
    ~Technician() = default;

    void opens();
    void startsDial(const QString &connection);
    void isConnected();
    void stopsDial();
    void dialHasEnded();
    void selects(const QString &connection);
    void closes();
    void services(const QStringList &told);

    static bool isEnabled(const char *name);
    static bool isIdle();
    static QStringList listed();
    static QString log();
    static QString indicator();
    static bool runs(const QString &program);
    static QByteArray contents(const QString &path);

    // An emulated processor takes several times as long as a real one.
    static constexpr std::chrono::seconds kSlow{30};
    // The Internet check looks once a minute.
    static constexpr std::chrono::seconds kRound{75};
};

/// The interface of a call.
inline const QString kLink = QStringLiteral("ppp0");
