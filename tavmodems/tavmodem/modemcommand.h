#pragma once

#include "atmodem.h"
#include "commandline.h"

#include <QJsonDocument>
#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>

class OperatorData;
struct FoundModem;

/** How the program ends, for scripts. */
enum class ExitStatus {
    Done = 0,
    Refused = 1, ///< the modem or the network refused, or has no answer
    WrongUse = 2,
    NoPort = 3, ///< there is no such port, another program holds it, or it vanished
    NoAnswer = 4 ///< nothing came in time
};

/** Runs one command on a modem. Blocks until it is done or broken off. */
class ModemCommand
{
public:
    /** Takes the answer, in the form that the command line asks for; false when it is lost. */
    using Deliver = std::function<bool(const QByteArray &)>;

    /** While `*abort` is true run() fails as soon as it can; it outlives this object. */
    ModemCommand(CommandLine commandLine, const std::atomic<bool> *abort, Deliver deliver);

    /** Done once the answer is delivered; what it then no longer needs is deleted after that. */
    ExitStatus run();

    /** What went wrong, a sentence; empty after Done. */
    QString error() const { return m_error; }
    /** What the user should know beside the answer, a sentence each. */
    QStringList notes() const { return m_notes; }

private:
    ExitStatus ask();
    ExitStatus deliver();
    ExitStatus list();
    ExitStatus info(AtModem &modem);
    ExitStatus cells(AtModem &modem);
    ExitStatus signal(AtModem &modem);
    ExitStatus balance(AtModem &modem);
    ExitStatus number(AtModem &modem);
    ExitStatus ussd(AtModem &modem);
    ExitStatus sms(AtModem &modem);
    void show(const QList<AtModem::SSms> &messages);
    ExitStatus modemOnly(AtModem &modem);

    ExitStatus search(QList<FoundModem> &modems);
    ExitStatus choosePort();
    ExitStatus operatorOf(AtModem &modem, OperatorData &data);
    ExitStatus fail(ExitStatus status, const QString &error);
    ExitStatus fail(const AtModem &modem);

    CommandLine m_commandLine;
    const std::atomic<bool> *const m_abort; // the caller's
    const Deliver m_deliver;
    bool m_isDelivered = false;
    QJsonDocument m_json; // the answer in either form; the text ends its lines
    QString m_text;
    QString m_error;
    QStringList m_notes;
};
