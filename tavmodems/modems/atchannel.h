#pragma once

#include "atlines.h"
#include "atreply.h"

#include <QString>

#include <chrono>
#include <functional>

class QDeadlineTimer;
class QIODevice;

/**
 * Sends AT commands over a device and collects the answers. Each call waits on the device itself,
 * runs no event loop, and ends when the answer does, at its limit, or at once when the device has
 * gone. Traffic is logged at debug level, secrets masked. One thread.
 */
class AtChannel
{
    Q_DISABLE_COPY_MOVE(AtChannel)

public:
    /** Most bytes taken as one answer; the longest real ones (all stored SMS) are far shorter. */
    static constexpr int kMaxAnswer = 256 * 1024;

    /**
     * `device` is open for both ways and outlives the channel; `name` is its name in the log.
     * `isGone` tells whether the device can give nothing more; without it, whether it was closed.
     */
    AtChannel(QIODevice *device, const QString &name, std::function<bool()> isGone = {});

    /** Sends a command ("AT+CSQ") and waits for its final result. */
    AtReply send(const QByteArray &command, std::chrono::milliseconds limit);

    /**
     * Sends a command that asks for a text with "> " (AT+CMGS, 3GPP TS 27.005 4.3), then the text,
     * which holds no control characters, and waits for the final result. When that does not come
     * the modem is called back from the text.
     */
    AtReply sendText(
        const QByteArray &command, const QByteArray &text, std::chrono::milliseconds limit);

    /**
     * Calls a modem back from the data of a call: three plus signs and nothing else. The second of
     * silence that must come before them (register S12) is the caller's to have kept.
     */
    AtReply sendEscape(std::chrono::milliseconds limit);

    /** Waits for lines that come unasked: Ok with them in `unsolicited`, or how it failed. */
    AtReply waitUnsolicited(std::chrono::milliseconds limit);

private:
    // `text` is what to send when the modem prompts for it; empty when it is not to.
    AtReply exchange(const QByteArray &bytes, const QByteArray &command, const QByteArray &text,
        std::chrono::milliseconds limit);
    AtReply refused() const;
    bool write(const QByteArray &bytes, const QDeadlineTimer &deadline);
    bool readSome(const QDeadlineTimer &deadline, QByteArray &bytes);
    void skipOldInput(const QDeadlineTimer &deadline);
    void logIn(const QByteArray &line, bool secret);

    QIODevice *const m_device; // the caller's
    const QString m_name;
    const std::function<bool()> m_isGone;
    AtLines m_lines;
    int m_shown = 0; // lines of the present answer in the log
    bool m_secret = false; // the last command holds a PIN or a password
    bool m_outOfStep = false; // an answer may still be under way
};
