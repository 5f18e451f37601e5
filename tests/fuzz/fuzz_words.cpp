// What operators say in free words: a balance, a telephone number.

#include "balancetext.h"
#include "fuzzinput.h"
#include "phonenumbertext.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = QString::fromUtf8(FuzzInput(data, size).rest());
    const auto balance = findBalance(text);
    require(!balance || (std::isfinite(*balance) && std::abs(*balance) < 1e15),
        "a balance is a number that can be shown");
    const auto number = findPhoneNumber(text);
    const int digits = number ? number->size() - (number->startsWith(QLatin1Char('+')) ? 1 : 0) : 0;
    require(!number || (digits >= 9 && digits <= 15), "a telephone number has its digits");
    return 0;
}
