<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="uz_UZ">
<context>
    <name>EthernetSettingsBox</name>
    <message>
        <source>GroupBox</source>
        <translation>Interfeys sozlamalari</translation>
    </message>
    <message>
        <source>Static settings</source>
        <translation>Qoʻlda sozlash</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>Manzil</translation>
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
        <translation>Tarmoq maskasi</translation>
    </message>
    <message>
        <source>Gateway</source>
        <translation>Shlyuz</translation>
    </message>
    <message>
        <source>DNS</source>
        <translation>DNS</translation>
    </message>
    <message>
        <source>space separated DNS IP addresses</source>
        <translation>DNS IP-lari, probel bilan</translation>
    </message>
    <message>
        <source>Customizing interface %1</source>
        <translation>%1 interfeysini sozlash</translation>
    </message>
    <message>
        <source>DHCP</source>
        <translation>DHCP</translation>
    </message>
    <message>
        <source>STATIC</source>
        <translation>QOʻLDA</translation>
    </message>
</context>
<context>
    <name>EthernetWidget</name>
    <message>
        <source>Form</source>
        <translation>Sahifa</translation>
    </message>
    <message>
        <source>Reload
interfaces</source>
        <translation>Roʻyxatni
yangilash</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Qoʻllash</translation>
    </message>
    <message>
        <source>Select interface</source>
        <translation>Interfeysni tanlang</translation>
    </message>
    <message>
        <source>Network settings applying</source>
        <translation>Tarmoq sozlamalarini qoʻllash</translation>
    </message>
    <message>
        <source>The network settings will reconfigures. continue?</source>
        <translation>Tarmoq sozlamalari oʻzgartiriladi. Davom etilsinmi?</translation>
    </message>
</context>
</TS>
