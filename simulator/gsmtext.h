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
/// Digits as they lie on a card and in an address: in pairs, each turned round, an odd last one
/// with `filler` in front (3GPP TS 51.011, 10.1.1; TS 23.040, 9.1.2.3).
QByteArray swappedDigits(QByteArray digits, char filler);
QByteArray toUcs2Hex(const QString &text);
QString fromUcs2Hex(const QByteArray &hex);

/// A text cut into the pieces that fit one message each; a surrogate pair is never cut.
QStringList smsParts(const QString &text);

/// One received message as the memory of a modem keeps it.
struct Sms
{
    enum class Kind {
        Text,
        Data, ///< octets (3GPP TS 23.038, 4: 8-bit data)
        Report, ///< SMS-STATUS-REPORT: the message was delivered
        Raw, ///< a PDU as it stands, broken or not
    };

    Kind kind = Kind::Text;
    QString sender; ///< of a report: who the reported message went to
    QDateTime time;
    QString text; ///< of this part
    int part = 1;
    int parts = 1;
    int reference = 0; ///< common to the parts of one text; of the reported message
    bool ucs2 = false;
    QByteArray data; ///< of Kind::Data; of Kind::Raw the PDU in hexadecimal
    bool read = false;
};

/// The service centre's address and the TPDU in hexadecimal, as +CMGL and +CMGR give them: an
/// SMS-DELIVER or SMS-STATUS-REPORT (3GPP TS 23.040, 9.2.2.1 and 9.2.2.3). An empty centre leaves
/// its address out.
QByteArray storedPdu(const Sms &sms, const QString &centre = {});
/// Destination and text of an SMS-SUBMIT in hexadecimal, and how many octets follow the service
/// centre's address; false when it is not one.
bool readSubmitPdu(const QByteArray &hex, QString *destination, QString *text, int *octets);
/// "yy/MM/dd,hh:mm:ss+zz", the zone in quarters of an hour (3GPP TS 27.005, 3.1).
QByteArray timeText(const QDateTime &time);

} // namespace gsmtext
