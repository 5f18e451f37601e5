#include "scenarios.h"
#include "testdealerroot.h"

#include <QCoreApplication>
#include <QThread>

#include <cstdio>
#include <cstdlib>
#include <memory>

// systemtest [SCENARIO PICTURES]: the tool itself, with a technician at it who walks through the
// scenario. Ends with the tool's status, or with 1 where a step did not show what it must.

namespace {

std::unique_ptr<QThread> technician;

/** Runs when the application object has been made: the walk goes on beside the GUI thread. */
void startWalk()
{
    technician.reset(QThread::create([] {
        const auto arguments = QCoreApplication::arguments();
        if (arguments.size() < 3)
            return; // the tool alone
        const auto walk = walkThrough(arguments.value(1));
        if (!walk) {
            std::fputs("there is no such scenario\n", stderr);
            std::_Exit(2);
        }
        walk(arguments.value(2));
    }));
    technician->start();
}
Q_COREAPP_STARTUP_FUNCTION(startWalk)

} // namespace

int main(int argc, char **argv)
{
    const int status = TestDealerRoot::start(argc, argv);
    technician->wait();
    technician.reset();
    std::printf("  seen: the tool ended with status %d\n", status);
    return status;
}
