#pragma once

#include "atchannel.h"
#include "aterror.h"
#include "atidentity.h"
#include "atport.h"
#include "ussd.h"

#include <atomic>
#include <memory>
#include <optional>

struct AtDialect;

/**
 * The conversation with the modem on one port: the port, the channel over it, which modem it is,
 * and how the last thing asked of it failed. A port that vanishes is closed at once. One thread.
 */
class AtSession
{
    Q_DISABLE_COPY_MOVE(AtSession)

public:
    explicit AtSession(const QString &lockDirectory);
    ~AtSession();

    /** Opens the port alone; what is there is not asked anything. */
    bool open(const QString &port, int baudrate);
    void close();
    bool isOpen() const { return m_channel != nullptr; }
    QString path() const { return m_port.path(); }

    /** The modem was reset: what was set in it may have gone. */
    void forgetSettings();

    /** Begins an operation: clears the error, or is false with one when no port is open. */
    bool begin();

    /** Sends a command and waits for its result. On a closed port the answer is PortGone. */
    AtReply ask(const QByteArray &command, std::chrono::milliseconds limit);
    /** AtChannel::sendText(). */
    AtReply askWithText(
        const QByteArray &command, const QByteArray &text, std::chrono::milliseconds limit);
    /** AtChannel::sendEscape(). */
    AtReply escape(std::chrono::milliseconds limit);
    /** Waits for lines that come unasked: Ok with them in `unsolicited`, Timeout, PortGone. */
    AtReply listen(std::chrono::milliseconds limit);

    /** Each notes an error and returns false, for `return fail(...)`. `text` is a sentence. */
    bool fail(AtError error, const QString &text);
    bool failLost(const AtReply &reply);
    /** Lost as above, else refused: `what` is a sentence without its full stop. */
    bool failAnswer(const AtReply &reply, const QString &what);

    AtError error() const { return m_error; }
    QString errorText() const { return m_errorText; }

    /** What the modem is; while open. Set by who asks it. */
    AtIdentity identity;
    const AtDialect *dialect = nullptr; // of the static table
    /** Whether AT+CSCS was set to plain characters since the port was opened or the modem reset. */
    bool isPlainCharset = false;
    /** Which of +CREG, +CGREG, +CEREG were set to tell the cell since then. */
    QList<QByteArray> cellReports;
    /** In which form the modem has taken a USSD request since the port was opened. */
    std::optional<UssdForm> ussdForm;
    /** Whether the network may still answer a USSD request that was given up. */
    bool isUssdPending = false;
    /** AtModem::setAbortFlag(): the caller's, or null. */
    const std::atomic<bool> *abortFlag = nullptr;

private:
    bool isAborted() const { return abortFlag && *abortFlag; }
    template <typename Exchange>
    AtReply exchange(Exchange ask);

    AtPort m_port;
    std::unique_ptr<AtChannel> m_channel; // while the port is open
    AtError m_error = AtError::None;
    QString m_errorText;
};
