// A flood of 20,000 log lines in the dial test's pane: the longest time that the event loop stood
// still, and the whole time against a bare text browser that is given the same paragraphs.

#include "loggermanager.h"
#include "testdialwidget.h"
#include "wvdial.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextDocument>
#include <QTextStream>
#include <QThread>
#include <QTimer>

#include <functional>
#include <memory>

namespace {

constexpr int kLines = 20000;
constexpr qint64 kMostStallMs = 100;
constexpr int kGiveUpAfterMs = 60000;

QString line(int number)
{
    return QStringLiteral("--> line %1 of what a dialer has to say").arg(number);
}

struct Flood
{
    qint64 totalMs = 0;
    qint64 longestStallMs = 0;
    bool complete = false;
};

/** Lets @p pour start the flood and the event loop run until @p pane ends with the last line. */
Flood measure(QTextBrowser *pane, const std::function<void()> &pour)
{
    pane->clear();
    Flood flood;
    QElapsedTimer total;
    QElapsedTimer sinceTurn;
    QTimer turn;
    const auto last = line(kLines - 1);
    QObject::connect(&turn, &QTimer::timeout, pane, [&] {
        flood.longestStallMs = qMax(flood.longestStallMs, sinceTurn.restart());
        const auto *document = pane->document();
        flood.complete
            = document->blockCount() >= kLines && document->lastBlock().text().contains(last);
        if (flood.complete || total.elapsed() > kGiveUpAfterMs)
            QCoreApplication::exit();
    });
    total.start();
    sinceTurn.start();
    turn.start(1);
    QTimer::singleShot(0, pane, pour);
    QCoreApplication::exec();
    flood.totalMs = total.elapsed();
    return flood;
}

bool report(QTextStream &out, const char *how, const Flood &flood, const Flood &bare)
{
    out << how << ": " << flood.totalMs << " ms, longest stall " << flood.longestStallMs
        << " ms (at most " << kMostStallMs << "), "
        << (flood.complete ? "every line there" : "LINES LOST") << ", ratio to a bare text browser "
        << static_cast<double>(flood.totalMs) / static_cast<double>(qMax(bare.totalMs, qint64(1)))
        << Qt::endl;
    return flood.complete && flood.longestStallMs <= kMostStallMs;
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const QTemporaryDir directory;
    LoggerManager::initLog(directory.path(), 2, false, QtDebugMsg);
    QTextStream out(stdout);

    // The yardstick: the same paragraphs, appended a hundred a turn of the event loop.
    QTextBrowser bareBrowser;
    bareBrowser.resize(800, 500);
    bareBrowser.show();
    int next = 0;
    QTimer feeder;
    QObject::connect(&feeder, &QTimer::timeout, &bareBrowser, [&] {
        for (int i = 0; i < 100 && next < kLines; ++i, ++next)
            bareBrowser.append(QStringLiteral("<font color=\"black\">%1</font>").arg(line(next)));
        if (next == kLines)
            feeder.stop();
    });
    const auto bare = measure(&bareBrowser, [&] { feeder.start(0); });
    bareBrowser.hide();
    out << "bare text browser: " << bare.totalMs << " ms, longest stall " << bare.longestStallMs
        << " ms" << Qt::endl;

    TestDialWidget page;
    page.resize(800, 500);
    page.show();
    auto *pane = page.findChild<QTextBrowser *>(QStringLiteral("tbLog"));

    std::unique_ptr<QThread> other;
    const auto fromThread = measure(pane, [&] {
        other.reset(QThread::create([] {
            for (int i = 0; i < kLines; ++i)
                qCDebug(DIALUP).noquote() << line(i);
        }));
        other->start();
    });
    other->wait();
    const auto asOneText = measure(pane, [] {
        QStringList lines;
        for (int i = 0; i < kLines; ++i)
            lines.append(line(i));
        qCDebug(DIALUP).noquote() << lines.join(QLatin1Char('\n'));
    });

    const bool threadOk = report(out, "20,000 messages from another thread", fromThread, bare);
    const bool textOk = report(out, "one message of 20,000 lines", asOneText, bare);
    LoggerManager::releaseLog();
    return threadOk && textOk ? EXIT_SUCCESS : EXIT_FAILURE;
}
