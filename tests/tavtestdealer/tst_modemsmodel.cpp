#include "modemsmodel.h"

#include <QAbstractItemModelTester>
#include <QStringListModel>
#include <QTest>

class ModemsModelTest : public QObject
{
    Q_OBJECT

private slots:
    void namesAreInTheOrderGiven()
    {
        ModemsModel model;
        const QAbstractItemModelTester tester(
            &model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setStringList({QStringLiteral("z"), QStringLiteral("a"), QStringLiteral("модем")});
        QCOMPARE(model.connectionName(model.index(0)), QStringLiteral("z"));
        QCOMPARE(model.connectionName(model.index(1)), QStringLiteral("a"));
        QCOMPARE(model.connectionName(model.index(2)), QStringLiteral("модем"));
    }

    void invalidIndexHasNoName()
    {
        ModemsModel model;
        QCOMPARE(model.connectionName(QModelIndex()), QString());
        model.setStringList({QStringLiteral("a")});
        QCOMPARE(model.connectionName(QModelIndex()), QString());
    }

    void rowBelowTheEndHasNoName()
    {
        ModemsModel model;
        model.setStringList({QStringLiteral("a"), QStringLiteral("b")});
        const QModelIndex second = model.index(1);
        model.setStringList({QStringLiteral("a")});
        QVERIFY(second.isValid());
        QCOMPARE(model.connectionName(second), QString());
    }
};

QTEST_GUILESS_MAIN(ModemsModelTest)
#include "tst_modemsmodel.moc"
