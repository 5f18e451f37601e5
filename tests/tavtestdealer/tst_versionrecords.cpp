#include "versionmanager.h"

#include "appversion.h"
#include "initconfig.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <initializer_list>
#include <sys/stat.h>
#include <vector>

namespace {

QString directory()
{
    return InitConfig().versionsPath();
}

QString recordFile(const QString &application)
{
    return QStringLiteral("%1/%2.ver").arg(directory(), application);
}

void write(const QString &application, const QByteArray &text)
{
    QFile file(recordFile(application));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(text), qint64(text.size()));
}

QByteArray read(const QString &application)
{
    QFile file(recordFile(application));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A command line as main() gets it.
class Arguments
{
public:
    Arguments(std::initializer_list<QByteArray> words)
        : m_words(words)
    {
        for (QByteArray &word : m_words)
            m_pointers.push_back(word.data());
    }
    int count() const { return int(m_words.size()); }
    char **vector() { return m_pointers.data(); }

private:
    std::vector<QByteArray> m_words;
    std::vector<char *> m_pointers;
};

} // namespace

class VersionRecordsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QDir(directory()).removeRecursively();
        QVERIFY(QDir().mkpath(directory()));
    }

    void recordIsOneCompactJsonObjectInKeyOrder()
    {
        QVERIFY(VersionManager::saveAppVersion(QStringLiteral("printers"), QStringLiteral("2.1"),
            QStringLiteral("77"), QStringLiteral("/opt/печать")));
        const QByteArray expected
            = R"({"application":"printers","build":"77","exepath":"/opt/печать","version":"2.1"})";
        QCOMPARE(read(QStringLiteral("printers")), expected);
    }

    void emptyMembersStayAsEmptyStrings()
    {
        QVERIFY(
            VersionManager::saveAppVersion(QStringLiteral("x"), QString(), QString(), QString()));
        const QByteArray expected = R"({"application":"x","build":"","exepath":"","version":""})";
        QCOMPARE(read(QStringLiteral("x")), expected);
    }

    void shorterRecordReplacesLongerOneWhole()
    {
        write(QStringLiteral("x"), QByteArray(4096, '*'));
        QVERIFY(VersionManager::saveAppVersion(
            QStringLiteral("x"), QStringLiteral("1"), QString(), QString()));
        const QByteArray expected = R"({"application":"x","build":"","exepath":"","version":"1"})";
        QCOMPARE(read(QStringLiteral("x")), expected);
    }

    // The next to start a program, perhaps a newer one, may be another user of the group.
    void recordIsAsOpenToTheGroupAsItsDirectory_data()
    {
        QTest::addColumn<mode_t>("directoryMode");
        QTest::addColumn<mode_t>("fileMode");
        QTest::newRow("directory of a group's") << mode_t(02775) << mode_t(0664);
        QTest::newRow("directory of one user's") << mode_t(0755) << mode_t(0644);
    }

    void recordIsAsOpenToTheGroupAsItsDirectory()
    {
        QFETCH(const mode_t, directoryMode);
        QVERIFY(::chmod(QFile::encodeName(directory()).constData(), directoryMode) == 0);
        const mode_t before = ::umask(S_IWGRP | S_IWOTH);
        const bool isSaved = VersionManager::saveQtVersion();
        ::umask(before);
        QVERIFY(isSaved);
        struct stat status = {};
        const QByteArray file = QFile::encodeName(recordFile(QStringLiteral("Qt")));
        QVERIFY(::stat(file.constData(), &status) == 0);
        QTEST(status.st_mode & ACCESSPERMS, "fileMode");
    }

    void missingDirectoryIsNotMade()
    {
        QVERIFY(QDir(directory()).removeRecursively());
        QVERIFY(!VersionManager::saveAppVersion(
            QStringLiteral("x"), QStringLiteral("1"), QString(), QString()));
        QVERIFY(!QFileInfo::exists(directory()));
    }

    void qtRecordHasVersionOnly()
    {
        QVERIFY(VersionManager::saveQtVersion());
        const QByteArray expected
            = QByteArray(R"({"application":"Qt","build":"","exepath":"","version":"VERSION"})")
                  .replace("VERSION", qVersion());
        QCOMPARE(read(QStringLiteral("Qt")), expected);
        QCOMPARE(VersionManager::QT_APP_NAME, QStringLiteral("Qt"));
    }

    void ownRecordHoldsVersionBuildAndPathAsStarted()
    {
        const QByteArray self = QCoreApplication::applicationFilePath().toLocal8Bit();
        Arguments arguments{self, "-v"};
        QVERIFY(VersionManager::saveAppVersion(arguments.count(), arguments.vector()));
        const QJsonObject record
            = QJsonDocument::fromJson(read(QStringLiteral("tavtestdialer"))).object();
        QCOMPARE(
            record.value(QLatin1String("application")).toString(), QStringLiteral("tavtestdialer"));
        QCOMPARE(record.value(QLatin1String("version")).toString(), AppVersion::VERSION);
        QCOMPARE(record.value(QLatin1String("build")).toString(), AppVersion::BUILD);
        QCOMPARE(record.value(QLatin1String("exepath")).toString(), QString::fromLocal8Bit(self));
        QCOMPARE(QByteArray(arguments.vector()[0]), self);
        QCOMPARE(QByteArray(arguments.vector()[1]), QByteArray("-v"));
    }

    void nameThatIsNoFileWritesNoRecord()
    {
        Arguments arguments{"tavtestdialer"};
        QVERIFY(!VersionManager::saveAppVersion(arguments.count(), arguments.vector()));
        QVERIFY(!QFileInfo::exists(recordFile(QStringLiteral("tavtestdialer"))));
    }

    void emptyCommandLineWritesNoRecord()
    {
        QVERIFY(!VersionManager::saveAppVersion(0, nullptr));
        QVERIFY(!QFileInfo::exists(recordFile(QStringLiteral("tavtestdialer"))));
    }

    void recordIsReadIntoNameAndVersion()
    {
        write(QStringLiteral("file"),
            R"({"application":"inside","build":"5","version":"1.2","more":[1]})");
        QString application;
        AppVersion version;
        QVERIFY(VersionManager::loadVersionFromFile(
            recordFile(QStringLiteral("file")), application, version));
        QCOMPARE(application, QStringLiteral("inside"));
        QCOMPARE(version.version(), QStringLiteral("1.2"));
        QCOMPARE(version.build(), QStringLiteral("5"));
    }

    void recordIsReadIntoMapOfAllMembers()
    {
        write(QStringLiteral("file"),
            R"({"application":"inside","build":"5","version":"1.2","more":true})");
        QVariantMap record;
        QVERIFY(VersionManager::loadVersion(QStringLiteral("file"), record));
        QCOMPARE(record.size(), 4);
        QCOMPARE(record.value(QStringLiteral("more")), QVariant(true));
        QCOMPARE(record.value(QStringLiteral("application")), QVariant(QStringLiteral("inside")));
    }

    void unacceptableRecord_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("no build") << QByteArray(R"({"application":"a","version":"1"})");
        QTest::newRow("no version") << QByteArray(R"({"application":"a","build":"1"})");
        QTest::newRow("no application") << QByteArray(R"({"build":"a","version":"1"})");
        QTest::newRow("cut off") << QByteArray("{\"application\":\"a\",\"build\":\"\",\"versi");
        QTest::newRow("a list") << QByteArray(R"(["application","build","version"])");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("binary") << QByteArray("\0\xff\xfe{", 4);
    }
    void unacceptableRecord()
    {
        QFETCH(QByteArray, text);
        write(QStringLiteral("a"), text);
        QString application = QStringLiteral("before");
        AppVersion version;
        QVariantMap record{{QStringLiteral("before"), 1}};
        QVERIFY(!VersionManager::loadVersionFromFile(
            recordFile(QStringLiteral("a")), application, version));
        QVERIFY(!VersionManager::loadVersion(QStringLiteral("a"), record));
        QCOMPARE(application, QStringLiteral("before"));
        QCOMPARE(record.size(), 1);

        // Readers of the whole directory pass it over.
        QMap<QString, QVariant> records;
        QVERIFY(VersionManager::loadVersions(records, true));
        QVERIFY(records.isEmpty());
        QMap<QString, AppVersion> versions;
        QVERIFY(VersionManager::loadVersions(versions));
        QVERIFY(versions.isEmpty());
        QString highest;
        QVERIFY(!VersionManager::loadVersion(highest));
    }

    void missingFileIsNotRead()
    {
        QVariantMap record;
        QVERIFY(!VersionManager::loadVersion(QStringLiteral("nobody"), record));
    }

    void allRecordsAreReadByTheirApplication()
    {
        write(QStringLiteral("one"), R"({"application":"A","build":"1","version":"1.0"})");
        write(QStringLiteral("two"), R"({"application":"B","build":"2","version":"2.0"})");
        write(QStringLiteral("broken"), "{");
        QFile other(directory() + QStringLiteral("/other.txt"));
        QVERIFY(other.open(QIODevice::WriteOnly));
        other.write(R"({"application":"C","build":"3","version":"3.0"})");
        other.close();
        QVERIFY(QDir(directory()).mkdir(QStringLiteral("directory.ver")));

        QMap<QString, QVariant> records{{QStringLiteral("stale"), 1}};
        QVERIFY(VersionManager::loadVersions(records, false));
        QCOMPARE(records.keys(), QStringList({QStringLiteral("A"), QStringLiteral("B")}));
        QCOMPARE(records.value(QStringLiteral("B")).toMap(),
            QVariantMap({{QStringLiteral("build"), QStringLiteral("2")},
                {QStringLiteral("version"), QStringLiteral("2.0")}}));
        QVERIFY(VersionManager::loadVersions(records, true));
        QCOMPARE(records.value(QStringLiteral("A")).toMap().value(QStringLiteral("application")),
            QVariant(QStringLiteral("A")));

        QMap<QString, AppVersion> versions{{QStringLiteral("stale"), AppVersion()}};
        QVERIFY(VersionManager::loadVersions(versions));
        QCOMPARE(versions.keys(), QStringList({QStringLiteral("A"), QStringLiteral("B")}));
        QCOMPARE(versions.value(QStringLiteral("A")).version(), QStringLiteral("1.0"));
    }

    void emptyDirectoryIsAFailureThatClearsTheOutput()
    {
        QMap<QString, QVariant> records{{QStringLiteral("stale"), 1}};
        QVERIFY(!VersionManager::loadVersions(records, true));
        QVERIFY(records.isEmpty());
        QMap<QString, AppVersion> versions{{QStringLiteral("stale"), AppVersion()}};
        QVERIFY(!VersionManager::loadVersions(versions));
        QVERIFY(versions.isEmpty());
        QString version;
        QVERIFY(!VersionManager::loadVersion(version));
    }

    void highestVersionPassesOverQt()
    {
        write(QStringLiteral("a"), R"({"application":"a","build":"9","version":"1.9"})");
        write(QStringLiteral("b"), R"({"application":"b","build":"1","version":"1.10"})");
        write(QStringLiteral("q"), R"({"application":"Qt","build":"","version":"5.15.8"})");
        QString version;
        QVERIFY(VersionManager::loadVersion(version));
        QCOMPARE(version, QStringLiteral("1.10"));
    }

    void qtAloneGivesNoHighestVersion()
    {
        QVERIFY(VersionManager::saveQtVersion());
        QString version = QStringLiteral("before");
        QVERIFY(!VersionManager::loadVersion(version));
        QCOMPARE(version, QStringLiteral("before"));
    }
};

QTEST_GUILESS_MAIN(VersionRecordsTest)
#include "tst_versionrecords.moc"
