<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru_RU">
<context>
    <name>ModemsFinder</name>
    <message>
        <source>This machine has no serial ports. Is the modem plugged in?</source>
        <translation>На этом терминале нет последовательных портов. Подключён ли модем?</translation>
    </message>
    <message>
        <source>No modem answers on any port.</source>
        <translation>Ни на одном порту модем не отвечает.</translation>
    </message>
</context>
</TS>
