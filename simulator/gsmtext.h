#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>

/// Texts and short messages in the encodings of the mobile network: the modem's side of them.
namespace gsmtext {

/// Whether every character is in the default alphabet or its extension (3GPP TS 23.038, 6.2.1).
bool isDefaultAlphabet(const QString &text);
/// Septets, one a byte.
QByteArray toSeptets(const QString &text);
QString fromSeptets(const QByteArray &septets);
/// Packs septets, leaving `fillBits` bits free in front.
QByteArray pack(const QByteArray &septets, int fillBits = 0);
QByteArray unpack(const QByteArray &octets, int septetCount);
QByteArray toUcs2Hex(const QString &text);
QString fromUcs2Hex(const QByteArray &hex);

/// A text cut into the pieces that fit one message each.
QStringList smsParts(const QString &text);

/// One received message as the memory of a modem keeps it.
struct Sms
{
    QString sender;
    QDateTime time;
    QString text; ///< of this part
    int part = 1;
    int parts = 1;
    int reference = 0; ///< common to the parts of one text
    bool ucs2 = false;
    bool read = false;
};

/// SMS-DELIVER (3GPP TS 23.040, 9.2.2.1) in hexadecimal, behind an empty service centre address.
QByteArray deliverPdu(const Sms &sms);
/// Destination and text of an SMS-SUBMIT in hexadecimal; false when it is not one.
bool readSubmitPdu(const QByteArray &hex, QString *destination, QString *text);
/// "yy/MM/dd,hh:mm:ss+zz", the zone in quarters of an hour (3GPP TS 27.005, 3.1).
QByteArray timeText(const QDateTime &time);

} // namespace gsmtext
