#pragma once

#include "technician.h"

/** Dials that fail, after which another one connects. */
class Failures : public Technician
{
public:
    using Technician::Technician;

    void refused();
    void unplugged();
    void password();
    void silence();

private:
    void isRefused(const QString &fault, const QString &told);
};
