#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

/**
 * A modem of the tests on a pseudo-terminal, played by a thread of its own: a table of commands and
 * answers and a few bad habits. Set it up, then start() it.
 */
class ScriptedModem
{
public:
    ScriptedModem();
    ~ScriptedModem();
    ScriptedModem(const ScriptedModem &) = delete;
    ScriptedModem &operator=(const ScriptedModem &) = delete;

    bool echo = true;
    bool byteByByte = false;
    bool silent = false;
    bool online = false; ///< in a data call: hears nothing but the escape
    QByteArray endless; ///< sent over and over, as fast as it is taken
    QByteArray answerToAll; ///< instead of the table
    QByteArray promptOn; ///< the command that asks for a text with "> ", up to Ctrl-Z or Escape
    QByteArray answerToText;
    QByteArray hangUpOn; ///< the command, or text, at which the port vanishes
    int hangUpAt = 0; ///< the same by its number among commands(), counted from 1
    QMap<QByteArray, QByteArray> answers; ///< unknown commands get ERROR, "" no answer
    QMap<QByteArray, QByteArray> later; ///< comes after the answer: 0.1 s, or before the next one
    std::function<void(const QByteArray &)> onCommand; ///< in the modem's thread

    void start();
    QString path() const { return m_path; }
    QList<QByteArray> commands() const; ///< and the texts, with what ended each
    void hangUp(); ///< the port vanishes

    /** "\r\nTEXT\r\n\r\nOK\r\n" */
    static QByteArray ok(const QByteArray &text = {});

private:
    void run();
    void hear(char c);
    void answer(const QByteArray &command);
    bool hasGoneAt(const QByteArray &heard);
    void note(const QByteArray &heard);
    void say(const QByteArray &bytes);

    std::atomic<int> m_master{-1};
    int m_slave = -1;
    int m_wake[2] = {-1, -1};
    QString m_path;
    QByteArray m_line;
    QByteArray m_later;
    bool m_hearsText = false;
    qint64 m_lastHeard = 0;
    mutable std::mutex m_mutex;
    QList<QByteArray> m_commands;
    std::thread m_thread;
};
