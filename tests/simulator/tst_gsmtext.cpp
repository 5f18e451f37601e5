#include "gsmtext.h"

#include <QTest>

using gsmtext::Sms;

class TestGsmText : public QObject
{
    Q_OBJECT

private slots:
    void packing_data();
    void packing();
    void defaultAlphabet_data();
    void defaultAlphabet();
    void deliverPdu_data();
    void deliverPdu();
    void centreGoesInFront_data();
    void centreGoesInFront();
    void submitPdu_data();
    void submitPdu();
    void longTextsAreCutIntoParts();
    void timeZoneIsInQuarters();
};

void TestGsmText::packing_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("packed");
    QTest::newRow("hellohello") << "hellohello" << QByteArray("e8329bfd4697d9ec37");
    QTest::newRow("a USSD code") << "*100#" << QByteArray("aa180c3602");
    QTest::newRow("extension character") << QString::fromUtf8("€") << QByteArray("9b32");
    QTest::newRow("nothing") << "" << QByteArray();
}

void TestGsmText::packing()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, packed);
    const QByteArray septets = gsmtext::toSeptets(text);
    QCOMPARE(gsmtext::pack(septets).toHex(), packed);
    QCOMPARE(
        gsmtext::fromSeptets(gsmtext::unpack(QByteArray::fromHex(packed), septets.size())), text);
}

void TestGsmText::defaultAlphabet_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("plain");
    QTest::newRow("letters") << "Balance: 150.50" << true;
    QTest::newRow("Greek capitals") << QString::fromUtf8("ΔΩ") << true;
    QTest::newRow("brackets of the extension") << "[]{}" << true;
    QTest::newRow("Cyrillic") << QString::fromUtf8("Баланс") << false;
    QTest::newRow("the escape itself") << QString(QChar(0x1b)) << false;
}

void TestGsmText::defaultAlphabet()
{
    QFETCH(QString, text);
    QFETCH(bool, plain);
    QCOMPARE(gsmtext::isDefaultAlphabet(text), plain);
}

void TestGsmText::deliverPdu_data()
{
    QTest::addColumn<QString>("sender");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("pdu");
    QTest::newRow("number, default alphabet")
        << "+31641600986"
        << "How are you?"
        << QByteArray("00040B911346610089F60000208062917314080CC8F71D14969741F977FD07");
    // 49 bits are 13 semi-octets: the filling up to the octet does not count.
    QTest::newRow("name that fills no octet")
        << "Beeline"
        << "OK" << QByteArray("00040DD0C272999D76970100002080629173140802CF25");
    QTest::newRow("number without a country")
        << "900"
        << "OK" << QByteArray("0004038109F000002080629173140802CF25");
    QTest::newRow("surrogate pair") << "900" << QString::fromUtf8("👍")
                                    << QByteArray("0004038109F0000820806291731408"
                                                  "04D83DDC4D");
    QTest::newRow("name, UCS2") << "MTS" << QString::fromUtf8("Да")
                                << QByteArray("000406D04DEA1400082080629173140804"
                                              "04140430");
}

void TestGsmText::deliverPdu()
{
    QFETCH(QString, sender);
    QFETCH(QString, text);
    QFETCH(QByteArray, pdu);
    Sms sms;
    sms.sender = sender;
    sms.text = text;
    sms.ucs2 = !gsmtext::isDefaultAlphabet(text);
    sms.time = QDateTime(QDate(2002, 8, 26), QTime(19, 37, 41), Qt::OffsetFromUTC, 20 * 3600);
    QCOMPARE(gsmtext::storedPdu(sms), pdu);
}

void TestGsmText::centreGoesInFront_data()
{
    QTest::addColumn<QString>("centre");
    QTest::addColumn<QByteArray>("address");
    QTest::newRow("none") << "" << QByteArray("00");
    QTest::newRow("international") << "+31624000000" << QByteArray("07911326040000F0");
    QTest::newRow("odd number of digits") << "+79168999100" << QByteArray("07919761989901F0");
    QTest::newRow("national") << "0900" << QByteArray("03819000");
}

void TestGsmText::centreGoesInFront()
{
    QFETCH(QString, centre);
    QFETCH(QByteArray, address);
    Sms sms;
    sms.sender = QStringLiteral("+31641600986");
    sms.text = QStringLiteral("How are you?");
    sms.time = QDateTime(QDate(2002, 8, 26), QTime(19, 37, 41), Qt::OffsetFromUTC, 20 * 3600);
    QCOMPARE(gsmtext::storedPdu(sms, centre),
        address + "040B911346610089F60000208062917314080CC8F71D14969741F977FD07");
}

void TestGsmText::submitPdu_data()
{
    QTest::addColumn<QByteArray>("pdu");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<QString>("destination");
    QTest::addColumn<QString>("text");
    QTest::newRow("with relative validity")
        << QByteArray("0011000B916407281553F80000AA0AE8329BFD4697D9EC37") << true << "+46708251358"
        << "hellohello";
    QTest::newRow("without validity")
        << QByteArray("000100039111F10000059DF29CED06") << true << "+111"
        << gsmtext::fromSeptets(gsmtext::unpack(QByteArray::fromHex("9df29ced06"), 5));
    QTest::newRow("UCS2") << QByteArray("000100039111F100080404140430") << true << "+111"
                          << QString::fromUtf8("Да");
    // 3GPP TS 23.040, 9.1.2.3: the star and the hash are ten and eleven.
    QTest::newRow("to a number with star and hash")
        << QByteArray("00010005811A01FB000000") << true << "*110#"
        << "";
    QTest::newRow("a received one") << QByteArray("00040B911346610089F60000") << false << ""
                                    << "";
    QTest::newRow("cut off") << QByteArray("0011000B91640728") << false << ""
                             << "";
    QTest::newRow("nothing") << QByteArray() << false << ""
                             << "";
}

void TestGsmText::submitPdu()
{
    QFETCH(QByteArray, pdu);
    QFETCH(bool, valid);
    QString destination;
    QString text;
    int octets = 0;
    QCOMPARE(gsmtext::readSubmitPdu(pdu, &destination, &text, &octets), valid);
    if (!valid)
        return;
    QTEST(destination, "destination");
    QTEST(text, "text");
    QCOMPARE(octets, pdu.size() / 2 - 1);
}

void TestGsmText::longTextsAreCutIntoParts()
{
    const QString plain(161, QLatin1Char('a'));
    QCOMPARE(gsmtext::smsParts(QString(160, QLatin1Char('a'))).size(), 1);
    QCOMPARE(gsmtext::smsParts(plain).size(), 2);
    QCOMPARE(gsmtext::smsParts(plain).first().size(), 153);
    QCOMPARE(gsmtext::smsParts(plain).join(QString()), plain);
    QCOMPARE(gsmtext::smsParts(QString(71, QChar(0x0416))).first().size(), 67);
    const QString pairs = QString::fromUtf8("👍").repeated(36);
    QCOMPARE(gsmtext::smsParts(pairs).first().size(), 66); // the 67th is half a pair
    QCOMPARE(gsmtext::smsParts(pairs).join(QString()), pairs);

    Sms part;
    part.sender = QStringLiteral("1");
    part.text = QStringLiteral("ab");
    part.time = QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5), Qt::UTC);
    part.part = 2;
    part.parts = 2;
    part.reference = 7;
    // The header flag, a header of six octets and one bit of filling before the text.
    QCOMPARE(gsmtext::storedPdu(part),
        QByteArray("00440181F10000621020304050000905000307020"
                   "2C262"));
}

void TestGsmText::timeZoneIsInQuarters()
{
    const QDateTime west(QDate(2026, 1, 2), QTime(3, 4, 5), Qt::OffsetFromUTC, -(3 * 3600 + 1800));
    QCOMPARE(gsmtext::timeText(west), QByteArray("26/01/02,03:04:05-14"));
}

QTEST_APPLESS_MAIN(TestGsmText)

#include "tst_gsmtext.moc"
