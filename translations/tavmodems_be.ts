<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="be_BY">
<context>
    <name>ModemsFinder</name>
    <message>
        <source>This machine has no serial ports. Is the modem plugged in?</source>
        <translation>На гэтым тэрмінале няма паслядоўных партоў. Ці падключаны мадэм?</translation>
    </message>
    <message>
        <source>No modem answers on any port.</source>
        <translation>Ні на адным порце мадэм не адказвае.</translation>
    </message>
</context>
</TS>
