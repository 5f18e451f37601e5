<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru_RU">
<context>
    <name>MainDialog</name>
    <message>
        <source>Tav test dialer</source>
        <translation>Tav: проверка дозвона</translation>
    </message>
    <message>
        <source>Modems</source>
        <translation>Модемы</translation>
    </message>
    <message>
        <source>Local network</source>
        <translation>Локальная сеть</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Закрыть</translation>
    </message>
    <message>
        <source>Connection on</source>
        <translation>Связь есть</translation>
    </message>
    <message>
        <source>Connection off</source>
        <translation>Связи нет</translation>
    </message>
    <message>
        <source>Settings saving error</source>
        <translation>Ошибка сохранения настроек</translation>
    </message>
    <message>
        <source>Modems settings saving error. Continue exit?</source>
        <translation>Не удалось сохранить настройки модемов. Всё равно выйти?</translation>
    </message>
    <message>
        <source>Test dealer closing</source>
        <translation>Завершение программы</translation>
    </message>
    <message>
        <source>Save modems settings?</source>
        <translation>Сохранить настройки модемов?</translation>
    </message>
    <message>
        <source>From test dealer</source>
        <translation>Из программы проверки дозвона</translation>
    </message>
</context>
<context>
    <name>ModemAckWidget</name>
    <message>
        <source>Form</source>
        <translation>Страница</translation>
    </message>
    <message>
        <source>Modem</source>
        <translation>Модем</translation>
    </message>
    <message>
        <source>Ask modem</source>
        <translation>Опросить</translation>
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
        <translation>Уровень сигнала</translation>
    </message>
</context>
<context>
    <name>ModemsWidget</name>
    <message>
        <source>Form</source>
        <translation>Страница</translation>
    </message>
    <message>
        <source>Dial test</source>
        <translation>Тест дозвона</translation>
    </message>
    <message>
        <source>Ask modem</source>
        <translation>Опрос</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Настройки</translation>
    </message>
    <message>
        <source>Save settings</source>
        <translation>Сохранить</translation>
    </message>
    <message>
        <source>From test dealer</source>
        <translation>Из программы проверки дозвона</translation>
    </message>
    <message>
        <source>Settings saving error</source>
        <translation>Ошибка сохранения настроек</translation>
    </message>
    <message>
        <source>Modems settings saving error</source>
        <translation>Не удалось сохранить настройки модемов</translation>
    </message>
</context>
<context>
    <name>SearchWidget</name>
    <message>
        <source>Form</source>
        <translation>Страница</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Имя</translation>
    </message>
    <message>
        <source>Main</source>
        <translation>Основное</translation>
    </message>
    <message>
        <source>Port</source>
        <translation>Порт</translation>
    </message>
    <message>
        <source>Baudrate</source>
        <translation>Скорость</translation>
    </message>
    <message>
        <source>User</source>
        <translation>Пользователь</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Пароль</translation>
    </message>
    <message>
        <source>Modem Only</source>
        <translation>Только модем</translation>
    </message>
    <message>
        <source>Additional</source>
        <translation>Дополнительно</translation>
    </message>
    <message>
        <source>Dial cmd</source>
        <translation>Команда набора</translation>
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
        <translation>Новый pppd</translation>
    </message>
    <message>
        <source>Stupid mode</source>
        <translation>Простой режим</translation>
    </message>
    <message>
        <source>Phones</source>
        <translation>Телефоны</translation>
    </message>
    <message>
        <source>APN</source>
        <translation>APN</translation>
    </message>
    <message>
        <source>No modems</source>
        <translation>Модемов нет</translation>
    </message>
    <message>
        <source>To modem only mode</source>
        <translation>Режим «Только модем»</translation>
    </message>
    <message>
        <source>Modem was switched to Modem Only mode. Replug modem, please.</source>
        <translation>Модем переключён в режим «Только модем». Отключите и снова подключите модем.</translation>
    </message>
</context>
<context>
    <name>ShortStringListEditor</name>
    <message>
        <source>Form</source>
        <translation>Страница</translation>
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
        <translation>Предупреждение</translation>
    </message>
    <message>
        <source>The application is already running!</source>
        <translation>Программа уже запущена!</translation>
    </message>
</context>
<context>
    <name>TestDialWidget</name>
    <message>
        <source>Form</source>
        <translation>Страница</translation>
    </message>
    <message>
        <source>Modem</source>
        <translation>Модем</translation>
    </message>
    <message>
        <source>Dial</source>
        <translation>Позвонить</translation>
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
        <translation>Подождите</translation>
    </message>
</context>
</TS>
