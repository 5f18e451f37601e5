<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="uk_UA">
<context>
    <name>MainDialog</name>
    <message>
        <source>Tav test dialer</source>
        <translation>Tav: перевірка дозвону</translation>
    </message>
    <message>
        <source>Modems</source>
        <translation>Модеми</translation>
    </message>
    <message>
        <source>Local network</source>
        <translation>Локальна мережа</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Закрити</translation>
    </message>
    <message>
        <source>Connection on</source>
        <translation>Зв’язок є</translation>
    </message>
    <message>
        <source>Connection off</source>
        <translation>Зв’язку немає</translation>
    </message>
    <message>
        <source>Settings saving error</source>
        <translation>Помилка збереження налаштувань</translation>
    </message>
    <message>
        <source>Modems settings saving error. Continue exit?</source>
        <translation>Не вдалося зберегти налаштування модемів. Усе одно вийти?</translation>
    </message>
    <message>
        <source>Test dealer closing</source>
        <translation>Завершення програми</translation>
    </message>
    <message>
        <source>Save modems settings?</source>
        <translation>Зберегти налаштування модемів?</translation>
    </message>
    <message>
        <source>From test dealer</source>
        <translation>З програми перевірки дозвону</translation>
    </message>
</context>
<context>
    <name>ModemAckWidget</name>
    <message>
        <source>Form</source>
        <translation>Сторінка</translation>
    </message>
    <message>
        <source>Modem</source>
        <translation>Модем</translation>
    </message>
    <message>
        <source>Ask modem</source>
        <translation>Опитати</translation>
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
        <translation>Номер SIM</translation>
    </message>
    <message>
        <source>Balance</source>
        <translation>Баланс</translation>
    </message>
    <message>
        <source>Signal level</source>
        <translation>Рівень сигналу</translation>
    </message>
</context>
<context>
    <name>ModemsWidget</name>
    <message>
        <source>Form</source>
        <translation>Сторінка</translation>
    </message>
    <message>
        <source>Dial test</source>
        <translation>Тест дозвону</translation>
    </message>
    <message>
        <source>Ask modem</source>
        <translation>Опитати</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Налаштування</translation>
    </message>
    <message>
        <source>Save settings</source>
        <translation>Зберегти</translation>
    </message>
    <message>
        <source>From test dealer</source>
        <translation>З програми перевірки дозвону</translation>
    </message>
    <message>
        <source>Settings saving error</source>
        <translation>Помилка збереження налаштувань</translation>
    </message>
    <message>
        <source>Modems settings saving error</source>
        <translation>Не вдалося зберегти налаштування модемів</translation>
    </message>
</context>
<context>
    <name>SearchWidget</name>
    <message>
        <source>Form</source>
        <translation>Сторінка</translation>
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
        <translation>Основне</translation>
    </message>
    <message>
        <source>Port</source>
        <translation>Порт</translation>
    </message>
    <message>
        <source>Baudrate</source>
        <translation>Швидкість</translation>
    </message>
    <message>
        <source>User</source>
        <translation>Користувач</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Пароль</translation>
    </message>
    <message>
        <source>Modem Only</source>
        <translation>Лише модем</translation>
    </message>
    <message>
        <source>Additional</source>
        <translation>Додатково</translation>
    </message>
    <message>
        <source>Dial cmd</source>
        <translation>Команда набору</translation>
    </message>
    <message>
        <source>ISDN</source>
        <translation>ISDN</translation>
    </message>
    <message>
        <source>Modem Type</source>
        <translation>Тип модема</translation>
    </message>
    <message>
        <source>New pppd</source>
        <translation>Новий pppd</translation>
    </message>
    <message>
        <source>Stupid mode</source>
        <translation>Простий режим</translation>
    </message>
    <message>
        <source>Phones</source>
        <translation>Телефони</translation>
    </message>
    <message>
        <source>APN</source>
        <translation>APN</translation>
    </message>
    <message>
        <source>No modems</source>
        <translation>Модемів немає</translation>
    </message>
    <message>
        <source>To modem only mode</source>
        <translation>Режим «Лише модем»</translation>
    </message>
    <message>
        <source>Modem was switched to Modem Only mode. Replug modem, please.</source>
        <translation>Модем переведено в режим «Лише модем». Від’єднайте та знову під’єднайте модем.</translation>
    </message>
</context>
<context>
    <name>ShortStringListEditor</name>
    <message>
        <source>Form</source>
        <translation>Сторінка</translation>
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
        <translation>Попередження</translation>
    </message>
    <message>
        <source>The application is already running!</source>
        <translation>Програму вже запущено!</translation>
    </message>
</context>
<context>
    <name>TestDialWidget</name>
    <message>
        <source>Form</source>
        <translation>Сторінка</translation>
    </message>
    <message>
        <source>Modem</source>
        <translation>Модем</translation>
    </message>
    <message>
        <source>Dial</source>
        <translation>Подзвонити</translation>
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
        <translation>Зачекайте</translation>
    </message>
</context>
</TS>
