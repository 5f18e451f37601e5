#include "gsmtables.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <string>

namespace {

using gsmtables::kNone;
using gsmtables::Table;
using Tables = std::array<Table, 14>;

struct Range
{
    char16_t first;
    char16_t last;
};

// The default alphabet by columns of sixteen, as 6.2.1 prints it; the escape's cell is empty.
constexpr char16_t DEFAULT_LOCKING[] = u"@£$¥èéùìòÇ\nØø\rÅå"
                                       u"Δ_ΦΓΛΩΠΨΣΘΞ\0ÆæßÉ"
                                       u" !\"#¤%&'()*+,-./"
                                       u"0123456789:;<=>?"
                                       u"¡ABCDEFGHIJKLMNO"
                                       u"PQRSTUVWXYZÄÖÑÜ§"
                                       u"¿abcdefghijklmno"
                                       u"pqrstuvwxyzäöñüà";

// A.3.3
constexpr char16_t PORTUGUESE_LOCKING[] = u"@£$¥êéúíóç\nÔô\rÁá"
                                          u"Δ_ªÇÀ∞^\\€Ó|\0ÂâÊÉ"
                                          u" !\"#º%&'()*+,-./"
                                          u"0123456789:;<=>?"
                                          u"ÍABCDEFGHIJKLMNO"
                                          u"PQRSTUVWXYZÃÕÚÜ§"
                                          u"~abcdefghijklmno"
                                          u"pqrstuvwxyzãõ`üà";

// What the tables A.3.4 to A.3.13 have in common; a dot stands for a cell of the language's own.
constexpr char16_t EASTERN_LOCKING[] = u"..........\n..\r.."
                                       u"...........\0...."
                                       u" !......)(..,.\x01."
                                       u"0123456789:;...?"
                                       u"................"
                                       u"................"
                                       u".abcdefghijklmno"
                                       u"pqrstuvwxyz.....";

// The same of the tables A.2.4 to A.2.13.
constexpr char16_t EASTERN_SINGLE[] = u"@£$¥¿\"¤%&'\f*+\0-/"
                                      u"<=>¡^¡_#*..\0...."
                                      u"........{}.....\\"
                                      u"............[~]."
                                      u"|ABCDEFGHIJKLMNO"
                                      u"PQRSTUVWXYZ\0\0\0\0\0"
                                      u"\0\0\0\0\0€\0\0\0\0\0\0\0\0\0\0"
                                      u"\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0";

constexpr char16_t OWN = u'.';
constexpr char16_t FULL_STOP = 1; // a real one among the cells that are marked with dots

static_assert(std::size(DEFAULT_LOCKING) == 129 && std::size(PORTUGUESE_LOCKING) == 129
    && std::size(EASTERN_LOCKING) == 129 && std::size(EASTERN_SINGLE) == 129);

Table table(const char16_t *cells)
{
    Table result;
    std::copy(cells, cells + result.size(), result.begin());
    return result;
}

struct Cell
{
    std::size_t septet;
    char16_t character;
};

Table changed(Table base, std::initializer_list<Cell> cells)
{
    for (const Cell &cell : cells)
        base[cell.septet] = cell.character;
    return base;
}

// The layout with its own cells taken, in order, from `own`; what is left over stays empty.
Table filled(const char16_t *layout, const std::u16string &own)
{
    Table result = table(layout);
    auto next = own.begin();
    for (char16_t &cell : result) {
        if (cell == OWN)
            cell = next == own.end() ? kNone : *next++;
        else if (cell == FULL_STOP)
            cell = u'.';
    }
    return result;
}

std::u16string expanded(std::initializer_list<Range> ranges)
{
    std::u16string text;
    for (const Range &range : ranges) {
        for (char16_t c = range.first; c <= range.last; ++c)
            text += c;
    }
    return text;
}

// The Indic blocks of Unicode are laid out side by side, and so are these tables: signs, vowels
// and consonants in the block's order without those the script lacks (`holes`, as offsets in the
// block), then six characters (`rest`) that differ.
Table indicLocking(char16_t block, const std::u16string &holes, const std::u16string &rest)
{
    std::u16string own = expanded({{0x01, 0x03}, {0x05, 0x39}, {0x3C, 0x4D}});
    for (char16_t &c : own)
        c = holes.find(c) != std::u16string::npos ? kNone : static_cast<char16_t>(block + c);
    return filled(EASTERN_LOCKING, own + rest);
}

Tables makeLocking()
{
    const Table standard = table(DEFAULT_LOCKING);
    const Table turkish = changed(standard,
        {{0x04, u'€'}, {0x07, u'ı'}, {0x0B, u'Ğ'}, {0x0C, u'ğ'}, {0x1C, u'Ş'}, {0x1D, u'ş'},
            {0x40, u'İ'}, {0x60, u'ç'}});
    return {
        standard,
        turkish,
        standard,
        table(PORTUGUESE_LOCKING),
        indicLocking(0x0980, u"\x0D\x0E\x11\x12\x29\x31\x33\x34\x35\x45\x46\x49\x4A",
            u"\u09CE\u09D7\u09DC\u09DD\u09F0\u09F1"),
        indicLocking(
            0x0A80, u"\x0E\x12\x29\x31\x34\x46\x4A", u"\u0AD0\u0AE0\u0AE1\u0AE2\u0AE3\u0AF1"),
        indicLocking(0x0900, u"", u"\u0950\u0972\u097B\u097C\u097E\u097F"),
        indicLocking(
            0x0C80, u"\x01\x0D\x11\x29\x34\x45\x49", u"\u0CD5\u0CD6\u0CE0\u0CE1\u0CE2\u0CE3"),
        indicLocking(
            0x0D00, u"\x01\x0D\x11\x29\x3C\x45\x49", u"\u0D57\u0D60\u0D61\u0D62\u0D63\u0D79"),
        indicLocking(0x0B00, u"\x0D\x0E\x11\x12\x29\x31\x34\x45\x46\x49\x4A",
            u"\u0B56\u0B57\u0B60\u0B61\u0B62\u0B63"),
        indicLocking(0x0A00,
            u"\x0B\x0C\x0D\x0E\x11\x12\x29\x31\x34\x37\x3D\x43\x44\x45\x46\x49\x4A",
            u"\u0A51\u0A70\u0A71\u0A72\u0A73\u0A74"),
        indicLocking(0x0B80,
            u"\x01\x0B\x0C\x0D\x11\x16\x17\x18\x1B\x1D\x20\x21\x22\x25\x26\x27\x2B\x2C\x2D\x3C\x3D"
            u"\x43\x44\x45\x49",
            u"\u0BD0\u0BD7\u0BF0\u0BF1\u0BF2\u0BF9"),
        indicLocking(
            0x0C00, u"\x0D\x11\x29\x34\x3C\x45\x49", u"\u0C55\u0C56\u0C60\u0C61\u0C62\u0C63"),
        filled(EASTERN_LOCKING,
            u"\u0627\u0622\u0628\u067B\u0680\u067E\u06A6\u062A\u06C2\u067F\u0679\u067D\u067A\u067C"
            u"\u062B\u062C\u0681\u0684\u0683\u0685\u0686\u0687\u062D\u062E\u062F\u068C\u0688\u0689"
            u"\u068A\u068F\u068D\u0630\u0631\u0691\u0693\u0699\u0632\u0696\u0698\u069A\u0633\u0634"
            u"\u0635\u0636\u0637\u0638\u0639\u0641\u0642\u06A9\u06AA\u06AB\u06AF\u06B3\u06B1\u0644"
            u"\u0645\u0646\u06BA\u06BB\u06BC\u0648\u06C4\u06D5\u06C1\u06BE\u0621\u06CC\u06D0\u06D2"
            u"\u064D\u0650\u064F\u0657\u0654\u0655\u0651\u0653\u0656\u0670"),
    };
}

Tables makeSingle()
{
    const auto eastern = [](std::initializer_list<Range> ranges) {
        return filled(EASTERN_SINGLE, expanded(ranges));
    };
    const Range danda{0x0964, 0x0965};
    const Table standard = changed(Table{},
        {{0x0A, u'\f'}, {0x14, u'^'}, {0x28, u'{'}, {0x29, u'}'}, {0x2F, u'\\'}, {0x3C, u'['},
            {0x3D, u'~'}, {0x3E, u']'}, {0x40, u'|'}, {0x65, u'€'}});
    const Table turkish = changed(standard,
        {{0x47, u'Ğ'}, {0x49, u'İ'}, {0x53, u'Ş'}, {0x63, u'ç'}, {0x67, u'ğ'}, {0x69, u'ı'},
            {0x73, u'ş'}});
    const Table spanish = changed(standard,
        {{0x09, u'ç'}, {0x41, u'Á'}, {0x49, u'Í'}, {0x4F, u'Ó'}, {0x55, u'Ú'}, {0x61, u'á'},
            {0x69, u'í'}, {0x6F, u'ó'}, {0x75, u'ú'}});
    const Table portuguese = changed(standard,
        {{0x05, u'ê'}, {0x09, u'ç'}, {0x0B, u'Ô'}, {0x0C, u'ô'}, {0x0E, u'Á'}, {0x0F, u'á'},
            {0x12, u'Φ'}, {0x13, u'Γ'}, {0x15, u'Ω'}, {0x16, u'Π'}, {0x17, u'Ψ'}, {0x18, u'Σ'},
            {0x19, u'Θ'}, {0x1F, u'Ê'}, {0x41, u'À'}, {0x49, u'Í'}, {0x4F, u'Ó'}, {0x55, u'Ú'},
            {0x5B, u'Ã'}, {0x5C, u'Õ'}, {0x61, u'Â'}, {0x69, u'í'}, {0x6F, u'ó'}, {0x75, u'ú'},
            {0x7B, u'ã'}, {0x7C, u'õ'}, {0x7F, u'â'}});
    return {
        standard,
        turkish,
        spanish,
        portuguese,
        eastern({{0x09E6, 0x09EF}, {0x09DF, 0x09E3}, {0x09F2, 0x09FA}}),
        eastern({danda, {0x0AE6, 0x0AEF}}),
        eastern({danda, {0x0966, 0x096F}, {0x0951, 0x0954}, {0x0958, 0x0963}, {0x0970, 0x0971}}),
        eastern({danda, {0x0CE6, 0x0CEF}, {0x0CDE, 0x0CDE}, {0x0CF1, 0x0CF2}}),
        eastern({danda, {0x0D66, 0x0D75}, {0x0D7A, 0x0D7F}}),
        eastern({danda, {0x0B66, 0x0B6F}, {0x0B5C, 0x0B5D}, {0x0B5F, 0x0B5F}, {0x0B70, 0x0B71}}),
        eastern({danda, {0x0A66, 0x0A6F}, {0x0A59, 0x0A5C}, {0x0A5E, 0x0A5E}, {0x0A75, 0x0A75}}),
        eastern({danda, {0x0BE6, 0x0BEF}, {0x0BF3, 0x0BF8}, {0x0BFA, 0x0BFA}}),
        eastern(
            {{kNone, kNone}, {kNone, kNone}, {0x0C66, 0x0C6F}, {0x0C58, 0x0C59}, {0x0C78, 0x0C7F}}),
        eastern({{0x0600, 0x0601}, {0x06F0, 0x06F9}, {0x060C, 0x0614}, {0x061B, 0x061B},
            {0x061F, 0x061F}, {0x0640, 0x0640}, {0x0652, 0x0652}, {0x0658, 0x0658},
            {0x066B, 0x066C}, {0x0672, 0x0673}, {0x06CD, 0x06CD}, {0x06D4, 0x06D4}}),
    };
}

} // namespace

const Table &gsmtables::locking(GsmLanguage language)
{
    static const Tables tables = makeLocking();
    return tables.at(static_cast<std::size_t>(language));
}

const Table &gsmtables::single(GsmLanguage language)
{
    static const Tables tables = makeSingle();
    return tables.at(static_cast<std::size_t>(language));
}
