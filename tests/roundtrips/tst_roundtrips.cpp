#include "generator.h"

#include "gsmtext.h"
#include "interfacesfile.h"
#include "modemsettings.h"
#include "smspdu.h"
#include "testmodemscfg.h"
#include "ussd.h"
#include "wire.h"

#include <QBuffer>
#include <QTest>

// What is written in one place and read in another comes out as it went in, whatever it is.
class TestRoundTrips : public QObject
{
    Q_OBJECT

private slots:
    void settingsList();
    void settingsListThroughTheBus();
    void dialerConfiguration();
    void interfacesFile();
    void sentSms();
    void receivedSms();
    void ussdAnswer_data();
    void ussdAnswer();
    void ussdCode();
};

namespace {

constexpr int kTimes = 500;

const QString DIGITS = QStringLiteral("0123456789");
const QString LETTERS = QStringLiteral("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ");
const QString PLAIN = LETTERS + DIGITS + QStringLiteral("_-.:/+*#$&!?()<>'|~^{}");
const QString CYRILLIC = QString::fromUtf8("АБВГҐДЕЄЖЗИІЇЙКЛМНОПРСТУЎФХЦЧШЩЪЫЬЭЮЯәғқңөұүһ");
const QString PAIRS_AND_ODDS = QString::fromUtf8("€₸₴№«»…ÄßñÇ");
const QString DEFAULT_ALPHABET = QString::fromUtf8(
    "@£$¥èéùìòÇ\nØøÅåΔ_ΦΓΛΩΠΨΣΘΞÆæßÉ !\"#¤%&'()*+,-./0123456789:;<=>?"
    "¡ABCDEFGHIJKLMNOPQRSTUVWXYZÄÖÑÜ§¿abcdefghijklmnopqrstuvwxyzäöñüà^{}\\[~]|€");

// Any characters that a field may hold; `texts` of them.
ModemInfo record(Generator &some, const QString &name, const QString &characters)
{
    ModemInfo modem;
    modem.setConnectionName(name);
    modem.setPortName(QStringLiteral("/dev/tty") + some.word(LETTERS + DIGITS, 8));
    modem.setBaudrate(some.number(0, 4000000));
    modem.setUserName(some.text(characters, 20));
    modem.setPassword(some.text(characters, 20));
    modem.setPhone(some.word(characters, 20));
    modem.setPhones(some.words(characters, 9));
    modem.setInitLines(some.words(characters, 8));
    modem.setDialCommand(some.word(characters, 8));
    modem.setIsdn(some.number(0, 3));
    modem.setModemType(some.word(characters, 20));
    modem.setNewPppd(some.flag());
    modem.setStupidMode(some.flag());
    return modem;
}

QMap<QString, ModemInfo> records(Generator &some, const QString &characters)
{
    QMap<QString, ModemInfo> modems;
    for (int left = some.number(0, 5); left > 0; --left) {
        const QString name = some.word(characters, 12);
        modems.insert(name, record(some, name, characters));
    }
    return modems;
}

} // namespace

void TestRoundTrips::settingsList()
{
    Generator some(1);
    ModemSettings settings;
    for (int i = 0; i < kTimes; ++i) {
        const auto modems = records(some, PLAIN + CYRILLIC + QStringLiteral(" \\\"=;,%@[]"));
        const QStringList order = some.words(PLAIN, 5);
        settings.setModems(modems);
        settings.setConnectionsOrder(order);
        const QList<QVariant> list = settings.toSettingsList();
        settings.setModems({});
        settings.setConnectionsOrder({});
        QVERIFY(settings.setSettingsList(list));
        QCOMPARE(settings.modems(), modems);
        QCOMPARE(settings.connectionsOrder(), order);
    }
}

void TestRoundTrips::settingsListThroughTheBus()
{
    Generator some(2);
    ModemSettings settings;
    for (int i = 0; i < kTimes; ++i) {
        const auto modems = records(some, PLAIN + CYRILLIC);
        settings.setModems(modems);
        const auto sent
            = tavbus::wire::checked(settings.toSettingsList(), tavbus::wire::kMaxRecord);
        QVERIFY(sent);
        const auto kept = tavbus::wire::unpacked(tavbus::wire::packed(*sent));
        QVERIFY(kept);
        settings.setModems({});
        QVERIFY(settings.setSettingsList(kept->toList()));
        QCOMPARE(settings.modems(), modems);
    }
}

void TestRoundTrips::dialerConfiguration()
{
    Generator some(3);
    TestModemsCfg file;
    for (int i = 0; i < kTimes / 10; ++i) {
        const auto modems = records(some, PLAIN + CYRILLIC);
        file.setModems(modems);
        QCOMPARE(file.lastError(), QString());
        QCOMPARE(file.modems(), modems);
    }
}

void TestRoundTrips::interfacesFile()
{
    Generator some(4);
    for (int i = 0; i < kTimes; ++i) {
        QStringList names;
        QHash<QString, InterfaceSettings> settings;
        for (int number = some.number(0, 4); number > 0; --number) {
            const QString name = QStringLiteral("enp%1s0").arg(number);
            InterfaceSettings values;
            values.setUseDhcp(false);
            values.setAddress(some.address());
            values.setNetMask(some.address());
            values.setGateway(some.flag() ? some.address() : QString());
            values.setDnsServers(
                some.flag() ? some.address() + QLatin1Char(' ') + some.address() : QString());
            settings.insert(name, values);
            names += name;
        }
        QByteArray text = interfacesfile::text(settings);
        QBuffer buffer(&text);
        QVERIFY(buffer.open(QIODevice::ReadOnly));
        QCOMPARE(interfacesfile::read(buffer, names), settings);
    }
}

void TestRoundTrips::sentSms()
{
    Generator some(5);
    for (int i = 0; i < kTimes; ++i) {
        const QString recipient = (some.flag() ? QStringLiteral("+") : QString())
            + some.word(DIGITS + QStringLiteral("*#"), 20);
        const QString text = some.flag() ? some.text(DEFAULT_ALPHABET, 80)
                                         : some.text(DEFAULT_ALPHABET + CYRILLIC, 70);
        const auto message = encodeSmsSubmit(recipient, text);
        QVERIFY(message);
        const auto pdu = decodeSmsPdu(message->octets, message->tpduLength, nullptr);
        QVERIFY(pdu);
        QCOMPARE(pdu->address, recipient);
        QCOMPARE(pdu->text, text);
        QString destination;
        QString content;
        int octets = 0;
        QVERIFY(gsmtext::readSubmitPdu(message->octets.toHex(), &destination, &content, &octets));
        QCOMPARE(destination, recipient);
        QCOMPARE(content, text);
        QCOMPARE(octets, message->tpduLength);
    }
}

void TestRoundTrips::receivedSms()
{
    Generator some(6);
    for (int i = 0; i < kTimes; ++i) {
        gsmtext::Sms sms;
        sms.sender
            = some.flag() ? QLatin1Char('+') + some.word(DIGITS, 20) : some.word(LETTERS, 11);
        sms.time = QDateTime(QDate(some.number(1990, 2089), some.number(1, 12), some.number(1, 28)),
            QTime(some.number(0, 23), some.number(0, 59), some.number(0, 59)), Qt::OffsetFromUTC,
            900 * some.number(-48, 56));
        sms.parts = some.number(1, 9);
        sms.part = some.number(1, sms.parts);
        sms.reference = some.number(0, 255);
        sms.text = some.flag() ? some.text(DEFAULT_ALPHABET, 75)
                               : some.text(CYRILLIC + PAIRS_AND_ODDS, 67);
        sms.ucs2 = !gsmtext::isDefaultAlphabet(sms.text);
        const QByteArray octets = QByteArray::fromHex(gsmtext::storedPdu(sms));
        QString error;
        const auto pdu = decodeSmsPdu(octets, octets.size() - 1, &error);
        QVERIFY2(pdu, qPrintable(error));
        QCOMPARE(pdu->address, sms.sender);
        QCOMPARE(pdu->text, sms.text);
        QCOMPARE(pdu->time, sms.time);
        QCOMPARE(pdu->time.offsetFromUtc(), sms.time.offsetFromUtc());
        QCOMPARE(pdu->part.has_value(), sms.parts > 1);
        if (!pdu->part)
            continue;
        QCOMPARE(pdu->part->number, sms.part);
        QCOMPARE(pdu->part->total, sms.parts);
        QCOMPARE(pdu->part->reference, sms.reference);
    }
}

void TestRoundTrips::ussdAnswer_data()
{
    QTest::addColumn<QString>("form");
    for (const char *form : {"plain", "packed", "ucs2"})
        QTest::newRow(form) << QString::fromLatin1(form);
}

// Words with blanks in between: the coding is seen from the text, which must be one for that.
void TestRoundTrips::ussdAnswer()
{
    QFETCH(QString, form);
    Generator some(7);
    for (int i = 0; i < kTimes; ++i) {
        const bool isWide = form == QLatin1String("ucs2");
        const QString letters = isWide ? CYRILLIC + PAIRS_AND_ODDS : LETTERS;
        const QString text
            = QStringLiteral("Balance ") + some.words(letters, 8).join(QLatin1Char(' '));
        QByteArray written = text.toLatin1();
        if (isWide)
            written = gsmtext::toUcs2Hex(text);
        else if (form == QLatin1String("packed"))
            written = gsmtext::pack(gsmtext::toSeptets(text)).toHex().toUpper();
        const auto answer
            = parseUssdAnswer({"+CUSD: 0,\"" + written + (isWide ? "\",72" : "\",15")});
        QVERIFY(answer);
        QVERIFY(answer->isWhole);
        QCOMPARE(answer->text, text.trimmed());
    }
}

void TestRoundTrips::ussdCode()
{
    Generator some(8);
    for (int i = 0; i < kTimes; ++i) {
        const QString code = some.word(DIGITS + QStringLiteral("*#"), 60);
        const auto packed = ussdCommand(code, UssdForm::PackedHex);
        const auto wide = ussdCommand(code, UssdForm::Ucs2Hex);
        const auto plain = ussdCommand(code, UssdForm::Plain);
        QVERIFY(packed && wide && plain);
        QCOMPARE(*plain, "AT+CUSD=1,\"" + code.toLatin1() + "\",15");
        const QByteArray septets
            = gsmtext::unpack(QByteArray::fromHex(packed->split('"').at(1)), code.size());
        QCOMPARE(gsmtext::fromSeptets(septets), code);
        QCOMPARE(gsmtext::fromUcs2Hex(wide->split('"').at(1)), code);
    }
}

QTEST_GUILESS_MAIN(TestRoundTrips)

#include "tst_roundtrips.moc"
