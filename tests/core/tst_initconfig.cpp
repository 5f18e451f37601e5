#include "initconfig.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

namespace {

/// Opens value() to the test, as a derived reader does.
class Reader : public InitConfig
{
public:
    using InitConfig::InitConfig;
    using InitConfig::value;
};

} // namespace

class TestInitConfig : public QObject
{
    Q_OBJECT

private slots:
    void environmentNamesTheFile()
    {
        const QByteArray before = qgetenv("TAV_TERMINAL_CONF");
        qputenv("TAV_TERMINAL_CONF", "/some/where.conf");
        QCOMPARE(InitConfig().path(), QStringLiteral("/some/where.conf"));
        qunsetenv("TAV_TERMINAL_CONF");
        QCOMPARE(InitConfig::defaultPath(), QStringLiteral("/etc/ovrel/terminalV4.conf"));
        qputenv("TAV_TERMINAL_CONF", "");
        QCOMPARE(InitConfig::defaultPath(), QStringLiteral("/etc/ovrel/terminalV4.conf"));
        qputenv("TAV_TERMINAL_CONF", before);
    }

    void readsEveryKey()
    {
        const Reader config(write("[paths]\n"
                                  "workDir=/w\n"
                                  "logger=/l/tool.log\n"
                                  "translations=/\xd0\xbf\xd0\xb5\xd1\x80\n"
                                  "versions=/v\n"
                                  "[locale]\nname=ru_RU\n"
                                  "[bus]\naddress=\"unix:path=/run/bus,guid=1;tcp:host=a\"\n"
                                  "[internet]\n"
                                  "makerPage=http://maker.test/check?a=1,2\n"
                                  "publicPage=http://public.test/\n"
                                  "[touch]\nstopCommand=\"touchctl --off \\\"main panel\\\"\"\n"
                                  "[modems]\nextraPorts=/dev/a, /dev/b\n"));
        QCOMPARE(config.workDir(), QStringLiteral("/w"));
        QCOMPARE(config.loggerPath(), QStringLiteral("/l/tool.log"));
        QCOMPARE(config.translationsPath(), QStringLiteral("/\u043f\u0435\u0440"));
        QCOMPARE(config.versionsPath(), QStringLiteral("/v"));
        QCOMPARE(config.locale(), QLocale(QLocale::Russian, QLocale::Russia));
        QCOMPARE(config.busAddress(), QStringLiteral("unix:path=/run/bus,guid=1;tcp:host=a"));
        QCOMPARE(config.makerPage(), QUrl(QStringLiteral("http://maker.test/check?a=1,2")));
        QCOMPARE(config.publicPage(), QUrl(QStringLiteral("http://public.test/")));
        QCOMPARE(config.touchStopCommand(), QStringLiteral("touchctl --off \"main panel\""));
        QCOMPARE(config.value(QStringLiteral("modems/extraPorts")).toStringList(),
            QStringList({QStringLiteral("/dev/a"), QStringLiteral("/dev/b")}));
        QCOMPARE(config.value(QStringLiteral("modems/none"), 5).toInt(), 5);
    }

    void usesDefaults_data()
    {
        QTest::addColumn<QString>("path");
        const auto huge = write(QByteArray("[paths]\nworkDir=/w\n").leftJustified(2'000'000, '\n'));
        QTest::newRow("no file") << m_box.filePath(QStringLiteral("none"));
        QTest::newRow("no name") << QString();
        QTest::newRow("a directory") << m_box.path();
        QTest::newRow("a device") << QStringLiteral("/dev/zero");
        QTest::newRow("empty") << write("");
        QTest::newRow("empty values") << write("[paths]\nworkDir=\nlogger= \n[bus]\naddress=\n"
                                               "[internet]\nmakerPage=\n[locale]\nname=\n");
        QTest::newRow("binary") << write(QByteArray("\x7f"
                                                    "ELF\0\xff\xfe[paths\n=\n]=[\0",
            20));
        QTest::newRow("section never closed") << write("[paths\nworkDir\n");
        QTest::newRow("far too large") << huge;
        QTest::newRow("ill-typed values") << write("[locale]\nname=nonsense\n"
                                                   "[internet]\nmakerPage=ftp://x/\n"
                                                   "publicPage=not a page\n"
                                                   "[touch]\nstopCommand=@Invalid()\n");
    }

    void usesDefaults()
    {
        QFETCH(QString, path);
        const InitConfig config(path);
        const InitConfig none(m_box.filePath(QStringLiteral("none")));
        QVERIFY(config.workDir().endsWith(QLatin1String("/ovrel")));
        QCOMPARE(config.workDir(), none.workDir());
        QCOMPARE(config.loggerPath(), none.loggerPath());
        QCOMPARE(config.translationsPath(), none.translationsPath());
        QCOMPARE(config.versionsPath(), none.versionsPath());
        QCOMPARE(config.locale(), QLocale::system());
        QCOMPARE(config.busAddress(), QStringLiteral("system"));
        QCOMPARE(config.touchStopCommand(), QString());
        for (const QUrl &page : {config.makerPage(), config.publicPage()}) {
            QVERIFY(page.isValid());
            QCOMPARE(page.scheme(), QStringLiteral("http"));
        }
        QVERIFY(config.makerPage() != config.publicPage());
    }

    void keepsWhatIsReadableInABrokenFile()
    {
        const InitConfig config(write("[paths]\nworkDir=/w\nthis is no setting\n[bus\n"));
        QCOMPARE(config.workDir(), QStringLiteral("/w"));
        QCOMPARE(config.busAddress(), QStringLiteral("system"));
    }

    void localeC() { QCOMPARE(InitConfig(write("[locale]\nname=C\n")).locale(), QLocale::c()); }

    void aByteOrderMarkDoesNotHideTheFirstSection()
    {
        QCOMPARE(
            InitConfig(write("\xef\xbb\xbf[paths]\nworkDir=/w\n")).workDir(), QStringLiteral("/w"));
    }

    void defaultDirectoriesCanBeUsedByThisUser()
    {
        const InitConfig config(m_box.filePath(QStringLiteral("none")));
        for (const QString &path : {config.workDir(), config.loggerPath(), config.versionsPath()}) {
            QFileInfo info(path);
            while (!info.exists())
                info.setFile(info.path());
            QVERIFY2(info.isDir() && info.isWritable(), qPrintable(path));
        }
    }

private:
    QString write(const QByteArray &content)
    {
        QFile file(m_box.filePath(QStringLiteral("%1.conf").arg(++m_files)));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("the test's own file cannot be written");
        return file.fileName();
    }

    QTemporaryDir m_box;
    int m_files = 0;
};

QTEST_GUILESS_MAIN(TestInitConfig)
#include "tst_initconfig.moc"
