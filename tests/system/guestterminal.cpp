#include "control.h"
#include "machine.h"
#include "usbgadget.h"

#include <QCoreApplication>
#include <QFile>
#include <cstdio>

// guestterminal SCENARIO: makes the guest of the system test a payment terminal: plugs modems into
// its kernel, puts the services onto its system bus, writes the terminal's files under /etc. Prints
// "ready" when all is there and runs until it is ended.
int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    // What it writes belongs to the machine that it runs on.
    QFile commandLine(QStringLiteral("/proc/cmdline"));
    if (!commandLine.open(QIODevice::ReadOnly) || !commandLine.readAll().contains(" tavtop=")) {
        std::fputs("guestterminal: this is not the guest of the system test\n", stderr);
        return 2;
    }
    Scenario scenario;
    QString error;
    if (!Scenario::load(QCoreApplication::arguments().value(1), &scenario, &error)
        || !Machine::writeFiles(scenario, {}, &error)) {
        std::fprintf(stderr, "guestterminal: %s\n", qUtf8Printable(error));
        return 2;
    }
    Machine machine(scenario, {}, [](int number, const UsbIdentity &identity) {
        return std::make_unique<UsbGadget>(number, identity);
    });
    Control control(&machine);
    if (!machine.start(&error) || !control.publish()) {
        std::fprintf(stderr, "guestterminal: %s\n",
            error.isEmpty() ? "the control interface does not get onto the bus"
                            : qUtf8Printable(error));
        return 2;
    }
    std::puts("ready");
    std::fflush(stdout);
    return QCoreApplication::exec();
}
