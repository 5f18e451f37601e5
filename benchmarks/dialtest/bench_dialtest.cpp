// From the press on Dial to the dialer's first output, in a simulated terminal whose modem and
// services answer without delay: what is left is the tool's own time and the one poll of the modem
// service's state.

#include "loggermanager.h"
#include "modemswidget.h"
#include "testdialwidget.h"
#include "wvdial.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>
#include <QTextStream>
#include <QTimer>

#include <algorithm>
#include <vector>

namespace {

constexpr int kRounds = 5;
constexpr qint64 kPollMs = 1000;
constexpr qint64 kMostOwnMs = 150;
constexpr int kGiveUpAfterMs = 60000;

/** Turns the event loop until @p seen or for a minute at the most. */
template <typename Seen>
bool waitFor(Seen seen)
{
    return QTest::qWaitFor(seen, kGiveUpAfterMs);
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    qputenv("LD_BIND_NOW", "1");
    const QTemporaryDir directory;
    LoggerManager::initLog(directory.path(), 2, false, QtDebugMsg);
    QTextStream out(stdout);

    ModemsWidget page;
    page.resize(800, 500);
    page.show();
    // Another page has a log of the same name.
    const auto *dialPage = page.findChild<TestDialWidget *>(QStringLiteral("pageDial"));
    auto *log = dialPage->findChild<QTextBrowser *>(QStringLiteral("tbLog"));
    auto *dial = dialPage->findChild<QPushButton *>(QStringLiteral("cbDial"));
    auto *stop = dialPage->findChild<QPushButton *>(QStringLiteral("pbStop"));

    std::vector<qint64> taken;
    for (int round = 0; round < kRounds; ++round) {
        qint64 firstOutput = -1;
        QElapsedTimer sinceDial;
        const auto watch = QObject::connect(log, &QTextBrowser::textChanged, log, [&] {
            if (firstOutput < 0 && log->toPlainText().contains(QLatin1String("--> ")))
                firstOutput = sinceDial.elapsed();
        });
        sinceDial.start();
        QTest::mouseClick(dial, Qt::LeftButton);
        const bool dialled = waitFor([&] { return firstOutput >= 0; });
        QObject::disconnect(watch);
        QTest::mouseClick(stop, Qt::LeftButton);
        if (!dialled || !waitFor([&] { return dial->isEnabled(); })) {
            out << "the dialer said nothing; the log:\n" << log->toPlainText() << Qt::endl;
            return EXIT_FAILURE;
        }
        taken.push_back(firstOutput);
    }
    LoggerManager::releaseLog();

    std::sort(taken.begin(), taken.end());
    const auto median = taken[taken.size() / 2];
    out << "Dial to the dialer's first output: " << median << " ms of which " << kPollMs
        << " ms are the poll; own time " << median - kPollMs << " ms (at most " << kMostOwnMs
        << "), ratio " << static_cast<double>(median) / static_cast<double>(kPollMs + kMostOwnMs)
        << " of what is allowed" << Qt::endl;
    return median <= kPollMs + kMostOwnMs ? EXIT_SUCCESS : EXIT_FAILURE;
}
