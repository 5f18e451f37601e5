<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="uz_UZ">
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
        <translation>&amp;Bekor qilish</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Qaytarish</translation>
    </message>
    <message>
        <source>Cu&amp;t</source>
        <translation>K&amp;esib olish</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Nusxalash</translation>
    </message>
    <message>
        <source>&amp;Paste</source>
        <translation>&amp;Qoʻyish</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Oʻchirish</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Hammasini tanlash</translation>
    </message>
</context>
<context>
    <name>QMessageBox</name>
    <message>
        <source>Show Details...</source>
        <translation>Tafsilotlarni koʻrsatish...</translation>
    </message>
    <message>
        <source>Hide Details...</source>
        <translation>Tafsilotlarni yashirish...</translation>
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
        <translation>Saqlash</translation>
    </message>
    <message>
        <source>Save All</source>
        <translation>Hammasini saqlash</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Ochish</translation>
    </message>
    <message>
        <source>&amp;Yes</source>
        <translation>&amp;Ha</translation>
    </message>
    <message>
        <source>Yes to &amp;All</source>
        <translation>&amp;Hammasiga ha</translation>
    </message>
    <message>
        <source>&amp;No</source>
        <translation>&amp;Yoʻq</translation>
    </message>
    <message>
        <source>N&amp;o to All</source>
        <translation>Hammasiga y&amp;oʻq</translation>
    </message>
    <message>
        <source>Abort</source>
        <translation>Toʻxtatish</translation>
    </message>
    <message>
        <source>Retry</source>
        <translation>Takrorlash</translation>
    </message>
    <message>
        <source>Ignore</source>
        <translation>Oʻtkazib yuborish</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Yopish</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Bekor qilish</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Voz kechish</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Yordam</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Qoʻllash</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>Tiklash</translation>
    </message>
    <message>
        <source>Restore Defaults</source>
        <translation>Standart qiymatlar</translation>
    </message>
</context>
<context>
    <name>QScrollBar</name>
    <message>
        <source>Scroll here</source>
        <translation>Shu yerga aylantirish</translation>
    </message>
    <message>
        <source>Left edge</source>
        <translation>Chap chekka</translation>
    </message>
    <message>
        <source>Top</source>
        <translation>Boshiga</translation>
    </message>
    <message>
        <source>Right edge</source>
        <translation>Oʻng chekka</translation>
    </message>
    <message>
        <source>Bottom</source>
        <translation>Oxiriga</translation>
    </message>
    <message>
        <source>Page left</source>
        <translation>Bir sahifa chapga</translation>
    </message>
    <message>
        <source>Page up</source>
        <translation>Bir sahifa yuqoriga</translation>
    </message>
    <message>
        <source>Page right</source>
        <translation>Bir sahifa oʻngga</translation>
    </message>
    <message>
        <source>Page down</source>
        <translation>Bir sahifa pastga</translation>
    </message>
    <message>
        <source>Scroll left</source>
        <translation>Chapga aylantirish</translation>
    </message>
    <message>
        <source>Scroll up</source>
        <translation>Yuqoriga aylantirish</translation>
    </message>
    <message>
        <source>Scroll right</source>
        <translation>Oʻngga aylantirish</translation>
    </message>
    <message>
        <source>Scroll down</source>
        <translation>Pastga aylantirish</translation>
    </message>
</context>
<context>
    <name>QWidgetTextControl</name>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Bekor qilish</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Qaytarish</translation>
    </message>
    <message>
        <source>Cu&amp;t</source>
        <translation>K&amp;esib olish</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Nusxalash</translation>
    </message>
    <message>
        <source>&amp;Paste</source>
        <translation>&amp;Qoʻyish</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Oʻchirish</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Hammasini tanlash</translation>
    </message>
    <message>
        <source>Copy &amp;Link Location</source>
        <translation>&amp;Havola manzilini nusxalash</translation>
    </message>
</context>
</TS>
