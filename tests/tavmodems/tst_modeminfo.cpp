#include "modeminfo.h"

#include <QTest>

class TestModemInfo : public QObject
{
    Q_OBJECT

private slots:
    void hasTheDefaultsOfANewConnection();
    void keepsWhatIsSet();
    void addsInitLinesInOrder();
    void isComparedByEveryField_data();
    void isComparedByEveryField();
    void fieldsAreOneLine();
    void comesBackFromItsMap();
    void takesDefaultsForMissingKeys();
    void keepsKeysItDoesNotKnow();
    void takesNumbersOfAnyIntegerType_data();
    void takesNumbersOfAnyIntegerType();
    void refusesWhatItCannotHaveWritten_data();
    void refusesWhatItCannotHaveWritten();
    void doesNotPrintThePassword();
};

namespace {

ModemInfo fullInfo()
{
    ModemInfo info;
    info.setConnectionName(QStringLiteral("gsm1"));
    info.setPortName(QStringLiteral("ttyUSB0"));
    info.setBaudrate(115200);
    info.setUserName(QStringLiteral("user"));
    info.setPassword(QStringLiteral("secret"));
    info.setPhone(QStringLiteral("*99***1#"));
    info.setPhones({QStringLiteral("111"), QString(), QStringLiteral("333")});
    info.setInitLines({QStringLiteral("AT+CFUN=1")});
    info.setDialCommand(QStringLiteral("ATD"));
    info.setIsdn(2);
    info.setModemType(QStringLiteral("USB Modem"));
    info.setNewPppd(false);
    info.setStupidMode(false);
    return info;
}

} // namespace

void TestModemInfo::hasTheDefaultsOfANewConnection()
{
    const ModemInfo info;
    QCOMPARE(info.connectionName(), QString());
    QCOMPARE(info.portName(), QString());
    QCOMPARE(info.baudrate(), 57600);
    QCOMPARE(info.userName(), QString());
    QCOMPARE(info.password(), QString());
    QCOMPARE(info.phone(), QStringLiteral("*99#"));
    QCOMPARE(info.phones(), QStringList());
    QCOMPARE(info.initLines(), QStringList());
    QCOMPARE(info.dialCommand(), QStringLiteral("ATDT"));
    QCOMPARE(info.isdn(), 0);
    QCOMPARE(info.modemType(), QStringLiteral("Analog Modem"));
    QVERIFY(info.newPppd());
    QVERIFY(info.stupidMode());
}

void TestModemInfo::keepsWhatIsSet()
{
    const ModemInfo info = fullInfo();
    QCOMPARE(info.connectionName(), QStringLiteral("gsm1"));
    QCOMPARE(info.portName(), QStringLiteral("ttyUSB0"));
    QCOMPARE(info.baudrate(), 115200);
    QCOMPARE(info.userName(), QStringLiteral("user"));
    QCOMPARE(info.password(), QStringLiteral("secret"));
    QCOMPARE(info.phone(), QStringLiteral("*99***1#"));
    QCOMPARE(info.phones(), QStringList({QStringLiteral("111"), QString(), QStringLiteral("333")}));
    QCOMPARE(info.initLines(), QStringList(QStringLiteral("AT+CFUN=1")));
    QCOMPARE(info.dialCommand(), QStringLiteral("ATD"));
    QCOMPARE(info.isdn(), 2);
    QCOMPARE(info.modemType(), QStringLiteral("USB Modem"));
    QVERIFY(!info.newPppd());
    QVERIFY(!info.stupidMode());
}

void TestModemInfo::addsInitLinesInOrder()
{
    ModemInfo info;
    for (int i = 1; i <= 12; ++i)
        info.addInitLine(QStringLiteral("AT%1").arg(i));
    QCOMPARE(info.initLines().size(), 12);
    QCOMPARE(info.initLines().first(), QStringLiteral("AT1"));
    QCOMPARE(info.initLines().last(), QStringLiteral("AT12"));
}

void TestModemInfo::isComparedByEveryField_data()
{
    QTest::addColumn<ModemInfo>("other");
    const auto row = [](const char *name, auto change) {
        ModemInfo info = fullInfo();
        change(info);
        QTest::newRow(name) << info;
    };
    const QString x = QStringLiteral("x");
    row("connection name", [&](ModemInfo &info) { info.setConnectionName(x); });
    row("port", [&](ModemInfo &info) { info.setPortName(x); });
    row("baud rate", [&](ModemInfo &info) { info.setBaudrate(9600); });
    row("user", [&](ModemInfo &info) { info.setUserName(x); });
    row("password", [&](ModemInfo &info) { info.setPassword(x); });
    row("phone", [&](ModemInfo &info) { info.setPhone(x); });
    row("phones", [&](ModemInfo &info) { info.setPhones({x}); });
    row("init lines", [&](ModemInfo &info) { info.addInitLine(x); });
    row("dial command", [&](ModemInfo &info) { info.setDialCommand(x); });
    row("ISDN", [&](ModemInfo &info) { info.setIsdn(1); });
    row("modem type", [&](ModemInfo &info) { info.setModemType(x); });
    row("new pppd", [&](ModemInfo &info) { info.setNewPppd(true); });
    row("stupid mode", [&](ModemInfo &info) { info.setStupidMode(true); });
}

void TestModemInfo::isComparedByEveryField()
{
    QFETCH(ModemInfo, other);
    QVERIFY(fullInfo() == fullInfo());
    QVERIFY(fullInfo() != other);
}

void TestModemInfo::fieldsAreOneLine()
{
    const QString dirty = QStringLiteral("a\r\nb") + QChar(QChar::Null) + QStringLiteral("c\x1A");
    const QString clean = QStringLiteral("abc");
    ModemInfo info;
    info.setConnectionName(dirty);
    info.setPortName(dirty);
    info.setUserName(dirty);
    info.setPassword(dirty);
    info.setPhone(dirty);
    info.setPhones({dirty});
    info.setInitLines({dirty});
    info.addInitLine(dirty);
    info.setDialCommand(dirty);
    info.setModemType(dirty);
    QCOMPARE(info.connectionName(), clean);
    QCOMPARE(info.portName(), clean);
    QCOMPARE(info.userName(), clean);
    QCOMPARE(info.password(), clean);
    QCOMPARE(info.phone(), clean);
    QCOMPARE(info.phones(), QStringList(clean));
    QCOMPARE(info.initLines(), QStringList({clean, clean}));
    QCOMPARE(info.dialCommand(), clean);
    QCOMPARE(info.modemType(), clean);
}

void TestModemInfo::comesBackFromItsMap()
{
    const auto info = ModemInfo::fromMap(fullInfo().toMap());
    QVERIFY(info);
    QCOMPARE(*info, fullInfo());
}

void TestModemInfo::takesDefaultsForMissingKeys()
{
    const auto info = ModemInfo::fromMap({});
    QVERIFY(info);
    QCOMPARE(*info, ModemInfo());
}

void TestModemInfo::keepsKeysItDoesNotKnow()
{
    QVariantMap map = fullInfo().toMap();
    map[QStringLiteral("ipv6")] = QVariantList{true, QStringLiteral("later")};
    auto info = ModemInfo::fromMap(map);
    QVERIFY(info);
    info->setPassword(QStringLiteral("new"));
    map[QStringLiteral("password")] = QStringLiteral("new");
    QCOMPARE(info->toMap(), map);
}

void TestModemInfo::takesNumbersOfAnyIntegerType_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("int") << QVariant(9600);
    QTest::newRow("uint") << QVariant(9600U);
    QTest::newRow("long") << QVariant(9600LL);
    QTest::newRow("unsigned long") << QVariant(9600ULL);
}

void TestModemInfo::takesNumbersOfAnyIntegerType()
{
    QFETCH(QVariant, value);
    const auto info = ModemInfo::fromMap({{QStringLiteral("baudrate"), value}});
    QVERIFY(info);
    QCOMPARE(info->baudrate(), 9600);
}

void TestModemInfo::refusesWhatItCannotHaveWritten_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    const QString password = QStringLiteral("password");
    const QString phones = QStringLiteral("phones");
    const QString isdn = QStringLiteral("isdn");
    QTest::newRow("number for a text") << password << QVariant(1);
    QTest::newRow("line end in a text") << password << QVariant(QStringLiteral("a\nInit9=AT"));
    QTest::newRow("carriage return in a text") << password << QVariant(QStringLiteral("a\rb"));
    QTest::newRow("NUL in a text") << password << QVariant(QString(QChar(QChar::Null)));
    QTest::newRow("endless text") << password << QVariant(QString(1000000, QLatin1Char('x')));
    QTest::newRow("text for a list") << phones << QVariant(QStringLiteral("1"));
    QTest::newRow("number in a list") << phones << QVariant(QVariantList{1});
    QTest::newRow("line end in a list") << phones << QVariant(QStringList(QStringLiteral("1\n2")));
    QStringList endless;
    for (int i = 0; i < 100000; ++i)
        endless << QString();
    QTest::newRow("endless list") << phones << QVariant(endless);
    QTest::newRow("text for a number") << isdn << QVariant(QStringLiteral("0"));
    QTest::newRow("number beyond int") << isdn << QVariant(0x100000000LL);
    QTest::newRow("number beyond long") << isdn << QVariant(0xffffffffffffffffULL);
    QTest::newRow("number for a switch") << QStringLiteral("newPppd") << QVariant(1);
    QTest::newRow("nothing") << QStringLiteral("newPppd") << QVariant();
}

void TestModemInfo::refusesWhatItCannotHaveWritten()
{
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    QVariantMap map = fullInfo().toMap();
    map[key] = value;
    QString error;
    QVERIFY(!ModemInfo::fromMap(map, &error));
    QVERIFY2(error.contains(key), qPrintable(error));
    QVERIFY(!ModemInfo::fromMap(map));
}

void TestModemInfo::doesNotPrintThePassword()
{
    QString text;
    QDebug(&text) << fullInfo();
    QVERIFY(text.contains(QStringLiteral("gsm1")));
    QVERIFY(!text.contains(QStringLiteral("secret")));
}

QTEST_APPLESS_MAIN(TestModemInfo)

#include "tst_modeminfo.moc"
