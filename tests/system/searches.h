#pragma once

#include "technician.h"

/** Looking for modems, asking them, making them modems alone. */
class Searches : public Technician
{
public:
    using Technician::Technician;

    void search();
    void ask();

private:
    void asks(const QString &connection, const QStringList &told);
};
