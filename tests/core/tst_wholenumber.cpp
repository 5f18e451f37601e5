#include "wholenumber.h"

#include <QtTest>

#include <limits>

class TestWholeNumber : public QObject
{
    Q_OBJECT

private slots:
    void readsAWholeNumberThatFits_data()
    {
        constexpr int kMin = std::numeric_limits<int>::min();
        constexpr int kMax = std::numeric_limits<int>::max();
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<bool>("isOne");
        QTest::addColumn<int>("number");
        QTest::newRow("int") << QVariant(-7) << true << -7;
        QTest::newRow("unsigned") << QVariant(7U) << true << 7;
        QTest::newRow("long") << QVariant(-7LL) << true << -7;
        QTest::newRow("unsigned long") << QVariant(7ULL) << true << 7;
        QTest::newRow("largest") << QVariant(qlonglong(kMax)) << true << kMax;
        QTest::newRow("smallest") << QVariant(qlonglong(kMin)) << true << kMin;
        QTest::newRow("too large") << QVariant(qlonglong(kMax) + 1) << false << 0;
        QTest::newRow("too small") << QVariant(qlonglong(kMin) - 1) << false << 0;
        QTest::newRow("too large, unsigned") << QVariant(uint(kMax) + 1) << false << 0;
        QTest::newRow("largest of all")
            << QVariant(std::numeric_limits<qulonglong>::max()) << false << 0;
        QTest::newRow("text") << QVariant(QStringLiteral("7")) << false << 0;
        QTest::newRow("fraction") << QVariant(7.0) << false << 0;
        QTest::newRow("truth") << QVariant(true) << false << 0;
        QTest::newRow("nothing") << QVariant() << false << 0;
    }

    void readsAWholeNumberThatFits()
    {
        QFETCH(QVariant, value);
        QFETCH(bool, isOne);
        QFETCH(int, number);
        const std::optional<int> read = wholeNumber(value);
        QCOMPARE(read.has_value(), isOne);
        QCOMPARE(read.value_or(0), number);
    }
};

QTEST_APPLESS_MAIN(TestWholeNumber)
#include "tst_wholenumber.moc"
