#pragma once

#include "technician.h"

/** Dials that connect. */
class Connections : public Technician
{
public:
    using Technician::Technician;

    void dial();
    void takeover();
};
