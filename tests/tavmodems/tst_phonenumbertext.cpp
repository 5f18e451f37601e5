#include "phonenumbertext.h"

#include <QTest>

#include <random>

class TestPhoneNumberText : public QObject
{
    Q_OBJECT

private slots:
    void findsNumbers_data();
    void findsNumbers();
    void survivesNoise();
};

// Answers as operators word them, in the languages of the balance texts.
void TestPhoneNumberText::findsNumbers_data()
{
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const char *expected, const char *text) {
        QTest::newRow(name) << QString::fromUtf8(expected) << QString::fromUtf8(text);
    };
    row("number alone", "79161234567", "79161234567");
    row("with plus", "+79161234567", "+79161234567");
    row("Russian", "79161234567", "Ваш номер 79161234567");
    row("Russian, in groups", "+79161234567", "Ваш номер: +7 (916) 123-45-67.");
    row("Russian, without spaces", "89161234567", "Ваш федеральный номер - 8(916)1234567");
    row("transliterated", "9161234567", "Vash nomer 9161234567");
    row("Ukrainian", "380501234567", "Ваш номер телефону: 380501234567");
    row("Kazakh", "77011234567", "Сіздің нөміріңіз: 77011234567");
    row("Uzbek", "998901234567", "Sizning raqamingiz: 998901234567");
    row("Belarusian", "+375291234567", "Ваш нумар: +375 29 123-45-67");
    row("English", "447700900123", "Your number is 447700900123");
    row("with a hard blank", "+79161234567", "Номер: +7\u00a0916\u00a0123\u00a045\u00a067");
    row("the one with plus", "+79161234567", "Заявка 1234567890, номер +79161234567");
    row("the one that is named", "79161234567", "Заявка 1234567890. Ваш номер 79161234567");
    row("the first when none is named", "79161234567", "79161234567 / 79161234568");
    row("text behind it", "79161234567", "79161234567 - это Ваш номер. Инфо 0611");
    row("balance in front", "79161234567", "Баланс 100.50 р. Номер 79161234567");
    row("service number", "", "Ваш запрос принят. Инфо: 0890");
    row("USSD codes", "", "Наберите *111*0887123456# или *100#");
    row("date and time", "", "20.11.2026 12:00:00 запрос принят");
    row("date of digits", "", "Запрос от 2026-11-20 принят");
    row("an amount", "", "Баланс 1000000000.50 р.");
    row("an IP address", "", "192.168.100.100");
    row("longer than any number", "", "89701012345678901234");
    row("within a word", "", "ID79161234567X");
    row("within an address", "", "http://x.ru/79161234567");
    row("empty", "", "");
}

void TestPhoneNumberText::findsNumbers()
{
    QFETCH(QString, text);
    QTEST(findPhoneNumber(text).value_or(QString()), "expected");
}

void TestPhoneNumberText::survivesNoise()
{
    std::mt19937 random(1);
    const QString characters = QStringLiteral("0123456789+()- *#.,:номерa\u00a0\n");
    for (int round = 0; round < 2000; ++round) {
        QString text;
        for (unsigned length = random() % 200; length > 0; --length)
            text += characters.at(static_cast<int>(random() % unsigned(characters.size())));
        const auto number = findPhoneNumber(text);
        QVERIFY(!number || (number->size() >= 9 && number->size() <= 16));
    }
    QVERIFY(!findPhoneNumber(QString(1000000, QLatin1Char('1'))));
}

QTEST_APPLESS_MAIN(TestPhoneNumberText)

#include "tst_phonenumbertext.moc"
