// A search over 16 ports, four modems of three ports and four silent ones, against the slowest of
// these ports searched alone: side by side, the others cost nothing.

#include "modemsfinder.h"
#include "scriptedmodem.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kModems = 4;
constexpr int kPortsOfModem = 3;
constexpr int kSilentPorts = 4;
constexpr double kMostRatio = 1.2;
constexpr qint64 kMostSilentMs = 3000;
constexpr qint64 kWvdialconfMs = 1500; // what it spends on a silent port, one after another
constexpr useconds_t kLatencyUs = 20000; // of a modem, a command

class Finder : public ModemsFinder
{
public:
    Finder(const QList<SearchPort> &searched, const QString &lockDirectory)
        : ModemsFinder(nullptr, lockDirectory)
        , m_searched(searched)
    {
    }

    /// Milliseconds until it has finished.
    qint64 search()
    {
        QElapsedTimer clock;
        QEventLoop loop;
        QObject::connect(this, &ModemsFinder::finished, &loop, &QEventLoop::quit);
        clock.start();
        start();
        loop.exec();
        return clock.elapsed();
    }

protected:
    QList<SearchPort> ports() const override { return m_searched; }

private:
    const QList<SearchPort> m_searched;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("atmodem=false"));
    QTextStream out(stdout);
    const QTemporaryDir locks;

    std::vector<std::unique_ptr<ScriptedModem>> modems;
    QList<SearchPort> ports;
    for (int i = 0; i < kModems * kPortsOfModem + kSilentPorts; ++i) {
        modems.push_back(std::make_unique<ScriptedModem>());
        ScriptedModem &modem = *modems.back();
        modem.silent = i >= kModems * kPortsOfModem;
        modem.answers["AT+CGSN"]
            = ScriptedModem::ok("35314203384070" + QByteArray::number(i / kPortsOfModem));
        modem.answers["AT+CIMI"] = ScriptedModem::ok("250011234567890");
        modem.onCommand = [](const QByteArray &) { ::usleep(kLatencyUs); };
        modem.start();
        ports << searchPortOf(modem.path());
        ports.last().usbInterface = i % kPortsOfModem;
    }

    qint64 slowest = 0;
    qint64 slowestSilent = 0;
    for (int i = 0; i < ports.size(); ++i) {
        const qint64 taken = Finder({ports.at(i)}, locks.path()).search();
        slowest = std::max(slowest, taken);
        if (i >= kModems * kPortsOfModem)
            slowestSilent = std::max(slowestSilent, taken);
    }

    Finder all(ports, locks.path());
    const qint64 together = all.search();
    const bool isRight = all.found().size() == kModems && all.failures().size() == kSilentPorts;
    const double ratio = static_cast<double>(together) / static_cast<double>(slowest);
    out << "16 ports together: " << together << " ms, " << all.found().size() << " modems of "
        << kModems << "; the slowest alone: " << slowest << " ms; ratio " << ratio << " (at most "
        << kMostRatio << ")\n"
        << "a silent port: " << slowestSilent << " ms (at most " << kMostSilentMs << ")\n"
        << "ratio to wvdialconf's " << kWvdialconfMs << " ms a silent port, one after another: "
        << static_cast<double>(together) / static_cast<double>(kWvdialconfMs * kSilentPorts)
        << Qt::endl;
    return isRight && ratio <= kMostRatio && slowestSilent <= kMostSilentMs ? EXIT_SUCCESS
                                                                            : EXIT_FAILURE;
}
