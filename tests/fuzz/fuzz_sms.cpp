// Short messages: listings of modems, PDUs, and what the driver and the simulated modem write for
// each other.

#include "fuzzinput.h"
#include "gsmtext.h"
#include "smsassembler.h"
#include "smslisting.h"
#include "smspdu.h"

#include <QSet>

#include <algorithm>

namespace {

void requireSound(const SmsPdu &pdu)
{
    require(!pdu.part || (pdu.part->number >= 1 && pdu.part->number <= pdu.part->total),
        "a part is one of its message");
    require(pdu.text.size() <= 255, "a message has room for so much");
}

void list(FuzzInput &input)
{
    const QByteArray name = input.line();
    const SmsListing listing = parseSmsListing(name, input.lines());
    int kept = 0;
    for (const StoredSms &sms : listing.messages) {
        requireSound(sms.pdu);
        kept += sms.pdu.kind == SmsPdu::Kind::Deliver ? 1 : 0;
    }
    for (const BrokenSms &broken : listing.broken)
        require(!broken.error.isEmpty(), "it says what is broken");
    int together = 0;
    for (const SmsMessage &message : assembleMessages(listing.messages))
        together += message.indexes.size();
    require(together == kept, "no message is lost or made up");
}

void decode(FuzzInput &input)
{
    const int length = input.octet();
    const QByteArray octets = input.rest();
    for (const int tpduLength : {-1, octets.size(), length}) {
        QString error;
        const auto pdu = decodeSmsPdu(octets, tpduLength, &error);
        require(pdu.has_value() == error.isEmpty(), "a message is read, or it says why not");
        if (pdu)
            requireSound(*pdu);
    }
}

void submit(FuzzInput &input)
{
    const QString recipient = input.text();
    const QString text = input.text();
    const auto message = encodeSmsSubmit(recipient, text);
    if (!message)
        return;
    const auto pdu = decodeSmsPdu(message->octets, message->tpduLength, nullptr);
    require(pdu && pdu->kind == SmsPdu::Kind::Submit && pdu->address == recipient
            && (pdu->text == text || !text.isValidUtf16()),
        "a message that was written can be read");
    QString destination;
    QString content;
    int octets = 0;
    require(gsmtext::readSubmitPdu(message->octets.toHex(), &destination, &content, &octets)
            && octets == message->tpduLength && destination == recipient && content == text,
        "the simulated modem reads it");
}

bool isDialled(const QString &number)
{
    const QString digits = number.mid(number.startsWith(QLatin1Char('+')) ? 1 : 0);
    return !digits.isEmpty() && digits.size() <= 20
        && std::all_of(digits.cbegin(), digits.cend(),
            [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); });
}

// A name is trimmed, and one whose last septet is an "@" cannot be told from a shorter one.
bool isSenderName(const QString &name)
{
    return !name.isEmpty() && gsmtext::isDefaultAlphabet(name)
        && gsmtext::toSeptets(name).size() <= 11 && name == name.trimmed()
        && !name.endsWith(QLatin1Char('@'))
        && std::any_of(name.cbegin(), name.cend(), [](QChar c) { return c.isLetter(); });
}

void deliver(FuzzInput &input)
{
    gsmtext::Sms sms;
    sms.reference = input.octet();
    sms.part = 1 + input.choice(9);
    sms.parts = 9;
    const QDate date(1990 + input.choice(100), 1 + input.choice(12), 1 + input.choice(28));
    const QTime time(input.choice(24), input.choice(60), input.choice(60));
    sms.time = QDateTime(date, time, Qt::OffsetFromUTC, (input.choice(105) - 48) * 900);
    input.line();
    sms.sender = input.text();
    const QString text = gsmtext::smsParts(input.text()).first().left(67);
    sms.text = text;
    sms.ucs2 = !gsmtext::isDefaultAlphabet(text);
    if ((!isDialled(sms.sender) && !isSenderName(sms.sender)) || !text.isValidUtf16())
        return;
    const QByteArray octets = QByteArray::fromHex(gsmtext::storedPdu(sms));
    QString error;
    const auto pdu = decodeSmsPdu(octets, octets.size() - 1, &error);
    require(pdu.has_value(), "a message of the simulated modem can be read");
    require(pdu->address == sms.sender, "it tells the sender");
    require(pdu->text == text, "it tells the text");
    require(pdu->time == sms.time && pdu->time.offsetFromUtc() == sms.time.offsetFromUtc(),
        "it tells the time and its zone");
    require(pdu->part && pdu->part->number == sms.part && pdu->part->total == sms.parts
            && pdu->part->reference == sms.reference,
        "it tells which part it is");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    constexpr void (*kWays[])(FuzzInput &) = {list, decode, submit, deliver};
    kWays[input.choice(4)](input);
    return 0;
}
