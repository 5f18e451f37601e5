#include "openfiles.h"
#include "runtimeenvironment.h"
#include "terminal.h"

#include "busnames.h"
#include "initconfig.h"
#include "loggermanager.h"
#include "modemackwidget.h"

#include <QApplication>
#include <QDBusConnectionInterface>
#include <QFile>

#include <algorithm>
#include <cstdio>
#include <vector>

#include <malloc.h>

// Dial tests, then modem queries, in one process, with the real dialer and the real broker in the
// simulated terminal: what the process holds must not grow. TAV_SOAK_ROUNDS says how many there are
// of each.

namespace {

constexpr int kLong = 120000; // ms
constexpr int kPercent = 1; // of growth are allowed

int rounds()
{
    bool isNumber = false;
    const int number = qEnvironmentVariableIntValue("TAV_SOAK_ROUNDS", &isNumber);
    return isNumber && number >= 20 ? number : 20;
}

/// A line of /proc/PID/status, in its unit.
qint64 statusOf(qint64 pid, const QByteArray &name)
{
    QFile file(QStringLiteral("/proc/%1/status").arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(name + ':'))
            return line.mid(name.size() + 1).simplified().split(' ').first().toLongLong();
    }
    return 0;
}

qint64 brokerPid()
{
    return QDBusConnection::systemBus().interface()->servicePid(tavbus::BROKER_SERVICE).value();
}

struct Sample
{
    qint64 heap = 0; ///< bytes in use
    qint64 rss = 0; ///< kB, as the following
    qint64 files = 0;
    qint64 threads = 0;
    qint64 brokerRss = 0;

    static Sample now()
    {
        const struct mallinfo2 memory = ::mallinfo2();
        const qint64 self = QCoreApplication::applicationPid();
        return {static_cast<qint64>(memory.uordblks + memory.hblkhd), statusOf(self, "VmRSS"),
            openFiles(), statusOf(self, "Threads"), statusOf(brokerPid(), "VmRSS")};
    }
};

qint64 median(std::vector<qint64> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

class SoakTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { LoggerManager::initLog(InitConfig().loggerPath(), 2, false, QtDebugMsg); }
    void cleanupTestCase() { LoggerManager::releaseLog(); }
    void init() { m_samples.clear(); }

    void dialsLeaveNothingBehind() { repeat(&SoakTest::dial); }
    void queriesLeaveNothingBehind() { repeat(&SoakTest::query); }

private:
    void repeat(void (SoakTest::*work)(MainDialog &));
    void dial(MainDialog &dialog);
    void query(MainDialog &dialog);
    void sample(MainDialog &dialog);
    void compare(const char *what, qint64 Sample::*member, int percent);

    std::vector<Sample> m_samples;
};

void SoakTest::repeat(void (SoakTest::*work)(MainDialog &))
{
    MainDialog dialog;
    dialog.show();
    const int count = rounds();
    m_samples.reserve(static_cast<size_t>(count)); // they are not to count as growth
    for (int round = 0; round < count; ++round) {
        (this->*work)(dialog);
        if (QTest::currentTestFailed())
            return;
        sample(dialog);
    }
    compare("heap in use, bytes", &Sample::heap, kPercent);
    compare("descriptors", &Sample::files, 0);
    compare("threads", &Sample::threads, 0);
    // The allocator keeps pages, and SQLite fills its cache: told, not judged.
    compare("resident, kB", &Sample::rss, -1);
    compare("broker resident, kB", &Sample::brokerRss, -1);
}

void SoakTest::dial(MainDialog &dialog)
{
    QTest::mouseClick(
        dialog.findChild<QPushButton *>(QStringLiteral("pbDialPage")), Qt::LeftButton);
    DialPage page(dialog.findChild<TestDialWidget *>());
    page.press("cbDial");
    QTRY_VERIFY2_WITH_TIMEOUT(page.logs("Pid of pppd"), qPrintable(page.log()), kLong);
    // Without PPP in the kernel the dialer ends by itself.
    if (QFile::exists(QStringLiteral("/dev/ppp")))
        page.press("pbStop");
    QTRY_VERIFY2_WITH_TIMEOUT(page.finished.count() == 1, qPrintable(page.log()), kLong);
    QVERIFY(page.isIdle());
}

void SoakTest::query(MainDialog &dialog)
{
    QTest::mouseClick(dialog.findChild<QPushButton *>(QStringLiteral("pbAskPage")), Qt::LeftButton);
    auto *const page = dialog.findChild<ModemAckWidget *>();
    QSignalSpy finished(page, &ModemAckWidget::finished);
    QTest::mouseClick(page->findChild<QPushButton *>(QStringLiteral("pbAsk")), Qt::LeftButton);
    QVERIFY(finished.wait(kLong));
    const QString shown
        = page->findChild<QTextBrowser *>(QStringLiteral("tbModemData"))->toPlainText();
    QVERIFY2(shown.contains(QStringLiteral("Signal level: ")), qPrintable(shown));
}

// Of what stays when the panes, which show more one time and less another, are empty.
void SoakTest::sample(MainDialog &dialog)
{
    QTest::qWait(1);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const auto panes = dialog.findChildren<QTextBrowser *>();
    for (QTextBrowser *pane : panes)
        pane->clear();
    m_samples.push_back(Sample::now());
    if (m_samples.size() % 50 == 0)
        std::fprintf(stderr, "round %zu: heap %lld, resident %lld kB\n", m_samples.size(),
            m_samples.back().heap, m_samples.back().rss);
}

/// At the end against the time when all had been used; medians, since the Internet check comes and
/// goes in between.
void SoakTest::compare(const char *what, qint64 Sample::*member, int percent)
{
    const int count = static_cast<int>(m_samples.size());
    const int warm = count / 10 + 3;
    const int width = std::max(count / 10, 5);
    std::vector<qint64> values;
    for (const Sample &taken : m_samples)
        values.push_back(taken.*member);
    const qint64 before = median({values.begin() + warm, values.begin() + warm + width});
    const qint64 after = median({values.end() - width, values.end()});
    std::fprintf(stderr, "%s: %lld after %d rounds, %lld after %d (%+.2f %%), highest %lld\n", what,
        before, warm, after, count,
        100.0 * static_cast<double>(after - before)
            / static_cast<double>(std::max<qint64>(before, 1)),
        *std::max_element(values.begin() + warm, values.end()));
    if (percent >= 0)
        QVERIFY2(after - before <= before * percent / 100, what);
}

int main(int argc, char **argv)
{
    RuntimeEnvironment::prepare();
    const QApplication application(argc, argv);
    qputenv("QTEST_FUNCTION_TIMEOUT", QByteArray::number(qint64(rounds()) * kLong));
    SoakTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_soak.moc"
