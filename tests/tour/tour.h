#pragma once

#include "guide.h"

/**
 * Walks through the tool as a technician would, in the simulated terminal: the main job, each step
 * with a picture of it.
 */
class Tour : private Guide
{
public:
    using Guide::Guide;

    /** The whole walk; returns after the click that closes the main dialog. */
    void run();

private:
    void showsWhatTheBusHolds();
    void goesRedWithoutAPage();
    void dials();
    void refusesToCloseMeanwhile();
    void stops();
    void goesGreenWithOnePage();
    void searches(); // this and what follows up to saves() in modempages.cpp
    void edits();
    void reorders();
    void removes();
    void asks();
    void saves();
    void configuresTheNetwork(); // this and the next in networkpage.cpp
    void waitsForTheButtons();
    void asksBeforeItCloses();
    void savesAndCloses();
    void select(const QString &connection);
};
