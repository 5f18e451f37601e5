#pragma once

#include "rootsingleton.h"

#include <QObject>

class QLocale;

/// The application: makes the application object, opens the log, installs the translations, sees to
/// it that the program runs once, and runs the main dialog.
class TestDealerRoot : public QObject, public RootSingleton<TestDealerRoot>
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TestDealerRoot)

public:
    /// The whole run of the program; the result is its exit status.
    static int start(int &argc, char **argv);

    TestDealerRoot(int &argc, char **argv);
    ~TestDealerRoot() override;

    /// True when the program may go on; false when another instance runs, which the user is told.
    bool init();

    /// The version query ("-v", "--version"), else the main dialog until it is closed.
    int exec();

    void setUpLocale(const QLocale &locale);
};
