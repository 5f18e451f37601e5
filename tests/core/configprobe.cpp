// Prints the directories that the configuration gives to the user who runs this.
#include "initconfig.h"

#include <QCoreApplication>

#include <iostream>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const InitConfig config;
    for (const QString &path : {config.workDir(), config.loggerPath(), config.versionsPath()})
        std::cout << qPrintable(path) << '\n';
}
