<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="uz_UZ">
<context>
    <name>ModemsFinder</name>
    <message>
        <source>This machine has no serial ports. Is the modem plugged in?</source>
        <translation>Bu terminalda ketma-ket portlar yoʻq. Modem ulanganmi?</translation>
    </message>
    <message>
        <source>No modem answers on any port.</source>
        <translation>Hech bir portda modem javob bermayapti.</translation>
    </message>
</context>
</TS>
