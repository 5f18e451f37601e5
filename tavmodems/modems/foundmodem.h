#pragma once

#include "modeminfo.h"
#include "operatordata.h"
#include "searchport.h"

#include <QList>
#include <QString>
#include <QStringList>

/** What a modem told of itself on one of its ports. */
struct AnsweringPort
{
    SearchPort port;
    int baudrate = 0; ///< at which it answered, bits per second
    QString manufacturer; ///< this and the rest: empty when it does not tell
    QString model;
    QString dialect; ///< AtModem::gsmDialect()
    QString imei;
    OperatorData operatorData; ///< of its SIM's operator
};

/** A modem and the record for dialling through it. */
struct FoundModem
{
    ModemInfo info;
    QString manufacturer;
    QString model;
    QString imei;
    QStringList ports; ///< names of all its ports that answer, the data port first
};

/**
 * The modems behind the ports that answer, by connection name.
 *
 * Ports on which the same IMEI is told are one modem. A port without an IMEI belongs to the modem
 * on its USB device, or else is a modem of its own.
 *
 * The data port is the one to dial on. Where makers document which USB interface of their modems
 * that is (Quectel and SIMCom: 3, Sierra: 3, ZTE: 3, else 2 or 4), the first such that answers;
 * else, as for Huawei and all others, the answering port of the lowest USB interface, and the first
 * in order where the interfaces are not known. So it is always a port that was heard answering.
 *
 * A record's name is "MODEL-PORT", in letters, digits, dot, underscore and hyphen only: it becomes
 * the head of a section in the dialer's file and an argument of the dialer. Its access point, user
 * and password are the operator's; the rest is ModemInfo's defaults.
 */
QList<FoundModem> modemsBehind(const QList<AnsweringPort> &ports);
