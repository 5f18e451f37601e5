<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="uk_UA">
<context>
    <name>EthernetSettingsBox</name>
    <message>
        <source>GroupBox</source>
        <translation>Налаштування інтерфейсу</translation>
    </message>
    <message>
        <source>Static settings</source>
        <translation>Налаштування вручну</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>Адреса</translation>
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
        <translation>Маска мережі</translation>
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
        <translation>Адреси DNS через пробіл</translation>
    </message>
    <message>
        <source>Customizing interface %1</source>
        <translation>Налаштування %1</translation>
    </message>
    <message>
        <source>DHCP</source>
        <translation>DHCP</translation>
    </message>
    <message>
        <source>STATIC</source>
        <translation>ВРУЧНУ</translation>
    </message>
</context>
<context>
    <name>EthernetWidget</name>
    <message>
        <source>Form</source>
        <translation>Сторінка</translation>
    </message>
    <message>
        <source>Reload
interfaces</source>
        <translation>Оновити
інтерфейси</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Застосувати</translation>
    </message>
    <message>
        <source>Select interface</source>
        <translation>Виберіть інтерфейс</translation>
    </message>
    <message>
        <source>Network settings applying</source>
        <translation>Застосування налаштувань мережі</translation>
    </message>
    <message>
        <source>The network settings will reconfigures. continue?</source>
        <translation>Налаштування мережі буде змінено. Продовжити?</translation>
    </message>
</context>
</TS>
