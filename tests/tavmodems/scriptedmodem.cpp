#include "scriptedmodem.h"

#include <QDateTime>
#include <QFile>

#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

ScriptedModem::ScriptedModem()
{
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    char name[64] = {};
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0
        || ::ptsname_r(master, name, sizeof name) != 0 || ::pipe2(m_wake, O_CLOEXEC) != 0)
        qFatal("no pseudo-terminal for the test");
    // Kept open, so that the line stays up between two users.
    m_slave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios raw = {};
    ::tcgetattr(m_slave, &raw);
    ::cfmakeraw(&raw);
    ::tcsetattr(m_slave, TCSANOW, &raw);
    m_master = master;
    m_path = QFile::decodeName(name);
    answers = {
        {"AT", ok()},
        {"ATZ", ok()},
        {"ATH", ok()},
        {"ATQ0V1", ok()},
        {"ATQ0V1E0", ok()},
        {"AT+CMEE=1", ok()},
        {"AT+CREG=0", ok()},
        {"AT+CGREG=0", ok()},
        {"AT+CGMI", ok("huawei")},
        {"AT+CGMM", ok("E1550")},
        {"AT^CURC=0", ok()},
        {"AT+CFUN?", ok("+CFUN: 1")},
        {"AT+CPIN?", ok("+CPIN: READY")},
        {"AT+CREG?", ok("+CREG: 0,1")},
    };
}

ScriptedModem::~ScriptedModem()
{
    hangUp();
    if (m_thread.joinable())
        m_thread.join();
    ::close(m_slave);
    ::close(m_wake[0]);
    ::close(m_wake[1]);
}

void ScriptedModem::start()
{
    m_thread = std::thread([this] { run(); });
}

QList<QByteArray> ScriptedModem::commands() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_commands;
}

// The thread closes the port, so that nobody uses a number that means something else by then.
void ScriptedModem::hangUp()
{
    if (!m_thread.joinable()) {
        const int master = m_master.exchange(-1);
        if (master >= 0)
            ::close(master);
    } else if (::write(m_wake[1], "x", 1) != 1) {
        qFatal("the modem of the test does not end");
    }
}

QByteArray ScriptedModem::ok(const QByteArray &text)
{
    return text.isEmpty() ? QByteArray("\r\nOK\r\n") : "\r\n" + text + "\r\n\r\nOK\r\n";
}

void ScriptedModem::run()
{
    for (;;) {
        const int master = m_master;
        if (master < 0)
            return;
        const bool talks = !endless.isEmpty();
        pollfd files[2] = {{m_wake[0], POLLIN, 0},
            {master, static_cast<short>(POLLIN | (talks ? POLLOUT : 0)), 0}};
        const int ready = ::poll(files, 2, m_later.isEmpty() ? -1 : 100);
        if (ready == 0)
            say(std::exchange(m_later, {}));
        if (files[0].revents != 0)
            break;
        char bytes[256];
        const ssize_t size = ::read(master, bytes, sizeof bytes);
        for (ssize_t i = 0; i < size && m_master >= 0; ++i)
            hear(bytes[i]);
        if (!endless.isEmpty())
            say(endless);
    }
    const int master = m_master.exchange(-1);
    if (master >= 0)
        ::close(master);
}

void ScriptedModem::hear(char c)
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    // S12's second, and what a line may be late with the last character before it.
    const bool afterSilence = now - m_lastHeard > 1200;
    m_lastHeard = now;
    if (silent)
        return;
    if (online) {
        if (c != '+' || (m_line.isEmpty() && !afterSilence)) {
            m_line.clear();
            return;
        }
        m_line += c;
        if (m_line == "+++") {
            m_line.clear();
            online = false;
            say(ok());
        }
        return;
    }
    if (echo)
        say(QByteArray(1, c));
    const bool isEnd = m_hearsText ? c == '\x1a' || c == '\x1b' : c == '\r';
    if (!isEnd) {
        m_line += c;
        return;
    }
    if (m_hearsText) {
        m_hearsText = false;
        const QByteArray text = m_line + c;
        m_line.clear();
        note(text);
        if (!hasGoneAt(text))
            say(c == '\x1a' ? answerToText : ok());
        return;
    }
    const QByteArray heard = m_line;
    m_line.clear();
    const int start = heard.indexOf("AT"); // what stands before it is no part of the command
    if (start >= 0)
        answer(heard.mid(start));
}

void ScriptedModem::answer(const QByteArray &command)
{
    note(command);
    if (hasGoneAt(command))
        return;
    if (command == "ATQ0V1E0" && answers.value(command) == ok())
        echo = false;
    if (!promptOn.isEmpty() && command.startsWith(promptOn)) {
        m_hearsText = true;
        say("\r\n> ");
        return;
    }
    say(std::exchange(m_later, later.value(command)));
    say(answerToAll.isEmpty() ? answers.value(command, "\r\nERROR\r\n") : answerToAll);
}

// Vanishes when it is the time for it, which is behind note().
bool ScriptedModem::hasGoneAt(const QByteArray &heard)
{
    const bool isTime
        = commands().size() == hangUpAt || (!hangUpOn.isEmpty() && heard.startsWith(hangUpOn));
    if (isTime)
        ::close(m_master.exchange(-1));
    return isTime;
}

void ScriptedModem::note(const QByteArray &heard)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_commands << heard;
    }
    if (onCommand)
        onCommand(heard);
}

void ScriptedModem::say(const QByteArray &bytes)
{
    const int step = byteByByte ? 1 : qMax(bytes.size(), 1);
    for (int at = 0; at < bytes.size(); at += step) {
        const QByteArray part = bytes.mid(at, step);
        // A full line drops the rest: nobody is reading.
        if (::write(m_master, part.constData(), static_cast<size_t>(part.size())) < 0)
            return;
        if (byteByByte)
            ::tcdrain(m_slave);
    }
}
