#include "atchannel.h"

#include "atfinalresult.h"
#include "atmodemlog.h"
#include "atsecrets.h"
#include "atunsolicited.h"

#include <logbinary.h>

#include <QDeadlineTimer>
#include <QIODevice>
#include <QMetaEnum>

#include <algorithm>

using namespace std::chrono_literals;

namespace {

// Silence after which a late answer is taken to have ended.
constexpr std::chrono::milliseconds kQuiet = 150ms;
constexpr std::chrono::milliseconds kPiece = 100ms;
constexpr int kChunk = 4096;
constexpr char kEndOfText = '\x1a'; // Ctrl-Z
constexpr char kEscape = '\x1b';
// Lines of one answer that the log shows: a babbling modem must not drive all else out of it.
constexpr int kMaxShown = 200;

// Waiting is done in pieces, between which the device may be found gone.
int remaining(const QDeadlineTimer &deadline)
{
    return static_cast<int>(std::min<qint64>(deadline.remainingTime(), kPiece.count()));
}

bool isControl(char c)
{
    return (c >= 0 && c < 0x20) || c == 0x7f;
}

// QDebug would write the names of the types before it, which mean nothing to a technician.
const char *nameOf(AtReply::Status status)
{
    return QMetaEnum::fromType<AtReply::Status>().valueToKey(static_cast<int>(status));
}

// A line end inside would make two commands of it, Ctrl-Z or Escape end a message text.
bool isSendable(const QByteArray &text)
{
    return !text.isEmpty() && std::none_of(text.cbegin(), text.cend(), isControl);
}

} // namespace

AtChannel::AtChannel(QIODevice *device, const QString &name, std::function<bool()> isGone)
    : m_device(device)
    , m_name(name)
    , m_isGone(isGone ? std::move(isGone) : [device] { return !device->isOpen(); })
{
}

AtReply AtChannel::send(const QByteArray &command, std::chrono::milliseconds limit)
{
    return isSendable(command) ? exchange(command + '\r', command, {}, limit) : refused();
}

AtReply AtChannel::sendText(
    const QByteArray &command, const QByteArray &text, std::chrono::milliseconds limit)
{
    if (!isSendable(command) || !isSendable(text))
        return refused();
    AtReply reply = exchange(command + '\r', command, text, limit);
    if (reply.isLost() && reply.status != AtReply::Status::PortGone)
        write(QByteArray(1, kEscape), QDeadlineTimer(kQuiet));
    return reply;
}

AtReply AtChannel::sendEscape(std::chrono::milliseconds limit)
{
    m_outOfStep = false; // waiting for quiet would only lengthen the silence already kept
    const QByteArray escape = QByteArrayLiteral("+++");
    return exchange(escape, escape, {}, limit);
}

AtReply AtChannel::waitUnsolicited(std::chrono::milliseconds limit)
{
    AtReply reply;
    m_shown = 0;
    const QDeadlineTimer deadline(limit);
    QByteArray bytes;
    while (!deadline.hasExpired() && readSome(deadline, bytes)) {
        reply.unsolicited = m_lines.feed(bytes);
        if (!reply.unsolicited.isEmpty()) {
            for (const QByteArray &line : qAsConst(reply.unsolicited))
                logIn(line, false);
            reply.status = AtReply::Status::Ok;
            return reply;
        }
    }
    reply.status = m_isGone() ? AtReply::Status::PortGone : AtReply::Status::Timeout;
    return reply;
}

AtReply AtChannel::refused() const
{
    qCWarning(AT_MODEM).noquote() << m_name << "a command with control characters is not sent";
    AtReply reply;
    reply.status = AtReply::Status::Refused;
    return reply;
}

AtReply AtChannel::exchange(const QByteArray &bytes, const QByteArray &command,
    const QByteArray &text, std::chrono::milliseconds limit)
{
    AtReply reply;
    const bool secret = atsecrets::isSecret(command);
    const auto end = [&](AtReply::Status status) {
        reply.status = status;
        m_outOfStep = reply.isLost();
        if (m_outOfStep)
            qCDebug(AT_MODEM).noquote() << m_name << "no end of answer:" << nameOf(reply.status);
        return reply;
    };

    const QDeadlineTimer deadline(limit);
    m_shown = 0;
    skipOldInput(deadline);
    m_lines.endText();
    m_secret = secret;
    qCDebug(AT_MODEM).noquote() << m_name << "->" << atsecrets::masked(command);
    if (!write(bytes, deadline))
        return end(deadline.hasExpired() ? AtReply::Status::Timeout : AtReply::Status::PortGone);

    int received = 0;
    AtUnsolicited unsolicited(command);
    bool echoed = false;
    bool ended = false;
    bool awaitsPrompt = !text.isEmpty();
    QByteArray chunk;
    do {
        if (!readSome(deadline, chunk))
            break;
        reply.heard = true;
        received += chunk.size();
        const QList<QByteArray> lines = m_lines.feed(chunk);
        for (const QByteArray &line : lines) {
            // What the modem had in its line buffer before the command is echoed in front of it.
            if (!ended && !echoed && reply.lines.isEmpty() && line.endsWith(command)) {
                echoed = true;
                continue;
            }
            if (!text.isEmpty() && line.contains(text)) // its echo, with Ctrl-Z behind it
                continue;
            const auto result = ended ? std::nullopt : parseFinalResult(line, command);
            logIn(line, secret && !result);
            if (result) {
                ended = true;
                reply.status = result->status;
                reply.errorCode = result->errorCode;
                reply.errorText = result->errorText;
            } else if (ended || unsolicited.takes(line)) {
                reply.unsolicited << line;
            } else {
                reply.lines << line;
            }
        }
        if (ended)
            return end(reply.status);
        // The prompt has no line end.
        if (awaitsPrompt && (m_lines.unfinished() == ">" || reply.lines.contains(">"))) {
            awaitsPrompt = false;
            m_lines.clear();
            reply.lines.removeAll(">");
            if (!write(text + kEndOfText, deadline))
                break;
        }
        if (received > kMaxAnswer)
            return end(AtReply::Status::Flood);
    } while (!deadline.hasExpired());
    return end(m_isGone() ? AtReply::Status::PortGone : AtReply::Status::Timeout);
}

bool AtChannel::write(const QByteArray &bytes, const QDeadlineTimer &deadline)
{
    if (m_isGone() || m_device->write(bytes) != bytes.size())
        return false;
    while (m_device->bytesToWrite() > 0) {
        if (!m_device->waitForBytesWritten(remaining(deadline))
            && (deadline.hasExpired() || m_isGone()))
            return false;
    }
    return true;
}

// False when nothing came until the deadline, or nothing can come any more.
bool AtChannel::readSome(const QDeadlineTimer &deadline, QByteArray &bytes)
{
    for (;;) {
        bytes = m_device->read(kChunk);
        if (!bytes.isEmpty())
            return true;
        if (!m_device->waitForReadyRead(remaining(deadline))
            && (deadline.hasExpired() || m_isGone()))
            return false;
    }
}

// What came since the last answer is not part of the next one. After an answer that did not end
// in time the rest of it is waited out.
void AtChannel::skipOldInput(const QDeadlineTimer &deadline)
{
    int skipped = 0;
    QByteArray bytes;
    QDeadlineTimer quiet(m_outOfStep ? kQuiet : 0ms);
    for (;;) {
        if (m_device->bytesAvailable() == 0)
            m_device->waitForReadyRead(remaining(quiet));
        bytes = m_device->read(kChunk);
        skipped += bytes.size();
        if ((bytes.isEmpty() && (quiet.hasExpired() || m_isGone())) || deadline.hasExpired()
            || skipped > kMaxAnswer)
            break;
        if (!bytes.isEmpty() && m_outOfStep)
            quiet.setRemainingTime(kQuiet);
        const QList<QByteArray> lines = m_lines.feed(bytes);
        for (const QByteArray &line : lines)
            logIn(line, m_secret); // a late echo of the command before
    }
    m_outOfStep = false;
}

void AtChannel::logIn(const QByteArray &line, bool secret)
{
    if (++m_shown > kMaxShown) {
        if (m_shown == kMaxShown + 1)
            qCDebug(AT_MODEM).noquote()
                << m_name + QStringLiteral(": and more, which is not shown");
        return;
    }
    const QByteArray shown = secret ? QByteArrayLiteral("***") : atsecrets::masked(line);
    // Not an arrow of "<-": what shows a log as rich text would take the rest for markup.
    qCDebug(AT_MODEM).noquote() << m_name + QLatin1Char(':') << logbinary(shown, "UTF-8");
}
