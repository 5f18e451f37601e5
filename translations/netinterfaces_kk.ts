<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="kk_KZ">
<context>
    <name>EthernetSettingsBox</name>
    <message>
        <source>GroupBox</source>
        <translation>Интерфейс баптаулары</translation>
    </message>
    <message>
        <source>Static settings</source>
        <translation>Қолмен баптау</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>Мекенжай</translation>
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
        <translation>Желі маскасы</translation>
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
        <translation>DNS IP-лері, бос орынмен</translation>
    </message>
    <message>
        <source>Customizing interface %1</source>
        <translation>%1 интерфейсін баптау</translation>
    </message>
    <message>
        <source>DHCP</source>
        <translation>DHCP</translation>
    </message>
    <message>
        <source>STATIC</source>
        <translation>ҚОЛМЕН</translation>
    </message>
</context>
<context>
    <name>EthernetWidget</name>
    <message>
        <source>Form</source>
        <translation>Бет</translation>
    </message>
    <message>
        <source>Reload
interfaces</source>
        <translation>Тізімді
жаңарту</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Қолдану</translation>
    </message>
    <message>
        <source>Select interface</source>
        <translation>Интерфейс таңдаңыз</translation>
    </message>
    <message>
        <source>Network settings applying</source>
        <translation>Желі баптауларын қолдану</translation>
    </message>
    <message>
        <source>The network settings will reconfigures. continue?</source>
        <translation>Желі баптаулары өзгертіледі. Жалғастыру керек пе?</translation>
    </message>
</context>
</TS>
