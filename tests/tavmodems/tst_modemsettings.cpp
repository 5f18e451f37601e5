#include "modemsettings.h"

#include <QRegularExpression>
#include <QTest>

#include <thread>

class TestModemSettings : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void startsEmpty();
    void everyInstanceSeesTheSameStore();
    void restoresMapAndOrder();
    void restoresWhatEditingLeavesBehind();
    void anEmptyListIsAnEmptyStore();
    void keepsKeysOfANewerProgram();
    void namesAreOneLine();
    void refusesAListWhole_data();
    void refusesAListWhole();
    void canBeUsedFromSeveralThreads();
};

namespace {

QString name(int number)
{
    return QStringLiteral("gsm%1").arg(number);
}

ModemInfo record(int number)
{
    ModemInfo info;
    info.setConnectionName(name(number));
    info.setPortName(QStringLiteral("ttyUSB%1").arg(number));
    return info;
}

QList<QVariant> changed(int index, const QString &key, const QVariant &value)
{
    QList<QVariant> list = ModemSettings().toSettingsList();
    QVariantMap map = list.at(index).toMap();
    map[key] = value;
    list[index] = map;
    return list;
}

QList<QVariant> without(int index, const QString &key)
{
    QList<QVariant> list = ModemSettings().toSettingsList();
    QVariantMap map = list.at(index).toMap();
    map.remove(key);
    list[index] = map;
    return list;
}

} // namespace

void TestModemSettings::init()
{
    QVERIFY(ModemSettings().setSettingsList({}));
}

void TestModemSettings::startsEmpty()
{
    QVERIFY(ModemSettings().modems().isEmpty());
    QVERIFY(ModemSettings().connectionsOrder().isEmpty());
}

void TestModemSettings::everyInstanceSeesTheSameStore()
{
    const ModemSettings early;
    ModemSettings().setModems({{name(1), record(1)}});
    ModemSettings().setConnectionsOrder({name(1)});
    QCOMPARE(early.modems().value(name(1)), record(1));
    QCOMPARE(ModemSettings().connectionsOrder(), QStringList(name(1)));
}

void TestModemSettings::restoresMapAndOrder()
{
    const QMap<QString, ModemInfo> modems{
        {name(1), record(1)}, {name(2), record(2)}, {QString(), ModemInfo()}};
    const QStringList order{name(2), QString(), name(1)};
    ModemSettings().setModems(modems);
    ModemSettings().setConnectionsOrder(order);
    const QList<QVariant> list = ModemSettings().toSettingsList();

    ModemSettings().setModems({});
    ModemSettings().setConnectionsOrder({});
    QVERIFY(ModemSettings().setSettingsList(list));
    QCOMPARE(ModemSettings().modems(), modems);
    QCOMPARE(ModemSettings().connectionsOrder(), order);
    QCOMPARE(ModemSettings().toSettingsList(), list);
}

// An empty search leaves an order without modems; an order edited for a connection that has gone
// puts a default record under its name.
void TestModemSettings::restoresWhatEditingLeavesBehind()
{
    const QMap<QString, ModemInfo> modems{{name(1), ModemInfo()}, {name(3), record(3)}};
    const QStringList order{name(1), name(2), name(2)};
    ModemSettings().setModems(modems);
    ModemSettings().setConnectionsOrder(order);
    const QList<QVariant> list = ModemSettings().toSettingsList();

    ModemSettings().setModems({});
    QVERIFY(ModemSettings().setSettingsList(list));
    QCOMPARE(ModemSettings().modems(), modems);
    QCOMPARE(ModemSettings().connectionsOrder(), order);
}

void TestModemSettings::anEmptyListIsAnEmptyStore()
{
    ModemSettings().setModems({{name(1), record(1)}});
    ModemSettings().setConnectionsOrder({name(1)});
    QVERIFY(ModemSettings().setSettingsList({}));
    QVERIFY(ModemSettings().modems().isEmpty());
    QVERIFY(ModemSettings().connectionsOrder().isEmpty());
}

void TestModemSettings::keepsKeysOfANewerProgram()
{
    ModemSettings().setModems({{name(1), record(1)}});
    QVERIFY(ModemSettings().setSettingsList(changed(0, QStringLiteral("theme"), 3)));
    QVERIFY(ModemSettings().setSettingsList(changed(1, QStringLiteral("colour"), 4)));

    QMap<QString, ModemInfo> modems = ModemSettings().modems();
    modems[name(1)].setPhone(QStringLiteral("1"));
    ModemSettings().setModems(modems);

    const QList<QVariant> list = ModemSettings().toSettingsList();
    QCOMPARE(list.at(0).toMap().value(QStringLiteral("theme")), QVariant(3));
    QCOMPARE(list.at(1).toMap().value(QStringLiteral("colour")), QVariant(4));
    QCOMPARE(list.at(1).toMap().value(QStringLiteral("phone")), QVariant(QStringLiteral("1")));
}

void TestModemSettings::namesAreOneLine()
{
    ModemSettings().setModems({{QStringLiteral("a\nb"), record(1)}});
    ModemSettings().setConnectionsOrder({QStringLiteral("a\nb")});
    QCOMPARE(ModemSettings().modems().keys(), QStringList(QStringLiteral("ab")));
    QCOMPARE(ModemSettings().connectionsOrder(), QStringList(QStringLiteral("ab")));
    QVERIFY(ModemSettings().setSettingsList(ModemSettings().toSettingsList()));
}

void TestModemSettings::refusesAListWhole_data()
{
    ModemSettings().setModems({{name(1), record(1)}, {name(2), record(2)}});
    ModemSettings().setConnectionsOrder({name(2), name(1)});
    const QString version = QStringLiteral("version");
    const QString order = QStringLiteral("order");
    const QString key = QStringLiteral("key");
    const QList<QVariant> good = ModemSettings().toSettingsList();

    QTest::addColumn<QList<QVariant>>("list");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char *situation, const QList<QVariant> &list, const char *reason) {
        QTest::newRow(situation) << list << QString::fromLatin1(reason);
    };
    row("header is not a map", QList<QVariant>(good) << 1 << good.mid(1), "not a map");
    row("no header at all", {QStringLiteral("x")}, "no header");
    row("header left out", good.mid(1), "version is missing");
    row("no version", without(0, version), "version is missing");
    row("version is a text", changed(0, version, QStringLiteral("1")), "version is missing");
    row("version 0", changed(0, version, 0), "version is missing");
    row("version beyond int", changed(0, version, 0x100000001LL), "version is missing");
    row("later version", changed(0, version, 2), "newer");
    row("no order", without(0, order), "order of connections is missing");
    row("order is a text", changed(0, order, name(1)), "order of connections is missing");
    row("order of numbers", changed(0, order, QVariantList{1}), "not a name");
    row("order with a line end", changed(0, order, QStringList(QStringLiteral("a\nb"))),
        "not a name");
    QStringList endless;
    for (int i = 0; i < 100000; ++i)
        endless << QString();
    row("endless order", changed(0, order, endless), "too long");
    row("record is not a map", QList<QVariant>(good) << QStringLiteral("x"), "not a map");
    row("record without a name", without(2, key), "no name");
    row("name is a number", changed(2, key, 2), "no name");
    row("name with NUL", changed(2, key, QString(QChar(QChar::Null))), "no name");
    row("two of one name", changed(2, key, name(1)), "was there before");
    row("ill-typed field", changed(2, QStringLiteral("newPppd"), 1),
        "\"newPppd\" has the wrong type");
    row("line end in a field", changed(2, QStringLiteral("password"), QStringLiteral("a\nb")),
        "control character");
    QList<QVariant> crowd = good.mid(0, 1);
    for (int i = 0; i < 10000; ++i)
        crowd << QVariantMap{{key, name(i)}};
    row("crowd of records", crowd, "10000 records");
}

void TestModemSettings::refusesAListWhole()
{
    QFETCH(QList<QVariant>, list);
    QFETCH(QString, reason);
    const QMap<QString, ModemInfo> modems{{name(7), record(7)}};
    ModemSettings().setModems(modems);
    ModemSettings().setConnectionsOrder({name(7), name(8)});

    QTest::ignoreMessage(QtWarningMsg,
        QRegularExpression(QStringLiteral("^The modems settings are not taken: .*")
            + QRegularExpression::escape(reason)));
    QVERIFY(!ModemSettings().setSettingsList(list));
    QCOMPARE(ModemSettings().modems(), modems);
    QCOMPARE(ModemSettings().connectionsOrder(), QStringList({name(7), name(8)}));
}

void TestModemSettings::canBeUsedFromSeveralThreads()
{
    const auto work = [](int number) {
        for (int i = 0; i < 200; ++i) {
            ModemSettings().setModems({{name(number), record(number)}});
            QCOMPARE(ModemSettings().modems().size(), 1);
            QVERIFY(ModemSettings().setSettingsList(ModemSettings().toSettingsList()));
        }
    };
    std::thread other(work, 1);
    work(2);
    other.join();
}

QTEST_APPLESS_MAIN(TestModemSettings)

#include "tst_modemsettings.moc"
