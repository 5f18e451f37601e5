// USSD: an answer's lines as they come, a code as it is sent, and a text through the network and
// back in every form that modems write it in.

#include "fuzzinput.h"
#include "gsmtext.h"
#include "ussd.h"

#include <algorithm>

namespace {

QString received(const QByteArray &written, const QByteArray &scheme)
{
    const auto answer = parseUssdAnswer({"+CUSD: 0,\"" + written + "\"," + scheme});
    require(answer && answer->isWhole, "an answer on one line is whole");
    return answer->text;
}

// The coding is seen from the text: only texts that cannot be taken for another come back.
void sendBack(const QString &text)
{
    const QString trimmed = text.trimmed();
    const bool isPrintable = !text.isEmpty()
        && std::all_of(text.cbegin(), text.cend(),
            [](QChar c) { return c >= QLatin1Char(' ') && c <= QLatin1Char('~'); });
    if (text.isValidUtf16())
        require(received(gsmtext::toUcs2Hex(text), "72") == trimmed, "UCS2 comes back");
    if (!isPrintable)
        return;
    const QByteArray plain = text.toLatin1();
    const bool isHex = QByteArray::fromHex(plain).toHex() == plain.toLower();
    if (!isHex && !plain.contains('"'))
        require(received(plain, "15") == trimmed, "a plain text comes back");
    const QByteArray septets = gsmtext::toSeptets(text);
    const QByteArray packed = gsmtext::pack(septets).toHex().toUpper();
    const bool hasLetters
        = std::any_of(packed.cbegin(), packed.cend(), [](char c) { return c >= 'A' && c <= 'F'; });
    // An at sign, seven zeros, where networks fill up with zeros: nothing tells which it is.
    const bool mayBeFilling = septets.size() % 8 == 0 && septets.endsWith('\0');
    if (text.at(0).isLetter() && hasLetters && !mayBeFilling && gsmtext::isDefaultAlphabet(text))
        require(received(packed, "15") == trimmed, "packed septets come back");
}

void send(const QString &code)
{
    const QByteArray start = "AT+CUSD=1,\"";
    for (const UssdForm form : {UssdForm::Plain, UssdForm::PackedHex, UssdForm::Ucs2Hex}) {
        const auto command = ussdCommand(code, form);
        if (!command)
            continue;
        require(command->startsWith(start) && command->endsWith("\",15") && command->count('"') == 2
                && std::all_of(command->cbegin(), command->cend(),
                    [](char c) { return c >= ' ' || c == '\n' || c == '\r' || c < 0; }),
            "a command is one line");
        const QByteArray text = command->mid(start.size()).chopped(4);
        if (form == UssdForm::Ucs2Hex)
            require(gsmtext::fromUcs2Hex(text) == code, "the network gets the code in UCS2");
        if (form != UssdForm::PackedHex)
            continue;
        const QByteArray octets = QByteArray::fromHex(text);
        const QByteArray septets = gsmtext::unpack(octets, gsmtext::toSeptets(code).size());
        require(gsmtext::fromSeptets(septets) == code, "the network gets the code in septets");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    switch (input.choice(3)) {
    case 0: {
        input.line();
        const auto answer = parseUssdAnswer(input.lines());
        if (answer)
            require(answer->error().isEmpty() != answer->text.isEmpty(), "it says why");
        break;
    }
    case 1:
        input.line();
        send(input.text());
        break;
    default:
        input.line();
        sendBack(input.text());
    }
    return 0;
}
