#pragma once

#include "smspdu.h"

#include <QByteArray>
#include <QList>
#include <QString>

/** A short message and where the modem keeps it. */
struct StoredSms
{
    int index = -1; ///< place in the modem's store; -1 when the answer does not tell
    int state = -1; ///< 0 new, 1 read, 2 not sent yet, 3 sent; -1 when the answer does not tell
    SmsPdu pdu;
};

/** A message that cannot be read, and why. */
struct BrokenSms
{
    int index = -1;
    QString error;
};

/** What a modem has told of its messages. */
struct SmsListing
{
    QList<StoredSms> messages;
    QList<BrokenSms> broken;
};

/**
 * The answers in PDU mode of 3GPP TS 27.005: "+CMGL" (3.4.2), "+CMGR" (3.4.3), named by `name`,
 * and "+CMT" (3.4.1), a message that comes unasked: a line with the TPDU's length at its end, then
 * the PDU in hexadecimal. Other lines in between are passed over; what cannot be read is listed
 * beside the rest.
 */
SmsListing parseSmsListing(const QByteArray &name, const QList<QByteArray> &lines);
