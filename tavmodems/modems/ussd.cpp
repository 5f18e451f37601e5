#include "ussd.h"

#include "atfields.h"
#include "gsmcodec.h"
#include "onelinetext.h"

#include <QRegularExpression>

#include <algorithm>

namespace {

constexpr int kMostSeptets = 182; // in the 160 octets of a USSD string, 23.038 5
constexpr int kMostWritten = 4096; // bytes; far more than a USSD string takes in any coding
constexpr char kReturn = '\r';

enum class Alphabet { Unknown, SevenBit, EightBit, Ucs2 };

// Coding schemes of cell broadcast and USSD, 3GPP TS 23.038 clause 5.
struct Scheme
{
    Alphabet alphabet = Alphabet::Unknown;
    bool hasLanguage = false; // the text begins with the code of its language
};

Scheme scheme(int octet)
{
    Scheme result;
    const int group = octet >> 4;
    if (octet < 0 || octet > 0xFF)
        return result;
    result.alphabet = Alphabet::SevenBit;
    int alphabet = 0;
    if (group == 1) {
        result.hasLanguage = octet == 0x10 || octet == 0x11;
        alphabet = octet == 0x11 ? 2 : 0;
    } else if ((group & 0x0C) == 4 || group == 9) {
        alphabet = octet >> 2 & 3;
    } else if (group == 0x0F) {
        alphabet = octet >> 2 & 1;
    }
    if (alphabet == 1)
        result.alphabet = Alphabet::EightBit;
    else if (alphabet == 2)
        result.alphabet = Alphabet::Ucs2;
    return result;
}

bool isPlain(QChar c)
{
    return (c >= QLatin1Char(' ') && c <= QLatin1Char('~')) || c == QLatin1Char('\n')
        || c == QLatin1Char('\r');
}

// Whether it reads as text: what is taken for another coding than it has does not.
bool isLikely(const QString &text)
{
    const auto plain = static_cast<int>(std::count_if(text.begin(), text.end(), isPlain));
    return !text.isEmpty() && 4 * plain >= 3 * text.size();
}

bool isLikelyUcs2(const QString &text)
{
    // Latin, Cyrillic, punctuation and currency signs; packed septets have letters all over.
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar c) {
        return isPlain(c) || (c.row() == 0 && c.cell() >= 0xA0) || c.row() == 0x01
            || c.row() == 0x04 || c.row() == 0x20 || c.row() == 0x21;
    });
}

QString fromPacked(const QByteArray &octets, bool hasLanguage)
{
    QByteArray septets = gsmcodec::unpacked(octets, 8 * octets.size() / 7).value_or(QByteArray());
    // 23.038 6.1.2.3.1: seven bits left over are filled with a return; some networks leave zeros.
    if (septets.size() % 8 == 0 && (septets.endsWith(kReturn) || septets.endsWith('\0')))
        septets.chop(1);
    if (hasLanguage && septets.size() >= 3 && septets.at(2) == kReturn)
        septets.remove(0, 3);
    return gsmcodec::decoded(septets);
}

QString fromBytes(const QByteArray &bytes)
{
    const QString text = QString::fromUtf8(bytes);
    return text.contains(QChar::ReplacementCharacter) ? QString::fromLatin1(bytes) : text;
}

QString textOf(const QByteArray &written, int codingScheme)
{
    const Scheme coding = scheme(codingScheme);
    static const QRegularExpression hex(QStringLiteral("^([0-9A-Fa-f]{2})+$"));
    if (!hex.match(QString::fromLatin1(written)).hasMatch())
        return fromBytes(written);
    const QByteArray octets = QByteArray::fromHex(written);
    if (coding.alphabet == Alphabet::Ucs2)
        return gsmcodec::fromUcs2(coding.hasLanguage ? octets.mid(2) : octets);
    if (coding.alphabet == Alphabet::EightBit)
        return gsmcodec::fromEightBit(octets);
    QString wide = gsmcodec::fromUcs2(octets);
    if (octets.size() % 2 == 0 && isLikelyUcs2(wide))
        return wide;
    const bool digitsAlone
        = std::all_of(written.begin(), written.end(), [](char c) { return c >= '0' && c <= '9'; });
    const QString narrow = fromPacked(octets, coding.hasLanguage);
    return !digitsAlone && isLikely(narrow) ? narrow : fromBytes(written);
}

struct Raw
{
    int status = 0;
    QByteArray text;
    int codingScheme = -1;
    bool isWhole = true;
};

// What stands in the lines from `at`, the line of a +CUSD, to the next one; none when the text has
// not ended.
std::optional<Raw> rawAnswer(const QList<QByteArray> &lines, int at)
{
    const QByteArray value = *atfields::valueOf("+CUSD", {lines.at(at)});
    Raw raw;
    bool ok = false;
    const int comma = value.indexOf(',');
    raw.status = atfields::split(value).first().toInt(&ok);
    if (!ok || raw.status < 0 || raw.status > static_cast<int>(UssdAnswer::Status::NetworkTimeout))
        return std::nullopt;
    if (comma < 0)
        return raw;
    QByteArray text = value.mid(comma + 1).trimmed();
    static const QRegularExpression end(QStringLiteral("\" *(?:, *(\\d{1,3})? *)?$"));
    static const QRegularExpression bareHex(
        QStringLiteral("^([0-9A-Fa-f]{2,}) *(?:, *(\\d{1,3}))?$"));
    if (!text.startsWith('"')) {
        const auto match = bareHex.match(QString::fromLatin1(text));
        raw.text = match.hasMatch() ? match.captured(1).toLatin1() : text;
        if (!match.captured(2).isEmpty())
            raw.codingScheme = match.captured(2).toInt();
        return raw;
    }
    text.remove(0, 1);
    std::optional<Raw> result;
    for (int i = at;;) {
        // A quote with a coding scheme behind it is the end for certain; without, the first that
        // leaves the quotes within in pairs is, unless such a one follows.
        const auto match = end.match(QString::fromLatin1(text));
        if (match.hasMatch() && (!result || !result->isWhole || !match.captured(1).isEmpty())) {
            result = raw;
            result->text = text.left(match.capturedStart());
            result->isWhole = result->text.count('"') % 2 == 0;
            if (!match.captured(1).isEmpty()) {
                result->codingScheme = match.captured(1).toInt();
                result->isWhole = true;
                return result;
            }
        }
        if (++i >= lines.size() || text.size() > kMostWritten
            || atfields::valueOf("+CUSD", {lines.at(i)}))
            return result;
        text += '\n' + lines.at(i);
    }
}

} // namespace

QString UssdAnswer::error() const
{
    if (!text.isEmpty())
        return {};
    switch (status) {
    case Status::Terminated:
        return QStringLiteral("the network ended the session");
    case Status::OtherClient:
        return QStringLiteral("another program answered");
    case Status::NotSupported:
        return QStringLiteral("the network does not know the request");
    case Status::NetworkTimeout:
        return QStringLiteral("the network did not answer in time");
    case Status::Done:
    case Status::ReplyWanted:
        break;
    }
    return QStringLiteral("the answer is empty");
}

std::optional<UssdAnswer> parseUssdAnswer(const QList<QByteArray> &lines)
{
    std::optional<UssdAnswer> answer;
    for (int i = 0; i < lines.size(); ++i) {
        if (!atfields::valueOf("+CUSD", {lines.at(i)}))
            continue;
        const auto raw = rawAnswer(lines, i);
        if (!raw)
            continue;
        answer = UssdAnswer{static_cast<UssdAnswer::Status>(raw->status),
            textOf(raw->text, raw->codingScheme).trimmed(), raw->isWhole};
        if (!answer->text.isEmpty())
            break;
    }
    return answer;
}

std::optional<QByteArray> ussdCommand(const QString &code, UssdForm form)
{
    const auto septets = gsmcodec::encoded(code);
    if (code.isEmpty() || !septets || septets->size() > kMostSeptets || !onelinetext::isValid(code))
        return std::nullopt;
    QByteArray text;
    switch (form) {
    case UssdForm::Plain: {
        text = code.toLatin1();
        const bool plain = std::all_of(code.begin(), code.end(), isPlain);
        if (!plain || text.contains('"'))
            return std::nullopt;
        break;
    }
    case UssdForm::PackedHex:
        // 23.038 6.1.2.3.1
        text = gsmcodec::packed(septets->size() % 8 == 7 ? *septets + kReturn : *septets)
                   .toHex()
                   .toUpper();
        break;
    case UssdForm::Ucs2Hex:
        text = gsmcodec::toUcs2(code).toHex().toUpper();
        break;
    }
    return "AT+CUSD=1,\"" + text + "\",15";
}
