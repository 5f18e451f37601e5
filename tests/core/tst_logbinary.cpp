#include "logbinary.h"

#include <QtTest>

class TestLogBinary : public QObject
{
    Q_OBJECT

private slots:
    void shows_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("codec");
        QTest::addColumn<QString>("text");

        QTest::newRow("plain") << QByteArray("OK") << QByteArray("UTF-8") << QStringLiteral("OK");
        QTest::newRow("nothing") << QByteArray() << QByteArray("UTF-8") << QString();
        QTest::newRow("UTF-8") << QByteArray("\xd0\x9f") << QByteArray("UTF-8")
                               << QStringLiteral("\u041f");
        QTest::newRow("Windows-1251")
            << QByteArray("\xcf") << QByteArray("Windows-1251") << QStringLiteral("\u041f");
        QTest::newRow("cut off within a character")
            << QByteArray("a\xd0") << QByteArray("UTF-8") << QStringLiteral("a\ufffd");
        QTest::newRow("unknown encoding")
            << QByteArray("\xe9") << QByteArray("no-such") << QStringLiteral("\u00e9");
        QTest::newRow("no encoding") << QByteArray("x") << QByteArray() << QStringLiteral("x");
        QTest::newRow("lines and tabs stay")
            << QByteArray("a\n\tb") << QByteArray("UTF-8") << QStringLiteral("a\n\tb");
        QTest::newRow("control characters") << QByteArray("\x1b[2J\r\0", 6) << QByteArray("UTF-8")
                                            << QStringLiteral("\\x1b[2J\\x0d\\x00");
        QTest::newRow("control characters above ASCII")
            << QByteArray("\x9b") << QByteArray("ISO-8859-1") << QStringLiteral("\\x9b");
    }

    void shows()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QByteArray, codec);
        QFETCH(QString, text);
        QString shown;
        QDebug(&shown).nospace() << logbinary(bytes, codec.isEmpty() ? nullptr : codec.constData());
        QCOMPARE(shown, text);
    }

    void leavesTheStreamAsItWas()
    {
        QString shown;
        QDebug(&shown) << "got" << logbinary("a b", "UTF-8") << QStringLiteral("quoted");
        QCOMPARE(shown.trimmed(), QStringLiteral("got a b \"quoted\""));
    }
};

QTEST_APPLESS_MAIN(TestLogBinary)
#include "tst_logbinary.moc"
