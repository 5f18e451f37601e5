#pragma once

#include "technician.h"

/**
 * Settings are saved or applied, and the power goes at a moment that is named; the next boot finds
 * them whole, the old or the new ones.
 *
 * Each boot is one walk: it tells what it has found, sets others, which a number tells apart, and
 * comes to the moment, unless that is one that the guest's own script waits for. The program's
 * further arguments are the number and the moment, or none to look and close.
 */
class PowerCuts : public Technician
{
public:
    explicit PowerCuts(const QString &pictures);

    void modemSettings();
    void networkSettings();

private:
    /** Of the record of that owner, all parts of which must be of one saving; -1 without one. */
    int savedNumber(const QString &owner);
    /** Leaves what was found for the script that boots. */
    void finds(const QString &numbers);
    void selects(int row);
    /** Where it is the moment of this boot: cuts the power as soon as the look comes true. */
    void reaches(const QString &moment, const Look &look);
    [[noreturn]] void awaitsTheCut();

    const int m_number; // of what is set in this boot
    const QString m_moment; // empty: only look
};
