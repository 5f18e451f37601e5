#include "portsession.h"

#include "gsmtext.h"
#include "modemstate.h"

namespace {

constexpr int kSimNotInserted = 10;
constexpr int kSimPinRequired = 11;
constexpr int kSimBusy = 14;

QByteArray equipmentText(int code)
{
    static const QMap<int, QByteArray> texts{{3, "operation not allowed"},
        {4, "operation not supported"}, {10, "SIM not inserted"}, {11, "SIM PIN required"},
        {14, "SIM busy"}, {16, "incorrect password"}, {21, "invalid index"},
        {30, "no network service"}, {50, "Incorrect parameters"}};
    return texts.value(code, "unknown error");
}

QByteArray messageText(int code)
{
    static const QMap<int, QByteArray> texts{{302, "operation not allowed"},
        {304, "invalid PDU mode parameter"}, {305, "invalid text mode parameter"},
        {310, "SIM not inserted"}, {311, "SIM PIN required"}, {321, "invalid memory index"},
        {322, "memory full"}, {331, "no network service"}};
    return texts.value(code, "unknown error");
}

} // namespace

PortSession::PortSession(ModemState *modemState)
    : modem(modemState)
{
    powerUp();
}

void PortSession::powerUp()
{
    errorMode = 0;
    charset = modem->profile.charsets.first().toLatin1();
}

CommandReply PortSession::equipmentError(int code) const
{
    if (errorMode == 0)
        return CommandReply::error();
    return CommandReply::failed(
        "+CME ERROR: " + (errorMode == 1 ? QByteArray::number(code) : equipmentText(code)));
}

CommandReply PortSession::messageError(int code) const
{
    return CommandReply::failed(
        "+CMS ERROR: " + (errorMode == 2 ? messageText(code) : QByteArray::number(code)));
}

CommandReply PortSession::needSim() const
{
    return equipmentError(!modem->simPresent() ? kSimNotInserted
            : !modem->pinGiven                 ? kSimPinRequired
                                               : kSimBusy);
}

QByteArray PortSession::toCharset(const QString &text) const
{
    if (charset == "UCS2")
        return gsmtext::toUcs2Hex(text);
    return charset == "GSM" ? gsmtext::toSeptets(text) : text.toLatin1();
}

QString PortSession::fromCharset(const QByteArray &text) const
{
    if (charset == "UCS2")
        return gsmtext::fromUcs2Hex(text);
    return charset == "GSM" ? gsmtext::fromSeptets(text) : QString::fromLatin1(text);
}
