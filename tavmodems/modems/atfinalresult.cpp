#include "atfinalresult.h"

#include <algorithm>

namespace {

using Status = AtReply::Status;

struct CallResult
{
    const char *text;
    Status status;
};

const CallResult CALL_RESULTS[] = {
    {"NO CARRIER", Status::NoCarrier},
    {"BUSY", Status::Busy},
    {"NO ANSWER", Status::NoAnswer},
    {"NO DIALTONE", Status::NoDialtone},
    {"NO DIAL TONE", Status::NoDialtone},
    // A number barred after too many attempts.
    {"DELAYED", Status::Busy},
    {"BLACKLISTED", Status::Busy},
};

// What some makers say where ERROR is meant.
const char *const PLAIN_ERRORS[] = {
    "ERROR",
    "COMMAND NOT SUPPORT", // Huawei
    "COMMAND NOT SUPPORTED",
    "TOO MANY PARAMETERS", // Huawei
};

struct NamedError
{
    const char *text;
    int code;
};

// The errors of 3GPP TS 27.007 9.2.1 that something is decided by, as AT+CMEE=2 words them.
const NamedError NAMED_ERRORS[] = {
    {"operation not allowed", 3},
    {"operation not supported", 4},
    {"SIM not inserted", 10},
    {"SIM PIN required", 11},
    {"SIM PUK required", 12},
    {"SIM failure", 13},
    {"SIM busy", 14},
    {"SIM wrong", 15},
    {"incorrect password", 16},
    {"invalid characters in text string", 25},
    {"no network service", 30},
    {"incorrect parameters", 50},
    {"unknown", 100},
};

AtReply ended(Status status, const QByteArray &line)
{
    AtReply reply;
    reply.status = status;
    if (status != Status::Ok && status != Status::Connect)
        reply.errorText = line;
    return reply;
}

int errorCode(const QByteArray &text)
{
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (isNumber)
        return number < 0 ? -1 : number;
    const auto named = std::find_if(std::begin(NAMED_ERRORS), std::end(NAMED_ERRORS),
        [&](const NamedError &e) { return text.compare(e.text, Qt::CaseInsensitive) == 0; });
    return named == std::end(NAMED_ERRORS) ? -1 : named->code;
}

// The call commands of V.250 6.3: D dials, A answers, O returns to the call; +++ leaves its data.
bool isAboutCall(const QByteArray &command)
{
    const QByteArray upper = command.toUpper();
    return upper == "+++" || upper.startsWith("ATD") || upper.startsWith("ATO")
        || (upper.startsWith("ATA") && !upper.startsWith("ATA+"));
}

} // namespace

std::optional<AtReply> parseFinalResult(const QByteArray &line, const QByteArray &command)
{
    if (line == "OK")
        return ended(Status::Ok, line);
    for (const char *text : PLAIN_ERRORS) {
        if (line == text)
            return ended(Status::Error, line);
    }
    for (const char *prefix : {"+CME ERROR:", "+CMS ERROR:"}) {
        if (line.startsWith(prefix)) {
            AtReply reply = ended(Status::Error, line);
            reply.errorCode = errorCode(line.mid(static_cast<int>(qstrlen(prefix))).trimmed());
            return reply;
        }
    }
    if (!isAboutCall(command))
        return std::nullopt;
    if (line == "CONNECT" || line.startsWith("CONNECT "))
        return ended(Status::Connect, line);
    for (const CallResult &result : CALL_RESULTS) {
        if (line == result.text)
            return ended(result.status, line);
    }
    return std::nullopt;
}
