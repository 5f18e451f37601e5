#pragma once

#include "atcommands.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

struct ModemState;

/// The conversation on one serial port of a modem as ITU-T V.250 has it: echo, command lines,
/// registers, result codes, dialling and the escape from data. Reads what the program sends, never
/// touches a port itself. Lives in the modems' thread.
class AtInterpreter : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AtInterpreter)

public:
    /// `modem` is the owner's and outlives this.
    explicit AtInterpreter(ModemState *modem, QObject *parent = nullptr);

    void receive(const QByteArray &bytes);
    /// The program has closed the port: a dial is given up and a call ended.
    void hangUp();
    /// The other end has ended the call.
    void callEnded();
    void powerUp();
    /// An unsolicited line; held back while data flows.
    void notify(const QByteArray &line);
    bool isInCall() const { return m_mode == Mode::Data || m_inCall; }

signals:
    void send(const QByteArray &bytes);
    /// A whole command line arrived, "AT" included. Emitted before it is worked on.
    void commandArrived(const QByteArray &line);
    void callStarted();
    void callDropped();
    void dataReceived(const QByteArray &bytes);
    void resetWanted();

private:
    enum class Mode { Command, SmsText, Data };

    void receiveInCommand(char character);
    void receiveData(const QByteArray &bytes);
    void startLine();
    void nextCommand();
    QByteArray takeCommand();
    void answer(const CommandReply &reply);
    void finish(const QByteArray &result);
    CommandReply registers(const QByteArray &command, bool *handled);
    void dial(const QByteArray &number);
    void dialled();
    void sendLines(const QList<QByteArray> &lines);
    void sendResult(const QByteArray &result);
    void escaped();
    int latencyOf(const QByteArray &command) const;

    ModemState *const m_modem;
    AtCommands m_commands;
    Mode m_mode = Mode::Command;
    bool m_echo = true;
    bool m_verbose = true;
    bool m_quiet = false;
    bool m_inCall = false; // also while escaped to commands
    QMap<int, int> m_registers;
    QByteArray m_line; // as it comes in
    QByteArray m_lastLine; // for A/
    QByteArray m_rest; // commands of the line that are still to be worked on
    QByteArray m_current; // the command whose answer is due
    QByteArray m_ahead; // came while a command was worked on
    bool m_busy = false;
    bool m_dialling = false;
    QTimer m_due; // the answer to m_current
    CommandReply m_dueReply;
    QElapsedTimer m_silence; // since the last data
    QTimer m_escape; // guard time after +++
    QByteArray m_smsText;
};
