#pragma once

#include "technician.h"

/** Looking for modems. */
class Searches : public Technician
{
public:
    using Technician::Technician;

    void search();
};
