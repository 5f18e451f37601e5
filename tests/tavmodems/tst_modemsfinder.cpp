#include "modemsfinder.h"
#include "scriptedmodem.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <vector>

class TestModemsFinder : public QObject
{
    Q_OBJECT

private slots:
    void findsModems();
    void tellsWhenThereAreNoPorts();
};

namespace {

constexpr int kLongest = 10000; // ms, no search of these takes that long

// Looks at the ports of the test only.
class Finder : public ModemsFinder
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Finder)

public:
    using ModemsFinder::ModemsFinder;
    QList<SearchPort> searched;

protected:
    QList<SearchPort> ports() const override { return searched; }
};

struct Bench
{
    QTemporaryDir locks;
    std::vector<std::unique_ptr<ScriptedModem>> modems;
    Finder finder{nullptr, locks.path()};
    QSignalSpy found{&finder, &ModemsFinder::devicesFinded};
    QSignalSpy none{&finder, &ModemsFinder::noDevices};
    QSignalSpy finished{&finder, &ModemsFinder::finished};

    ScriptedModem &add()
    {
        modems.push_back(std::make_unique<ScriptedModem>());
        finder.searched << searchPortOf(modems.back()->path());
        return *modems.back();
    }
    bool search()
    {
        for (const auto &modem : modems)
            modem->start();
        finder.start();
        return finished.wait(kLongest);
    }
    QList<ModemInfo> records() const { return found.value(0).value(0).value<QList<ModemInfo>>(); }
};

} // namespace

void TestModemsFinder::findsModems()
{
    Bench bench;
    bench.add();
    bench.add();
    QVERIFY(bench.search());
    QCOMPARE(bench.found.size(), 1);
    QCOMPARE(bench.none.size(), 0);
    QCOMPARE(bench.records().size(), 2);
}

void TestModemsFinder::tellsWhenThereAreNoPorts()
{
    Bench bench;
    QVERIFY(bench.search());
    QCOMPARE(bench.found.size(), 0);
    QCOMPARE(bench.none.size(), 1);
    QCOMPARE(bench.none.first().first().toString(),
        QStringLiteral("This machine has no serial ports. Is the modem plugged in?"));
}

QTEST_GUILESS_MAIN(TestModemsFinder)

#include "tst_modemsfinder.moc"
