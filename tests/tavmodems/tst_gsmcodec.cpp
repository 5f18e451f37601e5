#include "gsmcodec.h"

#include <QMap>
#include <QTest>

#include <limits>
#include <random>

Q_DECLARE_METATYPE(GsmLanguage)

class TestGsmCodec : public QObject
{
    Q_OBJECT

private slots:
    void packs_data();
    void packs();
    void packsBehindHeaders();
    void unpacksNothingThatIsNotThere();
    void readsCharacters_data();
    void readsCharacters();
    void readsEscapes_data();
    void readsEscapes();
    void encodes_data();
    void encodes();
    void tablesAreSound();
    void readsBack();
    void readsUcs2_data();
    void readsUcs2();
    void readsEightBit();
    void survivesNoise();
};

void TestGsmCodec::packs_data()
{
    QTest::addColumn<QByteArray>("septets");
    QTest::addColumn<QByteArray>("octets");
    // 23.038 6.1.2.1.1: bit a of character n+1 fills up the octet of character n.
    QTest::newRow("none") << QByteArray() << QByteArray();
    QTest::newRow("one") << QByteArray("1") << QByteArray("31");
    QTest::newRow("two, 6.1.2.3.1") << QByteArray("12") << QByteArray("3119");
    QTest::newRow("seven leave seven bits")
        << QByteArray("1234567") << QByteArray("31D98C56B3DD00");
    QTest::newRow("eight fill seven octets")
        << QByteArray("12345678") << QByteArray("31D98C56B3DD70");
    QTest::newRow("nine") << QByteArray("123456789") << QByteArray("31D98C56B3DD7039");
    QTest::newRow("the hello of every manual")
        << QByteArray("hellohello") << QByteArray("E8329BFD4697D9EC37");
}

void TestGsmCodec::packs()
{
    QFETCH(QByteArray, septets);
    QFETCH(QByteArray, octets);
    QCOMPARE(gsmcodec::packed(septets).toHex().toUpper(), octets);
    const auto back = gsmcodec::unpacked(QByteArray::fromHex(octets), septets.size());
    QVERIFY(back);
    QCOMPARE(*back, septets);
}

void TestGsmCodec::packsBehindHeaders()
{
    QByteArray all;
    for (int i = 0; i < 160; ++i)
        all.append(static_cast<char>(i % 128));
    for (int skip = 0; skip <= 6; ++skip) {
        for (int length = 0; length <= all.size(); ++length) {
            const QByteArray octets = gsmcodec::packed(all.left(length), skip);
            QCOMPARE(octets.size(), (skip + 7 * length + 7) / 8);
            QCOMPARE(gsmcodec::unpacked(octets, length, skip).value_or("none"), all.left(length));
        }
    }
    // One fill bit behind a header of six octets, as a concatenated message has it.
    QCOMPARE(gsmcodec::packed("A", 1).toHex(), QByteArray("82"));
}

void TestGsmCodec::unpacksNothingThatIsNotThere()
{
    const QByteArray seven(7, '\x55');
    QVERIFY(gsmcodec::unpacked(seven, 8));
    QVERIFY(!gsmcodec::unpacked(seven, 9));
    QVERIFY(!gsmcodec::unpacked(seven, 8, 1));
    QVERIFY(!gsmcodec::unpacked(QByteArray(), 1));
    QVERIFY(gsmcodec::unpacked(QByteArray(), 0));
    QVERIFY(!gsmcodec::unpacked(seven, -1));
    QVERIFY(!gsmcodec::unpacked(seven, 1, -1));
    QVERIFY(!gsmcodec::unpacked(seven, 1, 7));
    QVERIFY(!gsmcodec::unpacked(seven, std::numeric_limits<int>::max()));
}

void TestGsmCodec::readsCharacters_data()
{
    QTest::addColumn<QByteArray>("septets");
    QTest::addColumn<GsmLanguage>("language");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const char *hex, GsmLanguage language, const char *text) {
        QTest::newRow(name) << QByteArray::fromHex(hex) << language << QString::fromUtf8(text);
    };
    // Named after the clause of 23.038 that prints the table.
    row("6.2.1 first column", "000102030405060708090a0b0c0d0e0f", GsmLanguage::Default,
        "@£$¥èéùìòÇ\nØø\rÅå");
    row("6.2.1 second column", "101112131415161718191a1c1d1e1f", GsmLanguage::Default,
        "Δ_ΦΓΛΩΠΨΣΘΞÆæßÉ");
    row("6.2.1 ends of the letters", "405a5b5c5d5e5f607a7b7c7d7e7f", GsmLanguage::Default,
        "¡ZÄÖÑÜ§¿zäöñüà");
    row("6.2.1.1", "1b0a1b141b281b291b2f1b3c1b3d1b3e1b401b65", GsmLanguage::Default,
        "\f^{}\\[~]|€");
    row("A.3.1 Turkish", "04070b0c1c1d4060", GsmLanguage::Turkish, "€ıĞğŞşİç");
    row("A.2.1 Turkish", "1b471b491b531b631b671b691b73", GsmLanguage::Turkish, "ĞİŞçğış");
    row("A.2.2 Spanish", "1b091b411b491b4f1b551b611b691b6f1b75", GsmLanguage::Spanish, "çÁÍÓÚáíóú");
    row("A.3.3 Portuguese", "04060708090b0c0e0f121314151617181924405b5c5d606e7b7c7d7f",
        GsmLanguage::Portuguese, "êúíóçÔôÁáªÇÀ∞^\\€ÓºÍÃÕÚ~nãõ`à");
    row("A.2.3 Portuguese", "1b051b121b191b1f1b411b5b1b611b7b1b7f", GsmLanguage::Portuguese,
        "êΦΘÊÀÃÂãâ");
    row("A.3.4 Bengali", "000b22403d4e607b7f", GsmLanguage::Bengali, "ঁঌটবপ়ৎৗৱ");
    row("A.2.4 Bengali", "1b191b241b2b1b34", GsmLanguage::Bengali, "\u09E6\u09DF\u09F2\u09FA");
    row("A.3.5 Gujarati", "000c5b607f", GsmLanguage::Gujarati, "ઁઍૉૐ૱");
    row("A.3.6 Hindi", "000b13223c4e5f607b7f", GsmLanguage::Hindi, "ँऌओटऩ़्ॐॲॿ");
    row("A.2.6 Hindi", "1b191b1c1b261b2c1b3a", GsmLanguage::Hindi,
        "\u0964\u0966\u0951\u0958\u0971");
    row("A.3.7 Kannada", "0124607f", GsmLanguage::Kannada, "ಂಡೕೣ");
    row("A.3.8 Malayalam", "0148607f", GsmLanguage::Malayalam, "ംഴൗ൹");
    row("A.3.9 Oriya", "0049607f", GsmLanguage::Oriya, "ଁଵୖୣ");
    row("A.2.9 Oriya", "1b1c1b201b2a", GsmLanguage::Oriya, "୦୪ୟ");
    row("A.3.10 Punjabi", "0047607f", GsmLanguage::Punjabi, "\u0A01\u0A33\u0A51\u0A74");
    row("A.3.11 Tamil", "013c487f", GsmLanguage::Tamil, "ஂனழ௹");
    row("A.2.11 Tamil", "1b241b2e", GsmLanguage::Tamil, "௮௺");
    row("A.3.12 Telugu", "0012607f", GsmLanguage::Telugu, "ఁఒౕౣ");
    row("A.2.12 Telugu", "1b1c1b32", GsmLanguage::Telugu, "౦౿");
    row("A.3.13 Urdu", "000a0d102228292e404f5c7f", GsmLanguage::Urdu, "ا\n\rثڏ)(.صن\u064Dٰ");
    row("A.2.13 Urdu", "1b191b1c1b3f", GsmLanguage::Urdu, "\u0600۰۔");
}

void TestGsmCodec::readsCharacters()
{
    QFETCH(QByteArray, septets);
    QFETCH(GsmLanguage, language);
    QTEST(gsmcodec::decoded(septets, language, language), "text");
}

void TestGsmCodec::readsEscapes_data()
{
    QTest::addColumn<QByteArray>("septets");
    QTest::addColumn<QString>("text");
    QTest::newRow("unknown behind the escape: the main table's, 6.2.1.1") << QByteArray("\x1b"
                                                                                        "A")
                                                                          << QStringLiteral("A");
    QTest::newRow("two escapes: a blank, 6.2.1.1") << QByteArray("a\x1b\x1b"
                                                                 "b")
                                                   << QStringLiteral("a b");
    QTest::newRow("escape at the end") << QByteArray("a\x1b") << QStringLiteral("a");
    QTest::newRow("new line behind the escape") << QByteArray("\x1b\x0d") << QStringLiteral("\r");
    QTest::newRow("high bit is not a septet's") << QByteArray("\xc1") << QStringLiteral("A");
}

void TestGsmCodec::readsEscapes()
{
    QFETCH(QByteArray, septets);
    QTEST(gsmcodec::decoded(septets), "text");
}

void TestGsmCodec::encodes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("hex");
    QTest::newRow("letters") << QStringLiteral("Az") << QByteArray("417a");
    QTest::newRow("code") << QStringLiteral("*100#") << QByteArray("2a31303023");
    QTest::newRow("at sign") << QStringLiteral("@") << QByteArray("00");
    QTest::newRow("escaped") << QStringLiteral("€[") << QByteArray("1b651b3c");
    QTest::newRow("not in the alphabet") << QStringLiteral("Б") << QByteArray("none");
    QTest::newRow("NUL marks empty cells, it is no character")
        << QString(QChar(QChar::Null)) << QByteArray("none");
    QTest::newRow("escape is no character") << QStringLiteral("\x1b") << QByteArray("none");
}

void TestGsmCodec::encodes()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, hex);
    const auto septets = gsmcodec::encoded(text);
    QCOMPARE(septets ? septets->toHex() : QByteArray("none"), hex);
}

void TestGsmCodec::tablesAreSound()
{
    for (int id = 0; id <= 13; ++id) {
        const auto language = static_cast<GsmLanguage>(id);
        QVERIFY(gsmtables::isKnown(id));
        QMap<char16_t, int> times;
        for (const char16_t c : gsmtables::locking(language)) {
            if (c == gsmtables::kNone)
                continue;
            ++times[c];
            QVERIFY2(
                QChar::category(c) != QChar::Other_NotAssigned, qPrintable(QString::number(c, 16)));
        }
        for (auto it = times.cbegin(); it != times.cend(); ++it)
            QVERIFY2(it.value() == 1, qPrintable(QString::number(it.key(), 16)));
        for (const char16_t c : gsmtables::single(language))
            QVERIFY(QChar::category(c) != QChar::Other_NotAssigned);
        // A cell to escape with, and the ones that every table has.
        QCOMPARE(static_cast<int>(gsmtables::locking(language)[gsmtables::kEscape]), 0);
        QCOMPARE(static_cast<int>(gsmtables::single(language)[gsmtables::kEscape]), 0);
        for (char16_t digit = u'0'; digit <= u'9'; ++digit)
            QCOMPARE(gsmtables::locking(language)[digit], digit);
        for (char16_t letter = u'a'; letter <= u'z'; ++letter)
            QCOMPARE(gsmtables::locking(language)[letter], letter);
        QCOMPARE(gsmtables::single(language)[0x65], u'€');
    }
    QVERIFY(!gsmtables::isKnown(14));
    QVERIFY(!gsmtables::isKnown(-1));
}

void TestGsmCodec::readsBack()
{
    for (int locking = 0; locking <= 13; ++locking) {
        for (int single = 0; single <= 13; ++single) {
            const auto main = static_cast<GsmLanguage>(locking);
            const auto shifted = static_cast<GsmLanguage>(single);
            QString all;
            for (const char16_t c : gsmtables::locking(main))
                all += c == gsmtables::kNone ? QLatin1Char(' ') : QChar(c);
            for (const char16_t c : gsmtables::single(shifted))
                all += c == gsmtables::kNone ? QLatin1Char(' ') : QChar(c);
            const auto septets = gsmcodec::encoded(all, main, shifted);
            QVERIFY(septets);
            QCOMPARE(gsmcodec::decoded(*septets, main, shifted), all);
        }
    }
}

void TestGsmCodec::readsUcs2_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << QByteArray() << QString();
    QTest::newRow("Cyrillic") << QByteArray("04110430043b0430043d0441") << QStringLiteral("Баланс");
    QTest::newRow("pair of surrogates") << QByteArray("d83dde00") << QStringLiteral("😀");
    QTest::newRow("lone high surrogate") << QByteArray("d83d0041") << QStringLiteral("\uFFFDA");
    QTest::newRow("lone low surrogate") << QByteArray("de000041") << QStringLiteral("\uFFFDA");
    QTest::newRow("high surrogate at the end") << QByteArray("d83d") << QStringLiteral("\uFFFD");
    QTest::newRow("odd octet at the end") << QByteArray("004104") << QStringLiteral("A\uFFFD");
}

void TestGsmCodec::readsUcs2()
{
    QFETCH(QByteArray, hex);
    QFETCH(QString, text);
    QCOMPARE(gsmcodec::fromUcs2(QByteArray::fromHex(hex)), text);
    if (!text.contains(QChar::ReplacementCharacter))
        QCOMPARE(gsmcodec::toUcs2(text).toHex(), hex);
}

void TestGsmCodec::readsEightBit()
{
    QCOMPARE(gsmcodec::fromEightBit("caf\xe9"), QStringLiteral("café"));
}

void TestGsmCodec::survivesNoise()
{
    std::mt19937 random(23038);
    for (int round = 0; round < 2000; ++round) {
        QByteArray octets;
        const int size = static_cast<int>(random() % 200);
        for (int i = 0; i < size; ++i)
            octets.append(static_cast<char>(random()));
        const auto skip = static_cast<int>(random() % 8);
        const auto septets = gsmcodec::unpacked(octets, static_cast<int>(random() % 300), skip);
        const auto locking = static_cast<GsmLanguage>(random() % 14);
        const auto single = static_cast<GsmLanguage>(random() % 14);
        if (septets)
            QVERIFY(gsmcodec::decoded(*septets, locking, single).size() <= septets->size());
        QVERIFY(gsmcodec::decoded(octets, locking, single).size() <= octets.size());
        QCOMPARE(gsmcodec::fromUcs2(octets).size(), (octets.size() + 1) / 2);
    }
}

QTEST_APPLESS_MAIN(TestGsmCodec)
#include "tst_gsmcodec.moc"
