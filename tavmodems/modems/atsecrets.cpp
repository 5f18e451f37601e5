#include "atsecrets.h"

namespace {

// Commands whose parameters hold a PIN or a password. Found anywhere in a line, in any case: after
// other commands of the line, in its echo, and in the answer to their "?" form.
const char *const NAMES[] = {
    // 3GPP TS 27.007: PIN 8.3, lock 7.4, password 7.5, PDP authentication 10.1.31
    "+CPIN", "+CPIN2", "+CLCK", "+CPWD", "+CPUK", "+CGAUTH", "^CPIN", "^CPIN2", "^AUTHDATA",
    "^CARDLOCK", // Huawei
    "+ZGPCOAUTH", "+ZPIN", // ZTE
    "$QCPDPP", // Qualcomm
    "+CSTT", "+SAPBR", "+CGSOCKAUTH", // SIMCom
    "+QICSGP", "+QIREGAPP", // Quectel
    "#PASSW", "#PDPAUTH", "#SGACTAUTH", // Telit
    "+UPSD", "+UAUTHREQ", // u-blox
    "^SGAUTH", "^SICS", "^SPIC", "^SPWD", "^SLCK", // Cinterion, Sierra
};

// Position after the "=" or ":" that follows a name of the table; -1 when there is none.
int secretFrom(const QByteArray &line)
{
    const QByteArray upper = line.toUpper();
    int found = -1;
    for (const char *name : NAMES) {
        const int length = static_cast<int>(qstrlen(name));
        for (int at = upper.indexOf(name); at >= 0; at = upper.indexOf(name, at + 1)) {
            int end = at + length;
            while (end < upper.size() && upper.at(end) == ' ')
                ++end;
            if (end >= upper.size() || (upper.at(end) != '=' && upper.at(end) != ':'))
                continue;
            // "+CPIN: READY" and its like tell the state of the card, not its PIN, and AT...=?
            // asks what is possible.
            const bool isState = upper.at(end) == ':' && upper.mid(at, length) == "+CPIN";
            const bool isTest = upper.mid(end) == "=?";
            if (!isState && !isTest && (found < 0 || end + 1 < found))
                found = end + 1;
        }
    }
    return found;
}

} // namespace

bool atsecrets::isSecret(const QByteArray &line)
{
    return secretFrom(line) >= 0;
}

QByteArray atsecrets::masked(const QByteArray &line)
{
    const int from = secretFrom(line);
    return from < 0 ? line : line.left(from) + "***";
}
