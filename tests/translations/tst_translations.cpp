#include <QDir>
#include <QLibraryInfo>
#include <QMap>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

namespace {

const QStringList kLanguages{QStringLiteral("ru"), QStringLiteral("uk"), QStringLiteral("kk"),
    QStringLiteral("be"), QStringLiteral("uz")};
const QStringList kStems{QStringLiteral("tavtestdealer"), QStringLiteral("tavmodems"),
    QStringLiteral("netinterfaces"), QStringLiteral("servicescontroller")};

QString sourceFile(const QString &stem, const QString &language)
{
    return QStringLiteral(SOURCE_FOLDER "/translations/%1_%2.ts").arg(stem, language);
}

/// Text -> translation, the text with its context in front.
QMap<QString, QString> entriesOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QMap<QString, QString> entries;
    QXmlStreamReader reader(&file);
    QString context;
    QString source;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (reader.name() == QLatin1String("name"))
            context = reader.readElementText();
        else if (reader.name() == QLatin1String("source"))
            source = reader.readElementText();
        else if (reader.name() == QLatin1String("translation"))
            entries.insert(context + QLatin1Char('|') + source, reader.readElementText());
    }
    return reader.hasError() ? QMap<QString, QString>() : entries;
}

/// What of a text must be in its translation as well: placeholders, line breaks, mnemonics and the
/// mark at its end.
QStringList formOf(const QString &text)
{
    static const QRegularExpression parts(QStringLiteral("%\\d|\\n|&|[.!?]+$"));
    QStringList form;
    QRegularExpressionMatchIterator matches = parts.globalMatch(text);
    while (matches.hasNext())
        form.append(matches.next().captured());
    form.sort();
    return form;
}

/// The exit status of a script of the build.
int runScript(const QString &name, const QStringList &definitions)
{
    QStringList arguments;
    for (const QString &definition : definitions)
        arguments.append(QStringLiteral("-D") + definition);
    arguments.append({QStringLiteral("-P"), QStringLiteral(SOURCE_FOLDER "/cmake/") + name});
    QProcess cmake;
    cmake.start(QStringLiteral(CMAKE), arguments);
    return cmake.waitForFinished() && cmake.exitStatus() == QProcess::NormalExit ? cmake.exitCode()
                                                                                 : -1;
}

QString program(const char *name)
{
    return QLibraryInfo::location(QLibraryInfo::BinariesPath) + QLatin1Char('/')
        + QLatin1String(name);
}

void write(const QString &path, const QByteArray &text)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(text), qint64(text.size()));
}

QByteArray translationFile(const QByteArray &messages)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<!DOCTYPE TS>\n<TS version=\"2.1\" "
           "language=\"ru_RU\">\n<context>\n    <name>Page</name>\n"
        + messages + "</context>\n</TS>\n";
}

QByteArray message(const QByteArray &source, const QByteArray &translation)
{
    return "    <message>\n        <source>" + source + "</source>\n        " + translation
        + "\n    </message>\n";
}

const QByteArray kDial = message("Dial", "<translation>Звонок</translation>");

} // namespace

class TranslationsTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_box = std::make_unique<QTemporaryDir>(); }

    void filesHoldTheSameTextsInTheSameForm_data()
    {
        QTest::addColumn<QString>("stem");
        QTest::addColumn<QString>("language");
        for (const QString &stem : kStems) {
            for (const QString &language : kLanguages)
                QTest::addRow("%s %s", qPrintable(stem), qPrintable(language)) << stem << language;
        }
        for (const char *language : {"kk", "be", "uz"})
            QTest::addRow("qtbase %s", language)
                << QStringLiteral("qtbase") << QString::fromLatin1(language);
    }
    void filesHoldTheSameTextsInTheSameForm()
    {
        QFETCH(QString, stem);
        QFETCH(QString, language);
        const QMap<QString, QString> entries = entriesOf(sourceFile(stem, language));
        QVERIFY(!entries.isEmpty());
        QCOMPARE(entries.keys(), entriesOf(sourceFile(stem, QStringLiteral("kk"))).keys());
        for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
            const QString text = entry.key().section(QLatin1Char('|'), 1);
            QVERIFY2(formOf(entry.value()) == formOf(text), qPrintable(entry.value()));
            QVERIFY2(entry.value() == entry.value().trimmed(), qPrintable(entry.value()));
        }
    }

    void unfinishedEntryIsNotReleased_data()
    {
        QTest::addColumn<QByteArray>("messages");
        QTest::addColumn<bool>("isReleased");
        QTest::newRow("finished") << kDial << true;
        QTest::newRow("empty") << kDial + message("Stop", "<translation></translation>") << false;
        QTest::newRow("new") << kDial + message("Stop", "<translation type=\"unfinished\"/>")
                             << false;
        QTest::newRow("in doubt") << kDial
                + message("Stop", "<translation type=\"unfinished\">Стоп</translation>")
                                  << false;
    }
    void unfinishedEntryIsNotReleased()
    {
        QFETCH(QByteArray, messages);
        QFETCH(bool, isReleased);
        const QString source = m_box->filePath(QStringLiteral("page_ru.ts"));
        const QString result = m_box->filePath(QStringLiteral("page_ru.qm"));
        write(source, translationFile(messages));
        const int status = runScript(QStringLiteral("ReleaseTranslation.cmake"),
            {QStringLiteral("LRELEASE=") + program("lrelease"), QStringLiteral("SOURCE=") + source,
                QStringLiteral("RESULT=") + result});
        QCOMPARE(status == 0, isReleased);
        QCOMPARE(QFile::exists(result), isReleased);
    }

    void fileMustHoldTheTextsOfTheSources_data()
    {
        QTest::addColumn<QByteArray>("messages");
        QTest::addColumn<bool>("isAccepted");
        const QByteArray stop = message("Stop", "<translation>Стоп</translation>");
        QTest::newRow("all") << kDial + stop << true;
        QTest::newRow("text missing") << kDial << false;
        QTest::newRow("text that is in no source")
            << kDial + stop + message("Wait", "<translation>Ждите</translation>") << false;
    }
    void fileMustHoldTheTextsOfTheSources()
    {
        QFETCH(QByteArray, messages);
        QFETCH(bool, isAccepted);
        const QDir box(m_box->path());
        QVERIFY(box.mkdir(QStringLiteral("src")) && box.mkdir(QStringLiteral("build")));
        write(box.filePath(QStringLiteral("src/page.cpp")),
            "QString Page::text(bool on) { return on ? tr(\"Dial\") : tr(\"Stop\"); }\n");
        const QString file = box.filePath(QStringLiteral("page_ru.ts"));
        const QByteArray given = translationFile(messages);
        write(file, given);
        const QString stamp = box.filePath(QStringLiteral("build/checked"));
        const int status = runScript(QStringLiteral("CheckTranslations.cmake"),
            {QStringLiteral("LUPDATE=") + program("lupdate"),
                QStringLiteral("FOLDER=") + box.filePath(QStringLiteral("src")),
                QStringLiteral("FILES=") + file, QStringLiteral("STAMP=") + stamp});
        QCOMPARE(status == 0, isAccepted);
        QCOMPARE(QFile::exists(stamp), isAccepted);
        QFile after(file);
        QVERIFY(after.open(QIODevice::ReadOnly));
        QCOMPARE(after.readAll(), given);
    }

private:
    std::unique_ptr<QTemporaryDir> m_box;
};

QTEST_GUILESS_MAIN(TranslationsTest)
#include "tst_translations.moc"
