#pragma once

#include <QDialog>
#include <QLoggingCategory>

#include <memory>

class LogPane;
namespace Ui {
class WaitDialog;
}

/// What long operations tell the user through the wait dialog.
Q_DECLARE_LOGGING_CATEGORY(WAITING_LOG)

/// A modal dialog that shows the "waitingLog" category while its owner works. The user cannot close
/// it: neither the window's close control nor Escape does; the owner does, through closeDialog().
class WaitDialog : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WaitDialog)

public:
    /// withCloseButton: with a Close button, which tells the owner and closes nothing by itself.
    explicit WaitDialog(bool withCloseButton, QWidget *parent = nullptr);
    explicit WaitDialog(QWidget *parent = nullptr);
    ~WaitDialog() override;

    /// Escape comes this way, past closeEvent().
    void reject() override;

public slots:
    /// Closes the dialog, which then deletes itself.
    void closeDialog();

signals:
    void closeButton();

protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void setupLogger();

    const std::unique_ptr<Ui::WaitDialog> ui;
    bool canClose = false;
    std::unique_ptr<LogPane> m_logPane;
};
