<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="uz_UZ">
<context>
    <name>MainDialog</name>
    <message>
        <source>Tav test dialer</source>
        <translation>Tav: qoʻngʻiroq sinovi</translation>
    </message>
    <message>
        <source>Modems</source>
        <translation>Modemlar</translation>
    </message>
    <message>
        <source>Local network</source>
        <translation>Lokal tarmoq</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Yopish</translation>
    </message>
    <message>
        <source>Connection on</source>
        <translation>Aloqa bor</translation>
    </message>
    <message>
        <source>Connection off</source>
        <translation>Aloqa yoʻq</translation>
    </message>
    <message>
        <source>Settings saving error</source>
        <translation>Sozlamalarni saqlash xatosi</translation>
    </message>
    <message>
        <source>Modems settings saving error. Continue exit?</source>
        <translation>Modem sozlamalarini saqlab boʻlmadi. Baribir chiqilsinmi?</translation>
    </message>
    <message>
        <source>Test dealer closing</source>
        <translation>Dasturni yopish</translation>
    </message>
    <message>
        <source>Save modems settings?</source>
        <translation>Modem sozlamalari saqlansinmi?</translation>
    </message>
    <message>
        <source>From test dealer</source>
        <translation>Qoʻngʻiroq sinovi dasturidan</translation>
    </message>
</context>
<context>
    <name>ModemAckWidget</name>
    <message>
        <source>Form</source>
        <translation>Sahifa</translation>
    </message>
    <message>
        <source>Modem</source>
        <translation>Modem</translation>
    </message>
    <message>
        <source>Ask modem</source>
        <translation>Soʻrash</translation>
    </message>
    <message>
        <source>MCC</source>
        <translation>MCC</translation>
    </message>
    <message>
        <source>MNC</source>
        <translation>MNC</translation>
    </message>
    <message>
        <source>LAC</source>
        <translation>LAC</translation>
    </message>
    <message>
        <source>CID</source>
        <translation>CID</translation>
    </message>
    <message>
        <source>Operator</source>
        <translation>Operator</translation>
    </message>
    <message>
        <source>Sim number</source>
        <translation>SIM raqami</translation>
    </message>
    <message>
        <source>Balance</source>
        <translation>Balans</translation>
    </message>
    <message>
        <source>Signal level</source>
        <translation>Signal darajasi</translation>
    </message>
</context>
<context>
    <name>ModemsWidget</name>
    <message>
        <source>Form</source>
        <translation>Sahifa</translation>
    </message>
    <message>
        <source>Dial test</source>
        <translation>Qoʻngʻiroq sinovi</translation>
    </message>
    <message>
        <source>Ask modem</source>
        <translation>Modem soʻrovi</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Sozlamalar</translation>
    </message>
    <message>
        <source>Save settings</source>
        <translation>Saqlash</translation>
    </message>
    <message>
        <source>From test dealer</source>
        <translation>Qoʻngʻiroq sinovi dasturidan</translation>
    </message>
    <message>
        <source>Settings saving error</source>
        <translation>Sozlamalarni saqlash xatosi</translation>
    </message>
    <message>
        <source>Modems settings saving error</source>
        <translation>Modem sozlamalarini saqlab boʻlmadi</translation>
    </message>
</context>
<context>
    <name>SearchWidget</name>
    <message>
        <source>Form</source>
        <translation>Sahifa</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Nomi</translation>
    </message>
    <message>
        <source>Main</source>
        <translation>Asosiy</translation>
    </message>
    <message>
        <source>Port</source>
        <translation>Port</translation>
    </message>
    <message>
        <source>Baudrate</source>
        <translation>Tezlik</translation>
    </message>
    <message>
        <source>User</source>
        <translation>Foydalanuvchi</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Parol</translation>
    </message>
    <message>
        <source>Modem Only</source>
        <translation>Faqat modem</translation>
    </message>
    <message>
        <source>Additional</source>
        <translation>Qoʻshimcha</translation>
    </message>
    <message>
        <source>Dial cmd</source>
        <translation>Terish buyrugʻi</translation>
    </message>
    <message>
        <source>ISDN</source>
        <translation>ISDN</translation>
    </message>
    <message>
        <source>Modem Type</source>
        <translation>Modem turi</translation>
    </message>
    <message>
        <source>New pppd</source>
        <translation>Yangi pppd</translation>
    </message>
    <message>
        <source>Stupid mode</source>
        <translation>Oddiy rejim</translation>
    </message>
    <message>
        <source>Phones</source>
        <translation>Telefonlar</translation>
    </message>
    <message>
        <source>APN</source>
        <translation>APN</translation>
    </message>
    <message>
        <source>No modems</source>
        <translation>Modem yoʻq</translation>
    </message>
    <message>
        <source>To modem only mode</source>
        <translation>«Faqat modem» rejimi</translation>
    </message>
    <message>
        <source>Modem was switched to Modem Only mode. Replug modem, please.</source>
        <translation>Modem «Faqat modem» rejimiga oʻtkazildi. Modemni uzib, qayta ulang.</translation>
    </message>
</context>
<context>
    <name>ShortStringListEditor</name>
    <message>
        <source>Form</source>
        <translation>Sahifa</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
</context>
<context>
    <name>TestDealerRoot</name>
    <message>
        <source>Warning</source>
        <translation>Ogohlantirish</translation>
    </message>
    <message>
        <source>The application is already running!</source>
        <translation>Dastur allaqachon ishga tushirilgan!</translation>
    </message>
</context>
<context>
    <name>TestDialWidget</name>
    <message>
        <source>Form</source>
        <translation>Sahifa</translation>
    </message>
    <message>
        <source>Modem</source>
        <translation>Modem</translation>
    </message>
    <message>
        <source>Dial</source>
        <translation>Qoʻngʻiroq</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Toʻxtatish</translation>
    </message>
</context>
<context>
    <name>WaitDialog</name>
    <message>
        <source>Dialog</source>
        <translation>Kutib turing</translation>
    </message>
</context>
</TS>
