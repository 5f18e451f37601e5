#include "loggermanager.h"
#include "logpane.h"
#include "painted.h"
#include "runningtimers.h"
#include "stallwatch.h"

#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QLoggingCategory>
#include <QMutex>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>

#include <memory>
#include <thread>

#include <sys/inotify.h>
#include <unistd.h>

Q_LOGGING_CATEGORY(PANE, "panetest")
Q_LOGGING_CATEGORY(OTHER, "othertest")

namespace {

struct Paragraph
{
    QString text;
    QColor colour;
};

QList<Paragraph> paragraphs(const QTextBrowser *pane)
{
    QList<Paragraph> result;
    for (QTextBlock block = pane->document()->begin(); block.isValid(); block = block.next()) {
        Paragraph paragraph;
        paragraph.text = block.text();
        for (auto it = block.begin(); !it.atEnd(); ++it)
            paragraph.colour = it.fragment().charFormat().foreground().color();
        result.append(paragraph);
    }
    return result;
}

QStringList texts(const QTextBrowser *pane)
{
    QStringList result;
    for (const Paragraph &paragraph : paragraphs(pane))
        result.append(paragraph.text);
    return result;
}

QMutex &mutex()
{
    static auto *const given = new QMutex;
    return *given;
}

} // namespace

class LogPaneTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { LoggerManager::initLog(m_directory.path(), 2, false, QtDebugMsg); }
    void cleanupTestCase() { LoggerManager::releaseLog(); }

    void colourFollowsTheType_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QColor>("colour");
        QTest::newRow("debug") << int(QtDebugMsg) << QColor(Qt::black);
        QTest::newRow("info") << int(QtInfoMsg) << QColor(Qt::black);
        QTest::newRow("warning") << int(QtWarningMsg) << QColor(Qt::blue);
        QTest::newRow("critical") << int(QtCriticalMsg) << QColor(Qt::red);
    }
    void colourFollowsTheType()
    {
        QFETCH(int, type);
        QFETCH(QColor, colour);
        QTextBrowser browser;
        const LogPane pane(&browser, PANE());
        const QMessageLogger logger(nullptr, 0, nullptr, "panetest");
        switch (type) {
        case QtDebugMsg:
            logger.debug("text");
            break;
        case QtInfoMsg:
            logger.info("text");
            break;
        case QtWarningMsg:
            logger.warning("text");
            break;
        default:
            logger.critical("text");
        }
        const QList<Paragraph> shown = paragraphs(&browser);
        QCOMPARE(shown.size(), 1);
        QCOMPARE(shown.first().text, QStringLiteral("text"));
        QCOMPARE(shown.first().colour, colour);
    }

    void everyLineIsAParagraphOfTheSameColour()
    {
        QTextBrowser browser;
        const LogPane pane(&browser, PANE());
        qCWarning(PANE, "a\nb");
        const QList<Paragraph> shown = paragraphs(&browser);
        QCOMPARE(texts(&browser), QStringList({QStringLiteral("a"), QStringLiteral("b")}));
        QCOMPARE(shown.at(0).colour, QColor(Qt::blue));
        QCOMPARE(shown.at(1).colour, QColor(Qt::blue));
    }

    void timerEndsWhenAllIsShown()
    {
        QTextBrowser browser;
        const LogPane pane(&browser, PANE());
        const QSet<int> before = runningTimers(0);
        qCWarning(PANE, "text");
        QVERIFY(!(runningTimers(0) - before).isEmpty());
        QTRY_VERIFY((runningTimers(0) - before).isEmpty());
    }

    void emptyLinesAreKept()
    {
        QTextBrowser browser;
        const LogPane pane(&browser, PANE());
        qCDebug(PANE, "first");
        qCDebug(PANE, "a\n\nb\n");
        QCOMPARE(texts(&browser),
            QStringList({QStringLiteral("first"), QStringLiteral("a"), QString(),
                QStringLiteral("b"), QString()}));
    }

    void markupIsInsertedAsItStands()
    {
        QTextBrowser browser;
        const LogPane pane(&browser, PANE());
        qCDebug(PANE, "<b>bold</b> &lt;x&gt;");
        QCOMPARE(texts(&browser), QStringList{QStringLiteral("bold <x>")});
    }

    void placeMarkersInAMessageStayText()
    {
        QTextBrowser browser;
        const LogPane pane(&browser, PANE());
        qCDebug(PANE, "%s", "%1 %2 100%");
        QCOMPARE(texts(&browser), QStringList{QStringLiteral("%1 %2 100%")});
    }

    void otherCategoriesAreNotShown()
    {
        QTextBrowser browser;
        const LogPane pane(&browser, PANE());
        qCWarning(OTHER, "not here");
        qWarning("nor this");
        QCOMPARE(browser.toPlainText(), QString());
    }

    void paneThatIsNullShowsNothing()
    {
        const LogPane pane(nullptr, PANE(), mutex);
        qCWarning(PANE, "nobody sees it");
        QVERIFY(mutex().tryLock());
        mutex().unlock();
    }

    void clearDropsWhatIsStillToFollow()
    {
        QTextBrowser browser;
        LogPane pane(&browser, PANE());
        for (int i = 0; i < 20000; ++i)
            qCDebug(PANE, "line %d", i);
        QVERIFY(browser.document()->blockCount() < 20000); // the flood is held back
        pane.clear();
        qCDebug(PANE, "new");
        QTRY_COMPARE(texts(&browser), QStringList{QStringLiteral("new")});
        QTest::qWait(0);
        QCOMPARE(texts(&browser), QStringList{QStringLiteral("new")});
    }

    void goneIsGone()
    {
        QTextBrowser browser;
        auto pane = std::make_unique<LogPane>(&browser, PANE());
        qCWarning(PANE, "one");
        pane.reset();
        qCWarning(PANE, "two");
        QCOMPARE(texts(&browser), QStringList{QStringLiteral("one")});
    }

    void lockIsHeldWhileLinesAreAppended()
    {
        QTextBrowser browser;
        const LogPane pane(&browser, PANE(), mutex);
        int appended = 0;
        connect(&browser, &QTextBrowser::textChanged, this, [&appended] {
            std::thread([&appended] {
                if (!mutex().tryLock())
                    ++appended;
                else
                    mutex().unlock();
            }).join();
        });
        qCDebug(PANE, "a\nb");
        QVERIFY(appended >= 2);
        QVERIFY(mutex().tryLock());
        mutex().unlock();
    }

    void messagesOfOtherThreadsArriveInOrder()
    {
        QTextBrowser browser;
        const LogPane pane(&browser, PANE(), mutex);
        std::thread([] {
            for (int i = 0; i < 100; ++i)
                qCDebug(PANE, "%d", i);
        }).join();
        QTRY_COMPARE(browser.document()->blockCount(), 100);
        for (int i = 0; i < 100; ++i)
            QCOMPARE(texts(&browser).at(i), QString::number(i));
    }

    void viewFollowsTheEndWhileItIsThere()
    {
        QTextBrowser browser;
        browser.resize(300, 200);
        browser.show();
        const LogPane pane(&browser, PANE());
        for (int i = 0; i < 200; ++i)
            qCDebug(PANE, "line %d", i);
        auto *const bar = browser.verticalScrollBar();
        QTRY_VERIFY(bar->maximum() > 0);
        QCOMPARE(bar->value(), bar->maximum());
        bar->setValue(0);
        qCDebug(PANE, "one more");
        QCOMPARE(bar->value(), 0);
    }

    void whatMarkupPointsToIsNotOpened_data()
    {
        QTest::addColumn<QString>("line");
        QTest::newRow("picture") << QStringLiteral("a<img src=\"%1\">b");
        QTest::newRow("picture, as a link") << QStringLiteral("a<img src=\"file://%1\">b");
        QTest::newRow("style sheet") << QStringLiteral("a<link rel=\"stylesheet\" href=\"%1\">b");
        QTest::newRow("style sheet, imported")
            << QStringLiteral("a<style>@import url(%1);</style>b");
        QTest::newRow("background")
            << QStringLiteral("a<p style=\"background-image:url(%1)\">b</p>");
        QTest::newRow("list mark")
            << QStringLiteral("a<ul style=\"list-style-image:url(%1)\"><li>b</ul>");
        QTest::newRow("link") << QStringLiteral("a<a href=\"%1\">b</a>");
        QTest::newRow("frame") << QStringLiteral("a<iframe src=\"%1\"></iframe>b");
    }
    void whatMarkupPointsToIsNotOpened()
    {
        QFETCH(QString, line);
        const QTemporaryDir directory;
        const QString path = directory.filePath(QStringLiteral("picture.png"));
        QImage picture(300, 300, QImage::Format_RGB32);
        picture.fill(Qt::red);
        QVERIFY(picture.save(path));
        const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        QVERIFY(::inotify_add_watch(watch, QFile::encodeName(path).constData(), IN_OPEN) >= 0);

        QTextBrowser browser;
        browser.resize(400, 400);
        browser.show();
        const LogPane pane(&browser, PANE());
        qCDebug(PANE).noquote() << line.arg(path);
        QTest::qWait(1);
        browser.grab();
        // All over the text, for a link anywhere in it.
        for (int x = 0; x < 40; x += 3)
            QTest::mouseClick(browser.viewport(), Qt::LeftButton, {}, QPoint(x, 12));
        char event[4096];
        const bool isOpened = ::read(watch, event, sizeof(event)) > 0;
        ::close(watch);
        QVERIFY(!isOpened);
        QCOMPARE(browser.source(), QUrl());
        QVERIFY(browser.toPlainText().contains(QLatin1Char('a')));
        QVERIFY(browser.document()->size().height() < 100);
    }

    void markupThatWouldTakeForEverStandsAsItCame_data()
    {
        QTest::addColumn<QString>("line");
        QTest::newRow("tables in tables") << QStringLiteral("<table><tr><td>").repeated(40);
        QTest::newRow("tables, not closed") << QStringLiteral("< TABLE><td>").repeated(40);
        QTest::newRow("wide cells")
            << QStringLiteral("<table cellspacing=100000000 border=1000000><tr><td>x");
        QTest::newRow("many cells")
            << QStringLiteral("<td colspan=30000 rowspan=30000>x").repeated(3);
        QTest::newRow("many tags") << QStringLiteral("<ul><li>").repeated(5000);
    }
    void markupThatWouldTakeForEverStandsAsItCame()
    {
        QFETCH(QString, line);
        QTextBrowser browser;
        browser.show();
        const LogPane pane(&browser, PANE());
        qCDebug(PANE).noquote() << line;
        QCOMPARE(texts(&browser), QStringList{line});
        browser.grab();
    }

    void floodFromAnotherThreadKeepsTheEventLoopRunning()
    {
        QTextBrowser browser;
        browser.resize(780, 400);
        browser.show();
        QVERIFY(QTest::qWaitForWindowExposed(&browser));
        const LogPane pane(&browser, PANE());
        const StallWatch watch;
        std::thread flood([] {
            for (int i = 0; i < 20000; ++i)
                qCDebug(PANE, "--> Modem line %d: Carrier detected, waiting for prompt.", i);
        });
        QTRY_COMPARE_WITH_TIMEOUT(browser.document()->blockCount(), 20000, 60000);
        flood.join();
        QCOMPARE(browser.document()->lastBlock().text(),
            QStringLiteral("--> Modem line 19999: Carrier detected, waiting for prompt."));
        qInfo("longest stall %lld ms", watch.longest());
        QVERIFY(watch.longest() <= 100);
    }

    void floodFromTheGuiThreadIsShownWhole()
    {
        QTextBrowser browser;
        browser.resize(780, 400);
        browser.show();
        QVERIFY(QTest::qWaitForWindowExposed(&browser));
        const LogPane pane(&browser, PANE());
        const StallWatch watch;
        QElapsedTimer clock;
        clock.start();
        for (int i = 0; i < 20000; ++i)
            qCDebug(PANE, "--> Modem line %d: Carrier detected, waiting for prompt.", i);
        qInfo("20000 messages in %lld ms", clock.elapsed());
        QTest::qWait(1); // the turn that the flood took ends here
        QTRY_COMPARE_WITH_TIMEOUT(browser.document()->blockCount(), 20000, 60000);
        qInfo("longest stall %lld ms", watch.longest());
        // Logging 20000 messages is a turn of some length by itself; showing them all in it is one
        // of about a second.
        QVERIFY2(watch.longest() <= 500, qPrintable(QString::number(watch.longest())));
    }

    void whatHasComeIsPaintedOnDemand()
    {
        QTextBrowser browser;
        browser.show();
        QVERIFY(QTest::qWaitForWindowExposed(&browser));
        Painted screen(&browser);
        LogPane pane(&browser, PANE());
        qCDebug(PANE, "first");
        QVERIFY(!screen.contains("first"));
        pane.paint();
        QVERIFY(screen.contains("first"));
    }

    // As long as the GUI thread is kept from its event loop nothing else would paint it.
    void livePaneIsPaintedWithoutTheEventLoop()
    {
        QTextBrowser browser;
        browser.show();
        QVERIFY(QTest::qWaitForWindowExposed(&browser));
        Painted screen(&browser);
        LogPane pane(&browser, PANE());
        pane.setLive(true);
        QElapsedTimer watch;
        watch.start();
        while (!screen.contains("first") && watch.elapsed() < 10000)
            qCDebug(PANE, "first");
        QVERIFY(screen.contains("first"));
        pane.setLive(false);
        QElapsedTimer quiet;
        quiet.start();
        while (quiet.elapsed() < 200)
            qCDebug(PANE, "second");
        QVERIFY(!screen.contains("second"));
    }

    // More than one turn's share goes to a live pane: there are no turns meanwhile.
    void livePaneShowsAFloodAsItComes()
    {
        QTextBrowser browser;
        browser.show();
        LogPane pane(&browser, PANE());
        pane.setLive(true);
        QElapsedTimer watch;
        watch.start();
        int sent = 0;
        while (watch.elapsed() < 1000)
            qCDebug(PANE, "%d", ++sent);
        const int live = texts(&browser).size();
        pane.clear();
        pane.setLive(false);
        watch.start();
        while (watch.elapsed() < 1000)
            qCDebug(PANE, "%d", ++sent);
        QVERIFY2(live > 2 * texts(&browser).size(), qPrintable(QString::number(live)));
    }

    void goneInTheMiddleOfAFlood()
    {
        QTextBrowser browser;
        auto pane = std::make_unique<LogPane>(&browser, PANE());
        for (int i = 0; i < 20000; ++i)
            qCDebug(PANE, "line %d", i);
        const int shown = browser.document()->blockCount();
        QVERIFY(shown < 20000);
        pane.reset();
        QTest::qWait(50);
        QCOMPARE(browser.document()->blockCount(), shown);
    }

private:
    QTemporaryDir m_directory;
};

QTEST_MAIN(LogPaneTest)
#include "tst_logpane.moc"
