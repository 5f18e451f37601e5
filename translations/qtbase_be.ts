<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="be_BY">
<context>
    <name>QDialogButtonBox</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>QLineEdit</name>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Адрабіць</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Паўтарыць</translation>
    </message>
    <message>
        <source>Cu&amp;t</source>
        <translation>Выра&amp;заць</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Капіяваць</translation>
    </message>
    <message>
        <source>&amp;Paste</source>
        <translation>&amp;Уставіць</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Выдаліць</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Вылучыць усё</translation>
    </message>
</context>
<context>
    <name>QMessageBox</name>
    <message>
        <source>Show Details...</source>
        <translation>Паказаць падрабязнасці...</translation>
    </message>
    <message>
        <source>Hide Details...</source>
        <translation>Схаваць падрабязнасці...</translation>
    </message>
</context>
<context>
    <name>QPlatformTheme</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Захаваць</translation>
    </message>
    <message>
        <source>Save All</source>
        <translation>Захаваць усё</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Адкрыць</translation>
    </message>
    <message>
        <source>&amp;Yes</source>
        <translation>&amp;Так</translation>
    </message>
    <message>
        <source>Yes to &amp;All</source>
        <translation>Так для &amp;ўсіх</translation>
    </message>
    <message>
        <source>&amp;No</source>
        <translation>&amp;Не</translation>
    </message>
    <message>
        <source>N&amp;o to All</source>
        <translation>Н&amp;е для ўсіх</translation>
    </message>
    <message>
        <source>Abort</source>
        <translation>Перапыніць</translation>
    </message>
    <message>
        <source>Retry</source>
        <translation>Паўтарыць</translation>
    </message>
    <message>
        <source>Ignore</source>
        <translation>Прапусціць</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Закрыць</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Скасаваць</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Адхіліць</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Даведка</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Ужыць</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>Скінуць</translation>
    </message>
    <message>
        <source>Restore Defaults</source>
        <translation>Прадвызначаныя значэнні</translation>
    </message>
</context>
<context>
    <name>QScrollBar</name>
    <message>
        <source>Scroll here</source>
        <translation>Пракруціць сюды</translation>
    </message>
    <message>
        <source>Left edge</source>
        <translation>Левы край</translation>
    </message>
    <message>
        <source>Top</source>
        <translation>Уверх</translation>
    </message>
    <message>
        <source>Right edge</source>
        <translation>Правы край</translation>
    </message>
    <message>
        <source>Bottom</source>
        <translation>Уніз</translation>
    </message>
    <message>
        <source>Page left</source>
        <translation>На старонку ўлева</translation>
    </message>
    <message>
        <source>Page up</source>
        <translation>На старонку ўверх</translation>
    </message>
    <message>
        <source>Page right</source>
        <translation>На старонку ўправа</translation>
    </message>
    <message>
        <source>Page down</source>
        <translation>На старонку ўніз</translation>
    </message>
    <message>
        <source>Scroll left</source>
        <translation>Пракруціць улева</translation>
    </message>
    <message>
        <source>Scroll up</source>
        <translation>Пракруціць уверх</translation>
    </message>
    <message>
        <source>Scroll right</source>
        <translation>Пракруціць управа</translation>
    </message>
    <message>
        <source>Scroll down</source>
        <translation>Пракруціць уніз</translation>
    </message>
</context>
<context>
    <name>QWidgetTextControl</name>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Адрабіць</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Паўтарыць</translation>
    </message>
    <message>
        <source>Cu&amp;t</source>
        <translation>Выра&amp;заць</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Капіяваць</translation>
    </message>
    <message>
        <source>&amp;Paste</source>
        <translation>&amp;Уставіць</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Выдаліць</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Вылучыць усё</translation>
    </message>
    <message>
        <source>Copy &amp;Link Location</source>
        <translation>Капіяваць адрас &amp;спасылкі</translation>
    </message>
</context>
</TS>
