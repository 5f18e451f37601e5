#include "modemackwidget.h"

#include "atmodem.h"
#include "atmodemlog.h"
#include "busnames.h"
#include "connectionquery.h"
#include "logpane.h"
#include "modemsettings.h"
#include "servicescontroller.h"
#include "signalnotifier.h"
#include "ui_modemackwidget.h"

#include <QMutex>

namespace {

QMutex &paneMutex()
{
    // Never freed: a message may come while the process ends.
    static auto *const mutex = new QMutex;
    return *mutex;
}

} // namespace

ModemAckWidget::ModemAckWidget(QWidget *parent)
    : ModemAckWidget(new AtModem, parent)
{
}

ModemAckWidget::ModemAckWidget(AtModem *driver, QWidget *parent)
    : QWidget(parent)
    , ui(new Ui::ModemAckWidget)
    , m_modem(driver)
    , m_servicesController(new ServicesController(tavbus::BUSNAME_TESTDEALER, this))
{
    driver->setParent(this);
    driver->setAbortFlag(SignalNotifier::flag());
    ui->setupUi(this);
    connect(ui->pbAsk, &QPushButton::released, this, &ModemAckWidget::start);
    connect(m_servicesController, &ServicesController::modemsServiceStopped, this,
        &ModemAckWidget::queryModem);
    connect(m_servicesController, &ServicesController::modemsServiceStarted, this,
        &ModemAckWidget::finished);
    connect(this, &ModemAckWidget::started, this, &ModemAckWidget::workStarted);
    connect(this, &ModemAckWidget::finished, this, &ModemAckWidget::workFinished);
    setupLogger();
}

ModemAckWidget::~ModemAckWidget()
{
    m_logPane.reset();
}

void ModemAckWidget::endWork()
{
    if (m_servicesController)
        m_servicesController->giveServicesBack();
}

bool ModemAckWidget::queryModem()
{
    ui->tbModemData->clear();
    m_logPane->clear();
    QMap<QString, ModemInfo> modems = ModemSettings().modems();
    bool isDone = false;
    if (modems.isEmpty()) {
        qCCritical(AT_MODEM, "There are no any modems");
    } else if (m_modem) {
        m_logPane->setLive(true);
        ConnectionQuery query(*m_modem, [this](const QString &html) { showResult(html); });
        isDone = query.run(ui->cbModem->currentText(), modems);
        m_logPane->setLive(false);
    }
    if (m_servicesController)
        m_servicesController->startModemsService();
    return isDone;
}

void ModemAckWidget::start()
{
    emit started();
    if (m_servicesController)
        m_servicesController->stopModemsService();
}

void ModemAckWidget::workStarted()
{
    ui->pbAsk->setEnabled(false);
}

void ModemAckWidget::workFinished()
{
    ui->pbAsk->setEnabled(true);
}

void ModemAckWidget::showEvent(QShowEvent *event)
{
    loadModems();
    QWidget::showEvent(event);
}

void ModemAckWidget::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
}

void ModemAckWidget::loadModems()
{
    ui->cbModem->clear();
    ui->cbModem->insertItems(ui->cbModem->count(), ModemSettings().connectionsOrder());
}

void ModemAckWidget::setupLogger()
{
    m_logPane = std::make_unique<LogPane>(ui->tbLog, AT_MODEM(), paneMutex);
}

void ModemAckWidget::showResult(const QString &html)
{
    ui->tbModemData->append(html);
    // The event loop stands still until the query is done: the user is to see how far it is.
    ui->pbAsk->repaint();
    ui->tbModemData->viewport()->repaint();
    m_logPane->paint();
}
