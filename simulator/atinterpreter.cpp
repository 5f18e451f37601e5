#include "atinterpreter.h"

#include "modemstate.h"

#include <cctype>
#include <utility>

namespace {

constexpr int kLongestLine = 4096;
constexpr char kCtrlZ = 0x1a;
constexpr char kEscapeKey = 0x1b;
constexpr auto kGuardTime = 1000; // V.250, S12: 50 fiftieths of a second

// V.250, table 1
QByteArray numericResult(const QByteArray &result)
{
    static const QMap<QByteArray, QByteArray> numbers{{"OK", "0"}, {"RING", "2"},
        {"NO CARRIER", "3"}, {"ERROR", "4"}, {"NO DIALTONE", "6"}, {"BUSY", "7"},
        {"NO ANSWER", "8"}};
    return result.startsWith("CONNECT") ? QByteArray("1") : numbers.value(result, result);
}

bool isLetter(char character)
{
    return std::isalpha(static_cast<uchar>(character)) != 0;
}

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

} // namespace

AtInterpreter::AtInterpreter(ModemState *modem, QObject *parent)
    : QObject(parent)
    , m_modem(modem)
    , m_commands(modem)
    , m_due(this)
    , m_escape(this)
{
    m_due.setSingleShot(true);
    m_due.setTimerType(Qt::PreciseTimer); // a latency is never cut short
    connect(&m_due, &QTimer::timeout, this, [this] {
        m_busy = false;
        if (std::exchange(m_dialling, false))
            dialled();
        else
            answer(m_dueReply);
    });
    m_escape.setSingleShot(true);
    m_escape.setInterval(kGuardTime);
    connect(&m_escape, &QTimer::timeout, this, &AtInterpreter::escaped);
    powerUp();
}

void AtInterpreter::powerUp()
{
    m_due.stop();
    m_escape.stop();
    m_mode = Mode::Command;
    m_echo = m_verbose = true;
    m_quiet = m_busy = m_dialling = m_inCall = false;
    m_line.clear();
    m_rest.clear();
    m_ahead.clear();
    m_registers = {{0, 0}, {3, '\r'}, {4, '\n'}, {5, '\b'}, {7, 50}, {12, 50}};
    m_commands.powerUp();
}

void AtInterpreter::receive(const QByteArray &bytes)
{
    if (m_mode == Mode::Data) {
        receiveData(bytes);
        return;
    }
    for (int i = 0; i < bytes.size(); ++i) {
        if (m_mode == Mode::Data) { // the rest of a chunk that also held the dial command
            receiveData(bytes.mid(i));
            return;
        }
        receiveInCommand(bytes.at(i));
    }
}

void AtInterpreter::receiveData(const QByteArray &bytes)
{
    const bool afterSilence = !m_silence.isValid() || m_silence.elapsed() >= kGuardTime;
    m_silence.start();
    m_escape.stop();
    if (bytes == "+++" && afterSilence)
        m_escape.start();
    emit dataReceived(bytes);
}

void AtInterpreter::escaped()
{
    m_mode = Mode::Command;
    sendResult("OK");
}

void AtInterpreter::receiveInCommand(char character)
{
    if (m_dialling && character != '\n') { // programs that end lines with CR LF are many
        // Any character gives the dialling up (V.250, 6.3.1).
        m_dialling = m_busy = false;
        m_due.stop();
        finish("NO CARRIER");
        return;
    }
    if (m_busy) {
        if (m_ahead.size() < kLongestLine)
            m_ahead.append(character);
        return;
    }
    if (m_mode == Mode::SmsText) {
        if (m_echo)
            emit send(QByteArray(1, character));
        if (character == kCtrlZ || character == kEscapeKey) {
            m_mode = Mode::Command;
            const QByteArray text = std::exchange(m_smsText, {}).replace('\r', '\n');
            answer(character == kCtrlZ ? m_commands.sendSms(text.trimmed()) : CommandReply::ok());
        } else if (m_smsText.size() < kLongestLine) {
            m_smsText.append(character);
        }
        return;
    }
    if (m_echo)
        emit send(QByteArray(1, character));
    if (character == static_cast<char>(m_registers.value(3))) {
        startLine();
    } else if (character == static_cast<char>(m_registers.value(5))) {
        m_line.chop(1);
    } else if (character == '/' && m_line.compare("A", Qt::CaseInsensitive) == 0) {
        m_line = m_lastLine;
        startLine();
    } else if (static_cast<uchar>(character) >= ' ' && m_line.size() < kLongestLine) {
        m_line.append(character);
    }
}

void AtInterpreter::startLine()
{
    const QByteArray line = std::exchange(m_line, {});
    // Noise before the attention code is no part of the command (V.250, 5.2.1).
    const int start = line.toUpper().indexOf("AT");
    if (start < 0)
        return;
    m_lastLine = line.mid(start);
    emit commandArrived(m_lastLine);
    m_rest = m_lastLine.mid(2);
    nextCommand();
}

// Takes the next command off the line (V.250, 5.3 and 5.4), its name in capitals and free of
// blanks.
QByteArray AtInterpreter::takeCommand()
{
    while (m_rest.startsWith(' ') || m_rest.startsWith(';'))
        m_rest.remove(0, 1);
    if (m_rest.isEmpty())
        return {};
    const char first = static_cast<char>(std::toupper(static_cast<uchar>(m_rest.at(0))));
    if (first == 'D')
        return std::exchange(m_rest, {}).toUpper().replace(' ', "");
    int end = 1;
    if (isLetter(first) || first == '&' || first == '\\') {
        if (!isLetter(first) && end < m_rest.size())
            ++end;
        while (end < m_rest.size() && isDigit(m_rest.at(end)))
            ++end;
        if (first == 'S' && end < m_rest.size()
            && (m_rest.at(end) == '=' || m_rest.at(end) == '?')) {
            ++end;
            while (end < m_rest.size() && isDigit(m_rest.at(end)))
                ++end;
        }
        QByteArray command = m_rest.left(end).toUpper();
        m_rest.remove(0, end);
        return command;
    }
    QByteArray command;
    bool inQuotes = false;
    bool inName = true;
    for (end = 0; end < m_rest.size() && (inQuotes || m_rest.at(end) != ';'); ++end) {
        const char character = m_rest.at(end);
        inQuotes = inQuotes != (character == '"');
        inName = inName && character != '=' && character != '?';
        if (inQuotes || character != ' ')
            command.append(inName ? static_cast<char>(std::toupper(static_cast<uchar>(character)))
                                  : character);
    }
    m_rest.remove(0, end);
    return command;
}

int AtInterpreter::latencyOf(const QByteArray &command) const
{
    const QString text = QStringLiteral("AT") + QString::fromLatin1(command);
    int latency = m_modem->scenario.latencyMs;
    int longest = 0;
    const QMap<QString, int> &table = m_modem->scenario.latency;
    for (auto it = table.constBegin(); it != table.constEnd(); ++it) {
        if (text.startsWith(it.key()) && it.key().size() > longest) {
            longest = it.key().size();
            latency = it.value();
        }
    }
    return latency;
}

void AtInterpreter::nextCommand()
{
    m_current = takeCommand();
    bool handled = m_current.isEmpty();
    CommandReply reply = handled ? CommandReply::ok() : registers(m_current, &handled);
    if (!handled)
        reply = m_commands.execute(m_current);
    m_dueReply = reply;
    m_busy = true;
    m_due.start(latencyOf(m_current) + reply.delayMs);
}

// The commands that are about the conversation itself.
CommandReply AtInterpreter::registers(const QByteArray &command, bool *handled)
{
    *handled = true;
    const char first = command.at(0);
    const QByteArray rest = command.mid(1);
    const bool isSwitch = rest.isEmpty() || rest == "0" || rest == "1";
    if (first == 'E' || first == 'V' || first == 'Q') {
        if (!isSwitch)
            return CommandReply::error();
        (first == 'E' ? m_echo : first == 'V' ? m_verbose : m_quiet) = rest == "1";
        return CommandReply::ok();
    }
    if (command == "Z" || command == "Z0" || command == "&F" || command == "&F0") {
        m_echo = m_verbose = true;
        m_quiet = false;
        return CommandReply::ok();
    }
    if (first == 'H' && isSwitch) {
        if (std::exchange(m_inCall, false))
            emit callDropped();
        return CommandReply::ok();
    }
    if (command == "O" || command == "O0") {
        CommandReply reply = CommandReply::failed(m_inCall ? "CONNECT" : "NO CARRIER");
        return reply;
    }
    if (first == 'S') {
        const int sign = command.indexOf('=');
        const int number
            = command.mid(1, (sign < 0 ? command.size() : sign) - 1).replace('?', "").toInt();
        if (command.endsWith('?'))
            return CommandReply::ok(
                {QByteArray::number(m_registers.value(number)).rightJustified(3, '0')});
        if (sign < 0)
            return CommandReply::error();
        m_registers.insert(number, command.mid(sign + 1).toInt());
        return CommandReply::ok();
    }
    *handled = false;
    return {};
}

void AtInterpreter::answer(const CommandReply &reply)
{
    switch (reply.kind) {
    case CommandReply::Kind::SmsText:
        m_mode = Mode::SmsText;
        emit send("\r\n> ");
        return;
    case CommandReply::Kind::Dial:
        dial(m_current.mid(1));
        return;
    case CommandReply::Kind::Final:
        break;
    }
    sendLines(reply.lines);
    if (reply.later) {
        QTimer::singleShot(reply.laterMs, this, [this, later = reply.later] {
            const QList<QByteArray> lines = later();
            for (const QByteArray &line : lines)
                notify(line);
        });
    }
    if (reply.isOk() && !m_rest.trimmed().isEmpty()) {
        nextCommand();
        return;
    }
    finish(reply.result);
    if (reply.result == "CONNECT")
        m_mode = Mode::Data;
    if (reply.resets)
        emit resetWanted();
}

void AtInterpreter::finish(const QByteArray &result)
{
    m_rest.clear();
    sendResult(result);
    const QByteArray ahead = std::exchange(m_ahead, {});
    if (!ahead.isEmpty())
        receive(ahead);
}

void AtInterpreter::dial(const QByteArray &number)
{
    if (number.endsWith(';')) { // a voice call
        finish("OK");
        return;
    }
    m_dialling = m_busy = true;
    m_due.start(m_modem->scenario.connectMs);
}

void AtInterpreter::dialled()
{
    QByteArray number = m_current.mid(1);
    if (number.startsWith('T') || number.startsWith('P'))
        number.remove(0, 1);
    const bool isData = number.startsWith("*99") && number.endsWith('#');
    QByteArray result = m_modem->profile.connectText.toLatin1();
    if (m_modem->has("noDialtone"))
        result = "NO DIALTONE";
    else if (m_modem->has("busy"))
        result = "BUSY";
    else if (m_modem->has("noCarrier") || !m_modem->isRegistered() || !m_modem->apnFits()
        || !(isData || m_modem->profile.dialsAnyNumber))
        result = "NO CARRIER";
    const bool connected = result.startsWith("CONNECT");
    if (connected) {
        m_inCall = true;
        m_mode = Mode::Data;
        m_silence.invalidate();
    }
    sendResult(result);
    m_rest.clear();
    m_ahead.clear();
    if (connected)
        emit callStarted();
}

void AtInterpreter::hangUp()
{
    m_due.stop();
    m_escape.stop();
    m_busy = m_dialling = false;
    m_mode = Mode::Command;
    m_line.clear();
    m_rest.clear();
    m_ahead.clear();
    m_smsText.clear();
    if (std::exchange(m_inCall, false))
        emit callDropped();
}

void AtInterpreter::callEnded()
{
    if (!std::exchange(m_inCall, false))
        return;
    m_escape.stop();
    m_mode = Mode::Command;
    sendResult("NO CARRIER");
}

void AtInterpreter::notify(const QByteArray &line)
{
    if (m_mode != Mode::Data)
        emit send("\r\n" + line + "\r\n");
}

void AtInterpreter::sendLines(const QList<QByteArray> &lines)
{
    if (lines.isEmpty())
        return;
    const QByteArray text = lines.join("\r\n");
    emit send(m_verbose ? "\r\n" + text + "\r\n" : text + "\r\n");
}

void AtInterpreter::sendResult(const QByteArray &result)
{
    if (!m_quiet)
        emit send(m_verbose ? "\r\n" + result + "\r\n" : numericResult(result) + '\r');
}
