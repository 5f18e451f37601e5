#include "abstractworker.h"

AbstractWorker::AbstractWorker(QObject *parent)
    : QObject(parent)
{
}

AbstractWorker::~AbstractWorker() = default;
