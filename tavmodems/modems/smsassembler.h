#pragma once

#include "smslisting.h"

#include <QDateTime>
#include <QList>
#include <QString>

/** A message for people: whole, though it may have come in parts. */
struct SmsMessage
{
    QDateTime time; ///< of the earliest part
    QString sender;
    QString text; ///< an ellipsis stands for parts that are missing
    QList<int> indexes; ///< of all that belongs to it in the modem's store, repetitions too
    bool isComplete = true;
};

/**
 * Puts received messages together (3GPP TS 23.040 9.2.3.24.1), whatever the order of their parts;
 * what is not a received message is left out. Parts belong together when sender, reference, number
 * of parts and the time (within an hour: references are used again) agree; a part that came twice
 * counts once. Result by time, those without a time last.
 */
QList<SmsMessage> assembleMessages(const QList<StoredSms> &stored);
