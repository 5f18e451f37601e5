<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="be_BY">
<context>
    <name>ServicesController</name>
    <message>
        <source>Stop services</source>
        <translation>Спыненне службаў</translation>
    </message>
    <message>
        <source>Services were stopped by timeout</source>
        <translation>Спыненне службаў завершана па часе чакання</translation>
    </message>
    <message>
        <source>Modems are not stopped</source>
        <translation>Мадэмы не спынены</translation>
    </message>
    <message>
        <source>Watchdogs are not stopped</source>
        <translation>Вартавыя таймеры не спынены</translation>
    </message>
    <message>
        <source>Printers are not stopped</source>
        <translation>Прынтары не спынены</translation>
    </message>
    <message>
        <source>Acceptors are not stopped</source>
        <translation>Купюрапрымальнікі не спынены</translation>
    </message>
    <message>
        <source>Start services</source>
        <translation>Запуск службаў</translation>
    </message>
    <message>
        <source>Services were started by timeout</source>
        <translation>Запуск службаў завершаны па часе чакання</translation>
    </message>
    <message>
        <source>Modems are not started</source>
        <translation>Мадэмы не запушчаны</translation>
    </message>
    <message>
        <source>Watchdogs are not started</source>
        <translation>Вартавыя таймеры не запушчаны</translation>
    </message>
    <message>
        <source>Printers are not started</source>
        <translation>Прынтары не запушчаны</translation>
    </message>
    <message>
        <source>Acceptors are not started</source>
        <translation>Купюрапрымальнікі не запушчаны</translation>
    </message>
</context>
</TS>
