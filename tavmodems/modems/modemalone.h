#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

/**
 * The command that leaves a stick its modem and its control port alone, chosen from the answer to
 * "AT^SETPORT=?" (Huawei): lines "^SETPORT:10: 4G MODEM", each the code of a device and its name.
 * `command` is "AT^SETPORT". None when the modem port is not among them.
 */
std::optional<QByteArray> modemAlone(const QByteArray &command, const QList<QByteArray> &lines);

/** Whether an answer that ends with OK says all the same that nothing was done: ZTE's "...
 * result(0:FAIL 1:SUCCESS):0" to AT+ZCDRUN. */
bool tellsFailure(const QList<QByteArray> &lines);
