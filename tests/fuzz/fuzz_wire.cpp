// Values that cross the bus and those that lie in the broker's database: the check of what is
// taken, and the way into bytes and back.

#include "fuzzinput.h"
#include "wire.h"

namespace {

using namespace tavbus;

int depthOf(const QVariant &value)
{
    int deepest = 0;
    const QVariantList items = value.userType() == QMetaType::QVariantMap
        ? QVariantList(value.toMap().values())
        : value.userType() == QMetaType::QVariantList ? value.toList()
                                                      : QVariantList();
    for (const QVariant &item : items)
        deepest = qMax(deepest, depthOf(item));
    const bool isContainer
        = value.userType() == QMetaType::QVariantMap || value.userType() == QMetaType::QVariantList;
    return isContainer ? deepest + 1 : 0;
}

void check(const QVariant &value)
{
    constexpr int kLimit = 4096;
    const auto list = wire::checked(QVariantList{value}, kLimit);
    if (!list)
        return;
    const QByteArray bytes = wire::packed(*list);
    require(bytes.size() <= kLimit, "what is taken has the size that was allowed");
    require(depthOf(*list) <= wire::kMaxDepth, "it is no deeper than was allowed");
    const auto back = wire::unpacked(bytes);
    require(back && wire::packed(*back) == bytes, "it comes out of the database as it went in");
    const auto again = wire::checked(back->toList(), kLimit);
    require(again && wire::packed(*again) == bytes, "and is taken again");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const bool isBytes = input.choice(2) == 1;
    input.line();
    if (!isBytes) {
        check(input.variant());
        return 0;
    }
    const auto value = wire::unpacked(QByteArray::fromHex(input.rest()));
    if (value)
        check(*value);
    return 0;
}
