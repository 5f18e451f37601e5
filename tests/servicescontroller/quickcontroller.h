#pragma once

#include "busnames.h"
#include "servicescontroller.h"
#include "tavbusqueryhandler.h"

/// A controller that does not keep a test waiting.
class QuickController : public ServicesController
{
    Q_OBJECT

public:
    QuickController()
        : ServicesController(tavbus::BUSNAME_TESTDEALER)
    {
    }

    tavbus::TavBusQueryHandler *handler() const
    {
        return findChild<tavbus::TavBusQueryHandler *>();
    }

    int period = 20; // ms
    int wait = 60'000; // ms
    mutable int looks = 0; // asked for so far

protected:
    int pollPeriod() const override
    {
        ++looks;
        return period;
    }
    int longestWait() const override { return wait; }
};
