#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/** How the text of a short message is coded: TP-DCS of 3GPP TS 23.038 clause 4. */
struct SmsCoding
{
    enum class Alphabet { SevenBit, EightBit, Ucs2 };
    enum class Waiting { Voicemail = 0, Fax = 1, Email = 2, Other = 3 };

    Alphabet alphabet = Alphabet::SevenBit;
    bool compressed = false; ///< by 3GPP TS 23.042
    std::optional<int> messageClass; ///< 0 to show at once, 1 to 3 where to keep it
    std::optional<Waiting> waiting; ///< what waits, for a message that tells of it
    bool isWaiting = false; ///< whether something waits still
    bool deleteAfterReading = false;
};

/** Of any octet; reserved values are the 7-bit alphabet, as the clause asks. */
SmsCoding parseSmsCoding(int octet);
