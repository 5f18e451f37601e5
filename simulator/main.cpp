#include "terminalsim.h"

#include <QFile>
#include <cstdio>
#include <cstdlib>

int main(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QFile::decodeName(argv[i]));
    const int status = TerminalSim().run(arguments);
    // The terminal's process namespace, where new threads and processes of this one would go, has
    // ended: nothing that may want one is to run at exit.
    std::fflush(nullptr);
    std::_Exit(status);
}
