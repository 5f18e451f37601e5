#pragma once

#include "operatorsfile.h"
#include "scriptedmodem.h"

/// 999-1 has everything and tells the card's number by USSD, 999-2 by a message, 999-3 has but a
/// name; 999-99 is nobody's.
class TestOperators : public OperatorsFile
{
public:
    TestOperators()
        : OperatorsFile(R"(<serviceproviders format="2.0"><country code="xx">
<provider primary="true"><name>All &amp; Everything</name><gsm>
<network-id mcc="999" mnc="1"/><balance-check><ussd>*100#</ussd></balance-check>
<msisdn-query><ussd>*111#</ussd></msisdn-query>
<apn value="all.example"><usage type="internet"/><username>guest</username>
<password>open</password></apn></gsm></provider>
<provider primary="true"><name>By Message</name><gsm>
<network-id mcc="999" mnc="2"/><balance-check><ussd>*100#</ussd></balance-check>
<msisdn-query><sms>111</sms></msisdn-query></gsm></provider>
<provider primary="true"><name>Name Only</name><gsm>
<network-id mcc="999" mnc="3"/></gsm></provider>
</country></serviceproviders>)")
    {
    }
};

/// Teaches a modem that answers a query the network 999-2, which tells the number by a message.
inline void answerByMessage(ScriptedModem &modem)
{
    const auto ok = [](const QByteArray &text = {}) { return ScriptedModem::ok(text); };
    modem.answers["AT+COPS?"] = ok("+COPS: 0,2,\"99902\"");
    modem.answers["AT+CNMI=2,1"] = ok();
    modem.answers["AT+CMGD=2"] = ok();
    modem.promptOn = "AT+CMGS=";
    modem.answerToText = ok("+CMGS: 12");
    modem.onCommand = [&modem](const QByteArray &heard) {
        // From 111 on 2026-03-02 at 08:30:21 +03:00: the number in UCS2, 3GPP TS 23.040 9.2.2.1.
        if (heard.endsWith('\x1a'))
            modem.answers["AT+CMGL=4"].replace("\r\n\r\nOK",
                "\r\n+CMGL: 2,0,,39\r\n"
                "0004038111F1000862302080031221"
                "18002B00370039003100360031003200330034003500360037\r\n\r\nOK");
    };
}

/// Teaches a modem of no known maker to answer all of a query: in the network 999-1, with a balance
/// of 150.5, a card that does not know its number, -71 dBm and one message.
inline void answerQuery(ScriptedModem &modem)
{
    const auto ok = [](const QByteArray &text = {}) { return ScriptedModem::ok(text); };
    const QMap<QByteArray, QByteArray> answers{
        {"AT+CGMI", ok("Acme")},
        {"AT+CGMM", ok("A-1")},
        {"AT+COPS=3,2", ok()},
        {"AT+COPS=3,0", ok()},
        {"AT+COPS?", ok("+COPS: 0,2,\"99901\"")},
        {"AT+CREG=2", ok()},
        {"AT+CREG?", ok("+CREG: 2,1,\"1A2B\",\"00C3F4D5\"")},
        {"AT+CGMR", ok("1.0")},
        {"AT+CGSN", ok("353142031234567")},
        {"AT+CIMI", ok("999011234567890")},
        {"AT+CCID", ok("+CCID: 89701010012345678901")},
        {"AT+CNUM", ok()},
        {"AT+CSCS=\"GSM\"", ok()},
        {"AT+CUSD=1,\"*111#\",15", ok() + "\r\n+CUSD: 0,\"Your number is +79161234567\",15\r\n"},
        {"AT+CUSD=1,\"*100#\",15", ok() + "\r\n+CUSD: 0,\"Balance: 150.50 r.\",15\r\n"},
        {"AT+CSQ", ok("+CSQ: 21,99")},
        {"AT+CMGF=0", ok()},
        {"AT+CPMS?", ok("+CPMS: \"SM\",1,20,\"SM\",1,20,\"SM\",1,20")},
        // From +79160000001 on 2026-03-02 at 08:30:00 +03:00, 3GPP TS 23.040 9.2.2.1.
        {"AT+CMGL=4",
            ok("+CMGL: 1,0,,31\r\n"
               "00040B919761000000F10008623020800300210C04110430043B0430043D0441")},
        {"AT+CMGD=1", ok()},
        {"AT+CEREG=0", ok()},
    };
    for (auto answer = answers.cbegin(); answer != answers.cend(); ++answer)
        modem.answers.insert(answer.key(), answer.value());
}
