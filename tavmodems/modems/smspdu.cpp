#include "smspdu.h"

#include "gsmcodec.h"

#include <QRegularExpression>

namespace {

constexpr int kTypeOfNumber = 0x70;
constexpr int kInternational = 0x10;
constexpr int kAlphanumeric = 0x50;
constexpr int kMostDigits = 20; // 9.1.2.5: an address field has at most 12 octets
constexpr int kMostSeptets = 160; // of one message, 9.2.3.16
constexpr int kMostOctets = 140;
constexpr int kMostCentreOctets = 11; // 24.011 8.2.5.1

// Ends the decoding of this PDU; never leaves this file.
struct BadPdu
{
    QString reason;
};

// Takes octets from the front, never beyond the end.
class Octets
{
public:
    explicit Octets(const QByteArray &octets)
        : m_octets(octets)
    {
    }

    QByteArray take(int count, const char *what)
    {
        if (count < 0 || count > m_octets.size() - m_at)
            throw BadPdu{QStringLiteral("it ends within the %1").arg(QLatin1String(what))};
        m_at += count;
        return m_octets.mid(m_at - count, count);
    }
    int octet(const char *what) { return static_cast<unsigned char>(take(1, what).at(0)); }
    QByteArray rest() const { return m_octets.mid(m_at); }

private:
    const QByteArray m_octets;
    int m_at = 0;
};

int octetAt(const QByteArray &octets, int index)
{
    return static_cast<unsigned char>(octets.at(index));
}

// Semi-octets, the low one first (9.1.2.3); 15 fills up the last octet.
QString digits(const QByteArray &octets, int count)
{
    static const char DIGITS[] = "0123456789*#abc";
    QString text;
    for (int i = 0; i < count; ++i) {
        const int digit = octetAt(octets, i / 2) >> (i % 2 == 0 ? 0 : 4) & 0x0F;
        if (digit < 15)
            text += QLatin1Char(DIGITS[digit]);
    }
    return text;
}

QByteArray semiOctets(const QByteArray &digits)
{
    const QByteArray values("0123456789*#");
    QByteArray octets;
    for (int i = 0; i < digits.size(); i += 2) {
        const int low = values.indexOf(digits.at(i));
        const int high = i + 1 < digits.size() ? values.indexOf(digits.at(i + 1)) : 15;
        octets += static_cast<char>(high << 4 | low);
    }
    return octets;
}

QString number(int type, const QByteArray &octets, int count)
{
    if ((type & kTypeOfNumber) == kAlphanumeric) {
        QByteArray septets = gsmcodec::unpacked(octets, count * 4 / 7).value_or(QByteArray());
        // Some networks count the bits that fill up the last octet too, which then hold a septet
        // of zeros, an "@".
        if (septets.size() % 8 == 0 && septets.endsWith('\0'))
            septets.chop(1);
        return gsmcodec::decoded(septets).trimmed();
    }
    const QString text = digits(octets, count);
    const bool international = (type & kTypeOfNumber) == kInternational && !text.isEmpty();
    return international ? QLatin1Char('+') + text : text;
}

QString takeServiceCentre(Octets &octets)
{
    const int length = octets.octet("service centre");
    if (length == 0)
        return {};
    if (length > kMostCentreOctets)
        throw BadPdu{QStringLiteral("its service centre's address is too long")};
    const int type = octets.octet("service centre");
    return number(type, octets.take(length - 1, "service centre"), 2 * (length - 1));
}

QString takeAddress(Octets &octets)
{
    const int count = octets.octet("address");
    if (count > kMostDigits)
        throw BadPdu{QStringLiteral("its address is too long")};
    const int type = octets.octet("address");
    return number(type, octets.take((count + 1) / 2, "address"), count);
}

// 9.2.3.11. Quarters of an hour from UTC, bit 3 of the first semi-octet their sign.
QDateTime takeTime(Octets &octets)
{
    const QByteArray bytes = octets.take(7, "time");
    int values[7];
    for (int i = 0; i < 7; ++i) {
        const int tens = octetAt(bytes, i) & (i == 6 ? 0x07 : 0x0F);
        const int ones = octetAt(bytes, i) >> 4;
        if (tens > 9 || ones > 9)
            return {};
        values[i] = 10 * tens + ones;
    }
    const QDate date(values[0] + (values[0] < 90 ? 2000 : 1900), values[1], values[2]);
    const QTime time(values[3], values[4], values[5]);
    if (!date.isValid() || !time.isValid())
        return {};
    const int offset = values[6] * 15 * 60;
    return QDateTime(
        date, time, Qt::OffsetFromUTC, (octetAt(bytes, 6) & 8) != 0 ? -offset : offset);
}

struct Header
{
    int octets = 0; // with its length octet
    std::optional<SmsPart> part;
    GsmLanguage locking = GsmLanguage::Default;
    GsmLanguage single = GsmLanguage::Default;
};

GsmLanguage language(int identifier)
{
    // 6.2.1.2.4: a table that is not known here is the default one.
    return gsmtables::isKnown(identifier) ? static_cast<GsmLanguage>(identifier)
                                          : GsmLanguage::Default;
}

// An element of the header; one of a wrong size or with impossible numbers counts as absent.
void readElement(int identifier, const QByteArray &value, Header &into)
{
    if ((identifier == 0x00 && value.size() == 3) || (identifier == 0x08 && value.size() == 4)) {
        SmsPart part;
        part.wideReference = identifier == 0x08;
        part.reference
            = part.wideReference ? octetAt(value, 0) << 8 | octetAt(value, 1) : octetAt(value, 0);
        part.total = octetAt(value, value.size() - 2);
        part.number = octetAt(value, value.size() - 1);
        if (part.number >= 1 && part.number <= part.total)
            into.part = part;
    } else if (identifier == 0x24 && value.size() == 1) {
        into.single = language(octetAt(value, 0));
    } else if (identifier == 0x25 && value.size() == 1) {
        into.locking = language(octetAt(value, 0));
    }
}

// 9.2.3.24. When the last element does not end with the header, none of them counts.
Header readHeader(const QByteArray &userData)
{
    if (userData.isEmpty() || 1 + octetAt(userData, 0) > userData.size())
        throw BadPdu{QStringLiteral("its header is longer than its text")};
    Header header;
    header.octets = 1 + octetAt(userData, 0);
    int at = 1;
    while (at + 2 <= header.octets && at + 2 + octetAt(userData, at + 1) <= header.octets) {
        const int length = octetAt(userData, at + 1);
        readElement(octetAt(userData, at), userData.mid(at + 2, length), header);
        at += 2 + length;
    }
    if (at == header.octets)
        return header;
    Header plain;
    plain.octets = header.octets;
    return plain;
}

void takeText(Octets &octets, bool hasHeader, SmsPdu &into)
{
    const int length = octets.octet("length of the text");
    if (into.coding.compressed)
        throw BadPdu{QStringLiteral("its text is compressed")};
    const bool sevenBit = into.coding.alphabet == SmsCoding::Alphabet::SevenBit;
    const QByteArray userData = octets.take(sevenBit ? (7 * length + 7) / 8 : length, "text");
    const Header header = hasHeader ? readHeader(userData) : Header();
    into.part = header.part;
    if (!sevenBit) {
        into.data = userData.mid(header.octets);
        into.text = into.coding.alphabet == SmsCoding::Alphabet::Ucs2
            ? gsmcodec::fromUcs2(into.data)
            : gsmcodec::fromEightBit(into.data);
        return;
    }
    // The text goes on at the first septet boundary behind the header.
    const int headerSeptets = (8 * header.octets + 6) / 7;
    const auto septets = gsmcodec::unpacked(
        userData.mid(header.octets), length - headerSeptets, 7 * headerSeptets - 8 * header.octets);
    if (!septets)
        throw BadPdu{QStringLiteral("its header is longer than its text")};
    into.text = gsmcodec::decoded(*septets, header.locking, header.single);
}

void takeDeliver(Octets &octets, int first, SmsPdu &into)
{
    into.address = takeAddress(octets);
    into.protocol = octets.octet("protocol");
    into.coding = parseSmsCoding(octets.octet("coding"));
    into.time = takeTime(octets);
    takeText(octets, (first & 0x40) != 0, into);
}

void takeSubmit(Octets &octets, int first, SmsPdu &into)
{
    into.reference = octets.octet("reference");
    into.address = takeAddress(octets);
    into.protocol = octets.octet("protocol");
    into.coding = parseSmsCoding(octets.octet("coding"));
    // 9.2.3.3: none, enhanced, relative, absolute.
    constexpr int VALIDITY_OCTETS[] = {0, 7, 1, 7};
    octets.take(VALIDITY_OCTETS[first >> 3 & 3], "validity period");
    takeText(octets, (first & 0x40) != 0, into);
}

void takeStatusReport(Octets &octets, SmsPdu &into)
{
    into.reference = octets.octet("reference");
    into.address = takeAddress(octets);
    into.time = takeTime(octets);
    into.doneTime = takeTime(octets);
    into.status = octets.octet("status");
}

SmsPdu decode(const QByteArray &octets, int tpduLength)
{
    SmsPdu pdu;
    Octets all(octets);
    if (tpduLength < 0 || octets.size() != tpduLength)
        pdu.serviceCentre = takeServiceCentre(all);
    Octets tpdu(tpduLength < 0 ? all.rest() : all.take(tpduLength, "message"));
    const int first = tpdu.octet("message");
    switch (first & 3) {
    case 1:
        pdu.kind = SmsPdu::Kind::Submit;
        takeSubmit(tpdu, first, pdu);
        break;
    case 2:
        pdu.kind = SmsPdu::Kind::StatusReport;
        takeStatusReport(tpdu, pdu);
        break;
    default: // 9.2.3.1: the reserved type too is taken for a received message
        takeDeliver(tpdu, first, pdu);
        break;
    }
    return pdu;
}

} // namespace

std::optional<SmsPdu> decodeSmsPdu(const QByteArray &octets, int tpduLength, QString *error)
{
    try {
        return decode(octets, tpduLength);
    } catch (const BadPdu &bad) {
        if (error)
            *error = bad.reason;
        return std::nullopt;
    }
}

std::optional<SmsSubmit> encodeSmsSubmit(const QString &recipient, const QString &text)
{
    static const QRegularExpression number(QStringLiteral("^\\+?[0-9*#]{1,20}$"));
    if (!number.match(recipient).hasMatch())
        return std::nullopt;
    const bool isInternational = recipient.startsWith(QLatin1Char('+'));
    const QByteArray digits = recipient.mid(isInternational ? 1 : 0).toLatin1();
    const auto septets = gsmcodec::encoded(text);
    const QByteArray wide = gsmcodec::toUcs2(text);
    if (septets ? septets->size() > kMostSeptets : wide.size() > kMostOctets)
        return std::nullopt;

    QByteArray tpdu;
    tpdu += char(0x01); // SMS-SUBMIT, no validity period, no status report
    tpdu += char(0x00); // reference: the modem's
    tpdu += static_cast<char>(digits.size());
    tpdu += static_cast<char>(isInternational ? 0x91 : 0x81); // numbering plan of telephony
    tpdu += semiOctets(digits);
    tpdu += char(0x00); // protocol: plain short message
    tpdu += septets ? char(0x00) : char(0x08); // 23.038 4: 7-bit or UCS2, no class
    tpdu += static_cast<char>(septets ? septets->size() : wide.size());
    tpdu += septets ? gsmcodec::packed(*septets) : wide;
    return SmsSubmit{char(0x00) + tpdu, static_cast<int>(tpdu.size())};
}
