#include "marktranslator.h"
#include "waitdialog.h"

#include "loggermanager.h"

#include <QDialogButtonBox>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTimer>
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
        // The browser outlives the dialog here, to see what still reaches it.
        const std::unique_ptr<QTextBrowser> log(
            dialog->findChild<QTextBrowser *>(QStringLiteral("tbLog")));
        qCWarning(WAITING_LOG, "a\nb");
        QCOMPARE(log->toPlainText(), QStringLiteral("a\nb"));
        QCOMPARE(QByteArray(WAITING_LOG().categoryName()), QByteArray("waitingLog"));
        log->setParent(nullptr);
        delete dialog;
        qCWarning(WAITING_LOG, "nobody is there");
        QTest::qWait(0);
        QCOMPARE(log->toPlainText(), QStringLiteral("a\nb"));
    }

    void colourFollowsTheType()
    {
        const WaitDialog dialog;
        const auto *log = dialog.findChild<QTextBrowser *>(QStringLiteral("tbLog"));
        qCDebug(WAITING_LOG, "debug");
        qCWarning(WAITING_LOG, "warning");
        qCCritical(WAITING_LOG, "critical");
        QList<QColor> colours;
        for (QTextBlock block = log->document()->begin(); block.isValid(); block = block.next())
            colours.append(block.begin().fragment().charFormat().foreground().color());
        QCOMPARE(colours, QList<QColor>({QColor(Qt::black), QColor(Qt::blue), QColor(Qt::red)}));
    }

    void closingTwiceIsClosingOnce()
    {
        QPointer<WaitDialog> dialog = new WaitDialog;
        QSignalSpy destroyed(dialog, &QObject::destroyed);
        dialog->show();
        dialog->closeDialog();
        dialog->closeDialog();
        QTRY_VERIFY(dialog.isNull());
        QCOMPARE(destroyed.count(), 1);
    }

    void hiddenOneDeletesItselfToo()
    {
        QPointer<WaitDialog> dialog = new WaitDialog;
        dialog->closeDialog();
        QTRY_VERIFY(dialog.isNull());
    }

    void ownerClosesItUnderExec()
    {
        QPointer<WaitDialog> dialog = new WaitDialog;
        QTimer::singleShot(0, dialog, &WaitDialog::closeDialog);
        QCOMPARE(dialog->exec(), int(QDialog::Rejected));
        QTRY_VERIFY(dialog.isNull());
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
