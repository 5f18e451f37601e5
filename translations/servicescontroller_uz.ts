<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="uz_UZ">
<context>
    <name>ServicesController</name>
    <message>
        <source>Stop services</source>
        <translation>Xizmatlarni toʻxtatish</translation>
    </message>
    <message>
        <source>Services were stopped by timeout</source>
        <translation>Xizmatlarni toʻxtatish kutish vaqti boʻyicha yakunlandi</translation>
    </message>
    <message>
        <source>Modems are not stopped</source>
        <translation>Modemlar toʻxtatilmagan</translation>
    </message>
    <message>
        <source>Watchdogs are not stopped</source>
        <translation>Qoʻriqchi taymerlar toʻxtatilmagan</translation>
    </message>
    <message>
        <source>Printers are not stopped</source>
        <translation>Printerlar toʻxtatilmagan</translation>
    </message>
    <message>
        <source>Acceptors are not stopped</source>
        <translation>Kupyura qabul qilgichlar toʻxtatilmagan</translation>
    </message>
    <message>
        <source>Start services</source>
        <translation>Xizmatlarni ishga tushirish</translation>
    </message>
    <message>
        <source>Services were started by timeout</source>
        <translation>Xizmatlarni ishga tushirish kutish vaqti boʻyicha yakunlandi</translation>
    </message>
    <message>
        <source>Modems are not started</source>
        <translation>Modemlar ishga tushirilmagan</translation>
    </message>
    <message>
        <source>Watchdogs are not started</source>
        <translation>Qoʻriqchi taymerlar ishga tushirilmagan</translation>
    </message>
    <message>
        <source>Printers are not started</source>
        <translation>Printerlar ishga tushirilmagan</translation>
    </message>
    <message>
        <source>Acceptors are not started</source>
        <translation>Kupyura qabul qilgichlar ishga tushirilmagan</translation>
    </message>
</context>
</TS>
