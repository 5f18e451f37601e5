#include "atmodem.h"
#include "balancetext.h"

#include <QTest>

#include <cmath>
#include <random>

class TestBalanceText : public QObject
{
    Q_OBJECT

private slots:
    void findsBalance_data();
    void findsBalance();
    void findsNone_data();
    void findsNone();
    void survivesNoise();
};

// Answers in the words and forms of the networks of these countries, one peculiarity a row.
void TestBalanceText::findsBalance_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<double>("expected");
    const auto row = [](const char *name, const char *answer, double expected) {
        QTest::newRow(name) << QString::fromUtf8(answer) << expected;
    };
    row("Russian: Megafon", "Баланс: 150.50 р.", 150.5);
    row("Russian: comma", "Баланс 150,50 руб.", 150.5);
    row("Russian: Ваш", "Ваш баланс составляет 1234,56 рублей", 1234.56);
    row("Russian: whole", "Баланс: 300р", 300);
    row("Russian: zero", "Баланс: 0.00 р.", 0);
    row("Russian: rest on the account", "Остаток на счете 45.10 руб", 45.1);
    row("Russian: on the account", "На вашем счету 12 руб. 50 коп.", 12.5);
    row("Russian: behind the amount", "99,90 руб. на счету", 99.9);
    row("Russian: yo", "Ваш счёт: 10,5 р", 10.5);
    row("Russian: rouble sign", "Баланс: 1 500,75 ₽", 1500.75);
    row("Russian: blank thousands", "Баланс 12 345,67 руб", 12345.67);
    row("Russian: no-break blank", "Баланс 12\u00A0345,67 руб", 12345.67);
    row("Russian: narrow blank", "Баланс 1\u202F234\u202F567 руб", 1234567);
    row("Russian: minus sign", "Баланс: -25.40 р.", -25.4);
    row("Russian: true minus sign", "Баланс: \u221225,40 р.", -25.4);
    row("Russian: minus behind a blank", "Баланс: - 25.40 р.", -25.4);
    row("Russian: minus right at the number", "Баланс -25.40 р.", -25.4);
    row("Russian: minus as a word", "Баланс минус 25,40 руб.", -25.4);
    row("Russian: minus as a word, capital", "Ваш баланс: Минус 5 руб 20 коп", -5.2);
    row("Russian: dash is no minus", "Баланс - 25.40 р.", 25.4);
    row("Russian: long dash is no minus", "Баланс — 25,40 р.", 25.4);
    row("Russian: dash without blanks is no minus", "Баланс-25.40 р.", 25.4);
    row("Russian: date in front", "На 20.11.2026 баланс 150,50 руб.", 150.5);
    row("Russian: date and time between", "Баланс на 20.11.2026 12:30: 150,50 руб.", 150.5);
    row("Russian: short date between", "Баланс на 20.11: 150 руб.", 150);
    row("Russian: ISO date", "2026-11-20 баланс 7.10 р", 7.1);
    row("Russian: day and month", "Баланс на 20 ноября 150 руб.", 150);
    row("Russian: bonus behind", "Баланс: 150 руб. Бонусы: 500", 150);
    row("Russian: bonus in front", "Бонусы: 500 р. Баланс: 150 руб.", 150);
    row("Russian: bonus balance", "Бонусный баланс 500 руб. Основной баланс 20 руб.", 20);
    row("Russian: minutes in front", "Остаток: 100 мин. Баланс 20,30р.", 20.3);
    row("Russian: minutes, megabytes, messages", "Баланс 20,30р. Остатки: 100 мин, 512 МБ, 50 SMS",
        20.3);
    row("Russian: gigabytes in front", "Остаток интернета 5 ГБ. Баланс: 99 р.", 99);
    row("Russian: tariff with a number", "Тариф \"Супер 500\". Баланс: 42 р.", 42);
    row("Russian: tariff with a price", "Тариф Всё 300 руб/мес. Баланс 42.15 р.", 42.15);
    row("Russian: price a day", "Списание 5 р. в день. На счету 42 р.", 42);
    row("Russian: operator with a number", "Tele2: баланс 42 руб.", 42);
    row("Russian: advertisement behind", "Баланс:42.00р. Подключи за 5 р. *111#", 42);
    row("Russian: advertisement in front", "Подключи опцию за 5 р.! Баланс: 42.00р.", 42);
    row("Russian: phone number", "Баланс 42 р. Вопросы: 8 800 550-05-00", 42);
    row("Russian: phone number in front", "+7 916 899-91-00: баланс 42 р.", 42);
    row("Russian: long number in front", "Номер 9168999100 баланс 42 р.", 42);
    row("Russian: code in front", "*100# Баланс 42,10", 42.1);
    row("Russian: percentage", "Скидка 50%! Баланс: 42 р.", 42);
    row("Russian: limit behind", "Баланс 42 р. Лимит 300 р.", 42);
    row("Russian: limit in front", "Кредитный лимит 300 р. Баланс 42 р.", 42);
    row("Russian: several lines", "Баланс:\n42.50 р.\nТариф: Смарт", 42.5);
    row("Russian: no currency", "Ваш баланс: 42", 42);
    row("Russian: amount that could be a day and a month", "Ваш баланс 10.05", 10.05);
    row("Russian: the subscriber's number between", "Баланс абонента +7(916)123-45-67: 30.5 р",
        30.5);
    row("Russian: the rouble's letter taken from the Latin ones", "Balans:35.50p.", 35.5);
    row("Russian: debt", "Задолженность: 50 руб.", -50);
    row("Russian: debt, in a sentence", "Ваша задолженность составляет 50,10 руб.", -50.1);
    row("Russian: no debt", "Задолженности нет. Баланс 50 руб.", 50);
    row("Russian: subscription fee in front", "Абон.плата 300 р. Баланс 50 р.", 50);
    row("Russian: millions", "Баланс 1 234 567,89 р", 1234567.89);
    row("Russian in Latin letters: Beeline", "Vash balans 150.50 rub.", 150.5);
    row("Russian in Latin letters: MTS", "Balans:150,50r,Tarif:Super MTS 2013", 150.5);
    row("Russian in Latin letters: ostatok", "Ostatok na schete 45.10 rub", 45.1);
    row("Russian in Latin letters: minus", "Balans: minus 12,30 rub.", -12.3);
    row("Russian in Latin letters: minus sign", "Balans:-12.3r", -12.3);
    row("Russian in Latin letters: bonus", "Balans 10.00 rub. Bonus 300", 10);
    row("Russian in Latin letters: kopecks", "Na schetu 12 rub. 05 kop.", 12.05);
    row("Russian in Latin letters: date", "Balans na 20/11/26: 33.10 rub", 33.1);
    row("Ukrainian: hryvnia", "Баланс 25,30 грн.", 25.3);
    row("Ukrainian: account", "На рахунку 25.30 грн. Діє до 20.11.2026", 25.3);
    row("Ukrainian: rest", "Залишок: 100 хв. На рахунку 7 грн 50 коп", 7.5);
    row("Ukrainian: minus", "Баланс: мінус 3,10 грн", -3.1);
    row("Ukrainian: bonus", "Баланс 25.30 грн, бонуси 100 грн", 25.3);
    row("Ukrainian in Latin letters: rahunok", "Na rahunku 25.30 grn. Bonus 10.00", 25.3);
    row("Ukrainian in Latin letters: zalyshok", "Zalyshok na rahunku: 5,05 UAH", 5.05);
    row("Belarusian: rouble", "Баланс 5,43 BYN", 5.43);
    row("Belarusian: words", "На рахунку 5.43 руб. Дзейнічае да 20.11.2026", 5.43);
    row("Belarusian: rest", "Рэшт: 12,00 бел. руб.", 12);
    row("Belarusian: minus", "Баланс: мінус 1,20 BYN", -1.2);
    row("Belarusian in Latin letters: velcom", "Balans: 5.43 BYN, minut: 100", 5.43);
    row("Kazakh: tenge", "Сіздің теңгеріміңіз 1500 теңге", 1500);
    row("Kazakh: account", "Шотыңызда 1 500,50 тг бар", 1500.5);
    row("Kazakh: rest", "Қалдық: 250 тг. Бонус 100 тг", 250);
    row("Kazakh: minus", "Баланс: минус 50 теңге", -50);
    row("Kazakh: tenge sign", "Баланс 2 300 ₸", 2300);
    row("Kazakh in Latin letters: Kcell", "Balans: 1,500.50 KZT", 1500.5);
    row("Kazakh in Latin letters: Beeline", "Balans 320.00 tg. Paket: 5 GB", 320);
    row("Kazakh in Latin letters: shot", "Shotynyzda 75 tenge", 75);
    row("Uzbek: so'm", "Balansingiz: 15 000.50 so'm", 15000.5);
    row("Uzbek: so'm, other apostrophe", "Hisobingizda 15000 so\u2018m bor", 15000);
    row("Uzbek: qoldiq", "Qoldiq 2500 sum. 100 daqiqa, 500 MB", 2500);
    row("Uzbek: Cyrillic", "Ҳисобингизда 15000 сўм қолди", 15000);
    row("Uzbek: minus", "Balans: minus 300 so'm", -300);
    row("Uzbek: manfiy", "Hisobingiz: manfiy 300 so'm", -300);
    row("English: currency in front", "Your balance is $12.34", 12.34);
    row("English: code in front", "Balance: USD 12.34", 12.34);
    row("English: code in front, negative", "Balance: USD -12.34", -12.34);
    row("English: minus in front of the sign", "Your balance is -$12.34", -12.34);
    row("English: comma thousands", "Your balance is 1,234.50 UAH", 1234.5);
    row("English: comma thousands alone", "Account balance: 12,345 KZT", 12345);
    row("English: apostrophe thousands", "Balance 1'234.50 EUR", 1234.5);
    row("English: point thousands", "Balance 1.234,50 EUR", 1234.5);
    row("English: valid until", "Main balance: 10.00 EUR, valid until 20.11.2026", 10);
    row("English: bonus balance", "Bonus balance: 5.00, main balance: 10.00", 10);
    row("English: credit", "Your credit is 7.50 EUR", 7.5);
    row("English: minutes", "You have 100 min and 5 GB. Account: 3.20 EUR", 3.2);
    row("bare number", "150.50", 150.5);
    row("bare number, negative", "-150,50", -150.5);
    row("number and currency alone", "150 руб", 150);
    row("fraction of three digits", "Balans 0,125 rub", 0.125);
    row("kopecks after a full fraction do not add", "Баланс 10,50 руб. 5 коп.", 10.5);
}

void TestBalanceText::findsBalance()
{
    QFETCH(QString, answer);
    QFETCH(double, expected);
    const auto balance = findBalance(answer);
    QVERIFY(balance);
    QCOMPARE(*balance, expected);
    QCOMPARE(AtModem::parseModemBalance(answer), expected);
    QCOMPARE(std::signbit(*balance), expected < 0);
}

void TestBalanceText::findsNone_data()
{
    QTest::addColumn<QString>("answer");
    const auto row = [](const char *name, const char *answer) {
        QTest::newRow(name) << QString::fromUtf8(answer);
    };
    row("nothing", "");
    row("blanks", "  \n ");
    row("no number", "Услуга временно недоступна");
    row("empty amount", "Баланс:  руб.");
    row("request taken", "Ваш запрос принят, ожидайте SMS");
    row("phone number alone", "+79168999100");
    row("number of the caller", "Ваш номер 79168999100");
    row("date alone", "20.11.2026");
    row("time alone", "12:30");
    row("code alone", "*100#");
    row("minutes alone", "Остаток: 100 мин");
    row("megabytes alone", "Ostatok 512 MB");
    row("percentage alone", "Скидка 50%");
    row("bonuses alone", "Бонусы: 500 р.");
    row("bonus balance alone", "Бонусный баланс: 500 р.");
    row("points alone", "У вас 500 баллов");
    row("tariff alone", "Ваш тариф Супер 500");
    row("price alone", "Абонплата 300 руб");
    row("menu", "1. Баланс\n2. Тариф\n3. Услуги");
    row("menu in brackets", "1) Баланс\n2) Тариф\n3) Услуги");
    row("operator's name", "Tele2");
    row("generation", "Сеть 4G доступна");
    row("validity", "Действует до 20.11");
    row("error code", "Неизвестная ошибка. Код 17");
    row("endless number", "Баланс 9999999999999999999999999999999999999999");
}

void TestBalanceText::findsNone()
{
    QFETCH(QString, answer);
    const auto balance = findBalance(answer);
    QVERIFY2(!balance, qPrintable(QString::number(balance.value_or(0))));
    QVERIFY(std::isnan(AtModem::parseModemBalance(answer)));
}

void TestBalanceText::survivesNoise()
{
    const QStringList pieces{QStringLiteral("Баланс"), QStringLiteral("-"), QStringLiteral("1"),
        QStringLiteral("234"), QStringLiteral(","), QStringLiteral("."), QStringLiteral(" "),
        QStringLiteral("руб"), QStringLiteral("%"), QStringLiteral("бонус"), QStringLiteral(":"),
        QStringLiteral("\n"), QStringLiteral("мин"), QStringLiteral("+7"), QStringLiteral("*"),
        QStringLiteral("'"), QString(QChar(0xD800)), QString(QChar(QChar::Null))};
    std::mt19937 random(100);
    int found = 0;
    for (int round = 0; round < 2000; ++round) {
        QString text;
        for (unsigned int count = random() % 30; count > 0; --count)
            text
                += pieces.at(static_cast<int>(random() % static_cast<unsigned int>(pieces.size())));
        const auto balance = findBalance(text);
        if (balance) {
            ++found;
            QVERIFY(std::isfinite(*balance));
        }
    }
    QVERIFY(found > 0);
    for (const QString &piece : pieces)
        findBalance(piece.repeated(100000));
}

QTEST_APPLESS_MAIN(TestBalanceText)
#include "tst_balancetext.moc"
