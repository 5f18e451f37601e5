#pragma once

#include <array>

/** National language identifiers of 3GPP TS 23.038 6.2.1.2.4. */
enum class GsmLanguage {
    Default = 0, ///< the default alphabet (6.2.1) and its extension (6.2.1.1)
    Turkish = 1,
    Spanish = 2, ///< has a single shift table only
    Portuguese = 3,
    Bengali = 4,
    Gujarati = 5,
    Hindi = 6,
    Kannada = 7,
    Malayalam = 8,
    Oriya = 9,
    Punjabi = 10,
    Tamil = 11,
    Telugu = 12,
    Urdu = 13,
};

/** The character tables of 3GPP TS 23.038: annex A and 6.2.1. Any thread may use them. */
namespace gsmtables {

constexpr char16_t kNone = 0; ///< a cell without a character
constexpr int kEscape = 0x1B; ///< leads to the single shift table

/** Character by septet. */
using Table = std::array<char16_t, 128>;

/** Whether the identifier, as a message has it, is one of the known. */
constexpr bool isKnown(int identifier)
{
    return identifier >= 0 && identifier <= 13;
}

/** The table of septets without an escape; Spanish has the default one. */
const Table &locking(GsmLanguage language);
/** The table of septets behind an escape. */
const Table &single(GsmLanguage language);

} // namespace gsmtables
