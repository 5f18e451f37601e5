#pragma once

#include "gsmtables.h"

#include <QByteArray>
#include <QString>

#include <optional>

/**
 * Texts in the three codings that a mobile network carries them in (3GPP TS 23.038). Any thread
 * may use these; nothing that comes in makes them fail otherwise than said.
 */
namespace gsmcodec {

/**
 * `count` septets out of packed octets (6.1.2.1), the first one beginning `skipBits` (0 to 6) bits
 * into them: that is how a text behind a header is brought to a septet boundary. None when the
 * octets do not hold so many.
 */
std::optional<QByteArray> unpacked(const QByteArray &octets, int count, int skipBits = 0);

/** Septets, one a byte, into octets; `skipBits` bits are left zero in front. */
QByteArray packed(const QByteArray &septets, int skipBits = 0);

/**
 * Septets, one a byte, as text. A septet behind an escape that its table lacks is that of the
 * locking table, two escapes are a blank, as 6.2.1.1 asks; a cell without a character is a blank.
 */
QString decoded(const QByteArray &septets, GsmLanguage locking = GsmLanguage::Default,
    GsmLanguage single = GsmLanguage::Default);

/** Text as septets, one a byte; none when the tables lack a character of it. */
std::optional<QByteArray> encoded(const QString &text, GsmLanguage locking = GsmLanguage::Default,
    GsmLanguage single = GsmLanguage::Default);

/**
 * UCS2, the high octet first; pairs of surrogates are taken as the characters they mean, which is
 * how networks send them. A lone surrogate or octet at the end becomes U+FFFD.
 */
QString fromUcs2(const QByteArray &octets);
QByteArray toUcs2(const QString &text);

/** Eight-bit data as text: what coding it is no header says, so each octet is Latin-1. */
QString fromEightBit(const QByteArray &octets);

} // namespace gsmcodec
