#include "connectionedits.h"

#include "modemsettings.h"

#include <QTest>

namespace {

const QString a = QStringLiteral("a");
const QString b = QStringLiteral("b");
const QString c = QStringLiteral("c");

ModemInfo modem(const QString &name, const QString &user = {})
{
    ModemInfo info;
    info.setConnectionName(name);
    info.setUserName(user);
    return info;
}

void store(const QStringList &names, const QStringList &order)
{
    QMap<QString, ModemInfo> modems;
    for (const QString &name : names)
        modems.insert(name, modem(name));
    ModemSettings().setModems(modems);
    ModemSettings().setConnectionsOrder(order);
}

QMap<QString, ModemInfo> modems()
{
    return ModemSettings().modems();
}

QStringList order()
{
    return ModemSettings().connectionsOrder();
}

} // namespace

class ConnectionEditsTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { store({a, b, c}, {c, a, b}); }

    void phonesAreOneListWithTheMainOneFirst_data()
    {
        QTest::addColumn<QString>("phone");
        QTest::addColumn<QStringList>("further");
        QTest::addColumn<QStringList>("shown");
        QTest::newRow("main one alone")
            << QStringLiteral("*99#") << QStringList() << QStringList{QStringLiteral("*99#")};
        QTest::newRow("with two further ones")
            << QStringLiteral("p0") << QStringList{QStringLiteral("p1"), QStringLiteral("p2")}
            << QStringList{QStringLiteral("p0"), QStringLiteral("p1"), QStringLiteral("p2")};
        QTest::newRow("without a main one") << QString() << QStringList{QStringLiteral("p1")}
                                            << QStringList{QString(), QStringLiteral("p1")};
    }
    void phonesAreOneListWithTheMainOneFirst()
    {
        QFETCH(QString, phone);
        QFETCH(QStringList, further);
        QFETCH(QStringList, shown);
        ModemInfo info;
        info.setPhone(phone);
        info.setPhones(further);
        QCOMPARE(ConnectionEdits::phones(info), shown);
        ModemInfo back;
        ConnectionEdits::setPhones(back, shown);
        QCOMPARE(back.phone(), phone);
        QCOMPARE(back.phones(), further);
    }

    void noPhonesAreAnEmptyMainOneAndNoFurther()
    {
        ModemInfo info;
        info.setPhones({QStringLiteral("p1")});
        ConnectionEdits::setPhones(info, {});
        QCOMPARE(info.phone(), QString());
        QCOMPARE(info.phones(), QStringList());
    }

    void modemsFoundReplaceAllInTheOrderOfTheirNames()
    {
        ConnectionEdits::replaceAll({modem(QStringLiteral("n")), modem(QStringLiteral("m"))});
        QCOMPARE(modems().keys(), QStringList({QStringLiteral("m"), QStringLiteral("n")}));
        QCOMPARE(order(), QStringList({QStringLiteral("m"), QStringLiteral("n")}));
    }

    void laterRecordOfTheSameNameCounts()
    {
        ConnectionEdits::replaceAll(
            {modem(a, QStringLiteral("first")), modem(b), modem(a, QStringLiteral("second"))});
        QCOMPARE(order(), QStringList({a, b}));
        QCOMPARE(modems().value(a).userName(), QStringLiteral("second"));
    }

    void forgettingAllKeepsTheOrder()
    {
        ConnectionEdits::forgetAll();
        QVERIFY(modems().isEmpty());
        QCOMPARE(order(), QStringList({c, a, b}));
    }

    void changeIsInTheStoreAtOnce()
    {
        ConnectionEdits::change(
            b, {c, a, b}, [](ModemInfo &info) { info.setUserName(QStringLiteral("user")); });
        QCOMPARE(modems().value(b).userName(), QStringLiteral("user"));
        QCOMPARE(modems().value(a), modem(a));
        QCOMPARE(modems().value(c), modem(c));
        QCOMPARE(order(), QStringList({c, a, b}));
    }

    void changeStoresTheOrderOfTheList()
    {
        ConnectionEdits::change(b, {b, a, c}, [](ModemInfo &) {});
        QCOMPARE(order(), QStringList({b, a, c}));
    }

    void changeDropsWhatTheListDoesNotShow()
    {
        ConnectionEdits::change(b, {b}, [](ModemInfo &) {});
        QCOMPARE(modems().keys(), QStringList{b});
        QCOMPARE(order(), QStringList{b});
    }

    void changeOfAnUnknownNameOnlyStoresTheOrder()
    {
        bool called = false;
        ConnectionEdits::change(
            QStringLiteral("unknown"), {b, c, a}, [&called](ModemInfo &) { called = true; });
        QVERIFY(!called);
        QCOMPARE(modems(), (QMap<QString, ModemInfo>{{a, modem(a)}, {b, modem(b)}, {c, modem(c)}}));
        QCOMPARE(order(), QStringList({b, c, a}));
    }

    void listedNameWithoutARecordGetsADefaultOne()
    {
        ConnectionEdits::change(a, {a, QStringLiteral("new")}, [](ModemInfo &) {});
        QCOMPARE(modems().value(QStringLiteral("new"), modem(a)), ModemInfo());
        QCOMPARE(order(), QStringList({a, QStringLiteral("new")}));
    }

    void whatANewerProgramWroteSurvivesAChange()
    {
        QVariantMap map = modem(a).toMap();
        map.insert(QStringLiteral("fromTheFuture"), 42);
        const auto newer = ModemInfo::fromMap(map);
        QVERIFY(newer);
        ModemSettings().setModems({{a, *newer}});
        ConnectionEdits::change(
            a, {a}, [](ModemInfo &info) { info.setUserName(QStringLiteral("user")); });
        QCOMPARE(modems().value(a).toMap().value(QStringLiteral("fromTheFuture")).toInt(), 42);
    }

    void removedConnectionIsInNeitherMapNorOrder()
    {
        ConnectionEdits::remove(a, {c, b});
        QCOMPARE(modems().keys(), QStringList({b, c}));
        QCOMPARE(order(), QStringList({c, b}));
    }

    void removingTheLastLeavesNothing()
    {
        store({a}, {a});
        ConnectionEdits::remove(a, {});
        QVERIFY(modems().isEmpty());
        QVERIFY(order().isEmpty());
    }

    void removingAnUnknownNameOnlyStoresTheOrder()
    {
        ConnectionEdits::remove(QStringLiteral("unknown"), {a, b, c});
        QCOMPARE(modems().keys(), QStringList({a, b, c}));
        QCOMPARE(order(), QStringList({a, b, c}));
    }
};

QTEST_GUILESS_MAIN(ConnectionEditsTest)
#include "tst_connectionedits.moc"
