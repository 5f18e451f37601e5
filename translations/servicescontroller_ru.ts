<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru_RU">
<context>
    <name>ServicesController</name>
    <message>
        <source>Stop services</source>
        <translation>Остановка служб</translation>
    </message>
    <message>
        <source>Services were stopped by timeout</source>
        <translation>Остановка служб завершена по времени ожидания</translation>
    </message>
    <message>
        <source>Modems are not stopped</source>
        <translation>Модемы не остановлены</translation>
    </message>
    <message>
        <source>Watchdogs are not stopped</source>
        <translation>Сторожевые таймеры не остановлены</translation>
    </message>
    <message>
        <source>Printers are not stopped</source>
        <translation>Принтеры не остановлены</translation>
    </message>
    <message>
        <source>Acceptors are not stopped</source>
        <translation>Купюроприёмники не остановлены</translation>
    </message>
    <message>
        <source>Start services</source>
        <translation>Запуск служб</translation>
    </message>
    <message>
        <source>Services were started by timeout</source>
        <translation>Запуск служб завершён по времени ожидания</translation>
    </message>
    <message>
        <source>Modems are not started</source>
        <translation>Модемы не запущены</translation>
    </message>
    <message>
        <source>Watchdogs are not started</source>
        <translation>Сторожевые таймеры не запущены</translation>
    </message>
    <message>
        <source>Printers are not started</source>
        <translation>Принтеры не запущены</translation>
    </message>
    <message>
        <source>Acceptors are not started</source>
        <translation>Купюроприёмники не запущены</translation>
    </message>
</context>
</TS>
