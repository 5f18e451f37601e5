#include "modemsenvs.h"

#include <QDirIterator>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString kShipped = QStringLiteral(SOURCE_FOLDER "/packaging/terminalV4.conf");

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Every key that the libraries and the tool read.
QStringList keysOfTheSources()
{
    static const QRegularExpression key(
        QStringLiteral("\"((?:paths|locale|bus|internet|modems|touch)/[A-Za-z]+)\""));
    QStringList keys;
    for (const char *folder : {"/tavcommonlibs", "/tavmodems"}) {
        QDirIterator sources(QStringLiteral(SOURCE_FOLDER) + QLatin1String(folder),
            {QStringLiteral("*.cpp")}, QDir::Files, QDirIterator::Subdirectories);
        while (sources.hasNext()) {
            QRegularExpressionMatchIterator matches
                = key.globalMatch(QString::fromUtf8(contentsOf(sources.next())));
            while (matches.hasNext())
                keys.append(matches.next().captured(1));
        }
    }
    keys.removeDuplicates();
    keys.sort();
    return keys;
}

QStringList valuesOf(const ModemsEnvs &envs)
{
    return {envs.workDir(), envs.loggerPath(), envs.translationsPath(), envs.versionsPath(),
        envs.locale().name(), envs.busAddress(), envs.makerPage().toString(),
        envs.publicPage().toString(), envs.touchStopCommand(),
        envs.extraPorts().join(QLatin1Char(',')), envs.operatorsFile()};
}

} // namespace

class DefaultConfigurationTest : public QObject
{
    Q_OBJECT

private slots:
    void setsNothing()
    {
        QVERIFY(!contentsOf(kShipped).isEmpty());
        const QSettings settings(kShipped, QSettings::IniFormat);
        QCOMPARE(settings.status(), QSettings::NoError);
        QCOMPARE(settings.allKeys(), QStringList());
    }

    void namesEveryKeyWithItsDefault()
    {
        // As somebody would who takes the semicolons away.
        QByteArray text;
        const QList<QByteArray> lines = contentsOf(kShipped).split('\n');
        for (const QByteArray &line : lines) {
            static const QRegularExpression setting(QStringLiteral("^;[A-Za-z]+="));
            const bool isSetting = setting.match(QString::fromUtf8(line)).hasMatch();
            text += (isSetting ? line.mid(1) : line) + '\n';
        }
        const QTemporaryDir box;
        QFile file(box.filePath(QStringLiteral("terminalV4.conf")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(text), qint64(text.size()));
        file.close();

        QStringList keys = QSettings(file.fileName(), QSettings::IniFormat).allKeys();
        keys.sort();
        QCOMPARE(keys, keysOfTheSources());

        qputenv("TAV_TERMINAL_CONF", QFile::encodeName(file.fileName()));
        QStringList set = valuesOf(ModemsEnvs());
        qputenv("TAV_TERMINAL_CONF", "/nonexistent");
        QStringList byDefault = valuesOf(ModemsEnvs());
        // The system's directories, of which this user may not be able to write all.
        QCOMPARE(set.mid(0, 4),
            QStringList({QStringLiteral("/var/lib/ovrel"), QStringLiteral("/var/log/ovrel"),
                QStringLiteral("/usr/share/ovrel/translations"),
                QStringLiteral("/var/lib/ovrel/versions")}));
        for (int i = 0; i < 4; ++i) {
            if (byDefault.at(i).startsWith(QDir::homePath()))
                byDefault[i] = set.at(i);
        }
        QCOMPARE(set, byDefault);
    }
};

QTEST_GUILESS_MAIN(DefaultConfigurationTest)
#include "tst_defaultconfiguration.moc"
