#pragma once

#include <QByteArray>
#include <QList>

#include <functional>

/// What one command gets as an answer.
struct CommandReply
{
    enum class Kind { Final, SmsText, Dial };

    Kind kind = Kind::Final;
    QList<QByteArray> lines; ///< information text
    QByteArray result = "OK"; ///< final result code
    int delayMs = 0; ///< besides the latency of the scenario
    /// What happens `laterMs` after the answer, if anything; gives unsolicited lines.
    std::function<QList<QByteArray>()> later;
    int laterMs = 100;
    bool resets = false; ///< the modem restarts afterwards

    bool isOk() const { return result == "OK"; }
    static CommandReply ok(const QList<QByteArray> &lines = {});
    static CommandReply error() { return failed("ERROR"); }
    static CommandReply failed(const QByteArray &result);
};
