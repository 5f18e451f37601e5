#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QObject>

struct ModemState;

/// What one command gets as an answer.
struct AtReply
{
    enum class Kind { Final, SmsText, Dial };

    Kind kind = Kind::Final;
    QList<QByteArray> lines; ///< information text
    QByteArray result = "OK"; ///< final result code
    int delayMs = 0;
    QList<QByteArray> later; ///< unsolicited lines that follow
    int laterMs = 100;
    bool resets = false; ///< the modem restarts afterwards

    bool isOk() const { return result == "OK"; }
    static AtReply ok(const QList<QByteArray> &lines = {});
    static AtReply error() { return failed("ERROR"); }
    static AtReply failed(const QByteArray &result);
};

/// The commands of one port: the profile's table first, then what every modem does (3GPP TS 27.007
/// and 27.005). A command neither knows is an error. Keeps what is set by commands and belongs to
/// the port; the rest is in the modem's state, which the caller owns.
class AtCommands
{
public:
    explicit AtCommands(ModemState *modem);

    /// `command` is one command without "AT", its name in capitals: "+CREG=2", "I", "&F".
    AtReply execute(const QByteArray &command);
    /// The text that followed the prompt of the last +CMGS.
    AtReply sendSms(const QByteArray &text);
    void powerUp();

private:
    using Arguments = QList<QByteArray>;

    AtReply fromTable(const QByteArray &command, bool *found) const;
    AtReply read(const QByteArray &name);
    AtReply set(const QByteArray &name, const Arguments &arguments);
    AtReply run(const QByteArray &name);
    AtReply test(const QByteArray &name) const;
    AtReply needSim() const;
    AtReply equipmentError(int code) const;
    AtReply messageError(int code) const;

    AtReply registration(const QByteArray &name) const;
    AtReply operatorName() const;
    AtReply setOperator(const Arguments &arguments);
    AtReply enterPin(const Arguments &arguments);
    AtReply ussd(const Arguments &arguments) const;
    AtReply listSms(const QByteArray &which);
    AtReply readSms(int index);
    AtReply removeSms(const Arguments &arguments);
    QList<QByteArray> smsLines(int index, bool inList);
    QByteArray smsText(const QString &text, bool ucs2) const;
    QByteArray ownText(const QString &text) const;

    ModemState *const m_modem;
    int m_errorMode = 0; // +CMEE
    int m_operatorFormat = 0;
    bool m_smsTextMode = false;
    QByteArray m_charset;
    QByteArray m_smsDestination;
    QMap<QByteArray, QByteArray> m_settings; // set and read back, without any other effect
};
