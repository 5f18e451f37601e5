<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="be_BY">
<context>
    <name>MainDialog</name>
    <message>
        <source>Tav test dialer</source>
        <translation>Tav: праверка дазвону</translation>
    </message>
    <message>
        <source>Modems</source>
        <translation>Мадэмы</translation>
    </message>
    <message>
        <source>Local network</source>
        <translation>Лакальная сетка</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Закрыць</translation>
    </message>
    <message>
        <source>Connection on</source>
        <translation>Сувязь ёсць</translation>
    </message>
    <message>
        <source>Connection off</source>
        <translation>Сувязі няма</translation>
    </message>
    <message>
        <source>Settings saving error</source>
        <translation>Памылка захавання налад</translation>
    </message>
    <message>
        <source>Modems settings saving error. Continue exit?</source>
        <translation>Не ўдалося захаваць налады мадэмаў. Усё роўна выйсці?</translation>
    </message>
    <message>
        <source>Test dealer closing</source>
        <translation>Завяршэнне праграмы</translation>
    </message>
    <message>
        <source>Save modems settings?</source>
        <translation>Захаваць налады мадэмаў?</translation>
    </message>
    <message>
        <source>From test dealer</source>
        <translation>З праграмы праверкі дазвону</translation>
    </message>
</context>
<context>
    <name>ModemAckWidget</name>
    <message>
        <source>Form</source>
        <translation>Старонка</translation>
    </message>
    <message>
        <source>Modem</source>
        <translation>Мадэм</translation>
    </message>
    <message>
        <source>Ask modem</source>
        <translation>Апытаць</translation>
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
        <translation>Аператар</translation>
    </message>
    <message>
        <source>Sim number</source>
        <translation>Нумар SIM</translation>
    </message>
    <message>
        <source>Balance</source>
        <translation>Баланс</translation>
    </message>
    <message>
        <source>Signal level</source>
        <translation>Узровень сігналу</translation>
    </message>
</context>
<context>
    <name>ModemsWidget</name>
    <message>
        <source>Form</source>
        <translation>Старонка</translation>
    </message>
    <message>
        <source>Dial test</source>
        <translation>Тэст дазвону</translation>
    </message>
    <message>
        <source>Ask modem</source>
        <translation>Апытаць</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Налады</translation>
    </message>
    <message>
        <source>Save settings</source>
        <translation>Захаваць</translation>
    </message>
    <message>
        <source>From test dealer</source>
        <translation>З праграмы праверкі дазвону</translation>
    </message>
    <message>
        <source>Settings saving error</source>
        <translation>Памылка захавання налад</translation>
    </message>
    <message>
        <source>Modems settings saving error</source>
        <translation>Не ўдалося захаваць налады мадэмаў</translation>
    </message>
</context>
<context>
    <name>SearchWidget</name>
    <message>
        <source>Form</source>
        <translation>Старонка</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Назва</translation>
    </message>
    <message>
        <source>Main</source>
        <translation>Асноўнае</translation>
    </message>
    <message>
        <source>Port</source>
        <translation>Порт</translation>
    </message>
    <message>
        <source>Baudrate</source>
        <translation>Хуткасць</translation>
    </message>
    <message>
        <source>User</source>
        <translation>Карыстальнік</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Пароль</translation>
    </message>
    <message>
        <source>Modem Only</source>
        <translation>Толькі мадэм</translation>
    </message>
    <message>
        <source>Additional</source>
        <translation>Дадаткова</translation>
    </message>
    <message>
        <source>Dial cmd</source>
        <translation>Каманда набору</translation>
    </message>
    <message>
        <source>ISDN</source>
        <translation>ISDN</translation>
    </message>
    <message>
        <source>Modem Type</source>
        <translation>Тып мадэма</translation>
    </message>
    <message>
        <source>New pppd</source>
        <translation>Новы pppd</translation>
    </message>
    <message>
        <source>Stupid mode</source>
        <translation>Просты рэжым</translation>
    </message>
    <message>
        <source>Phones</source>
        <translation>Тэлефоны</translation>
    </message>
    <message>
        <source>APN</source>
        <translation>APN</translation>
    </message>
    <message>
        <source>No modems</source>
        <translation>Мадэмаў няма</translation>
    </message>
    <message>
        <source>To modem only mode</source>
        <translation>Рэжым «Толькі мадэм»</translation>
    </message>
    <message>
        <source>Modem was switched to Modem Only mode. Replug modem, please.</source>
        <translation>Мадэм пераключаны ў рэжым «Толькі мадэм». Адключыце і зноў падключыце мадэм.</translation>
    </message>
</context>
<context>
    <name>ShortStringListEditor</name>
    <message>
        <source>Form</source>
        <translation>Старонка</translation>
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
        <translation>Папярэджанне</translation>
    </message>
    <message>
        <source>The application is already running!</source>
        <translation>Праграма ўжо запушчана!</translation>
    </message>
</context>
<context>
    <name>TestDialWidget</name>
    <message>
        <source>Form</source>
        <translation>Старонка</translation>
    </message>
    <message>
        <source>Modem</source>
        <translation>Мадэм</translation>
    </message>
    <message>
        <source>Dial</source>
        <translation>Пазваніць</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Стоп</translation>
    </message>
</context>
<context>
    <name>WaitDialog</name>
    <message>
        <source>Dialog</source>
        <translation>Пачакайце</translation>
    </message>
</context>
</TS>
