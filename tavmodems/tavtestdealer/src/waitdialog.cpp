#include "waitdialog.h"

#include "logpane.h"
#include "ui_waitdialog.h"

#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QMutex>

Q_LOGGING_CATEGORY(WAITING_LOG, "waitingLog")

namespace {

QMutex &paneMutex()
{
    // Never freed: a message may come while the process ends.
    static auto *const mutex = new QMutex;
    return *mutex;
}

} // namespace

WaitDialog::WaitDialog(bool withCloseButton, QWidget *parent)
    : QDialog(parent)
    , ui(new Ui::WaitDialog)
{
    ui->setupUi(this);
    setModal(true);
    setupLogger();
    if (withCloseButton) {
        auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, Qt::Horizontal, this);
        connect(buttons, &QDialogButtonBox::rejected, this, &WaitDialog::closeButton);
        connect(buttons, &QDialogButtonBox::accepted, this, &WaitDialog::closeButton);
        ui->verticalLayout->addWidget(buttons);
    }
}

WaitDialog::WaitDialog(QWidget *parent)
    : WaitDialog(false, parent)
{
}

WaitDialog::~WaitDialog()
{
    m_logPane.reset();
}

void WaitDialog::reject()
{
    if (canClose)
        QDialog::reject();
}

void WaitDialog::closeDialog()
{
    canClose = true;
    close();
    deleteLater();
}

void WaitDialog::closeEvent(QCloseEvent *event)
{
    if (canClose)
        QDialog::closeEvent(event);
    else
        event->ignore();
}

void WaitDialog::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
}

void WaitDialog::setupLogger()
{
    m_logPane = std::make_unique<LogPane>(ui->tbLog, WAITING_LOG(), paneMutex);
}
