#pragma once

#include <QList>
#include <QString>

#include <functional>
#include <memory>

class OrgOvrelTerminalSim1Interface;

/// Something that goes wrong in the terminal, and its mending. Both are called in any one thread.
struct Fault
{
    const char *name;
    std::function<void(OrgOvrelTerminalSim1Interface &)> strike;
    std::function<void(OrgOvrelTerminalSim1Interface &)> mend; ///< also when it did not strike
};

/// Every fault of the matrix but the end of the program, in the order of its columns.
const QList<Fault> &faults();
