#include "marktranslator.h"
#include "waitdialog.h"

#include "loggermanager.h"

#include <QDialogButtonBox>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>
#include <QVBoxLayout>

#include <memory>

class WaitDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { LoggerManager::initLog(m_directory.path(), 2, false, QtDebugMsg); }
    void cleanupTestCase() { LoggerManager::releaseLog(); }

    void form()
    {
        const WaitDialog dialog;
        QCOMPARE(dialog.objectName(), QStringLiteral("WaitDialog"));
        QCOMPARE(dialog.size(), QSize(640, 480));
        QCOMPARE(dialog.minimumSize(), QSize(640, 480));
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Dialog"));
        QVERIFY(dialog.isModal());
        QVERIFY(dialog.findChild<QTextBrowser *>(QStringLiteral("tbLog")));
        QVERIFY(dialog.findChild<QVBoxLayout *>(QStringLiteral("verticalLayout")));
        QVERIFY(!dialog.findChild<QDialogButtonBox *>());
    }

    void closeButtonTellsTheOwnerAndClosesNothing()
    {
        WaitDialog dialog(true);
        QSignalSpy spy(&dialog, &WaitDialog::closeButton);
        dialog.show();
        const auto *box = dialog.findChild<QDialogButtonBox *>();
        QVERIFY(box);
        QCOMPARE(box->standardButtons(), QDialogButtonBox::Close);
        QCOMPARE(box->orientation(), Qt::Horizontal);
        QVERIFY(box->y() > dialog.findChild<QTextBrowser *>(QStringLiteral("tbLog"))->y());
        box->button(QDialogButtonBox::Close)->click();
        QCOMPARE(spy.count(), 1);
        QVERIFY(dialog.isVisible());
        emit dialog.findChild<QDialogButtonBox *>()->accepted();
        QCOMPARE(spy.count(), 2);
    }

    void userCannotCloseIt()
    {
        WaitDialog dialog(true);
        dialog.show();
        QVERIFY(!dialog.close());
        QVERIFY(dialog.isVisible());
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QVERIFY(dialog.isVisible());
    }

    void ownerClosesItAndItDeletesItself()
    {
        QPointer<WaitDialog> dialog = new WaitDialog;
        dialog->show();
        dialog->closeDialog();
        QVERIFY(dialog);
        QVERIFY(!dialog->isVisible());
        QTRY_VERIFY(dialog.isNull());
    }

    void messagesAreShownUntilItIsGone()
    {
        auto *dialog = new WaitDialog;
        const auto *log = dialog->findChild<QTextBrowser *>(QStringLiteral("tbLog"));
        qCWarning(WAITING_LOG, "a\nb");
        QCOMPARE(log->toPlainText(), QStringLiteral("a\nb"));
        QCOMPARE(QByteArray(WAITING_LOG().categoryName()), QByteArray("waitingLog"));
        delete dialog;
        qCWarning(WAITING_LOG, "nobody is there");
    }

    void titleFollowsTheLanguage()
    {
        WaitDialog dialog;
        auto translator = std::make_unique<MarkTranslator>("WaitDialog");
        QTRY_COMPARE(dialog.windowTitle(), QStringLiteral("xDialog"));
        translator.reset();
        QTRY_COMPARE(dialog.windowTitle(), QStringLiteral("Dialog"));
    }

private:
    QTemporaryDir m_directory;
};

QTEST_MAIN(WaitDialogTest)
#include "tst_waitdialog.moc"
