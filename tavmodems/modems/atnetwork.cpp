#include "atnetwork.h"

#include "atfields.h"
#include "attext.h"

#include <algorithm>
#include <iterator>

namespace {

bool isDigits(const QByteArray &text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// Countries with network codes of three digits (ITU Operational Bulletin 1162, annex to E.212).
bool hasLongCodes(int mcc)
{
    constexpr int COUNTRIES[] = {302, 310, 311, 312, 313, 314, 315, 316, 330, 334, 338, 342, 344,
        346, 348, 350, 352, 354, 356, 358, 360, 365, 366, 376, 708, 722, 732, 750};
    return std::binary_search(std::begin(COUNTRIES), std::end(COUNTRIES), mcc);
}

} // namespace

std::optional<AtOperator> parseOperator(const QList<QByteArray> &lines)
{
    const auto value = atfields::valueOf("+COPS", lines);
    if (!value)
        return std::nullopt;
    const QList<QByteArray> fields = atfields::split(*value);
    bool ok = false;
    const int mode = fields.first().toInt(&ok);
    if (!ok || mode < 0 || mode > static_cast<int>(AtOperator::Mode::ManualAutomatic))
        return std::nullopt;
    AtOperator result;
    result.mode = static_cast<AtOperator::Mode>(mode);
    if (fields.size() < 3)
        return result;
    const int format = fields.at(1).toInt(&ok);
    if (!ok || format < 0 || format > 2)
        return std::nullopt;
    const QString text = parseAtText(fields.at(2));
    if (format == 2)
        result.network = parseNetwork(text.toLatin1());
    else
        result.name = text;
    const int technology = fields.value(3).toInt(&ok);
    if (ok && technology >= 0)
        result.technology = technology;
    return result;
}

std::optional<MobileNetwork> parseNetwork(const QByteArray &digits)
{
    if ((digits.size() != 5 && digits.size() != 6) || !isDigits(digits))
        return std::nullopt;
    return MobileNetwork{digits.left(3).toInt(), digits.mid(3).toInt()};
}

std::optional<MobileNetwork> networkOfImsi(const QByteArray &imsi)
{
    if (imsi.size() < 6 || imsi.size() > 15 || !isDigits(imsi))
        return std::nullopt;
    return parseNetwork(imsi.left(hasLongCodes(imsi.left(3).toInt()) ? 6 : 5));
}
