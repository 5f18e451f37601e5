#pragma once

#include "smscoding.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <optional>

/** Which part of a longer message a short message is (3GPP TS 23.040 9.2.3.24.1 and .8). */
struct SmsPart
{
    int reference = 0; ///< common to the parts
    bool wideReference = false; ///< of 16 bits; it has nothing to do with an equal one of 8
    int total = 0;
    int number = 0; ///< 1 to total
};

/** A short message as the network or a modem's store has it: a TPDU of 3GPP TS 23.040. */
struct SmsPdu
{
    enum class Kind {
        Deliver, ///< received
        Submit, ///< written here, to be sent or sent
        StatusReport, ///< what became of one that was sent
    };

    Kind kind = Kind::Deliver;
    QString serviceCentre; ///< empty when it is not given
    QString address; ///< sender; recipient of Submit and StatusReport; "+" in front: international
    QDateTime time; ///< when the service centre got it, with its zone; invalid: not told, or wrong
    QDateTime doneTime; ///< StatusReport: when it was delivered or given up
    int reference = 0; ///< Submit and StatusReport: ties the two together
    int status = 0; ///< StatusReport: TP-ST, 9.2.3.15; below 32 it arrived
    int protocol = 0; ///< TP-PID, 9.2.3.9
    SmsCoding coding;
    std::optional<SmsPart> part; ///< none: the message is whole
    QString text;
    QByteArray data; ///< the octets behind the header when the alphabet is not the 7-bit one
};

/**
 * Decodes a PDU as AT commands give it (3GPP TS 27.005 3.1): the service centre's address, then
 * the TPDU of `tpduLength` octets (-1: up to the end). A modem that leaves the address out is
 * noticed by that length. None when the PDU is cut short or does not hold together; `error` then
 * tells what is wrong. A wrong time alone costs only the time.
 */
std::optional<SmsPdu> decodeSmsPdu(const QByteArray &octets, int tpduLength, QString *error);

/** A message to send as AT+CMGS takes it in PDU mode (3GPP TS 27.005 4.3). */
struct SmsSubmit
{
    QByteArray octets; ///< the modem's own service centre, then the TPDU
    int tpduLength = 0; ///< octets of the TPDU alone
};

/**
 * None when the recipient is no telephone number, or the text does not fit one message (160
 * characters of the 7-bit alphabet, 70 of UCS2).
 */
std::optional<SmsSubmit> encodeSmsSubmit(const QString &recipient, const QString &text);
