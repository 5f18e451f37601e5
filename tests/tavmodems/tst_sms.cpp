#include "gsmcodec.h"
#include "smsassembler.h"
#include "smscoding.h"
#include "smslisting.h"
#include "smspdu.h"

#include <QTest>

#include <random>

namespace {

using Lines = QList<QByteArray>;

const char CENTRE[] = "07919730071111F1"; // +79037011111
const char SENDER[] = "0B919761989901F0"; // +79168999100
const char NOON[] = "62110221000021"; // 2026-11-20 12:00:00 +03:00

QByteArray hexOctet(int value)
{
    return QByteArray(1, static_cast<char>(value)).toHex().toUpper();
}

// A received message; `length` in septets or octets as the coding has it.
QByteArray deliver(const QByteArray &coding, int length, const QByteArray &userData,
    const QByteArray &first = "04", const QByteArray &sender = SENDER,
    const QByteArray &time = NOON)
{
    return CENTRE + first + sender + "00" + coding + time + hexOctet(length) + userData;
}

// Text of the 7-bit alphabet behind a header given without its length octet.
QByteArray withHeader(const QByteArray &header, const QByteArray &septets)
{
    const int octets = header.size() / 2 + 1;
    const int headerSeptets = (octets * 8 + 6) / 7;
    const QByteArray text = gsmcodec::packed(septets, headerSeptets * 7 - octets * 8).toHex();
    return deliver(
        "00", headerSeptets + septets.size(), hexOctet(octets - 1) + header + text, "44");
}

std::optional<SmsPdu> decoded(const QByteArray &hex, QString *error = nullptr)
{
    return decodeSmsPdu(QByteArray::fromHex(hex), -1, error);
}

StoredSms stored(int index, const QString &text, const QDateTime &time,
    const std::optional<SmsPart> &part = std::nullopt,
    const QString &sender = QStringLiteral("+7916"))
{
    StoredSms sms;
    sms.index = index;
    sms.pdu.text = text;
    sms.pdu.time = time;
    sms.pdu.part = part;
    sms.pdu.address = sender;
    return sms;
}

SmsPart part(int reference, int number, int total)
{
    SmsPart result;
    result.reference = reference;
    result.number = number;
    result.total = total;
    return result;
}

QDateTime at(int minutes)
{
    return QDateTime(QDate(2026, 11, 20), QTime(12, 0), Qt::UTC).addSecs(qint64{60} * minutes);
}

} // namespace

class TestSms : public QObject
{
    Q_OBJECT

private slots:
    void readsCodings_data();
    void readsCodings();
    void readsDeliver_data();
    void readsDeliver();
    void readsAddresses_data();
    void readsAddresses();
    void readsTimes_data();
    void readsTimes();
    void readsHeaders_data();
    void readsHeaders();
    void readsParts_data();
    void readsParts();
    void readsSubmit_data();
    void readsSubmit();
    void writesSubmit_data();
    void writesSubmit();
    void refusesToWrite_data();
    void refusesToWrite();
    void readsStatusReport();
    void refusesBroken_data();
    void refusesBroken();
    void readsWithoutServiceCentre();
    void readsListings_data();
    void readsListings();
    void listsBroken_data();
    void listsBroken();
    void keepsTheRestOfAListing();
    void assemblesOutOfOrder();
    void assemblesInterleaved();
    void assemblesTwiceReceived();
    void tellsMissingParts_data();
    void tellsMissingParts();
    void separatesReusedReferences();
    void separatesWideReferences();
    void joinsSurrogatesAcrossParts();
    void ordersMessagesByTime();
    void leavesOutWhatIsNotReceived();
    void everyCutIsAnError();
    void survivesNoise();
};

void TestSms::readsCodings_data()
{
    using Alphabet = SmsCoding::Alphabet;
    QTest::addColumn<int>("octet");
    QTest::addColumn<int>("alphabet");
    QTest::addColumn<int>("messageClass");
    QTest::addColumn<int>("waiting");
    QTest::addColumn<bool>("compressed");
    const auto row = [](const char *name, int octet, Alphabet alphabet, int messageClass = -1,
                         int waiting = -1, bool compressed = false) {
        QTest::newRow(name) << octet << static_cast<int>(alphabet) << messageClass << waiting
                            << compressed;
    };
    // 23.038 clause 4, the table's rows.
    row("default", 0x00, Alphabet::SevenBit);
    row("general, 8 bit", 0x04, Alphabet::EightBit);
    row("general, UCS2", 0x08, Alphabet::Ucs2);
    row("general, reserved alphabet", 0x0C, Alphabet::SevenBit);
    row("general, class 0 (flash)", 0x10, Alphabet::SevenBit, 0);
    row("general, UCS2 class 0", 0x18, Alphabet::Ucs2, 0);
    row("general, class bits without meaning", 0x03, Alphabet::SevenBit);
    row("general, compressed", 0x20, Alphabet::SevenBit, -1, -1, true);
    row("automatic deletion, UCS2", 0x48, Alphabet::Ucs2);
    row("automatic deletion, class 1", 0x51, Alphabet::SevenBit, 1);
    row("reserved group", 0x88, Alphabet::SevenBit);
    row("message waiting, discard, voicemail", 0xC8, Alphabet::SevenBit, -1, 0);
    row("message waiting, store, fax over", 0xD1, Alphabet::SevenBit, -1, 1);
    row("message waiting, store, UCS2 e-mail", 0xEA, Alphabet::Ucs2, -1, 2);
    row("class group, 7 bit class 0", 0xF0, Alphabet::SevenBit, 0);
    row("class group, 8 bit class 2", 0xF6, Alphabet::EightBit, 2);
}

void TestSms::readsCodings()
{
    QFETCH(int, octet);
    const SmsCoding coding = parseSmsCoding(octet);
    QTEST(static_cast<int>(coding.alphabet), "alphabet");
    QTEST(coding.messageClass.value_or(-1), "messageClass");
    QTEST(coding.waiting ? static_cast<int>(*coding.waiting) : -1, "waiting");
    QTEST(coding.compressed, "compressed");
    QCOMPARE(coding.isWaiting, octet == 0xC8 || octet == 0xEA);
    QCOMPARE(coding.deleteAfterReading, octet == 0x48 || octet == 0x51 || octet == 0xC8);
}

void TestSms::readsDeliver_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<QString>("text");
    // The example that tutorials on PDU mode share; its sender is of unknown type.
    QTest::newRow("hellohello") << QByteArray(
        "07917283010010F5040BC87238880900F10000993092516195800AE8329BFD4697D9EC37")
                                << QStringLiteral("hellohello");
    QTest::newRow("empty") << deliver("00", 0, "") << QString();
    QTest::newRow("extension table, 23.038 6.2.1.1")
        << deliver("00", 2, gsmcodec::packed("\x1b\x65").toHex()) << QStringLiteral("€");
    QTest::newRow("160 characters fill 140 octets")
        << deliver("00", 160, gsmcodec::packed(QByteArray(160, 'x')).toHex())
        << QString(160, QLatin1Char('x'));
    QTest::newRow("UCS2") << deliver("08", 12, "04110430043b0430043d0441")
                          << QStringLiteral("Баланс");
    QTest::newRow("UCS2 beyond the basic plane")
        << deliver("08", 4, "D83DDE00") << QStringLiteral("😀");
    QTest::newRow("UCS2 of an odd length")
        << deliver("08", 3, "041104") << QStringLiteral("Б\uFFFD");
    QTest::newRow("8 bit") << deliver("04", 4, "636166E9") << QStringLiteral("café");
    QTest::newRow("flash") << deliver("10", 1, "31") << QStringLiteral("1");
    QTest::newRow("reserved type, 23.040 9.2.3.1")
        << deliver("00", 1, "31", "07") << QStringLiteral("1");
    QTest::newRow("fill octets behind the text")
        << deliver("00", 1, "31FFFF") << QStringLiteral("1");
}

void TestSms::readsDeliver()
{
    QFETCH(QByteArray, hex);
    QString error;
    const auto pdu = decoded(hex, &error);
    QVERIFY2(pdu, qPrintable(error));
    QCOMPARE(pdu->kind, SmsPdu::Kind::Deliver);
    QTEST(pdu->text, "text");
    QVERIFY(!pdu->part);
}

void TestSms::readsAddresses_data()
{
    QTest::addColumn<QByteArray>("sender");
    QTest::addColumn<QString>("expected");
    // 23.040 9.1.2.5
    QTest::newRow("international") << QByteArray(SENDER) << QStringLiteral("+79168999100");
    QTest::newRow("national, even")
        << QByteArray("0AA1190688991200").left(14) << QStringLiteral("9160889921");
    QTest::newRow("unknown type, odd") << QByteArray("038110F0") << QStringLiteral("010");
    QTest::newRow("short code of an operator") << QByteArray("04811100") << QStringLiteral("1100");
    QTest::newRow("subscriber number")
        << QByteArray("0CC8") + QByteArray("111111111111") << QStringLiteral("111111111111");
    QTest::newRow("star, hash and letters") << QByteArray("0581BADCFE") << QStringLiteral("*#abc");
    QTest::newRow("alphanumeric, 3 characters")
        << QByteArray("06D04DEA14") << QStringLiteral("MTS");
    QTest::newRow("alphanumeric, 7 characters in 13 semi-octets")
        << QByteArray("0DD0C272999D769701") << QStringLiteral("Beeline");
    QTest::newRow("alphanumeric, 7 characters in 14 semi-octets, the filler counted")
        << QByteArray("0ED0C272999D769701") << QStringLiteral("Beeline");
    QTest::newRow("alphanumeric, 11 characters")
        << QByteArray("14D0CB7199CD6EA5DDE6770C") << QStringLiteral("Kcell-info1");
    QTest::newRow("none") << QByteArray("0080") << QString();
    QTest::newRow("international without digits") << QByteArray("0091") << QString();
}

void TestSms::readsAddresses()
{
    QFETCH(QByteArray, sender);
    const auto pdu = decoded(deliver("00", 1, "31", "04", sender));
    QVERIFY(pdu);
    QTEST(pdu->address, "expected");
    QCOMPARE(pdu->serviceCentre, QStringLiteral("+79037011111"));
}

void TestSms::readsTimes_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<QString>("expected");
    // 23.040 9.2.3.11
    QTest::newRow("Moscow") << QByteArray("62110221000021")
                            << QStringLiteral("2026-11-20T12:00:00+03:00");
    QTest::newRow("Greenwich") << QByteArray("62110221000000")
                               << QStringLiteral("2026-11-20T12:00:00+00:00");
    QTest::newRow("New York, west of it")
        << QByteArray("6211022100000A") << QStringLiteral("2026-11-20T12:00:00-05:00");
    QTest::newRow("Newfoundland, minus fourteen quarters")
        << QByteArray("62110221000049") << QStringLiteral("2026-11-20T12:00:00-03:30");
    QTest::newRow("Nepal, 23 quarters")
        << QByteArray("62110221000032") << QStringLiteral("2026-11-20T12:00:00+05:45");
    QTest::newRow("last second of a leap year's February")
        << QByteArray("82209232959500") << QStringLiteral("2028-02-29T23:59:59+00:00");
    QTest::newRow("the century before")
        << QByteArray("99309251619580") << QStringLiteral("1999-03-29T15:16:59+02:00");
    QTest::newRow("no such month") << QByteArray("62310221000021") << QString();
    QTest::newRow("no such day") << QByteArray("62200321000021") << QString();
    QTest::newRow("not digits") << QByteArray("6211022100FF21") << QString();
    QTest::newRow("all zero, from a centre without a clock")
        << QByteArray("00000000000000") << QString();
}

void TestSms::readsTimes()
{
    QFETCH(QByteArray, hex);
    QFETCH(QString, expected);
    const auto pdu = decoded(deliver("00", 1, "31", "04", SENDER, hex));
    QVERIFY(pdu);
    QCOMPARE(pdu->text, QStringLiteral("1"));
    QCOMPARE(pdu->time.isValid(), !expected.isEmpty());
    if (!expected.isEmpty()) {
        QCOMPARE(pdu->time, QDateTime::fromString(expected, Qt::ISODate));
        QCOMPARE(pdu->time.offsetFromUtc(),
            QDateTime::fromString(expected, Qt::ISODate).offsetFromUtc());
    }
}

void TestSms::readsHeaders_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<QString>("text");
    // 23.040 9.2.3.24; the text begins at the next septet boundary, whatever the header's length.
    for (int octets = 0; octets <= 14; ++octets) {
        QByteArray header;
        if (octets >= 2)
            header = "70" + hexOctet(octets - 2) + QByteArray(2 * (octets - 2), '0');
        if (octets == 1)
            header = "70"; // an element cut off: the header is passed over, the text stays
        QTest::newRow(qPrintable(QStringLiteral("unknown element, %1 octets").arg(octets)))
            << withHeader(header, "Hello") << QStringLiteral("Hello");
    }
    QTest::newRow("Turkish single shift, 9.2.3.24.15")
        << withHeader("240101", "\x1bS\x1bs") << QStringLiteral("Şş");
    QTest::newRow("Turkish locking shift, 9.2.3.24.16")
        << withHeader("250101", QByteArray("\x0b\x40", 2)) << QStringLiteral("Ğİ");
    QTest::newRow("both") << withHeader("250103240102", QByteArray("\x0b\x1b\x41", 3))
                          << QStringLiteral("ÔÁ");
    QTest::newRow("a language that is not known")
        << withHeader("250199", "A") << QStringLiteral("A");
    QTest::newRow("a language element of a wrong size")
        << withHeader("25020101", QByteArray("\x40", 1)) << QStringLiteral("¡");
    QTest::newRow("the last of two counts")
        << withHeader("250103250101", QByteArray("\x40", 1)) << QStringLiteral("İ");
    QTest::newRow("an element beyond the header: none counts")
        << withHeader("2501017005", QByteArray("\x40", 1)) << QStringLiteral("¡");
    QTest::newRow("header without text") << withHeader("700100", "") << QString();
    QTest::newRow("UCS2 behind a header")
        << deliver("08", 8, "05700300000004", "44") + "11" << QStringLiteral("Б");
}

void TestSms::readsHeaders()
{
    QFETCH(QByteArray, hex);
    QString error;
    const auto pdu = decoded(hex, &error);
    QVERIFY2(pdu, qPrintable(error));
    QTEST(pdu->text, "text");
    QVERIFY(!pdu->part);
}

void TestSms::readsParts_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<QList<int>>("expected"); // reference, number, total, whether wide
    QTest::newRow("8 bit reference, 9.2.3.24.1")
        << QByteArray("0003A70302") << QList<int>{0xA7, 2, 3, 0};
    QTest::newRow("16 bit reference, 9.2.3.24.8")
        << QByteArray("0804A7B80501") << QList<int>{0xA7B8, 1, 5, 1};
    QTest::newRow("with other elements around")
        << QByteArray("7001000003010201240101") << QList<int>{1, 1, 2, 0};
    QTest::newRow("number 0 is ignored") << QByteArray("0003A70300") << QList<int>();
    QTest::newRow("total 0 is ignored") << QByteArray("0003A70001") << QList<int>();
    QTest::newRow("number beyond the total is ignored") << QByteArray("0003A70203") << QList<int>();
    QTest::newRow("wrong size is ignored") << QByteArray("0002A702") << QList<int>();
}

void TestSms::readsParts()
{
    QFETCH(QByteArray, header);
    const auto pdu = decoded(withHeader(header, "text"));
    QVERIFY(pdu);
    QCOMPARE(pdu->text, QStringLiteral("text"));
    QList<int> actual;
    if (pdu->part)
        actual = {pdu->part->reference, pdu->part->number, pdu->part->total,
            pdu->part->wideReference ? 1 : 0};
    QTEST(actual, "expected");
}

void TestSms::readsSubmit_data()
{
    QTest::addColumn<QByteArray>("hex");
    // 23.040 9.2.2.2; the first as tutorials on PDU mode have it.
    QTest::newRow("relative validity")
        << QByteArray("0011000B916407281553F80000AA0AE8329BFD4697D9EC37");
    QTest::newRow("no validity") << QByteArray("0001000B916407281553F800000AE8329BFD4697D9EC37");
    QTest::newRow("absolute validity")
        << QByteArray("0019000B916407281553F80000621102210000210AE8329BFD4697D9EC37");
    QTest::newRow("enhanced validity")
        << QByteArray("0009000B916407281553F80000010500000000000AE8329BFD4697D9EC37");
}

void TestSms::readsSubmit()
{
    QFETCH(QByteArray, hex);
    QString error;
    const auto pdu = decoded(hex, &error);
    QVERIFY2(pdu, qPrintable(error));
    QCOMPARE(pdu->kind, SmsPdu::Kind::Submit);
    QCOMPARE(pdu->serviceCentre, QString());
    QCOMPARE(pdu->address, QStringLiteral("+46708251358"));
    QCOMPARE(pdu->text, QStringLiteral("hellohello"));
    QVERIFY(!pdu->time.isValid());
}

void TestSms::writesSubmit_data()
{
    QTest::addColumn<QString>("recipient");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("hex");
    // 23.040 9.2.2.2: the one of tutorials on PDU mode, without a validity period.
    QTest::newRow("international") << QStringLiteral("+46708251358") << QStringLiteral("hellohello")
                                   << QByteArray("0001000B916407281553F800000AE8329BFD4697D9EC37");
    QTest::newRow("service number") << QStringLiteral("5050") << QStringLiteral("hellohello")
                                    << QByteArray("000100048105"
                                                  "0500000AE8329BFD4697D9EC37");
    QTest::newRow("odd number of digits") << QStringLiteral("111") << QStringLiteral("hellohello")
                                          << QByteArray("0001000381"
                                                        "11F100000AE8329BFD4697D9EC37");
    QTest::newRow("star and hash") << QStringLiteral("*11#") << QStringLiteral("hellohello")
                                   << QByteArray("000100"
                                                 "04811AB1"
                                                 "00000AE8329BFD4697D9EC37");
    QTest::newRow("not of the 7-bit alphabet") << QStringLiteral("5050") << QStringLiteral("Да")
                                               << QByteArray("000100048105050008"
                                                             "0404140430");
    QTest::newRow("no text") << QStringLiteral("5050") << QString()
                             << QByteArray("0001000481050500"
                                           "0000");
}

void TestSms::writesSubmit()
{
    QFETCH(QString, recipient);
    QFETCH(QString, text);
    const auto submit = encodeSmsSubmit(recipient, text);
    QVERIFY(submit);
    QTEST(submit->octets.toHex().toUpper(), "hex");
    QCOMPARE(submit->tpduLength, submit->octets.size() - 1);
    const auto pdu = decodeSmsPdu(submit->octets, submit->tpduLength, nullptr);
    QVERIFY(pdu);
    QCOMPARE(pdu->kind, SmsPdu::Kind::Submit);
    QCOMPARE(pdu->address, recipient);
    QCOMPARE(pdu->text, text);
}

void TestSms::refusesToWrite_data()
{
    QTest::addColumn<QString>("recipient");
    QTest::addColumn<QString>("text");
    const QString text = QStringLiteral("NUM");
    QTest::newRow("no recipient") << QString() << text;
    QTest::newRow("a name") << QStringLiteral("Operator") << text;
    QTest::newRow("plus alone") << QStringLiteral("+") << text;
    QTest::newRow("too many digits") << QString(21, QLatin1Char('1')) << text;
    QTest::newRow("a second command") << QStringLiteral("1\rATD112;") << text;
    QTest::newRow("161 characters") << QStringLiteral("1") << QString(161, QLatin1Char('a'));
    QTest::newRow("81 of two septets") << QStringLiteral("1") << QString(81, QChar(0x20AC));
    QTest::newRow("71 of UCS2") << QStringLiteral("1") << QString(71, QChar(0x0414));
}

void TestSms::refusesToWrite()
{
    QFETCH(QString, recipient);
    QFETCH(QString, text);
    QVERIFY(!encodeSmsSubmit(recipient, text));
    QVERIFY(encodeSmsSubmit(QStringLiteral("1"), text.left(70)));
}

void TestSms::readsStatusReport()
{
    // 23.040 9.2.2.3: reference, recipient, two times, status.
    const auto pdu = decoded(QByteArray(CENTRE) + "062A" + SENDER + NOON + "62110221105021" + "30");
    QVERIFY(pdu);
    QCOMPARE(pdu->kind, SmsPdu::Kind::StatusReport);
    QCOMPARE(pdu->reference, 0x2A);
    QCOMPARE(pdu->address, QStringLiteral("+79168999100"));
    QCOMPARE(pdu->time.time(), QTime(12, 0));
    QCOMPARE(pdu->doneTime.time(), QTime(12, 1, 5));
    QCOMPARE(pdu->status, 0x30);
    QCOMPARE(pdu->text, QString());
}

void TestSms::refusesBroken_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<QString>("expected");
    QTest::newRow("nothing") << QByteArray() << QStringLiteral("it ends within the service centre");
    QTest::newRow("service centre cut")
        << QByteArray("079197") << QStringLiteral("it ends within the service centre");
    QTest::newRow("service centre too long") << QByteArray("0C91")
            + QByteArray(30, '0') << QStringLiteral("its service centre's address is too long");
    QTest::newRow("service centre alone")
        << QByteArray(CENTRE) << QStringLiteral("it ends within the message");
    QTest::newRow("sender too long") << QByteArray(CENTRE) + "041591" + QByteArray(60, '0')
                                     << QStringLiteral("its address is too long");
    QTest::newRow("text cut") << deliver("00", 10, "E8329BFD46")
                              << QStringLiteral("it ends within the text");
    QTest::newRow("text missing") << deliver("08", 140, "")
                                  << QStringLiteral("it ends within the text");
    QTest::newRow("header longer than the text")
        << deliver("08", 2, "0500", "44") << QStringLiteral("its header is longer than its text");
    QTest::newRow("header announced, no text at all")
        << deliver("00", 0, "", "44") << QStringLiteral("its header is longer than its text");
    QTest::newRow("septets fewer than the header takes") << deliver(
        "00", 6, "050003A70302", "44") << QStringLiteral("its header is longer than its text");
    QTest::newRow("compressed, 23.042")
        << deliver("20", 1, "31") << QStringLiteral("its text is compressed");
}

void TestSms::refusesBroken()
{
    QFETCH(QByteArray, hex);
    QString error;
    QVERIFY(!decoded(hex, &error));
    QTEST(error, "expected");
    QVERIFY(!decoded(hex, nullptr));
}

void TestSms::readsWithoutServiceCentre()
{
    const QByteArray whole = QByteArray::fromHex(deliver("00", 1, "31"));
    const QByteArray bare = whole.mid(8);
    const auto pdu = decodeSmsPdu(bare, bare.size(), nullptr);
    QVERIFY(pdu);
    QCOMPARE(pdu->serviceCentre, QString());
    QCOMPARE(pdu->text, QStringLiteral("1"));
    QVERIFY(decodeSmsPdu(whole, bare.size(), nullptr));
    QVERIFY(decodeSmsPdu(whole + "behind", bare.size(), nullptr));
    QString error;
    QVERIFY(!decodeSmsPdu(whole, whole.size() + 1, &error));
    QCOMPARE(error, QStringLiteral("it ends within the message"));
}

void TestSms::readsListings_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<QList<int>>("places"); // index and state of each
    const QByteArray pdu = deliver("00", 1, "31");
    const QByteArray length = QByteArray::number(pdu.size() / 2 - 8);
    const QByteArray list = "+CMGL";
    // 27.005 3.4.2
    QTest::newRow("one") << list << Lines{"+CMGL: 3,1,," + length, pdu} << QList<int>{3, 1};
    QTest::newRow("two") << list
                         << Lines{"+CMGL: 0,0,," + length, pdu, "+CMGL: 12,1,," + length, pdu}
                         << QList<int>{0, 0, 12, 1};
    QTest::newRow("without the field of the name")
        << list << Lines{"+CMGL: 3,1," + length, pdu} << QList<int>{3, 1};
    QTest::newRow("with a name that has a comma")
        << list << Lines{"+CMGL: 3,1,\"Anna, shop\"," + length, pdu} << QList<int>{3, 1};
    QTest::newRow("no blank, lower case")
        << list << Lines{"+CMGL:3,1,," + length, pdu.toLower()} << QList<int>{3, 1};
    QTest::newRow("a line in between")
        << list << Lines{"+CMGL: 3,1,," + length, "^RSSI:17", pdu} << QList<int>{3, 1};
    QTest::newRow("none") << list << Lines() << QList<int>();
    // 27.005 3.4.3
    QTest::newRow("one that was asked for")
        << QByteArray("+CMGR") << Lines{"+CMGR: 0,," + length, pdu} << QList<int>{-1, 0};
    // 27.005 3.4.1
    QTest::newRow("one that comes unasked")
        << QByteArray("+CMT") << Lines{"+CMT: ," + length, pdu} << QList<int>{-1, -1};
    QTest::newRow("one that comes unasked, length alone")
        << QByteArray("+CMT") << Lines{"+CMT: " + length, pdu} << QList<int>{-1, -1};
}

void TestSms::readsListings()
{
    QFETCH(QByteArray, name);
    QFETCH(Lines, lines);
    const SmsListing listing = parseSmsListing(name, lines);
    QVERIFY(listing.broken.isEmpty());
    QList<int> places;
    for (const StoredSms &sms : listing.messages) {
        places << sms.index << sms.state;
        QCOMPARE(sms.pdu.text, QStringLiteral("1"));
    }
    QTEST(places, "places");
}

void TestSms::listsBroken_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("error");
    const QByteArray pdu = deliver("00", 1, "31");
    QTest::newRow("no PDU") << Lines{"+CMGL: 3,1,,22"} << 3 << QStringLiteral("its PDU is missing");
    QTest::newRow("half an octet")
        << Lines{"+CMGL: 3,1,,22", pdu + "1"} << 3 << QStringLiteral("it ends within an octet");
    QTest::newRow("shorter than announced")
        << Lines{"+CMGL: 3,1,,99", pdu} << 3 << QStringLiteral("it ends within the message");
    QTest::newRow("text mode") << Lines{"+CMGL: 3,\"REC READ\",\"+7916\",,\"26/11/20\"", "Hi"} << 3
                               << QStringLiteral("it is not listed in PDU mode");
    QTest::newRow("garbled heading")
        << Lines{"+CMGL: x", pdu} << -1 << QStringLiteral("it is not listed in PDU mode");
    QTest::newRow("empty heading")
        << Lines{"+CMGL:", pdu} << -1 << QStringLiteral("it is not listed in PDU mode");
    QTest::newRow("index below zero")
        << Lines{"+CMGL: -3,1,,22", pdu} << -1 << QStringLiteral("it is not listed in PDU mode");
}

void TestSms::listsBroken()
{
    QFETCH(Lines, lines);
    const SmsListing listing = parseSmsListing("+CMGL", lines);
    QCOMPARE(listing.messages.size(), 0);
    QCOMPARE(listing.broken.size(), 1);
    QTEST(listing.broken.first().index, "index");
    QTEST(listing.broken.first().error, "error");
}

void TestSms::keepsTheRestOfAListing()
{
    const QByteArray pdu = deliver("00", 1, "31");
    const QByteArray length = QByteArray::number(pdu.size() / 2 - 8);
    const SmsListing listing = parseSmsListing("+CMGL",
        {"+CMGL: 1,1,," + length, pdu, "+CMGL: 2,1,," + length, "+CMGL: 3,1,," + length,
            pdu.left(30), "+CMGL: 4,1,," + length, pdu});
    QCOMPARE(listing.messages.size(), 2);
    QCOMPARE(listing.messages.at(0).index, 1);
    QCOMPARE(listing.messages.at(1).index, 4);
    QCOMPARE(listing.broken.size(), 2);
    QCOMPARE(listing.broken.at(0).index, 2);
    QCOMPARE(listing.broken.at(1).index, 3);
}

void TestSms::assemblesOutOfOrder()
{
    const auto messages = assembleMessages({stored(7, QStringLiteral("C"), at(0), part(5, 3, 3)),
        stored(8, QStringLiteral("A"), at(1), part(5, 1, 3)),
        stored(9, QStringLiteral("B"), at(2), part(5, 2, 3))});
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.first().text, QStringLiteral("ABC"));
    QCOMPARE(messages.first().indexes, (QList<int>{7, 8, 9}));
    QCOMPARE(messages.first().time, at(0));
    QVERIFY(messages.first().isComplete);
}

void TestSms::assemblesInterleaved()
{
    // Two references of one sender, and the same reference of another.
    const QString other = QStringLiteral("Beeline");
    const auto messages = assembleMessages({stored(1, QStringLiteral("a1"), at(0), part(5, 1, 2)),
        stored(2, QStringLiteral("b1"), at(1), part(6, 1, 2)),
        stored(3, QStringLiteral("c1"), at(2), part(5, 1, 2), other),
        stored(4, QStringLiteral("a2"), at(3), part(5, 2, 2)),
        stored(5, QStringLiteral("c2"), at(4), part(5, 2, 2), other),
        stored(6, QStringLiteral("b2"), at(5), part(6, 2, 2))});
    QCOMPARE(messages.size(), 3);
    QCOMPARE(messages.at(0).text, QStringLiteral("a1a2"));
    QCOMPARE(messages.at(1).text, QStringLiteral("b1b2"));
    QCOMPARE(messages.at(2).text, QStringLiteral("c1c2"));
    QCOMPARE(messages.at(2).sender, other);
}

void TestSms::assemblesTwiceReceived()
{
    const auto messages = assembleMessages({stored(1, QStringLiteral("A"), at(0), part(5, 1, 2)),
        stored(2, QStringLiteral("A"), at(1), part(5, 1, 2)),
        stored(3, QStringLiteral("B"), at(2), part(5, 2, 2))});
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.first().text, QStringLiteral("AB"));
    QCOMPARE(messages.first().indexes, (QList<int>{1, 2, 3}));
}

void TestSms::tellsMissingParts_data()
{
    QTest::addColumn<QList<int>>("numbers");
    QTest::addColumn<QString>("text");
    QTest::newRow("the first") << QList<int>{2, 3, 4} << QStringLiteral("…234");
    QTest::newRow("two in the middle") << QList<int>{1, 4} << QStringLiteral("1…4");
    QTest::newRow("the last") << QList<int>{1, 2, 3} << QStringLiteral("123…");
    QTest::newRow("all but one in the middle") << QList<int>{3} << QStringLiteral("…3…");
    QTest::newRow("none") << QList<int>{4, 3, 2, 1} << QStringLiteral("1234");
}

void TestSms::tellsMissingParts()
{
    QFETCH(QList<int>, numbers);
    QList<StoredSms> all;
    for (const int number : qAsConst(numbers))
        all << stored(number, QString::number(number), at(0), part(1, number, 4));
    const auto messages = assembleMessages(all);
    QCOMPARE(messages.size(), 1);
    QTEST(messages.first().text, "text");
    QCOMPARE(messages.first().isComplete, numbers.size() == 4);
}

void TestSms::separatesReusedReferences()
{
    // Hours apart: the old message lost its second part.
    auto messages = assembleMessages({stored(1, QStringLiteral("old1"), at(0), part(5, 1, 2)),
        stored(2, QStringLiteral("new2"), at(300), part(5, 2, 2)),
        stored(3, QStringLiteral("new1"), at(300), part(5, 1, 2))});
    QCOMPARE(messages.size(), 2);
    QCOMPARE(messages.at(0).text, QStringLiteral("old1…"));
    QCOMPARE(messages.at(1).text, QStringLiteral("new1new2"));
    // Minutes apart: told by what they say.
    messages = assembleMessages({stored(1, QStringLiteral("old1"), at(0), part(5, 1, 2)),
        stored(2, QStringLiteral("old2"), at(0), part(5, 2, 2)),
        stored(3, QStringLiteral("new1"), at(5), part(5, 1, 2)),
        stored(4, QStringLiteral("new2"), at(5), part(5, 2, 2))});
    QCOMPARE(messages.size(), 2);
    QCOMPARE(messages.at(0).text, QStringLiteral("old1old2"));
    QCOMPARE(messages.at(1).text, QStringLiteral("new1new2"));
}

void TestSms::separatesWideReferences()
{
    SmsPart wide = part(5, 2, 2);
    wide.wideReference = true;
    const auto messages = assembleMessages({stored(1, QStringLiteral("A"), at(0), part(5, 1, 2)),
        stored(2, QStringLiteral("B"), at(0), wide),
        stored(3, QStringLiteral("C"), at(0), part(5, 2, 3))});
    QCOMPARE(messages.size(), 3);
}

void TestSms::joinsSurrogatesAcrossParts()
{
    const auto first = decoded(deliver("08", 8, "050003010201D83D", "44"));
    const auto second = decoded(deliver("08", 8, "050003010202DE00", "44"));
    QVERIFY(first && second);
    const auto messages = assembleMessages({{1, 1, *second}, {2, 1, *first}});
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.first().text, QStringLiteral("😀"));
}

void TestSms::ordersMessagesByTime()
{
    const auto messages = assembleMessages({stored(1, QStringLiteral("third"), QDateTime()),
        stored(2, QStringLiteral("second"), at(1)), stored(3, QStringLiteral("first"), at(0))});
    QCOMPARE(messages.size(), 3);
    QCOMPARE(messages.at(0).text, QStringLiteral("first"));
    QCOMPARE(messages.at(1).text, QStringLiteral("second"));
    QCOMPARE(messages.at(2).text, QStringLiteral("third"));
}

void TestSms::leavesOutWhatIsNotReceived()
{
    StoredSms sent = stored(1, QStringLiteral("sent"), at(0));
    sent.pdu.kind = SmsPdu::Kind::Submit;
    StoredSms report = stored(2, QString(), at(0));
    report.pdu.kind = SmsPdu::Kind::StatusReport;
    QVERIFY(assembleMessages({sent, report}).isEmpty());
    QVERIFY(assembleMessages({}).isEmpty());
}

void TestSms::everyCutIsAnError()
{
    const QByteArray whole
        = QByteArray::fromHex(withHeader("0003A70302250101", QByteArray(100, 'x')));
    QVERIFY(decodeSmsPdu(whole, -1, nullptr));
    for (int size = 0; size < whole.size(); ++size) {
        QString error;
        QVERIFY(!decodeSmsPdu(whole.left(size), -1, &error));
        QVERIFY(!error.isEmpty());
    }
}

void TestSms::survivesNoise()
{
    std::mt19937 random(23040);
    const QByteArray whole
        = QByteArray::fromHex(withHeader("0003A70302250101", QByteArray(40, 'x')));
    int read = 0;
    QList<StoredSms> all;
    for (int round = 0; round < 5000; ++round) {
        QByteArray octets = whole;
        for (int i = 0; i < 4; ++i)
            octets[static_cast<int>(random() % static_cast<unsigned int>(octets.size()))]
                = static_cast<char>(random());
        octets.truncate(static_cast<int>(random() % 80));
        QString error;
        const auto length = static_cast<int>(random() % 70) - 1;
        const auto pdu = decodeSmsPdu(octets, length, &error);
        QCOMPARE(pdu.has_value(), error.isEmpty());
        if (pdu && ++read % 20 == 0)
            all << StoredSms{round, 1, *pdu};
    }
    QVERIFY(read > 0);
    int indexes = 0;
    const QList<SmsMessage> messages = assembleMessages(all);
    for (const SmsMessage &message : messages)
        indexes += message.indexes.size();
    QVERIFY(indexes <= all.size());
}

QTEST_APPLESS_MAIN(TestSms)
#include "tst_sms.moc"
