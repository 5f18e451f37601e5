<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="kk_KZ">
<context>
    <name>ModemsFinder</name>
    <message>
        <source>This machine has no serial ports. Is the modem plugged in?</source>
        <translation>Бұл терминалда тізбекті порттар жоқ. Модем қосылған ба?</translation>
    </message>
    <message>
        <source>No modem answers on any port.</source>
        <translation>Ешбір портта модем жауап бермейді.</translation>
    </message>
</context>
</TS>
