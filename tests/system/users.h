#pragma once

#include "technician.h"

/** Who may use the tool, and how often at once. None of these people is root. */
class Users : public Technician
{
public:
    using Technician::Technician;

    void users(); ///< the first of two, who dials
    void secondUser();
    void secondUserAgain();
    void outsider();
    void display(); ///< is to be taken from under the tool when it is connected

private:
    static void leaveMark();
    void isNotRoot();
    void startsAgain();
    void saysThatNothingIsSaved();
};
