<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="kk_KZ">
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
        <translation>&amp;Болдырмау</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Қайтару</translation>
    </message>
    <message>
        <source>Cu&amp;t</source>
        <translation>Қ&amp;иып алу</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Көшіру</translation>
    </message>
    <message>
        <source>&amp;Paste</source>
        <translation>&amp;Енгізу</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Жою</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Барлығын таңдау</translation>
    </message>
</context>
<context>
    <name>QMessageBox</name>
    <message>
        <source>Show Details...</source>
        <translation>Толығырақ көрсету...</translation>
    </message>
    <message>
        <source>Hide Details...</source>
        <translation>Мәліметтерді жасыру...</translation>
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
        <translation>Сақтау</translation>
    </message>
    <message>
        <source>Save All</source>
        <translation>Барлығын сақтау</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Ашу</translation>
    </message>
    <message>
        <source>&amp;Yes</source>
        <translation>&amp;Иә</translation>
    </message>
    <message>
        <source>Yes to &amp;All</source>
        <translation>&amp;Барлығына иә</translation>
    </message>
    <message>
        <source>&amp;No</source>
        <translation>&amp;Жоқ</translation>
    </message>
    <message>
        <source>N&amp;o to All</source>
        <translation>Барлығына ж&amp;оқ</translation>
    </message>
    <message>
        <source>Abort</source>
        <translation>Үзу</translation>
    </message>
    <message>
        <source>Retry</source>
        <translation>Қайталау</translation>
    </message>
    <message>
        <source>Ignore</source>
        <translation>Елемеу</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Жабу</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Бас тарту</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Тастау</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Көмек</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Қолдану</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>Ысыру</translation>
    </message>
    <message>
        <source>Restore Defaults</source>
        <translation>Әдепкі мәндер</translation>
    </message>
</context>
<context>
    <name>QScrollBar</name>
    <message>
        <source>Scroll here</source>
        <translation>Осында айналдыру</translation>
    </message>
    <message>
        <source>Left edge</source>
        <translation>Сол жақ шет</translation>
    </message>
    <message>
        <source>Top</source>
        <translation>Басына</translation>
    </message>
    <message>
        <source>Right edge</source>
        <translation>Оң жақ шет</translation>
    </message>
    <message>
        <source>Bottom</source>
        <translation>Соңына</translation>
    </message>
    <message>
        <source>Page left</source>
        <translation>Бір бет солға</translation>
    </message>
    <message>
        <source>Page up</source>
        <translation>Бір бет жоғары</translation>
    </message>
    <message>
        <source>Page right</source>
        <translation>Бір бет оңға</translation>
    </message>
    <message>
        <source>Page down</source>
        <translation>Бір бет төмен</translation>
    </message>
    <message>
        <source>Scroll left</source>
        <translation>Солға айналдыру</translation>
    </message>
    <message>
        <source>Scroll up</source>
        <translation>Жоғары айналдыру</translation>
    </message>
    <message>
        <source>Scroll right</source>
        <translation>Оңға айналдыру</translation>
    </message>
    <message>
        <source>Scroll down</source>
        <translation>Төмен айналдыру</translation>
    </message>
</context>
<context>
    <name>QWidgetTextControl</name>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Болдырмау</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Қайтару</translation>
    </message>
    <message>
        <source>Cu&amp;t</source>
        <translation>Қ&amp;иып алу</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Көшіру</translation>
    </message>
    <message>
        <source>&amp;Paste</source>
        <translation>&amp;Енгізу</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Жою</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Барлығын таңдау</translation>
    </message>
    <message>
        <source>Copy &amp;Link Location</source>
        <translation>Сілтеме &amp;мекенжайын көшіру</translation>
    </message>
</context>
</TS>
