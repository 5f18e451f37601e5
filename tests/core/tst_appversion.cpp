#include "appversion.h"

#include <QRegularExpression>
#include <QVersionNumber>
#include <QtTest>

class TestAppVersion : public QObject
{
    Q_OBJECT

private slots:
    void keepsWhatItIsGiven()
    {
        const AppVersion version(QStringLiteral("1.2 beta"), QStringLiteral("77"));
        QCOMPARE(version.version(), QStringLiteral("1.2 beta"));
        QCOMPARE(version.build(), QStringLiteral("77"));
    }

    void orders_data()
    {
        QTest::addColumn<QString>("lowVersion");
        QTest::addColumn<QString>("lowBuild");
        QTest::addColumn<QString>("highVersion");
        QTest::addColumn<QString>("highBuild");

        const auto row = [](const char *name, const char *lowVersion, const char *lowBuild,
                             const char *highVersion, const char *highBuild) {
            QTest::newRow(name) << QString::fromLatin1(lowVersion) << QString::fromLatin1(lowBuild)
                                << QString::fromLatin1(highVersion)
                                << QString::fromLatin1(highBuild);
        };
        row("two digits after one", "1.9", "", "1.10", "");
        row("version before build", "1.0", "999", "1.1", "1");
        row("builds as numbers", "1.0", "9", "1.0", "10");
        row("no build before a build that is a word", "1.0", "", "1.0", "a1b2c3d");
        row("a numbered build before a word", "1.0", "12345", "1.0", "a1b2c3d");
        row("words by their text", "1.0", "a1", "1.0", "b0");
        row("longer version", "1.0", "5", "1.0.1", "1");
        row("no version at all", "", "", "0.1", "");
        row("text behind the version does not count", "1.0rc2", "1", "1.0rc1", "2");
    }

    void orders()
    {
        QFETCH(QString, lowVersion);
        QFETCH(QString, lowBuild);
        QFETCH(QString, highVersion);
        QFETCH(QString, highBuild);
        const AppVersion low(lowVersion, lowBuild);
        const AppVersion high(highVersion, highBuild);
        QVERIFY(low < high);
        QVERIFY(!(high < low));
        QVERIFY(!(low < low));
        QVERIFY(!(high < high));
    }

    void runningSoftwareHasBoth()
    {
        QVERIFY(!QVersionNumber::fromString(AppVersion::VERSION).isNull());
        const QRegularExpression shape(QStringLiteral("^([0-9a-f]{7,40}|unknown)$"));
        QVERIFY2(shape.match(AppVersion::BUILD).hasMatch(), qPrintable(AppVersion::BUILD));
    }
};

QTEST_APPLESS_MAIN(TestAppVersion)
#include "tst_appversion.moc"
