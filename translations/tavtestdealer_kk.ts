<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="kk_KZ">
<context>
    <name>MainDialog</name>
    <message>
        <source>Tav test dialer</source>
        <translation>Tav: қоңырау сынағы</translation>
    </message>
    <message>
        <source>Modems</source>
        <translation>Модемдер</translation>
    </message>
    <message>
        <source>Local network</source>
        <translation>Жергілікті желі</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Жабу</translation>
    </message>
    <message>
        <source>Connection on</source>
        <translation>Байланыс бар</translation>
    </message>
    <message>
        <source>Connection off</source>
        <translation>Байланыс жоқ</translation>
    </message>
    <message>
        <source>Settings saving error</source>
        <translation>Баптауларды сақтау қатесі</translation>
    </message>
    <message>
        <source>Modems settings saving error. Continue exit?</source>
        <translation>Модем баптауларын сақтау мүмкін болмады. Сонда да шығасыз ба?</translation>
    </message>
    <message>
        <source>Test dealer closing</source>
        <translation>Бағдарламаны жабу</translation>
    </message>
    <message>
        <source>Save modems settings?</source>
        <translation>Модем баптаулары сақталсын ба?</translation>
    </message>
    <message>
        <source>From test dealer</source>
        <translation>Қоңырау сынағы бағдарламасынан</translation>
    </message>
</context>
<context>
    <name>ModemAckWidget</name>
    <message>
        <source>Form</source>
        <translation>Бет</translation>
    </message>
    <message>
        <source>Modem</source>
        <translation>Модем</translation>
    </message>
    <message>
        <source>Ask modem</source>
        <translation>Сұрау</translation>
    </message>
    <message>
        <source>MCC</source>
        <translation>MCC</translation>
    </message>
    <message>
        <source>MNC</source>
        <translation>MNC</translation>
    </message>
    <message>
        <source>LAC</source>
        <translation>LAC</translation>
    </message>
    <message>
        <source>CID</source>
        <translation>CID</translation>
    </message>
    <message>
        <source>Operator</source>
        <translation>Оператор</translation>
    </message>
    <message>
        <source>Sim number</source>
        <translation>SIM нөмірі</translation>
    </message>
    <message>
        <source>Balance</source>
        <translation>Баланс</translation>
    </message>
    <message>
        <source>Signal level</source>
        <translation>Сигнал деңгейі</translation>
    </message>
</context>
<context>
    <name>ModemsWidget</name>
    <message>
        <source>Form</source>
        <translation>Бет</translation>
    </message>
    <message>
        <source>Dial test</source>
        <translation>Қоңырау шалу</translation>
    </message>
    <message>
        <source>Ask modem</source>
        <translation>Модем сұрау</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Баптаулар</translation>
    </message>
    <message>
        <source>Save settings</source>
        <translation>Сақтау</translation>
    </message>
    <message>
        <source>From test dealer</source>
        <translation>Қоңырау сынағы бағдарламасынан</translation>
    </message>
    <message>
        <source>Settings saving error</source>
        <translation>Баптауларды сақтау қатесі</translation>
    </message>
    <message>
        <source>Modems settings saving error</source>
        <translation>Модем баптауларын сақтау мүмкін болмады</translation>
    </message>
</context>
<context>
    <name>SearchWidget</name>
    <message>
        <source>Form</source>
        <translation>Бет</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Атауы</translation>
    </message>
    <message>
        <source>Main</source>
        <translation>Негізгі</translation>
    </message>
    <message>
        <source>Port</source>
        <translation>Порт</translation>
    </message>
    <message>
        <source>Baudrate</source>
        <translation>Жылдамдық</translation>
    </message>
    <message>
        <source>User</source>
        <translation>Пайдаланушы</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Құпиясөз</translation>
    </message>
    <message>
        <source>Modem Only</source>
        <translation>Тек модем</translation>
    </message>
    <message>
        <source>Additional</source>
        <translation>Қосымша</translation>
    </message>
    <message>
        <source>Dial cmd</source>
        <translation>Теру командасы</translation>
    </message>
    <message>
        <source>ISDN</source>
        <translation>ISDN</translation>
    </message>
    <message>
        <source>Modem Type</source>
        <translation>Модем түрі</translation>
    </message>
    <message>
        <source>New pppd</source>
        <translation>Жаңа pppd</translation>
    </message>
    <message>
        <source>Stupid mode</source>
        <translation>Қарапайым режим</translation>
    </message>
    <message>
        <source>Phones</source>
        <translation>Телефондар</translation>
    </message>
    <message>
        <source>APN</source>
        <translation>APN</translation>
    </message>
    <message>
        <source>No modems</source>
        <translation>Модем жоқ</translation>
    </message>
    <message>
        <source>To modem only mode</source>
        <translation>«Тек модем» режимі</translation>
    </message>
    <message>
        <source>Modem was switched to Modem Only mode. Replug modem, please.</source>
        <translation>Модем «Тек модем» режиміне ауыстырылды. Модемді ажыратып, қайта қосыңыз.</translation>
    </message>
</context>
<context>
    <name>ShortStringListEditor</name>
    <message>
        <source>Form</source>
        <translation>Бет</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
</context>
<context>
    <name>TestDealerRoot</name>
    <message>
        <source>Warning</source>
        <translation>Ескерту</translation>
    </message>
    <message>
        <source>The application is already running!</source>
        <translation>Бағдарлама іске қосылып тұр!</translation>
    </message>
</context>
<context>
    <name>TestDialWidget</name>
    <message>
        <source>Form</source>
        <translation>Бет</translation>
    </message>
    <message>
        <source>Modem</source>
        <translation>Модем</translation>
    </message>
    <message>
        <source>Dial</source>
        <translation>Қоңырау</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Тоқтату</translation>
    </message>
</context>
<context>
    <name>WaitDialog</name>
    <message>
        <source>Dialog</source>
        <translation>Күте тұрыңыз</translation>
    </message>
</context>
</TS>
