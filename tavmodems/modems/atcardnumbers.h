#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

/** The numbers of a SIM card and of the modem it is in; each empty when the answer has none. */

/** The answer to AT+CIMI (3GPP TS 27.007 5.6): 6 to 15 digits, beginning with the country. */
QByteArray parseImsi(const QList<QByteArray> &lines);

/**
 * The card's serial number (ITU-T E.118), 18 to 20 digits that begin with 89: the answer to
 * AT+CCID, AT+ICCID, AT^ICCID?, AT+QCCID, AT+ZGETICCID, AT#CCID..., behind any name or none. The
 * filler behind the digits is left out, and the pairs of digits are put in order when the modem
 * gives them as they lie on the card.
 */
QByteArray parseIccid(const QList<QByteArray> &lines);

/** The answer to AT+CGSN or AT+GSN (27.007 5.4): 14 to 16 digits (16: with software version). */
QByteArray parseImei(const QList<QByteArray> &lines);

/** The first number in the answer to AT+CNUM (27.007 7.1); "+" in front when international. */
QString parseOwnNumber(const QList<QByteArray> &lines);
