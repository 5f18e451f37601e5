#include "testdealerroot.h"
#include "tour.h"

#include <QCoreApplication>
#include <QThread>

#include <cstdio>
#include <memory>

namespace {

std::unique_ptr<QThread> guide;

/** Runs when the application object has been made: the tour goes on beside the GUI thread. */
void startTour()
{
    guide.reset(QThread::create([] {
        const auto arguments = QCoreApplication::arguments();
        Tour(arguments.value(1, QStringLiteral("tour"))).run();
    }));
    guide->start();
}
Q_COREAPP_STARTUP_FUNCTION(startTour)

} // namespace

int main(int argc, char **argv)
{
    const int status = TestDealerRoot::start(argc, argv);
    guide->wait();
    guide.reset();
    std::printf(status == 0 ? "  seen: the tool saved, closed and ended with status 0\n"
                            : "FAILED: the tool ended with status %d\n",
        status);
    return status;
}
