#include "modalbox.h"
#include "terminalconf.h"
#include "testdealerroot.h"

#include "initconfig.h"
#include "loggermanager.h"
#include "qtsingleapplication.h"

#include <QDir>
#include <QLibraryInfo>
#include <QLocale>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTextCodec>
#include <QTranslator>

#include <sys/wait.h>
#include <unistd.h>

namespace {

/// Another instance of this program. To be started before this process has an application.
class OtherInstance
{
public:
    OtherInstance(int &argc, char **argv)
    {
        int ready[2] = {};
        int stop[2] = {};
        if (::pipe(ready) != 0 || ::pipe(stop) != 0 || (m_pid = ::fork()) < 0)
            qFatal("no other instance");
        char c = 0;
        if (m_pid == 0) {
            ::close(stop[1]);
            const TestDealerRoot root(argc, argv);
            if (::write(ready[1], "x", 1) != 1 || ::read(stop[0], &c, 1) != 0)
                ::_exit(1);
            ::_exit(0);
        }
        ::close(stop[0]);
        m_stop = stop[1];
        if (::read(ready[0], &c, 1) != 1)
            qFatal("the other instance does not start");
        ::close(ready[0]);
        ::close(ready[1]);
    }
    ~OtherInstance() { end(); }
    OtherInstance(const OtherInstance &) = delete;
    OtherInstance &operator=(const OtherInstance &) = delete;

    void end()
    {
        if (m_pid <= 0)
            return;
        ::close(m_stop);
        ::waitpid(m_pid, nullptr, 0);
        m_pid = 0;
    }

private:
    pid_t m_pid = 0;
    int m_stop = -1;
};

QByteArray logText()
{
    QByteArray text;
    const QFileInfoList files = QDir(InitConfig().loggerPath()).entryInfoList(QDir::Files);
    for (const QFileInfo &info : files) {
        QFile file(info.filePath());
        if (file.open(QIODevice::ReadOnly))
            text += file.readAll();
    }
    return text;
}

class Probe : public RootSingleton<Probe>
{
public:
    static Probe *first() { return static_cast<Probe *>(_instance); }
};

/// A translation file in which "Warning" of the root's context reads as given.
void makeTranslation(const QString &path, const QString &warning)
{
    const QString source = path + QStringLiteral(".ts");
    QFile file(source);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<!DOCTYPE TS><TS version=\"2.1\"><context><name>TestDealerRoot</name><message>"
               "<source>Warning</source><translation>"
        + warning.toUtf8() + "</translation></message></context></TS>");
    file.close();
    const QString program
        = QLibraryInfo::location(QLibraryInfo::BinariesPath) + QStringLiteral("/lrelease");
    QCOMPARE(QProcess::execute(
                 program, {QStringLiteral("-silent"), source, QStringLiteral("-qm"), path}),
        0);
    QVERIFY(QFile::remove(source));
}

/// The translations that one call of setUpLocale() has made.
class Translations
{
public:
    explicit Translations(TestDealerRoot *root)
        : m_root(root)
    {
    }
    ~Translations()
    {
        for (QTranslator *translator : list())
            delete translator;
    }
    Translations(const Translations &) = delete;
    Translations &operator=(const Translations &) = delete;

    QList<QTranslator *> list() const { return m_root->findChildren<QTranslator *>(); }
    /// Names of the files that they were loaded from, sorted; empty for one that did not load.
    QStringList files() const
    {
        QStringList names;
        for (const QTranslator *translator : list())
            names.append(QFileInfo(translator->filePath()).fileName());
        names.sort();
        return names;
    }
    int loaded() const
    {
        int count = 0;
        for (const QTranslator *translator : list())
            count += translator->isEmpty() ? 0 : 1;
        return count;
    }

private:
    TestDealerRoot *const m_root;
};

const QLocale russian(QLocale::Russian, QLocale::Russia);

} // namespace

class TestDealerRootTest : public QObject
{
    Q_OBJECT

public:
    TestDealerRootTest(TestDealerRoot *root, OtherInstance *other)
        : m_root(root)
        , m_other(other)
    {
    }

private slots:
    void init()
    {
        m_box = std::make_unique<QTemporaryDir>();
        m_conf = std::make_unique<TerminalConf>(
            QStringLiteral("\n[paths]\ntranslations=%1\n").arg(m_box->path()));
    }
    void cleanup()
    {
        m_conf.reset();
        QLocale::setDefault(QLocale::c());
    }

    void firstRootIsKept()
    {
        QCOMPARE(Probe::first(), nullptr);
        {
            const Probe probe;
            QCOMPARE(Probe::first(), &probe);
            const Probe second;
            QCOMPARE(Probe::first(), &probe);
        }
        QVERIFY(Probe::first());
    }

    void applicationIsASingleOne()
    {
        QVERIFY(qobject_cast<QtSingleApplication *>(QCoreApplication::instance()));
        QVERIFY(!m_root->parent());
        QVERIFY(!QCoreApplication::instance()->parent());
    }

    void everyStemIsLoadedOnceForTheLocale()
    {
        makeTranslation(m_box->filePath(QStringLiteral("a_ru.qm")), QStringLiteral("Внимание"));
        makeTranslation(m_box->filePath(QStringLiteral("a_en.QM")), QStringLiteral("Careful"));
        makeTranslation(m_box->filePath(QStringLiteral("b.qm")), QStringLiteral("b"));
        QVERIFY(QFile::copy(m_box->filePath(QStringLiteral("b.qm")),
            m_box->filePath(QStringLiteral("readme.txt"))));
        QVERIFY(QDir(m_box->path()).mkdir(QStringLiteral("c_ru.qm")));
        const Translations translations(m_root);
        m_root->setUpLocale(russian);
        for (const QTranslator *translator : translations.list())
            QCOMPARE(translator->parent(), m_root);
        QCOMPARE(
            translations.files(), QStringList({QStringLiteral("a_ru.qm"), QStringLiteral("b.qm")}));
        // Which of two stems wins is left open.
        const QString shown = TestDealerRoot::tr("Warning");
        QVERIFY(shown == QStringLiteral("Внимание") || shown == QStringLiteral("b"));
    }

    void stemsOfNames_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QStringList>("loaded");
        QTest::newRow("with and without a locale are one stem")
            << QStringList({QStringLiteral("b.qm"), QStringLiteral("b_ru.qm")})
            << QStringList{QStringLiteral("b_ru.qm")};
        QTest::newRow("without a locale")
            << QStringList{QStringLiteral("b.qm")} << QStringList{QStringLiteral("b.qm")};
        QTest::newRow("dot in the stem") << QStringList{QStringLiteral("tool.v2.qm")}
                                         << QStringList{QStringLiteral("tool.v2.qm")};
        QTest::newRow("cut at the first underscore: there is no tool.qm")
            << QStringList{QStringLiteral("tool_box_ru.qm")} << QStringList{QString()};
    }
    void stemsOfNames()
    {
        QFETCH(QStringList, names);
        QFETCH(QStringList, loaded);
        for (const QString &name : names)
            makeTranslation(m_box->filePath(name), name);
        const Translations translations(m_root);
        m_root->setUpLocale(russian);
        QCOMPARE(translations.files(), loaded);
    }

    void localeFallsBackFromTheFullNameToTheShort()
    {
        const QLocale portuguese(QLocale::Portuguese, QLocale::Portugal);
        makeTranslation(m_box->filePath(QStringLiteral("tool_pt.qm")), QStringLiteral("short"));
        const Translations translations(m_root);
        m_root->setUpLocale(portuguese);
        QCOMPARE(TestDealerRoot::tr("Warning"), QStringLiteral("short"));
        makeTranslation(m_box->filePath(QStringLiteral("tool_pt_PT.qm")), QStringLiteral("full"));
        m_root->setUpLocale(portuguese);
        QCOMPARE(TestDealerRoot::tr("Warning"), QStringLiteral("full"));
    }

    void otherLanguagesAreSkippedSilently()
    {
        makeTranslation(m_box->filePath(QStringLiteral("tool_de.qm")), QStringLiteral("Achtung"));
        const Translations translations(m_root);
        m_root->setUpLocale(russian);
        QCOMPARE(translations.list().size(), 1);
        QCOMPARE(translations.loaded(), 0);
        QCOMPARE(TestDealerRoot::tr("Warning"), QStringLiteral("Warning"));
    }

    void brokenTranslationIsSkippedSilently()
    {
        QFile file(m_box->filePath(QStringLiteral("tool_ru.qm")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray("\x3c\xb8\x64\x18 rubbish"));
        file.close();
        const Translations translations(m_root);
        m_root->setUpLocale(russian);
        QCOMPARE(translations.loaded(), 0);
        QCOMPARE(TestDealerRoot::tr("Warning"), QStringLiteral("Warning"));
    }

    void missingDirectoryInstallsNothing()
    {
        QVERIFY(QDir(m_box->path()).removeRecursively());
        const Translations translations(m_root);
        m_root->setUpLocale(russian);
        QCOMPARE(translations.list().size(), 0);
        QCOMPARE(QLocale(), russian);
    }

    void localeAndCodecBecomeTheDefault()
    {
        m_root->setUpLocale(russian);
        QCOMPARE(QLocale(), russian);
        QCOMPARE(QTextCodec::codecForLocale()->name(), QByteArray("UTF-8"));
    }

    // The last ones: the application is told to quit.
    void secondInstanceIsRefused()
    {
        ModalBoxes boxes({[](QMessageBox *box) {
            qWarning("while the box is shown");
            box->button(QMessageBox::Ok)->click();
        }});
        QVERIFY(!m_root->init());
        QCOMPARE(boxes.shown.size(), 1);
        const ModalBoxes::Shown &box = boxes.shown.first();
        QCOMPARE(box.title, QStringLiteral("Warning"));
        QCOMPARE(box.text, QStringLiteral("The application is already running!"));
        QCOMPARE(box.buttons, QStringList{QStringLiteral("OK")});
        QCOMPARE(box.icon, QMessageBox::Information);
        QCOMPARE(box.parent, nullptr);
        // The log was there for the box and is released by now.
        qWarning("after the box");
        QVERIFY(logText().contains("while the box is shown"));
        QVERIFY(!logText().contains("after the box"));
    }

    void firstInstanceGoesOnWithTheLogOpen()
    {
        m_other->end();
        const ModalBoxes none({});
        QVERIFY(m_root->init());
        qWarning("the program runs");
        LoggerManager::releaseLog();
        QVERIFY(logText().contains("the program runs"));
        QVERIFY(none.shown.isEmpty());
    }

private:
    TestDealerRoot *const m_root;
    OtherInstance *const m_other;
    std::unique_ptr<QTemporaryDir> m_box;
    std::unique_ptr<TerminalConf> m_conf;
};

int main(int argc, char **argv)
{
    OtherInstance other(argc, argv);
    TestDealerRoot root(argc, argv);
    TestDealerRootTest test(&root, &other);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_testdealerroot.moc"
