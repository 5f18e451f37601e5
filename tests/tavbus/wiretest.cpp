#include "wire.h"
#include "records.h"

#include <QTest>

#include <limits>

using namespace tavbus;

class WireTest : public QObject
{
    Q_OBJECT

private slots:
    void names_data();
    void names();
    void values_data();
    void values();
    void valuesThatCannotCross_data();
    void valuesThatCannotCross();
    void damagedBytes_data();
    void damagedBytes();
    void sizeLimitIsThatOfThePackedMap();
    void timeStamps_data();
    void timeStamps();
    void stampsBeyondReasonAreNone_data();
    void stampsBeyondReasonAreNone();
};

void WireTest::names_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("good");

    QTest::newRow("an agent") << QStringLiteral("testdealer") << true;
    QTest::newRow("all kinds of characters") << QStringLiteral("AZ.az_09-") << true;
    QTest::newRow("one character") << QStringLiteral("a") << true;
    QTest::newRow("longest") << QString(255, QLatin1Char('a')) << true;
    QTest::newRow("one too long") << QString(256, QLatin1Char('a')) << false;
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("blank") << QStringLiteral("a b") << false;
    QTest::newRow("line end") << QStringLiteral("a\n") << false;
    QTest::newRow("slash") << QStringLiteral("../a") << false;
    QTest::newRow("quote") << QStringLiteral("a'b") << false;
    QTest::newRow("letter outside ASCII") << QStringLiteral("\u00e4") << false;
    QTest::newRow("digit outside ASCII") << QStringLiteral("\u0663") << false;
    QTest::newRow("NUL") << QString(QChar(QChar::Null)) << false;
}

void WireTest::names()
{
    QFETCH(const QString, name);
    QFETCH(const bool, good);
    QCOMPARE(wire::isName(name), good);
}

void WireTest::values_data()
{
    QTest::addColumn<QVariant>("value");

    QTest::newRow("true") << QVariant(true);
    QTest::newRow("smallest int") << QVariant(std::numeric_limits<int>::min());
    QTest::newRow("largest uint") << QVariant(std::numeric_limits<uint>::max());
    QTest::newRow("smallest qlonglong") << QVariant(std::numeric_limits<qlonglong>::min());
    QTest::newRow("largest qulonglong") << QVariant(std::numeric_limits<qulonglong>::max());
    QTest::newRow("double") << QVariant(0.1);
    QTest::newRow("infinite") << QVariant(std::numeric_limits<double>::infinity());
    QTest::newRow("empty text") << QVariant(QStringLiteral(""));
    QTest::newRow("text outside the basic plane") << QVariant(QStringLiteral("\U0001F4DE \u00e4"));
    QTest::newRow("empty bytes") << QVariant(QByteArray(""));
    QTest::newRow("bytes with NUL") << QVariant(QByteArray("\0\xff\r\n", 4));
    QTest::newRow("empty string list") << QVariant(QStringList());
    QTest::newRow("string list") << QVariant(QStringList({QStringLiteral("AT"), QString()}));
    QTest::newRow("empty list") << QVariant(QVariantList());
    QTest::newRow("empty map") << QVariant(QVariantMap());
    QTest::newRow("table of nested maps") << QVariant(QVariantMap(
        {{QStringLiteral("a"), QVariantMap({{QStringLiteral("b"), QVariantList({1, 2U})}})},
            {QString(), QVariantMap()}, {QStringLiteral("c"), QStringList()}}));
    QTest::newRow("deepest") << records::nested(wire::kMaxDepth - 1);
}

void WireTest::values()
{
    QFETCH(const QVariant, value);
    const QVariantList list{value};
    const int size = wire::packed(list).size();
    const auto plain = wire::checked(list, size);
    QVERIFY(plain);
    QCOMPARE(plain->constFirst().userType(), value.userType());
    QCOMPARE(*plain, list);
    for (int limit = 0; limit < size; ++limit)
        QVERIFY(!wire::checked(list, limit));
    const auto unpacked = wire::unpacked(wire::packed(value));
    QVERIFY(unpacked);
    QCOMPARE(unpacked->userType(), value.userType());
    QCOMPARE(*unpacked, value);
}

void WireTest::valuesThatCannotCross_data()
{
    QTest::addColumn<QVariant>("value");

    const QString nul = QStringLiteral("a") + QChar(QChar::Null);
    QTest::newRow("invalid") << QVariant();
    QTest::newRow("invalid in a list") << QVariant(QVariantList({1, QVariant()}));
    QTest::newRow("text with NUL") << QVariant(nul);
    QTest::newRow("text with half a surrogate pair") << QVariant(QString(QChar(0xd800)));
    QTest::newRow("string list with NUL") << QVariant(QStringList({nul}));
    QTest::newRow("key with NUL") << QVariant(QVariantMap({{nul, 1}}));
    QTest::newRow("date and time") << QVariant(QDateTime::currentDateTime());
    QTest::newRow("character") << QVariant(QChar(QLatin1Char('a')));
    QTest::newRow("float") << QVariant(1.0F);
    QTest::newRow("hash") << QVariant(QVariantHash());
    QTest::newRow("one too deep") << records::nested(wire::kMaxDepth);
    QTest::newRow("one too deep, with nothing in it")
        << records::nested(wire::kMaxDepth - 1, QVariantList());
    QTest::newRow("far too deep") << records::nested(2000);
}

void WireTest::valuesThatCannotCross()
{
    QFETCH(const QVariant, value);
    QVERIFY(!wire::checked(QVariantList({value}), wire::kMaxRecord));
    QVERIFY(!wire::checked(QVariantMap({{QStringLiteral("a"), value}}), wire::kMaxRecord));
}

void WireTest::damagedBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");

    const QByteArray good = wire::packed(QVariantList({1, QStringLiteral("two")}));
    QTest::newRow("none") << QByteArray();
    QTest::newRow("cut off") << good.left(good.size() - 1);
    QTest::newRow("too long") << good + 'x';
    QTest::newRow("not ours") << QByteArray("settings");
    QTest::newRow("length of a list out of bounds")
        << QByteArray::fromHex("0000000900ffffffff00000002");
    QTest::newRow("list of more values than memory holds")
        << QByteArray::fromHex("00000009007fffffff");
    QTest::newRow("map of more values than there are bytes")
        << QByteArray::fromHex("00000008007fffffff000000000000000a00ffffffff");
    QTest::newRow("texts of more than memory holds") << QByteArray::fromHex("0000000b007fffffff");
    QTest::newRow("texts cut off") << QByteArray::fromHex("0000000b0000000002000000020061");
    QTest::newRow("nested deeper than the stack holds")
        << QByteArray::fromHex("000000090000000001").repeated(100000);
    QTest::newRow("map with one key twice") << QByteArray::fromHex(
        "000000080000000002000000020061000000010001000000020061000000010000");
    QTest::newRow("type that is not kept") << QByteArray::fromHex("0000000700000061");
    QTest::newRow("picture, which needs a display") << QByteArray::fromHex("000000490000000000");
    QTest::newRow("number in a type of a program's own")
        << QByteArray::fromHex("000004000000000004") + "int" + '\0';
}

void WireTest::damagedBytes()
{
    QFETCH(const QByteArray, bytes);
    QVERIFY(!wire::unpacked(bytes));
}

void WireTest::sizeLimitIsThatOfThePackedMap()
{
    const QVariantMap map{{QStringLiteral("a"), QByteArray(1000, 'x')}, {QString(), QVariantMap()}};
    const int size = wire::packed(map).size();
    QCOMPARE(wire::checked(map, size).value_or(QVariantMap()), map);
    QVERIFY(!wire::checked(map, size - 1));
}

void WireTest::stampsBeyondReasonAreNone_data()
{
    constexpr qint64 kMin = std::numeric_limits<qint64>::min();
    constexpr qint64 kMax = std::numeric_limits<qint64>::max();
    QTest::addColumn<qint64>("stamp");
    QTest::addColumn<bool>("isOne");
    QTest::newRow("none") << kMin << false;
    QTest::newRow("smallest and 1 ms") << kMin + 1 << false;
    QTest::newRow("largest") << kMax << false;
    QTest::newRow("year 0") << Q_INT64_C(-62135596800001) << false;
    QTest::newRow("year 1") << Q_INT64_C(-62135596800000) << true;
    QTest::newRow("year 9999") << Q_INT64_C(253402300799999) << true;
    QTest::newRow("year 10000") << Q_INT64_C(253402300800000) << false;
}

void WireTest::stampsBeyondReasonAreNone()
{
    QFETCH(const qint64, stamp);
    QFETCH(const bool, isOne);
    const QDateTime dt = wire::toDateTime(stamp);
    QCOMPARE(dt.isValid(), isOne);
    QCOMPARE(wire::fromDateTime(dt), isOne ? stamp : std::numeric_limits<qint64>::min());
    QCOMPARE(wire::fromDateTime(QDateTime::fromMSecsSinceEpoch(stamp)), wire::fromDateTime(dt));
}

void WireTest::timeStamps_data()
{
    QTest::addColumn<QDateTime>("dt");

    QTest::newRow("now") << QDateTime::fromMSecsSinceEpoch(1700000000123);
    QTest::newRow("epoch") << QDateTime::fromMSecsSinceEpoch(0);
    QTest::newRow("before the epoch") << QDateTime::fromMSecsSinceEpoch(-1);
    QTest::newRow("far future") << QDateTime({9999, 12, 31}, {23, 59, 59, 999}, Qt::UTC);
    QTest::newRow("none") << QDateTime();
}

void WireTest::timeStamps()
{
    QFETCH(const QDateTime, dt);
    const QDateTime back = wire::toDateTime(wire::fromDateTime(dt));
    QCOMPARE(back.isValid(), dt.isValid());
    QCOMPARE(back, dt);
}

QTEST_APPLESS_MAIN(WireTest)
#include "wiretest.moc"
