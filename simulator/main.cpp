#include "terminalsim.h"

#include <QFile>

int main(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QFile::decodeName(argv[i]));
    return TerminalSim().run(arguments);
}
