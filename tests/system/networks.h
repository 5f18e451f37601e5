#pragma once

#include "technician.h"

/** Wired network settings, put into force by a technician who is not root. */
class Networks : public Technician
{
public:
    using Technician::Technician;

    void network();

private:
    void isNobodySpecial();
    void setsAnAddress();
    void mayDoNothingElse();
    void goesBackToDhcp();
    void fileReads(const QByteArray &text);
    void answers(const QString &router, const QString &from);
};
