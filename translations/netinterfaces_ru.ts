<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru_RU">
<context>
    <name>EthernetSettingsBox</name>
    <message>
        <source>GroupBox</source>
        <translation>Настройки интерфейса</translation>
    </message>
    <message>
        <source>Static settings</source>
        <translation>Настройки вручную</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>Адрес</translation>
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
        <translation>Маска сети</translation>
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
        <translation>IP-адреса DNS через пробел</translation>
    </message>
    <message>
        <source>Customizing interface %1</source>
        <translation>Настройка %1</translation>
    </message>
    <message>
        <source>DHCP</source>
        <translation>DHCP</translation>
    </message>
    <message>
        <source>STATIC</source>
        <translation>ВРУЧНУЮ</translation>
    </message>
</context>
<context>
    <name>EthernetWidget</name>
    <message>
        <source>Form</source>
        <translation>Страница</translation>
    </message>
    <message>
        <source>Reload
interfaces</source>
        <translation>Обновить
интерфейсы</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Применить</translation>
    </message>
    <message>
        <source>Select interface</source>
        <translation>Выберите интерфейс</translation>
    </message>
    <message>
        <source>Network settings applying</source>
        <translation>Применение настроек сети</translation>
    </message>
    <message>
        <source>The network settings will reconfigures. continue?</source>
        <translation>Настройки сети будут изменены. Продолжить?</translation>
    </message>
</context>
</TS>
