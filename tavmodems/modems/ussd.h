#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/** How a modem wants the text of a USSD request written. */
enum class UssdForm {
    Plain, ///< as it is, which 3GPP TS 27.007 7.15 asks for
    PackedHex, ///< packed septets in hexadecimal
    Ucs2Hex, ///< UCS2 in hexadecimal, for a modem set to that by AT+CSCS
};

/** What came of a USSD request: "+CUSD" of 3GPP TS 27.007 7.15. */
struct UssdAnswer
{
    enum class Status {
        Done = 0, ///< nothing more is awaited
        ReplyWanted = 1, ///< the network asks for a choice
        Terminated = 2,
        OtherClient = 3,
        NotSupported = 4,
        NetworkTimeout = 5,
    };

    Status status = Status::Done;
    QString text;
    /** Whether the end of the text is certain; else more of its lines may be under way. */
    bool isWhole = true;

    /** Why there is no text, a sentence's end for people; empty when there is one. */
    QString error() const;
};

/**
 * The answer among the lines that a modem sent after a request; its text may go over several
 * lines. The first that has a text is taken, else the last. None when there is no answer, or when
 * its text has not ended yet. Modems write the text plainly, as packed septets or as UCS2 in
 * hexadecimal, whatever the coding scheme that they name, or none: it is seen from the text.
 */
std::optional<UssdAnswer> parseUssdAnswer(const QList<QByteArray> &lines);

/** The command that sends a request; none when the code is empty, too long or cannot be sent. */
std::optional<QByteArray> ussdCommand(const QString &code, UssdForm form);
