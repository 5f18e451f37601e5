// What comes from modems in numbers: 100,000 short messages and 100,000 registration answers, no
// two alike, decoded twice. A second round must not hold more memory than the first. And the
// operator of a network, which is looked up while somebody waits.

#include "atcell.h"
#include "gsmcodec.h"
#include "modemsettings.h"
#include "smslisting.h"

#include <QElapsedTimer>
#include <QTextStream>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <malloc.h>
#include <vector>

namespace {

constexpr int kCount = 100000;
constexpr int kLookups = 10000;
constexpr qint64 kMostLookupNs = 1000000; // "well under a millisecond": of the slowest
constexpr std::size_t kMostGrowth = 0; // bytes

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

QString messageText(int number)
{
    return QStringLiteral("Message %1: the balance is %2 r.").arg(number).arg(number % 1000);
}

// A received message of 3GPP TS 23.040 9.2.2.1 as AT+CMGL tells it, in one of the three alphabets,
// every fourth as part of a longer one.
QList<QByteArray> listedMessage(int number)
{
    const QString text = messageText(number);
    const bool isPart = number % 4 == 3;
    const QByteArray header = isPart ? QByteArray::fromHex("050003420201") : QByteArray();
    char coding = '\0'; // TP-DCS, 9.2.3.10: the default alphabet
    QByteArray data;
    int length = 0;
    switch (number % 3) {
    case 0: {
        const QByteArray septets = gsmcodec::encoded(text).value();
        const int fill = (7 - header.size() * 8 % 7) % 7;
        data = header + gsmcodec::packed(septets, fill);
        length = (header.size() * 8 + fill) / 7 + septets.size();
        break;
    }
    case 1:
        coding = '\x08';
        data = header + gsmcodec::toUcs2(text);
        length = data.size();
        break;
    default:
        coding = '\x04';
        data = header + text.toLatin1();
        length = data.size();
        break;
    }
    const QByteArray tpdu = QByteArray(1, isPart ? '\x44' : '\x04')
        + QByteArray::fromHex("0B919761214365F7") + QByteArray(1, '\0') + coding
        + QByteArray::fromHex("62102181436521") + static_cast<char>(length) + data;
    return {"+CMGL: " + QByteArray::number(number % 200) + ",1,," + QByteArray::number(tpdu.size()),
        "00" + tpdu.toHex().toUpper()};
}

bool decodeMessage(const QList<QByteArray> &lines, int number)
{
    const SmsListing listing = parseSmsListing("+CMGL", lines);
    return listing.messages.size() == 1 && listing.broken.isEmpty()
        && listing.messages.first().pdu.text == messageText(number);
}

// The habits of several makers (tests/tavmodems/tst_atanswers.cpp names them).
QList<QByteArray> registrationAnswer(int number)
{
    const QByteArray cell = QByteArray::number(0x1000000 + number, 16);
    switch (number % 4) {
    case 0:
        return {"+CREG: 2,1,\"1F40\",\"" + cell.toUpper() + "\",7"};
    case 1:
        return {"+CREG: 2,1,1f40," + cell};
    case 2:
        return {"^RSSI: 17", "+CREG: 2,5,\"1f40\",\"0" + cell + "\",2,,"};
    default:
        return {"+CREG: 1,\"1F40\",\"" + cell.toUpper() + "\""};
    }
}

bool decodeRegistration(const QList<QByteArray> &lines, int number)
{
    const auto cell = parseCell("+CREG", lines);
    return cell && cell->area == QLatin1String("1F40")
        && cell->cell.toInt(nullptr, 16) == 0x1000000 + number;
}

bool measure(const char *what, const std::function<QList<QByteArray>(int)> &make,
    const std::function<bool(const QList<QByteArray> &, int)> &decode)
{
    std::vector<QList<QByteArray>> input;
    input.reserve(kCount);
    for (int i = 0; i < kCount; ++i)
        input.push_back(make(i));
    const auto round = [&] {
        for (int i = 0; i < kCount; ++i) {
            if (!decode(input[static_cast<std::size_t>(i)], i))
                return false;
        }
        return true;
    };
    bool isRight = round(); // what is set up once
    const std::size_t before = ::mallinfo2().uordblks;
    QElapsedTimer clock;
    clock.start();
    isRight = round() && isRight;
    const double seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    const std::size_t after = ::mallinfo2().uordblks;
    const std::size_t growth = after > before ? after - before : 0;
    out() << what << ": " << static_cast<qint64>(kCount / seconds) << " a second, "
          << (isRight ? "all right" : "SOME WRONG") << ", memory grown by " << growth
          << " bytes (at most " << kMostGrowth << ")" << Qt::endl;
    return isRight && growth <= kMostGrowth;
}

bool measureLookups()
{
    OperatorData data;
    QElapsedTimer clock;
    clock.start();
    bool isRight = ModemSettings().getOperatorData(250, 1, data);
    const qint64 first = clock.nsecsElapsed();
    qint64 slowest = 0;
    qint64 total = 0;
    for (int i = 0; i < kLookups; ++i) {
        clock.start();
        const bool isKnown = ModemSettings().getOperatorData(250, i % 1000, data);
        const qint64 taken = clock.nsecsElapsed();
        slowest = std::max(slowest, taken);
        total += taken;
        isRight = isRight && (isKnown || i % 1000 != 1);
    }
    out() << "operator of a network: the first " << first / 1000 << " us, then " << total / kLookups
          << " ns, the slowest " << slowest / 1000 << " us (at most " << kMostLookupNs / 1000
          << "), " << (isRight ? "found" : "NOT FOUND") << Qt::endl;
    return isRight && slowest <= kMostLookupNs;
}

} // namespace

int main()
{
    const bool messages = measure("100,000 short messages", listedMessage, decodeMessage);
    const bool registrations
        = measure("100,000 registration answers", registrationAnswer, decodeRegistration);
    const bool lookups = measureLookups();
    return messages && registrations && lookups ? EXIT_SUCCESS : EXIT_FAILURE;
}
