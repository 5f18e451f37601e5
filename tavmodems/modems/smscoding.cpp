#include "smscoding.h"

namespace {

SmsCoding::Alphabet alphabet(int bits)
{
    if (bits == 1)
        return SmsCoding::Alphabet::EightBit;
    return bits == 2 ? SmsCoding::Alphabet::Ucs2 : SmsCoding::Alphabet::SevenBit;
}

} // namespace

SmsCoding parseSmsCoding(int octet)
{
    SmsCoding coding;
    const int group = octet >> 4 & 0x0F;
    if (group < 8) { // general data coding; 4 to 7: marked for automatic deletion
        coding.deleteAfterReading = (group & 4) != 0;
        coding.compressed = (group & 2) != 0;
        if ((group & 1) != 0)
            coding.messageClass = octet & 3;
        coding.alphabet = alphabet(octet >> 2 & 3);
    } else if (group >= 0x0C && group <= 0x0E) { // message waiting; discard, store, store UCS2
        coding.waiting = static_cast<SmsCoding::Waiting>(octet & 3);
        coding.isWaiting = (octet & 8) != 0;
        coding.deleteAfterReading = group == 0x0C;
        coding.alphabet = alphabet(group == 0x0E ? 2 : 0);
    } else if (group == 0x0F) { // data coding and message class
        coding.messageClass = octet & 3;
        coding.alphabet = alphabet(octet >> 2 & 1);
    }
    return coding;
}
