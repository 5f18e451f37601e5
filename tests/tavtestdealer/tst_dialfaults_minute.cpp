#include "runtimeenvironment.h"
#include "terminal.h"

#include <QApplication>

// A modem service that never stops, or never starts again, is waited for for a minute each.

class DialFaultsMinuteTest : public QObject
{
    Q_OBJECT

private slots:
    void serviceThatNeverStopsIsWaitedForAMinute_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::newRow("hears, never changes") << QStringLiteral("stuck");
        QTest::newRow("hears nothing") << QStringLiteral("deaf");
    }
    void serviceThatNeverStopsIsWaitedForAMinute()
    {
        QFETCH(QString, fault);
        const QString tavmodems = QStringLiteral("tavmodems");
        Terminal terminal;
        terminal.restore();
        MainDialog dialog;
        dialog.show();
        DialPage page(dialog.findChild<TestDialWidget *>());
        page.choose(QStringLiteral("gsm1"));
        terminal.serviceFault(tavmodems, fault).waitForFinished();
        const BlockWatch watch;
        QElapsedTimer clock;
        clock.start();
        page.press("cbDial");
        QTRY_VERIFY_WITH_TIMEOUT(page.logs("wvdial is started"), 90000);
        QVERIFY2(clock.elapsed() >= 60000, qPrintable(QString::number(clock.elapsed())));
        QVERIFY2(clock.elapsed() <= 70000, qPrintable(QString::number(clock.elapsed())));
        // It held the port meanwhile: the log names the reason, the dial was tried all the same.
        QVERIFY(page.logs("The porg /dev/ttyUSB0 is not opened: "));
        QTRY_COMPARE_WITH_TIMEOUT(page.finished.count(), 1, 90000);
        QVERIFY(page.isIdle());
        QVERIFY2(watch.longest() <= 2000, qPrintable(QString::number(watch.longest())));
    }
};

int main(int argc, char **argv)
{
    RuntimeEnvironment::prepare();
    QApplication application(argc, argv);
    DialFaultsMinuteTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_dialfaults_minute.moc"
