#pragma once

#include <QByteArray>
#include <QList>

/**
 * The stores named in the answer to AT+CPMS? (3GPP TS 27.005 3.2.2): the one that is read from, and
 * behind it the one that new messages come into, when that is another. Empty when there is no such
 * answer.
 */
QList<QByteArray> parseSmsStores(const QList<QByteArray> &lines);
