#include "testdealerroot.h"

#include "exithook.h"
#include "loggermanager.h"
#include "maindialog.h"
#include "modemsenvs.h"
#include "qtsingleapplication.h"
#include "runtimeenvironment.h"
#include "signalnotifier.h"
#include "touchstyle.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QMessageBox>
#include <QSet>
#include <QTextCodec>
#include <QTranslator>

#include <cstring>

namespace {

// The part of a translation file's name that goes before the locale's.
QString stemOf(const QString &file)
{
    const int end = file.indexOf(QLatin1Char('_'));
    return end < 0 ? QFileInfo(file).completeBaseName() : file.left(end);
}

} // namespace

int TestDealerRoot::start(int &argc, char **argv)
{
    RuntimeEnvironment::prepare();
    TestDealerRoot root(argc, argv);
    return root.init() ? root.exec() : -1;
}

TestDealerRoot::TestDealerRoot(int &argc, char **argv)
{
    // Before the application object, which would make another style first.
    QApplication::setStyle(new TouchStyle);
    // Never deleted: it lives until the process ends.
    new QtSingleApplication(argc, argv, true); // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks)
    TouchStyle::enlargeText();
}

TestDealerRoot::~TestDealerRoot() = default;

bool TestDealerRoot::init()
{
    const ModemsEnvs reader;
    LoggerManager::initLog(reader.loggerPath(), 2, false, QtDebugMsg);
    setUpLocale(reader.locale());

    auto *const application = qobject_cast<QtSingleApplication *>(QCoreApplication::instance());
    if (!application->isRunning())
        return true;
    QMessageBox::information(
        nullptr, tr("Warning"), tr("The application is already running!"), QMessageBox::Ok);
    QCoreApplication::quit();
    LoggerManager::releaseLog();
    return false;
}

int TestDealerRoot::exec()
{
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.contains(QStringLiteral("-v")) || arguments.contains(QStringLiteral("--version")))
        return 0;

    SignalNotifier signalNotifier;
    MainDialog dialog;
    connect(&signalNotifier, &SignalNotifier::caught, &dialog, [&dialog](int number) {
        qWarning("Told to end by signal %d (%s)", number, ::sigdescr_np(number));
        dialog.endWork();
        QCoreApplication::quit();
    });
    // When the display goes the platform plug-in logs it and calls exit(), with status 1.
    const ExitHook hook([&dialog] {
        qCritical("The program ends without its display");
        dialog.endWork();
        LoggerManager::releaseLog();
    });
    dialog.show();
    const int status = QApplication::exec();
    LoggerManager::releaseLog();
    return status;
}

void TestDealerRoot::setUpLocale(const QLocale &locale)
{
    QLocale::setDefault(locale);
    const QString path = ModemsEnvs().translationsPath();
    const QStringList files = QDir(path).entryList(
        {QStringLiteral("*.QM"), QStringLiteral("*.qm")}, QDir::Files, QDir::NoSort);
    QSet<QString> stems;
    for (const QString &file : files)
        stems.insert(stemOf(file));
    for (const QString &stem : qAsConst(stems)) {
        auto *const translator = new QTranslator(this);
        if (translator->load(locale, stem, QStringLiteral("_"), path, QStringLiteral(".qm")))
            QCoreApplication::installTranslator(translator);
    }
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}
