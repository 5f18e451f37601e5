#include "testmodemscfg.h"

#include "fulldisk.h"
#include "initconfig.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <sys/stat.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

ModemInfo modem(const QString &name)
{
    ModemInfo info;
    info.setConnectionName(name);
    info.setPortName(QStringLiteral("ttyUSB2"));
    return info;
}

QMap<QString, ModemInfo> mapOf(const ModemInfo &info)
{
    return {{info.connectionName(), info}};
}

QByteArray fileText()
{
    QFile file(TestModemsCfg::configPath());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

QList<QByteArray> linesWritten(const ModemInfo &info)
{
    TestModemsCfg().setModems(mapOf(info));
    return fileText().split('\n');
}

void writeFile(const QByteArray &text)
{
    QFile file(TestModemsCfg::configPath());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(text), qint64(text.size()));
}

mode_t modeOfFile()
{
    struct stat status = {};
    stat(QFile::encodeName(TestModemsCfg::configPath()).constData(), &status);
    return status.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO);
}

QStringList texts(std::initializer_list<const char *> list)
{
    QStringList result;
    for (const char *text : list)
        result.append(QString::fromLatin1(text));
    return result;
}

} // namespace

class TestModemsCfgTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        TestModemsCfg::setConfigPath();
        QFile::remove(TestModemsCfg::configPath());
        QDir().rmdir(TestModemsCfg::configPath());
    }

    void fileLiesInTheWorkDirectoryWhichIsMade()
    {
        const QString directory = InitConfig().workDir() + QStringLiteral("/modems");
        QCOMPARE(TestModemsCfg::configPath(), directory + QStringLiteral("/testmodems.cfg"));
        QVERIFY(QFileInfo(directory).isDir());
        QVERIFY(!TestModemsCfg::hasConfig());
    }

    void pathIsFoundOnceAProcess()
    {
        const QString path = TestModemsCfg::configPath();
        const QByteArray former = qgetenv("TAV_TERMINAL_CONF");
        qputenv("TAV_TERMINAL_CONF", "/nowhere.conf");
        TestModemsCfg::setConfigPath();
        qputenv("TAV_TERMINAL_CONF", former);
        QCOMPARE(TestModemsCfg::configPath(), path);
    }

    void wholeSection()
    {
        ModemInfo info;
        info.setConnectionName(QStringLiteral("gsm1"));
        info.setPortName(QStringLiteral("ttyUSB2"));
        info.setBaudrate(115200);
        info.setUserName(QStringLiteral("user"));
        info.setPassword(QStringLiteral("secret"));
        info.setPhone(QStringLiteral("*99#"));
        info.setPhones(texts({"1", "2"}));
        info.setInitLines(texts({"AT+CFUN=1"}));
        info.setDialCommand(QStringLiteral("ATDT"));
        info.setIsdn(3);
        info.setModemType(QStringLiteral("Analog Modem"));
        info.setNewPppd(true);
        info.setStupidMode(false);
        TestModemsCfg().setModems(mapOf(info));
        QCOMPARE(fileText(),
            QByteArray("[Dialer gsm1]\n"
                       "Modem=/dev/ttyUSB2\n"
                       "Phone=*99#\n"
                       "Phone1=1\n"
                       "Phone2=2\n"
                       "Init1=ATZ\n"
                       "Init2=AT+CFUN=1\n"
                       "Baud=115200\n"
                       "Username=user\n"
                       "Password=secret\n"
                       "Dial Command=ATDT\n"
                       "New PPPD=1\n"
                       "Stupid Mode=0\n"
                       "ISDN=3\n"
                       "Modem Type=Analog Modem\n"
                       "\n"));
        QCOMPARE(TestModemsCfg().modems().value(QStringLiteral("gsm1")).initLines(),
            texts({"AT+CFUN=1"}));
    }

    void emptyFieldsThatAreWrittenAndThatAreNot()
    {
        ModemInfo info = modem(QStringLiteral("x"));
        info.setPortName(QString());
        info.setPhone(QString());
        info.setDialCommand(QString());
        info.setModemType(QString());
        TestModemsCfg().setModems(mapOf(info));
        QCOMPARE(fileText(),
            QByteArray("[Dialer x]\nModem=/dev/\nPhone=\nInit1=ATZ\nBaud=57600\nDial Command=\n"
                       "New PPPD=1\nStupid Mode=1\nISDN=0\nModem Type=\n\n"));
    }

    void port_data()
    {
        QTest::addColumn<QString>("port");
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("bare name") << QStringLiteral("ttyUSB2") << QByteArray("Modem=/dev/ttyUSB2");
        QTest::newRow("path") << QStringLiteral("/dev/ttyACM0") << QByteArray("Modem=/dev/ttyACM0");
        QTest::newRow("dev somewhere inside")
            << QStringLiteral("/mnt/dev/x") << QByteArray("Modem=/mnt/dev/x");
        QTest::newRow("other case") << QStringLiteral("/DEV/x") << QByteArray("Modem=/dev//DEV/x");
    }
    void port()
    {
        QFETCH(QString, port);
        QFETCH(QByteArray, line);
        ModemInfo info = modem(QStringLiteral("x"));
        info.setPortName(port);
        QCOMPARE(linesWritten(info).at(1), line);
    }

    void initLines_data()
    {
        QTest::addColumn<QStringList>("stored");
        QTest::addColumn<QStringList>("written");
        QTest::addColumn<QStringList>("readBack");
        const QStringList eight = texts({"A1", "A2", "A3", "A4", "A5", "A6", "A7", "A8"});
        QTest::newRow("none") << QStringList() << texts({"ATZ"}) << QStringList();
        QTest::newRow("one") << texts({"AT+CFUN=1"}) << texts({"ATZ", "AT+CFUN=1"})
                             << texts({"AT+CFUN=1"});
        QTest::newRow("lower-case reset is not the reset line")
            << texts({"atz"}) << texts({"ATZ", "atz"}) << texts({"atz"});
        QTest::newRow("reset line in its place stays there")
            << texts({"AT1", "ATZ", "AT2"}) << texts({"AT1", "ATZ", "AT2"})
            << texts({"AT1", "AT2"});
        QTest::newRow("reset with more in the line is not the reset line")
            << texts({"ATZ0"}) << texts({"ATZ", "ATZ0"}) << texts({"ATZ0"});
        QTest::newRow("nine without the reset line: the last is dropped")
            << QStringList(eight + texts({"A9"})) << QStringList(texts({"ATZ"}) + eight) << eight;
        QTest::newRow("nine with it: all stay")
            << QStringList(eight + texts({"ATZ"})) << QStringList(eight + texts({"ATZ"})) << eight;
    }
    void initLines()
    {
        QFETCH(QStringList, stored);
        QFETCH(QStringList, written);
        QFETCH(QStringList, readBack);
        ModemInfo info = modem(QStringLiteral("x"));
        info.setInitLines(stored);
        QStringList lines;
        const QList<QByteArray> all = linesWritten(info);
        for (const QByteArray &line : all) {
            if (line.startsWith("Init")) {
                QVERIFY(line.startsWith("Init" + QByteArray::number(lines.size() + 1) + '='));
                lines.append(QString::fromUtf8(line.mid(6)));
            }
        }
        QCOMPARE(lines, written);
        QCOMPARE(TestModemsCfg().modems().value(QStringLiteral("x")).initLines(), readBack);
    }

    void twelvePhonesAreWrittenAsNine()
    {
        ModemInfo info = modem(QStringLiteral("x"));
        for (int i = 1; i <= 12; ++i)
            info.setPhones(info.phones() << QString::number(100 + i));
        const QList<QByteArray> lines = linesWritten(info);
        QVERIFY(lines.contains("Phone1=101"));
        QVERIFY(lines.contains("Phone9=109"));
        QCOMPARE(fileText().count("\nPhone"), 10);
        QCOMPARE(
            TestModemsCfg().modems().value(QStringLiteral("x")).phones(), info.phones().mid(0, 9));
    }

    void emptyPhoneEndsTheListOnReading()
    {
        ModemInfo info = modem(QStringLiteral("x"));
        info.setPhones(texts({"1", "", "3"}));
        const QList<QByteArray> lines = linesWritten(info);
        QCOMPARE(lines.mid(3, 3), QList<QByteArray>({"Phone1=1", "Phone2=", "Phone3=3"}));
        QCOMPARE(TestModemsCfg().modems().value(QStringLiteral("x")).phones(), texts({"1"}));
    }

    void sectionsFollowTheKeysOfTheMap()
    {
        TestModemsCfg().setModems({{QStringLiteral("b"), modem(QStringLiteral("first"))},
            {QStringLiteral("a"), modem(QStringLiteral("second"))},
            {QStringLiteral("c"), modem(QString())}});
        const QByteArray text = fileText();
        QCOMPARE(text.count('['), 2);
        QVERIFY(text.indexOf("[Dialer second]") < text.indexOf("[Dialer first]"));
        QVERIFY(text.indexOf("[Dialer second]") >= 0);
    }

    void emptyMapLeavesAnEmptyFile()
    {
        writeFile("[Dialer old]\nModem=/dev/ttyS0\n");
        TestModemsCfg().setModems({});
        QCOMPARE(fileText(), QByteArray());
        QVERIFY(TestModemsCfg::hasConfig());
        QVERIFY(TestModemsCfg().modems().isEmpty());
    }

    void missingFileReadsAsNothing()
    {
        QVERIFY(TestModemsCfg().modems().isEmpty());
        QVERIFY(!TestModemsCfg::hasConfig());
    }

    void lineBreaksCannotStartAnotherLine()
    {
        ModemInfo info = modem(QStringLiteral("x\n[Dialer y]"));
        const QString hostile = QStringLiteral("a\r\nPPPD Path=/tmp/evil\n");
        info.setPortName(hostile);
        info.setPhone(hostile);
        info.setPhones({hostile});
        info.setInitLines({hostile});
        info.setUserName(hostile);
        info.setPassword(hostile);
        info.setDialCommand(hostile);
        info.setModemType(hostile);
        TestModemsCfg().setModems({{QStringLiteral("x"), info}});
        const QByteArray text = fileText();
        QVERIFY(!text.contains('\r'));
        QVERIFY(!text.contains("\nPPPD"));
        QCOMPARE(text.count("\n["), 0);
        QCOMPARE(text.count('\n'), 15);
    }

    void nameReadsBackWhole_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("Cyrillic") << QStringLiteral("МегаФон модем №2");
        QTest::newRow("umlauts") << QStringLiteral("Büro-Größe");
        QTest::newRow("beyond the basic plane") << QStringLiteral("\U0001F4F6");
        QTest::newRow("blanks inside") << QStringLiteral("gsm  modem 1");
        QTest::newRow("slash") << QStringLiteral("E173/ttyUSB0");
        QTest::newRow("dot and dash") << QStringLiteral("E173-ttyUSB0.1");
        QTest::newRow("percent sign") << QStringLiteral("100%");
        QTest::newRow("closing bracket") << QStringLiteral("a]b");
        QTest::newRow("closing bracket at the end") << QStringLiteral("a[1]");
        QTest::newRow("opening bracket") << QStringLiteral("[a");
        QTest::newRow("semicolon") << QStringLiteral("a;b");
        QTest::newRow("number sign") << QStringLiteral("#1");
        QTest::newRow("backslash") << QStringLiteral("a\\b");
        QTest::newRow("backslash at the end") << QStringLiteral("a\\");
        QTest::newRow("quotation mark") << QStringLiteral("say \"a");
        QTest::newRow("looks like an escaped character") << QStringLiteral("%41");
        QTest::newRow("comma and colon") << QStringLiteral("a,b:c");
        QTest::newRow("looks like a group of the reader's own") << QStringLiteral("General");
    }
    void nameReadsBackWhole()
    {
        QFETCH(QString, name);
        ModemInfo info = modem(name);
        info.setUserName(QStringLiteral("имя"));
        TestModemsCfg().setModems(mapOf(info));
        QVERIFY(fileText().startsWith("[Dialer " + name.toUtf8() + "]\n"));
        const QMap<QString, ModemInfo> read = TestModemsCfg().modems();
        QCOMPARE(read.keys(), QStringList{name});
        QCOMPARE(read.value(name).connectionName(), name);
        QCOMPARE(read.value(name).portName(), QStringLiteral("/dev/ttyUSB2"));
        QCOMPARE(read.value(name).userName(), QStringLiteral("имя"));
    }

    void absentKeysTakeTheDefaultsOfAFreshRecord()
    {
        writeFile("[Dialer x]\nBaud=9600\n");
        const QMap<QString, ModemInfo> read = TestModemsCfg().modems();
        ModemInfo expected;
        expected.setConnectionName(QStringLiteral("x"));
        expected.setBaudrate(9600);
        QCOMPARE(read.value(QStringLiteral("x")), expected);
    }

    void otherSectionsAreIgnored()
    {
        writeFile(
            "Modem=/dev/a\n[dialer x]\nModem=/dev/b\n[Dialer]\nModem=/dev/c\n"
            "[Dialers]\nModem=/dev/d\n[x Dialer y]\nModem=/dev/e\n[Dialer z]\nModem=/dev/f\n");
        QCOMPARE(TestModemsCfg().modems().keys(), texts({"z"}));
    }

    void linesBeforeTheFirstSectionMakeNoRecord()
    {
        writeFile("Dialer foo=bar\nDialer foo/Modem=/dev/a\n[Dialer z]\nModem=/dev/f\n");
        QCOMPARE(TestModemsCfg().modems().keys(), texts({"z"}));
    }

    void keysWithASlashMakeNoRecord()
    {
        writeFile("[Dialer z]\na/b=1\nModem=/dev/f\na/Modem=/dev/g\n");
        const QMap<QString, ModemInfo> read = TestModemsCfg().modems();
        QCOMPARE(read.keys(), texts({"z"}));
        QCOMPARE(read.value(QStringLiteral("z")).portName(), QStringLiteral("/dev/f"));
    }

    void laterSectionOfANameReplacesTheEarlier()
    {
        writeFile("[Dialer x]\nModem=/dev/a\nPhone=1\n[Dialer y]\n[Dialer x]\nModem=/dev/b\n");
        const QMap<QString, ModemInfo> read = TestModemsCfg().modems();
        QCOMPARE(read.keys(), texts({"x", "y"}));
        QCOMPARE(read.value(QStringLiteral("x")).portName(), QStringLiteral("/dev/b"));
        QCOMPARE(read.value(QStringLiteral("x")).phone(), ModemInfo().phone());
    }

    void headersWrittenByHand_data()
    {
        QTest::addColumn<QByteArray>("header");
        QTest::newRow("indented") << QByteArray("  [Dialer x]");
        QTest::newRow("blanks inside") << QByteArray("[ Dialer x ]");
        QTest::newRow("comment behind") << QByteArray("[Dialer x] ; of the lab");
        QTest::newRow("carriage return") << QByteArray("[Dialer x]\r");
        QTest::newRow("no end") << QByteArray("[Dialer x");
    }
    void headersWrittenByHand()
    {
        QFETCH(QByteArray, header);
        writeFile(header + "\nModem=/dev/a\n");
        const QMap<QString, ModemInfo> read = TestModemsCfg().modems();
        QCOMPARE(read.keys(), texts({"x"}));
        QCOMPARE(read.value(QStringLiteral("x")).portName(), QStringLiteral("/dev/a"));
    }

    void valuesFollowTheRulesOfTheSettingsReader()
    {
        writeFile("[Dialer x]\nPhone= 1 ; 2\nUsername=\"a b \"\nPassword=\\x41\n"
                  "Dial Command=\xd0\x96\nModem Type=a\\\nb\n");
        const ModemInfo read = TestModemsCfg().modems().value(QStringLiteral("x"));
        QCOMPARE(read.phone(), QStringLiteral("1"));
        QCOMPARE(read.userName(), QStringLiteral("a b "));
        QCOMPARE(read.password(), QStringLiteral("A"));
        QCOMPARE(read.dialCommand(), QStringLiteral("Ж"));
        QCOMPARE(read.modemType(), QStringLiteral("ab"));
    }

    void switches_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("value");
        QTest::newRow("number 1") << QByteArray("1") << true;
        QTest::newRow("number 0") << QByteArray("0") << false;
        QTest::newRow("true by hand") << QByteArray("true") << true;
        QTest::newRow("false by hand") << QByteArray("false") << false;
    }
    void switches()
    {
        QFETCH(QByteArray, text);
        QFETCH(bool, value);
        writeFile("[Dialer x]\nNew PPPD=" + text + "\nStupid Mode=" + text + "\n");
        const ModemInfo read = TestModemsCfg().modems().value(QStringLiteral("x"));
        QCOMPARE(read.newPppd(), value);
        QCOMPARE(read.stupidMode(), value);
    }

    void malformedFilesAreSurvived_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("no end of the header") << QByteArray("[Dialer x\nModem=/dev/y\n");
        QTest::newRow("no sections") << QByteArray("\n\n===\n=\n;\n");
        QTest::newRow("binary") << QByteArray("[Dialer \xff\xfe\0]\nBaud=\xd0\n", 20);
        QTest::newRow("numbers that are none") << QByteArray("[Dialer x]\nBaud=fast\nISDN=\n");
        QTest::newRow("cut off") << QByteArray("[Dialer x]\nBa");
    }
    void malformedFilesAreSurvived()
    {
        QFETCH(QByteArray, text);
        writeFile(text);
        TestModemsCfg().modems();
        QCOMPARE(fileText(), text);
    }

    void sameSizeRewrittenAtOnceIsReadAnew()
    {
        for (int i = 0; i < 60; ++i) {
            ModemInfo info = modem(QStringLiteral("x"));
            info.setPhone(QString::number(1000 + i));
            TestModemsCfg().setModems(mapOf(info));
            QCOMPARE(TestModemsCfg().modems().value(QStringLiteral("x")).phone(), info.phone());
        }
    }

    void sameSizeRewrittenByOthersIsReadAnew()
    {
        for (int i = 0; i < 60; ++i) {
            const QByteArray phone = QByteArray::number(1000 + i);
            writeFile("[Dialer x]\nPhone=" + phone + '\n');
            QCOMPARE(TestModemsCfg().modems().value(QStringLiteral("x")).phone(),
                QString::fromLatin1(phone));
        }
    }

    void instanceReadsWhatItWrote()
    {
        TestModemsCfg config;
        config.setModems(mapOf(modem(QStringLiteral("a"))));
        QCOMPARE(config.modems().keys(), texts({"a"}));
        config.setModems(mapOf(modem(QStringLiteral("b"))));
        QCOMPARE(config.modems().keys(), texts({"b"}));
    }

    void readingWritesNothing()
    {
        const QByteArray text
            = "[Dialer x]\nInit1=AT+CGDCONT=1,\"IP\",\"internet\"\nPhone= 1 ; 2\n";
        writeFile(text);
        {
            TestModemsCfg config;
            config.modems();
        }
        QCOMPARE(fileText(), text);
    }

    void activeNameIsSharedAndOpensTheFileToTheGroup()
    {
        TestModemsCfg().setModems(mapOf(modem(QStringLiteral("a"))));
        QFile::setPermissions(TestModemsCfg::configPath(), QFile::ReadOwner | QFile::WriteOwner);
        TestModemsCfg::setActiveModemName(QStringLiteral("gsm1"));
        QCOMPARE(TestModemsCfg::activeModemName(), QStringLiteral("gsm1"));
        QCOMPARE(modeOfFile(), 0664U);
    }

    // In the order of a dial, the first one: another user of the group may be the next to dial.
    void newFileIsOpenToTheGroup()
    {
        const auto before = umask(S_IWGRP | S_IWOTH);
        TestModemsCfg::setActiveModemName(QStringLiteral("a"));
        TestModemsCfg().setModems(mapOf(modem(QStringLiteral("a"))));
        umask(before);
        QCOMPARE(modeOfFile(), 0664U);
    }

    void activeNameWithoutAFileMakesNone()
    {
        TestModemsCfg::setActiveModemName(QStringLiteral("x"));
        QVERIFY(!TestModemsCfg::hasConfig());
        QCOMPARE(TestModemsCfg::activeModemName(), QStringLiteral("x"));
    }

    void fileThatCannotBeOpenedIsLeftAndTheReasonKept()
    {
        QVERIFY(QDir().mkdir(TestModemsCfg::configPath()));
        TestModemsCfg config;
        config.setModems(mapOf(modem(QStringLiteral("x"))));
        QVERIFY(!config.lastError().isEmpty());
        QVERIFY(QFileInfo(TestModemsCfg::configPath()).isDir());
        QVERIFY(TestModemsCfg().modems().isEmpty());

        // The lock was released: the next one gets through, and clears the reason.
        QVERIFY(QDir().rmdir(TestModemsCfg::configPath()));
        config.setModems(mapOf(modem(QStringLiteral("x"))));
        QCOMPARE(config.lastError(), QString());
        QCOMPARE(TestModemsCfg().modems().size(), 1);
    }

    void sectionThatCannotBeReadMakesNoRecord()
    {
        TestModemsCfg().setModems(mapOf(modem(QStringLiteral("x"))));
        const QByteArray former = qgetenv("TMPDIR");
        qputenv("TMPDIR", "/proc"); // where nobody can make a file
        const QMap<QString, ModemInfo> read = TestModemsCfg().modems();
        qputenv("TMPDIR", former);
        QVERIFY(read.isEmpty()); // not one of defaults, which could be dialled with
    }

    void deviceInPlaceOfTheFileReadsAsNothing()
    {
        QVERIFY(QFile::link(QStringLiteral("/dev/zero"), TestModemsCfg::configPath()));
        QElapsedTimer clock;
        clock.start();
        QVERIFY(TestModemsCfg().modems().isEmpty());
        // Read up to what memory holds, it has no records either, ten seconds later.
        QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));
    }

    void fullDiskKeepsTheReason()
    {
        // Not /dev/full: its permissions would be set like those of any file.
        TestModemsCfg config;
        {
            const FullDisk disk(10);
            config.setModems(mapOf(modem(QStringLiteral("x"))));
        }
        QCOMPARE(config.lastError(), QStringLiteral("File too large"));
        QCOMPARE(fileText(), QByteArray()); // nor is half of it left
    }

    void writersAndReadersOfManyThreadsNeverMeetHalfAFile()
    {
        QMap<QString, ModemInfo> many;
        for (int i = 0; i < 50; ++i)
            many.insert(QString::number(i), modem(QString::number(i)));
        TestModemsCfg().setModems(many);
        std::vector<std::thread> threads;
        threads.reserve(4);
        std::atomic<int> wrong{0};
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([&many, &wrong, thread] {
                for (int i = 0; i < 5; ++i) {
                    TestModemsCfg config;
                    TestModemsCfg::setActiveModemName(QString::number(thread));
                    config.setModems(many);
                    if (config.modems().size() != many.size())
                        ++wrong;
                }
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(wrong.load(), 0);
    }
};

QTEST_GUILESS_MAIN(TestModemsCfgTest)
#include "tst_testmodemscfg.moc"
