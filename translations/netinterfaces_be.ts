<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="be_BY">
<context>
    <name>EthernetSettingsBox</name>
    <message>
        <source>GroupBox</source>
        <translation>Налады інтэрфейсу</translation>
    </message>
    <message>
        <source>Static settings</source>
        <translation>Налады ўручную</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>Адрас</translation>
    </message>
    <message>
        <source>900.900.900.900</source>
        <translation>900.900.900.900</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Netmask</source>
        <translation>Маска сеткі</translation>
    </message>
    <message>
        <source>Gateway</source>
        <translation>Шлюз</translation>
    </message>
    <message>
        <source>DNS</source>
        <translation>DNS</translation>
    </message>
    <message>
        <source>space separated DNS IP addresses</source>
        <translation>IP-адрасы DNS праз прабел</translation>
    </message>
    <message>
        <source>Customizing interface %1</source>
        <translation>Налада інтэрфейсу %1</translation>
    </message>
    <message>
        <source>DHCP</source>
        <translation>DHCP</translation>
    </message>
    <message>
        <source>STATIC</source>
        <translation>УРУЧНУЮ</translation>
    </message>
</context>
<context>
    <name>EthernetWidget</name>
    <message>
        <source>Form</source>
        <translation>Старонка</translation>
    </message>
    <message>
        <source>Reload
interfaces</source>
        <translation>Абнавіць
інтэрфейсы</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Ужыць</translation>
    </message>
    <message>
        <source>Select interface</source>
        <translation>Выберыце інтэрфейс</translation>
    </message>
    <message>
        <source>Network settings applying</source>
        <translation>Ужыванне налад сеткі</translation>
    </message>
    <message>
        <source>The network settings will reconfigures. continue?</source>
        <translation>Налады сеткі будуць зменены. Працягнуць?</translation>
    </message>
</context>
</TS>
