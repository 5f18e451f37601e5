#include "atsession.h"

#include "atmodemlog.h"

AtSession::AtSession(const QString &lockDirectory)
    : m_port(lockDirectory)
{
}

AtSession::~AtSession() = default;

bool AtSession::open(const QString &port, int baudrate)
{
    close();
    m_error = AtError::None;
    m_errorText.clear();
    if (!m_port.open(port, baudrate))
        return fail(AtError::Port, m_port.error());
    m_channel = std::make_unique<AtChannel>(
        m_port.device(), m_port.path(), [this] { return isAborted() || m_port.isGone(); });
    return true;
}

void AtSession::close()
{
    m_channel.reset();
    m_port.close();
    dialect = nullptr;
    identity = {};
    ussdForm.reset();
    isUssdPending = false;
    forgetSettings();
}

void AtSession::forgetSettings()
{
    isPlainCharset = false;
    cellReports.clear();
}

bool AtSession::begin()
{
    if (!isOpen()) // why it was lost stays
        return m_error != AtError::Port && fail(AtError::Port, QStringLiteral("No port is open."));
    m_error = AtError::None;
    m_errorText.clear();
    return true;
}

AtReply AtSession::ask(const QByteArray &command, std::chrono::milliseconds limit)
{
    return exchange([&] { return m_channel->send(command, limit); });
}

AtReply AtSession::askWithText(
    const QByteArray &command, const QByteArray &text, std::chrono::milliseconds limit)
{
    return exchange([&] { return m_channel->sendText(command, text, limit); });
}

AtReply AtSession::escape(std::chrono::milliseconds limit)
{
    return exchange([&] { return m_channel->sendEscape(limit); });
}

AtReply AtSession::listen(std::chrono::milliseconds limit)
{
    return exchange([&] { return m_channel->waitUnsolicited(limit); });
}

bool AtSession::fail(AtError error, const QString &text)
{
    m_error = error;
    m_errorText = text;
    qCDebug(AT_MODEM).noquote() << text;
    return false;
}

// A port that has vanished is closed: there is nothing to be had from it.
bool AtSession::failLost(const AtReply &reply)
{
    const QString path = m_port.path();
    if (reply.status != AtReply::Status::PortGone)
        return fail(
            AtError::NoAnswer, QStringLiteral("The modem on %1 no longer answers.").arg(path));
    if (!isOpen()) // told already
        return false;
    close();
    if (isAborted())
        return fail(AtError::Port,
            QStringLiteral("The work with the modem on %1 was broken off.").arg(path));
    return fail(AtError::Port,
        QStringLiteral("The modem on %1 has gone: its port was unplugged or hung up.").arg(path));
}

bool AtSession::failAnswer(const AtReply &reply, const QString &what)
{
    if (reply.isLost())
        return failLost(reply);
    return fail(AtError::Refused,
        reply.errorText.isEmpty()
            ? QStringLiteral("%1.").arg(what)
            : QStringLiteral("%1: %2.").arg(what, QString::fromUtf8(reply.errorText)));
}

template <typename Exchange>
AtReply AtSession::exchange(Exchange ask)
{
    AtReply reply;
    reply.status = AtReply::Status::PortGone;
    if (!isOpen())
        return reply;
    reply = ask();
    if (reply.status == AtReply::Status::PortGone)
        failLost(reply);
    return reply;
}
