#include "gsmtext.h"

#include <cstdlib>

namespace gsmtext {

namespace {

constexpr char kEscape = 0x1b;

const QString &alphabet()
{
    static const QString table
        = QStringLiteral("@£$¥èéùìòÇ\nØø\rÅåΔ_ΦΓΛΩΠΨΣΘΞ\u001bÆæßÉ !\"#¤%&'()*+,-./0123456789:;<=>?"
                         "¡ABCDEFGHIJKLMNOPQRSTUVWXYZÄÖÑÜ§¿abcdefghijklmnopqrstuvwxyzäöñüà");
    return table;
}

struct Extension
{
    char16_t character;
    char septet;
};

constexpr Extension kExtensions[] = {{u'\f', 0x0a}, {u'^', 0x14}, {u'{', 0x28}, {u'}', 0x29},
    {u'\\', 0x2f}, {u'[', 0x3c}, {u'~', 0x3d}, {u']', 0x3e}, {u'|', 0x40}, {u'€', 0x65}};

char extensionOf(QChar character)
{
    for (const Extension &extension : kExtensions) {
        if (character == QChar(extension.character))
            return extension.septet;
    }
    return 0;
}

// 3GPP TS 23.040, 9.1.2.5: a name goes as packed septets, a number as digits.
QByteArray address(const QString &text)
{
    const bool international = text.startsWith(QLatin1Char('+'));
    const QByteArray digits = text.mid(international ? 1 : 0).toLatin1();
    bool isNumber = !digits.isEmpty();
    for (const char digit : digits)
        isNumber = isNumber && digit >= '0' && digit <= '9';
    if (isNumber)
        return QByteArray(1, static_cast<char>(digits.size())) + (international ? '\x91' : '\x81')
            + swappedDigits(digits, 'F');
    const QByteArray septets = toSeptets(text);
    const int semiOctets = (septets.size() * 7 + 3) / 4; // those that hold something
    return QByteArray(1, static_cast<char>(semiOctets)) + '\xd0' + pack(septets);
}

QByteArray timeStamp(const QDateTime &time)
{
    const int quarters = time.offsetFromUtc() / 900;
    const QByteArray zone
        = swappedDigits(QByteArray::number(std::abs(quarters)).rightJustified(2, '0'), '0');
    QByteArray stamp
        = swappedDigits(time.toString(QStringLiteral("yyMMddhhmmss")).toLatin1(), '0') + zone;
    if (quarters < 0)
        stamp[stamp.size() - 1] = static_cast<char>(stamp.at(stamp.size() - 1) | 0x08);
    return stamp;
}

// 3GPP TS 24.011, 8.2.5.1: here the length is that of octets.
QByteArray centreAddress(const QString &number)
{
    if (number.isEmpty())
        return QByteArray(1, '\0');
    const QByteArray digits = address(number).mid(1);
    return static_cast<char>(digits.size()) + digits;
}

QByteArray deliverTpdu(const Sms &sms)
{
    QByteArray header;
    if (sms.parts > 1) {
        header = QByteArray("\x05\x00\x03", 3) + static_cast<char>(sms.reference)
            + static_cast<char>(sms.parts) + static_cast<char>(sms.part);
    }
    QByteArray pdu(1, header.isEmpty() ? '\x04' : '\x44');
    pdu += address(sms.sender);
    pdu += '\0';
    const bool isData = sms.kind == Sms::Kind::Data;
    pdu += isData ? '\x04' : sms.ucs2 ? '\x08' : '\0';
    pdu += timeStamp(sms.time);
    if (isData || sms.ucs2) {
        const QByteArray body
            = header + (isData ? sms.data : QByteArray::fromHex(toUcs2Hex(sms.text)));
        pdu += static_cast<char>(body.size()) + body;
    } else {
        const QByteArray septets = toSeptets(sms.text);
        const int headerSeptets = (header.size() * 8 + 6) / 7;
        const int fillBits = headerSeptets * 7 - header.size() * 8;
        pdu += static_cast<char>(headerSeptets + septets.size());
        pdu += header + pack(septets, fillBits);
    }
    return pdu;
}

QByteArray reportTpdu(const Sms &sms)
{
    QByteArray pdu(1, '\x06');
    pdu += static_cast<char>(sms.reference);
    pdu += address(sms.sender);
    pdu += timeStamp(sms.time); // of the message
    pdu += timeStamp(sms.time.addSecs(5)); // of its delivery
    pdu += '\0'; // received by the other side
    return pdu;
}

} // namespace

QByteArray swappedDigits(QByteArray digits, char filler)
{
    if (digits.size() % 2 != 0)
        digits.append(filler);
    for (int i = 0; i + 1 < digits.size(); i += 2)
        std::swap(digits.data()[i], digits.data()[i + 1]);
    return QByteArray::fromHex(digits);
}

bool isDefaultAlphabet(const QString &text)
{
    for (const QChar character : text) {
        const bool known = character != QLatin1Char(kEscape)
            && (alphabet().contains(character) || extensionOf(character) != 0);
        if (!known)
            return false;
    }
    return true;
}

QByteArray toSeptets(const QString &text)
{
    QByteArray septets;
    for (const QChar character : text) {
        const int at = alphabet().indexOf(character);
        if (at >= 0) {
            septets.append(static_cast<char>(at));
        } else if (const char extension = extensionOf(character)) {
            septets.append(kEscape);
            septets.append(extension);
        } else {
            septets.append('?');
        }
    }
    return septets;
}

QString fromSeptets(const QByteArray &septets)
{
    QString text;
    for (int i = 0; i < septets.size(); ++i) {
        if (septets.at(i) == kEscape && i + 1 < septets.size()) {
            ++i;
            for (const Extension &extension : kExtensions) {
                if (extension.septet == septets.at(i))
                    text.append(QChar(extension.character));
            }
        } else {
            text.append(alphabet().at(septets.at(i) & 0x7f));
        }
    }
    return text;
}

QByteArray pack(const QByteArray &septets, int fillBits)
{
    QByteArray octets;
    unsigned bits = 0;
    int count = fillBits;
    for (const char septet : septets) {
        bits |= static_cast<unsigned>(septet & 0x7f) << count;
        for (count += 7; count >= 8; count -= 8, bits >>= 8)
            octets.append(static_cast<char>(bits & 0xff));
    }
    if (count > 0)
        octets.append(static_cast<char>(bits & 0xff));
    return octets;
}

QByteArray unpack(const QByteArray &octets, int septetCount)
{
    QByteArray septets;
    unsigned bits = 0;
    int count = 0;
    for (const char octet : octets) {
        bits |= static_cast<unsigned>(static_cast<uchar>(octet)) << count;
        for (count += 8; count >= 7 && septets.size() < septetCount; count -= 7, bits >>= 7)
            septets.append(static_cast<char>(bits & 0x7f));
    }
    return septets;
}

QByteArray toUcs2Hex(const QString &text)
{
    QByteArray octets;
    for (const QChar character : text) {
        octets.append(static_cast<char>(character.row()));
        octets.append(static_cast<char>(character.cell()));
    }
    return octets.toHex().toUpper();
}

QString fromUcs2Hex(const QByteArray &hex)
{
    const QByteArray octets = QByteArray::fromHex(hex);
    QString text;
    for (int i = 0; i + 1 < octets.size(); i += 2)
        text.append(QChar(static_cast<uchar>(octets.at(i + 1)), static_cast<uchar>(octets.at(i))));
    return text;
}

QStringList smsParts(const QString &text)
{
    const bool plain = isDefaultAlphabet(text);
    if (plain ? toSeptets(text).size() <= 160 : text.size() <= 70)
        return {text};
    // With the header of 6 octets, 153 septets or 67 UCS2 characters are left; a character of the
    // extension takes two septets and must not be cut, nor a surrogate pair.
    QStringList parts;
    QString part;
    for (int i = 0; i < text.size(); ++i) {
        QString next(text.at(i));
        if (text.at(i).isHighSurrogate() && i + 1 < text.size())
            next += text.at(++i);
        const QString longer = part + next;
        if (plain ? toSeptets(longer).size() > 153 : longer.size() > 67) {
            parts.append(part);
            part = next;
        } else {
            part = longer;
        }
    }
    parts.append(part);
    return parts;
}

QByteArray storedPdu(const Sms &sms, const QString &centre)
{
    if (sms.kind == Sms::Kind::Raw)
        return sms.data;
    const QByteArray tpdu = sms.kind == Sms::Kind::Report ? reportTpdu(sms) : deliverTpdu(sms);
    return (centreAddress(centre) + tpdu).toHex().toUpper();
}

bool readSubmitPdu(const QByteArray &hex, QString *destination, QString *text, int *octets)
{
    const QByteArray pdu = QByteArray::fromHex(hex);
    const auto octet = [&pdu](int at) {
        return at >= 0 && at < pdu.size() ? static_cast<uchar>(pdu.at(at)) : 0;
    };
    int at = 1 + octet(0); // service centre
    *octets = pdu.size() - at;
    const int first = octet(at);
    if (pdu.isEmpty() || (first & 0x03) != 0x01)
        return false;
    at += 2; // first octet, message reference
    const int digits = octet(at);
    const bool international = octet(at + 1) == 0x91;
    const int addressOctets = (digits + 1) / 2;
    QByteArray number = pdu.mid(at + 2, addressOctets).toHex();
    for (int i = 0; i + 1 < number.size(); i += 2)
        std::swap(number.data()[i], number.data()[i + 1]);
    number.replace('a', '*').replace('b', '#'); // 9.1.2.3
    *destination = (international ? QStringLiteral("+") : QString())
        + QString::fromLatin1(number.left(digits));
    at += 2 + addressOctets + 1; // protocol identifier
    const bool ucs2 = (octet(at) & 0x0c) == 0x08;
    at += 1;
    const int validity = (first >> 3) & 0x03;
    at += validity == 2 ? 1 : validity != 0 ? 7 : 0;
    const int size = octet(at);
    if (at >= pdu.size())
        return false;
    const QByteArray body = pdu.mid(at + 1);
    *text = ucs2 ? fromUcs2Hex(body.left(size).toHex()) : fromSeptets(unpack(body, size));
    return true;
}

QByteArray timeText(const QDateTime &time)
{
    const int quarters = time.offsetFromUtc() / 900;
    return time.toString(QStringLiteral("yy/MM/dd,hh:mm:ss")).toLatin1()
        + (quarters < 0 ? '-' : '+')
        + QByteArray::number(std::abs(quarters)).rightJustified(2, '0');
}

} // namespace gsmtext
