#include "gsmcodec.h"

#include <algorithm>

using namespace gsmtables;

std::optional<QByteArray> gsmcodec::unpacked(const QByteArray &octets, int count, int skipBits)
{
    constexpr int kMost = 1 << 20; // far beyond any message; keeps the sums below in range
    if (count < 0 || count > kMost || skipBits < 0 || skipBits > 6
        || skipBits + 7 * count > 8 * std::min(octets.size(), kMost))
        return std::nullopt;
    QByteArray septets;
    septets.reserve(count);
    for (int i = 0; i < count; ++i) {
        const int bit = skipBits + 7 * i;
        const int shift = bit % 8;
        unsigned int two = static_cast<unsigned char>(octets.at(bit / 8));
        if (shift > 1)
            two |= static_cast<unsigned int>(static_cast<unsigned char>(octets.at(bit / 8 + 1)))
                << 8;
        septets.append(static_cast<char>(two >> shift & 0x7FU));
    }
    return septets;
}

QByteArray gsmcodec::packed(const QByteArray &septets, int skipBits)
{
    QByteArray octets((skipBits + 7 * septets.size() + 7) / 8, '\0');
    int bit = skipBits;
    for (const char c : septets) {
        const unsigned int two = (static_cast<unsigned char>(c) & 0x7FU) << bit % 8;
        octets[bit / 8] = static_cast<char>(static_cast<unsigned char>(octets.at(bit / 8)) | two);
        if (two > 0xFF)
            octets[bit / 8 + 1] = static_cast<char>(two >> 8);
        bit += 7;
    }
    return octets;
}

QString gsmcodec::decoded(const QByteArray &septets, GsmLanguage locking, GsmLanguage single)
{
    const Table &main = gsmtables::locking(locking);
    const Table &shifted = gsmtables::single(single);
    QString text;
    text.reserve(septets.size());
    bool escaped = false;
    for (const char c : septets) {
        const std::size_t septet = static_cast<unsigned char>(c) & 0x7FU;
        if (septet == kEscape && !escaped) {
            escaped = true;
            continue;
        }
        char16_t character = escaped ? shifted[septet] : kNone;
        if (character == kNone)
            character = main[septet];
        text += character == kNone ? QLatin1Char(' ') : QChar(character);
        escaped = false;
    }
    return text;
}

std::optional<QByteArray> gsmcodec::encoded(
    const QString &text, GsmLanguage locking, GsmLanguage single)
{
    const auto find = [](const Table &table, QChar character) {
        const auto cell = std::find(table.begin(), table.end(), character.unicode());
        return cell == table.end() ? -1 : static_cast<int>(cell - table.begin());
    };
    QByteArray septets;
    for (const QChar character : text) {
        if (character.isNull())
            return std::nullopt;
        int septet = find(gsmtables::locking(locking), character);
        if (septet < 0) {
            septet = find(gsmtables::single(single), character);
            if (septet < 0)
                return std::nullopt;
            septets.append(static_cast<char>(kEscape));
        }
        septets.append(static_cast<char>(septet));
    }
    return septets;
}

QString gsmcodec::fromUcs2(const QByteArray &octets)
{
    QString text;
    text.reserve(octets.size() / 2 + 1);
    for (int i = 0; i + 1 < octets.size(); i += 2)
        text += QChar(
            static_cast<unsigned char>(octets.at(i + 1)), static_cast<unsigned char>(octets.at(i)));
    for (int i = 0; i < text.size(); ++i) {
        if (!text.at(i).isSurrogate())
            continue;
        if (text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
            ++i;
        else
            text[i] = QChar::ReplacementCharacter;
    }
    if (octets.size() % 2 != 0)
        text += QChar(QChar::ReplacementCharacter);
    return text;
}

QByteArray gsmcodec::toUcs2(const QString &text)
{
    QByteArray octets;
    octets.reserve(text.size() * 2);
    for (const QChar c : text) {
        octets.append(static_cast<char>(c.row()));
        octets.append(static_cast<char>(c.cell()));
    }
    return octets;
}

QString gsmcodec::fromEightBit(const QByteArray &octets)
{
    return QString::fromLatin1(octets);
}
