<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="uk_UA">
<context>
    <name>ServicesController</name>
    <message>
        <source>Stop services</source>
        <translation>Зупинка служб</translation>
    </message>
    <message>
        <source>Services were stopped by timeout</source>
        <translation>Зупинку служб завершено за часом очікування</translation>
    </message>
    <message>
        <source>Modems are not stopped</source>
        <translation>Модеми не зупинено</translation>
    </message>
    <message>
        <source>Watchdogs are not stopped</source>
        <translation>Сторожові таймери не зупинено</translation>
    </message>
    <message>
        <source>Printers are not stopped</source>
        <translation>Принтери не зупинено</translation>
    </message>
    <message>
        <source>Acceptors are not stopped</source>
        <translation>Купюроприймачі не зупинено</translation>
    </message>
    <message>
        <source>Start services</source>
        <translation>Запуск служб</translation>
    </message>
    <message>
        <source>Services were started by timeout</source>
        <translation>Запуск служб завершено за часом очікування</translation>
    </message>
    <message>
        <source>Modems are not started</source>
        <translation>Модеми не запущено</translation>
    </message>
    <message>
        <source>Watchdogs are not started</source>
        <translation>Сторожові таймери не запущено</translation>
    </message>
    <message>
        <source>Printers are not started</source>
        <translation>Принтери не запущено</translation>
    </message>
    <message>
        <source>Acceptors are not started</source>
        <translation>Купюроприймачі не запущено</translation>
    </message>
</context>
</TS>
