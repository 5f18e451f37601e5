<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="kk_KZ">
<context>
    <name>ServicesController</name>
    <message>
        <source>Stop services</source>
        <translation>Қызметтерді тоқтату</translation>
    </message>
    <message>
        <source>Services were stopped by timeout</source>
        <translation>Қызметтерді тоқтату күту уақыты бойынша аяқталды</translation>
    </message>
    <message>
        <source>Modems are not stopped</source>
        <translation>Модемдер тоқтатылмаған</translation>
    </message>
    <message>
        <source>Watchdogs are not stopped</source>
        <translation>Күзет таймерлері тоқтатылмаған</translation>
    </message>
    <message>
        <source>Printers are not stopped</source>
        <translation>Принтерлер тоқтатылмаған</translation>
    </message>
    <message>
        <source>Acceptors are not stopped</source>
        <translation>Купюра қабылдағыштар тоқтатылмаған</translation>
    </message>
    <message>
        <source>Start services</source>
        <translation>Қызметтерді іске қосу</translation>
    </message>
    <message>
        <source>Services were started by timeout</source>
        <translation>Қызметтерді іске қосу күту уақыты бойынша аяқталды</translation>
    </message>
    <message>
        <source>Modems are not started</source>
        <translation>Модемдер іске қосылмаған</translation>
    </message>
    <message>
        <source>Watchdogs are not started</source>
        <translation>Күзет таймерлері іске қосылмаған</translation>
    </message>
    <message>
        <source>Printers are not started</source>
        <translation>Принтерлер іске қосылмаған</translation>
    </message>
    <message>
        <source>Acceptors are not started</source>
        <translation>Купюра қабылдағыштар іске қосылмаған</translation>
    </message>
</context>
</TS>
