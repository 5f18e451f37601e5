// What each parser makes of the lines of an answer. The first letter tells which parser, the next
// line the command or the name that was asked for.

#include "atcardnumbers.h"
#include "atcell.h"
#include "atdialect.h"
#include "atfinalresult.h"
#include "atfunctionality.h"
#include "atidentity.h"
#include "atlines.h"
#include "atnetwork.h"
#include "atregistration.h"
#include "atsecrets.h"
#include "atsignal.h"
#include "atsimstate.h"
#include "attext.h"
#include "atunsolicited.h"
#include "fuzzinput.h"
#include "logbinary.h"
#include "onelinetext.h"
#include "smsstores.h"

#include <algorithm>
#include <iterator>

namespace {

using Lines = QList<QByteArray>;

bool isAll(const QByteArray &text, const char *characters)
{
    const QByteArray allowed(characters);
    return std::all_of(
        text.cbegin(), text.cend(), [&allowed](char c) { return allowed.contains(c); });
}

bool isDigits(const QByteArray &text, int fewest, int most)
{
    return text.isEmpty()
        || (text.size() >= fewest && text.size() <= most && isAll(text, "0123456789"));
}

bool isName(const QString &text)
{
    return text.size() <= 64
        && std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.isPrint(); });
}

bool isNetwork(const std::optional<MobileNetwork> &network)
{
    return !network
        || (network->mcc >= 0 && network->mcc <= 999 && network->mnc >= 0 && network->mnc <= 999);
}

void readOperator(const QByteArray &, const Lines &lines)
{
    const auto answer = parseOperator(lines);
    require(!answer || isNetwork(answer->network), "network codes have three digits");
    require(!answer || answer->technology.value_or(0) >= 0, "a technology has a number");
}

void readRegistration(const QByteArray &name, const Lines &lines)
{
    const auto answer = parseRegistration(name, lines);
    require(!answer || static_cast<int>(*answer) <= 10, "a registration is one of the known");
    const auto cell = parseCell(name, lines);
    require(!cell || cell->area.isEmpty() == cell->cell.isEmpty(), "a cell is in an area");
    require(!cell || cell->area.isEmpty() || (cell->area.size() >= 4 && cell->cell.size() >= 4),
        "codes have four digits");
    require(!cell || isAll((cell->area + cell->cell).toUtf8(), "0123456789ABCDEF"),
        "codes are hexadecimal");
}

void readSignal(const QByteArray &, const Lines &lines)
{
    for (const auto level : {parseSignalLevel(lines), parseExtendedSignalLevel(lines)})
        require(!level || (*level >= -156 && *level <= 0), "a level is one of a radio");
}

void readCard(const QByteArray &, const Lines &lines)
{
    require(isDigits(parseImsi(lines), 6, 15), "an IMSI has 6 to 15 digits");
    require(isDigits(parseIccid(lines), 18, 20), "an ICCID has 18 to 20 digits");
    require(isDigits(parseImei(lines), 14, 16), "an IMEI has 14 to 16 digits");
    QString number = parseOwnNumber(lines);
    if (number.startsWith(QLatin1Char('+')))
        number.remove(0, 1);
    require(isDigits(number.toUtf8(), 3, 20), "a telephone number has 3 to 20 digits");
    for (const QByteArray &line : lines) {
        require(isNetwork(networkOfImsi(line)), "an IMSI begins with a network");
        require(isNetwork(parseNetwork(line)), "codes of a network are numbers");
    }
}

void readIdentity(const QByteArray &command, const Lines &lines)
{
    require(isName(parseIdentityText(command, lines)), "a name is short and can be printed");
    const AtIdentity identity = parseInformation(lines);
    require(isName(identity.maker) && isName(identity.model), "so are a maker's and a model's");
    identity.name();
    require(!findDialect(identity).name.isEmpty(), "every modem has a dialect");
}

void readState(const QByteArray &command, const Lines &lines)
{
    AtReply reply;
    reply.status = AtReply::Status::Ok;
    reply.lines = lines;
    parseSimState(reply);
    if (const auto result = parseFinalResult(command, "AT+CPIN?"))
        parseSimState(*result);
    require(parseFunctionality(lines).value_or(0) >= 0, "a level of functionality is a number");
    require(parseSmsStores(lines).size() <= 2, "messages come from one store or two");
}

void readText(const QByteArray &, const Lines &lines)
{
    for (const QByteArray &line : lines)
        require(parseAtText(line).size() <= line.size(), "a text does not grow");
}

void tellApart(const QByteArray &command, const Lines &lines)
{
    AtUnsolicited unsolicited(command);
    for (const QByteArray &line : lines) {
        unsolicited.takes(line);
        const auto result = parseFinalResult(line, command);
        require(!result || (!result->isLost() && result->errorCode >= -1),
            "a final result ends the answer");
    }
}

void hideSecrets(const QByteArray &, const Lines &lines)
{
    for (const QByteArray &line : lines) {
        const QByteArray masked = atsecrets::masked(line);
        require(atsecrets::isSecret(line) == (masked.endsWith("***") && masked != line)
                || line.endsWith("***"),
            "what is secret is hidden, and nothing else");
        require(atsecrets::masked(masked) == masked, "what is hidden stays so");
        QString shown;
        QDebug(&shown) << logbinary(masked, "UTF-8");
        require(
            onelinetext::isValid(shown.remove(QLatin1Char('\t'))), "a log shows it in one line");
    }
}

using Parser = void (*)(const QByteArray &, const Lines &);
constexpr Parser kParsers[] = {readOperator, readRegistration, readSignal, readCard, readIdentity,
    readState, readText, tellApart, hideSecrets};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const Parser parser = kParsers[input.choice(std::size(kParsers))];
    const QByteArray asked = input.line();
    parser(asked, AtLines().feed(input.rest() + '\n'));
    return 0;
}
