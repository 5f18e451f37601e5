#include "atunsolicited.h"

#include <algorithm>

namespace {

// Whole lines.
const char *const LINES[] = {
    // ITU-T V.250 6.3, and the end of a call nobody asked about.
    "RING",
    "NO CARRIER",
    "BUSY",
    "NO ANSWER",
    "NO DIALTONE",
    // Power-up banners (SIMCom, Quectel, Cinterion, Telit).
    "RDY",
    "Call Ready",
    "SMS Ready",
    "SMS DONE",
    "PB DONE",
    "NORMAL POWER DOWN",
    "UNDER-VOLTAGE WARNNING",
    "POWERED DOWN",
    "+PBREADY",
    "^SYSSTART",
    "^SHUTDOWN",
};

// Names before a colon.
const char *const NAMES[] = {
    // 3GPP TS 27.007: registration 7.2, 10.1; calls 6.11, 7.6, 7.11, 7.12, 7.17; USSD 7.15; events
    // 8.10, 10.1.19; time 8.41. 3GPP TS 27.005 3.4.1: messages.
    "+CREG",
    "+CGREG",
    "+CEREG",
    "+CRING",
    "+CLIP",
    "+CCWA",
    "+CSSI",
    "+CSSU",
    "+COLP",
    "+CUSD",
    "+CIEV",
    "+CGEV",
    "+CTZV",
    "+CTZE",
    "+CTZDST",
    "+CMTI",
    "+CMT",
    "+CBMI",
    "+CBM",
    "+CDSI",
    "+CDS",
    "+CPIN",
    "+CFUN",
    // Huawei
    "^RSSI",
    "^HCSQ",
    "^BOOT",
    "^MODE",
    "^SRVST",
    "^SIMST",
    "^STIN",
    "^DSFLOWRPT",
    "^DSDORMANT",
    "^RFSWITCH",
    "^NDISSTAT",
    "^CSNR",
    "^CEND",
    "^CONN",
    "^ORIG",
    "^CONF",
    "^SMMEMFULL",
    "^ANLEVEL",
    "^CRSSI",
    "^HRSSILVL",
    "^EARST",
    "^NWTIME",
    "^LWURC",
    "^SYSSTART",
    // ZTE
    "+ZUSIMR",
    "+ZDONR",
    "+ZPASR",
    "+ZEND",
    "+ZPSTM",
    "+ZCPI",
    // SIMCom, Quectel
    "*PSUTTZ",
    "DST",
    "+QIND",
    "+QUSIM",
    "+QIURC",
    "+QNITZ",
    "+QGPSURC",
    // Telit, Sierra, u-blox, Cinterion
    "#QSS",
    "#NITZ",
    "+WIND",
    "+UREG",
    "+UUSORD",
    "+UUPSDA",
    "+UUPSDD",
    "+UMWI",
    "^SCKS",
    "^SBC",
};

// "AT+CREG?" asks for "+CREG"; empty for a command without an extended name.
QByteArray askedName(const QByteArray &command)
{
    const QByteArray name = command.mid(2);
    const auto end = std::find_if(name.cbegin(), name.cend(),
        [](char c) { return c == '?' || c == '=' || c == ';' || c == ' '; });
    return name.left(static_cast<int>(end - name.cbegin())).toUpper();
}

// Of the PDU in the line after this one; 0 when none follows.
int followingOctets(const QByteArray &line)
{
    for (const char *name : {"+CMT:", "+CDS:", "+CBM:"}) {
        if (line.startsWith(name))
            return std::max(line.mid(5).split(',').last().trimmed().toInt(), 0);
    }
    return 0;
}

bool isPdu(const QByteArray &line, int octets)
{
    return line.size() / 2 >= octets && std::all_of(line.begin(), line.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
    });
}

bool hasOpenQuote(const QByteArray &line)
{
    return line.count('"') % 2 != 0;
}

} // namespace

bool isUnsolicited(const QByteArray &line, const QByteArray &command)
{
    const auto isLine = [&line](const char *known) { return line == known; };
    if (std::any_of(std::begin(LINES), std::end(LINES), isLine))
        return true;
    const int colon = line.indexOf(':');
    if (colon < 1)
        return false;
    const QByteArray name = line.left(colon).trimmed();
    return name.toUpper() != askedName(command)
        && std::any_of(std::begin(NAMES), std::end(NAMES),
            [&name](const char *known) { return name == known; });
}

bool AtUnsolicited::takes(const QByteArray &line)
{
    const int pduOctets = m_pduOctets;
    m_pduOctets = 0;
    if (pduOctets > 0 && isPdu(line, pduOctets))
        return true;
    if (isUnsolicited(line, m_command)) {
        m_pduOctets = followingOctets(line);
        if (line.startsWith("+CUSD:"))
            m_isTextOpen = hasOpenQuote(line);
        return true;
    }
    const QByteArray name = askedName(m_command);
    if (!m_isTextOpen || (!name.isEmpty() && line.toUpper().startsWith(name + ':'))) {
        m_isTextOpen = false;
        return false;
    }
    m_isTextOpen = !hasOpenQuote(line);
    return true;
}
