<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="uk_UA">
<context>
    <name>ModemsFinder</name>
    <message>
        <source>This machine has no serial ports. Is the modem plugged in?</source>
        <translation>На цьому терміналі немає послідовних портів. Чи під’єднано модем?</translation>
    </message>
    <message>
        <source>No modem answers on any port.</source>
        <translation>На жодному порту модем не відповідає.</translation>
    </message>
</context>
</TS>
