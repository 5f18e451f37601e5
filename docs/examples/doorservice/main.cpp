#include "doorservice.h"

#include <QCoreApplication>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    DoorService service;
    if (!service.start()) {
        qCritical("The bus cannot be reached");
        return 1;
    }
    return QCoreApplication::exec();
}
