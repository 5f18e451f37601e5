// Process start to first painted frame, and peak memory, of the tool against an empty dialog of the
// same size, turn by turn in one run on one X display.

#include "firstframe.h"
#include "privatebus.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <vector>

using namespace std::chrono_literals;

namespace {

constexpr int kRounds = 15;
constexpr double kMostTime = 1.5;
constexpr double kMostMemory = 1.5;

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct Figures
{
    std::vector<double> milliseconds;
    std::vector<double> mebibytes;

    void add(const FirstFrame::Run &run)
    {
        milliseconds.push_back(static_cast<double>(run.untilPainted.count()) / 1000.0);
        mebibytes.push_back(static_cast<double>(run.peakKib) / 1024.0);
    }
};

bool writeConfiguration(const QString &directory)
{
    QFile file(directory + QStringLiteral("/terminalV4.conf"));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(QStringLiteral("[paths]\nworkDir=%1\nlogger=%1\nversions=%1\n"
                              "[bus]\naddress=session\n"
                              "[internet]\nmakerPage=http://127.0.0.1:9/\n"
                              "publicPage=http://127.0.0.1:9/\n")
                   .arg(directory)
                   .toUtf8());
    qputenv("TAV_TERMINAL_CONF", file.fileName().toLocal8Bit());
    qputenv("XDG_RUNTIME_DIR", directory.toLocal8Bit());
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QTextStream out(stdout);
    const auto programs = QCoreApplication::applicationDirPath();
    const QStringList tool{programs + QStringLiteral("/tavtestdialer")};
    const QStringList empty{programs + QStringLiteral("/emptydialog")};

    const QTemporaryDir directory;
    if (!directory.isValid() || !writeConfiguration(directory.path())) {
        out << "no temporary directory\n";
        return EXIT_FAILURE;
    }
    PrivateBus bus;
    FirstFrame display({800, 600});
    if (!display.isValid()) {
        out << "no X display with the DAMAGE extension (xvfb-run gives one)\n";
        return EXIT_FAILURE;
    }

    Figures ofTool;
    Figures ofEmpty;
    // One unmeasured round warms the page cache and has the broker started.
    for (int round = -1; round < kRounds; ++round) {
        const auto emptyRun = display.measure(empty, 300ms);
        const auto toolRun = display.measure(tool, 300ms);
        if (!emptyRun || !toolRun) {
            out << "a window was not painted\n";
            return EXIT_FAILURE;
        }
        if (round < 0)
            continue;
        ofEmpty.add(*emptyRun);
        ofTool.add(*toolRun);
    }

    const double time = median(ofTool.milliseconds) / median(ofEmpty.milliseconds);
    const double memory = median(ofTool.mebibytes) / median(ofEmpty.mebibytes);
    out.setRealNumberNotation(QTextStream::FixedNotation);
    out.setRealNumberPrecision(1);
    out << "start to first frame: tool " << median(ofTool.milliseconds) << " ms, empty dialog "
        << median(ofEmpty.milliseconds) << " ms\n"
        << "peak memory:          tool " << median(ofTool.mebibytes) << " MiB, empty dialog "
        << median(ofEmpty.mebibytes) << " MiB\n";
    out.setRealNumberPrecision(2);
    out << "ratio of times " << time << " (at most " << kMostTime << "), of memory " << memory
        << " (at most " << kMostMemory << ")\n";
    return time <= kMostTime && memory <= kMostMemory ? EXIT_SUCCESS : EXIT_FAILURE;
}
