#include "modemsenvs.h"

#include <QTemporaryDir>
#include <QTest>

class TestModemsEnvs : public QObject
{
    Q_OBJECT

private slots:
    void readsItsKeys_data();
    void readsItsKeys();
    void isTheTerminalsConfiguration();
};

namespace {

QString written(const QTemporaryDir &directory, const QByteArray &content)
{
    QFile file(directory.filePath(QStringLiteral("terminal.conf")));
    if (!file.open(QFile::WriteOnly) || file.write(content) != content.size())
        qFatal("no file for the test");
    return file.fileName();
}

} // namespace

void TestModemsEnvs::readsItsKeys_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("ports");
    QTest::addColumn<QString>("operators");
    const QString first = QStringLiteral("/dev/ttyS1");
    const QString second = QStringLiteral("/dev/pts/3");
    const QString none;
    QTest::newRow("nothing said") << QByteArray() << QStringList() << none;
    QTest::newRow("empty values") << QByteArray("[modems]\nextraPorts=\noperators=\n")
                                  << QStringList() << none;
    QTest::newRow("one port") << QByteArray("[modems]\nextraPorts=/dev/ttyS1\n")
                              << QStringList(first) << none;
    QTest::newRow("two ports") << QByteArray("[modems]\nextraPorts=/dev/ttyS1, /dev/pts/3\n")
                               << QStringList({first, second}) << none;
    QTest::newRow("two ports in quotes")
        << QByteArray("[modems]\nextraPorts=\"/dev/ttyS1,/dev/pts/3\"\n")
        << QStringList({first, second}) << none;
    QTest::newRow("one port twice, stray commas")
        << QByteArray("[modems]\nextraPorts=,/dev/ttyS1,,/dev/ttyS1,\n") << QStringList(first)
        << none;
    QTest::newRow("operators") << QByteArray("[modems]\noperators=/etc/ovrel/operators.xml\n")
                               << QStringList() << QStringLiteral("/etc/ovrel/operators.xml");
}

void TestModemsEnvs::readsItsKeys()
{
    QFETCH(QByteArray, content);
    const QTemporaryDir directory;
    const ModemsEnvs envs(written(directory, content));
    QTEST(envs.extraPorts(), "ports");
    QTEST(envs.operatorsFile(), "operators");
}

void TestModemsEnvs::isTheTerminalsConfiguration()
{
    QCOMPARE(ModemsEnvs().path(), InitConfig::defaultPath());
    QCOMPARE(ModemsEnvs().workDir(), InitConfig().workDir());
}

QTEST_APPLESS_MAIN(TestModemsEnvs)

#include "tst_modemsenvs.moc"
