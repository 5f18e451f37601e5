#include "testdialwidget.h"

#include "busnames.h"
#include "logpane.h"
#include "modemreset.h"
#include "modemsettings.h"
#include "servicescontroller.h"
#include "testmodemscfg.h"
#include "ui_testdialwidget.h"

TestDialWidget::TestDialWidget(QWidget *parent, const QString &dialer)
    : QWidget(parent)
    , ui(new Ui::TestDialWidget)
    , m_wvdial(new Wvdial(this, dialer))
    , m_servicesController(new ServicesController(tavbus::BUSNAME_TESTDEALER, this))
{
    ui->setupUi(this);
    connect(ui->pbStop, &QPushButton::released, m_wvdial, &Wvdial::stop);
    connect(m_wvdial, &Wvdial::dialdowned, m_servicesController,
        &ServicesController::startModemsService);
    // A dial that never came to run ends the test like one that did.
    connect(m_wvdial, &Wvdial::dialNotStarted, m_servicesController,
        &ServicesController::startModemsService);
    connect(m_servicesController, &ServicesController::modemsServiceStopped, this,
        &TestDialWidget::startTest);
    connect(m_servicesController, &ServicesController::modemsServiceStarted, this,
        &TestDialWidget::finished);
    connect(this, &TestDialWidget::started, this, &TestDialWidget::workStarted);
    connect(this, &TestDialWidget::finished, this, &TestDialWidget::workFinished);
    setupLogger();
}

TestDialWidget::~TestDialWidget()
{
    m_logPane.reset();
}

void TestDialWidget::endWork()
{
    if (m_wvdial && m_wvdial->isDialling())
        m_wvdial->stop();
    if (m_servicesController)
        m_servicesController->giveServicesBack();
}

void TestDialWidget::testDial()
{
    m_logPane->clear();
    if (ui->cbModem->currentIndex() < 0)
        return;
    const ModemInfo modem = ModemSettings().modems().value(ui->cbModem->currentText());
    TestModemsCfg config;
    TestModemsCfg::setActiveModemName(modem.connectionName());
    config.setModems({{modem.connectionName(), modem}});
    if (!config.lastError().isEmpty()) {
        QString warning = QStringLiteral("The dialer's file %1 was not written: %2")
                              .arg(TestModemsCfg::configPath(), config.lastError());
        if (config.modems().contains(modem.connectionName()))
            warning += QStringLiteral(". The dialer goes by what the file held before.");
        qCWarning(DIALUP).noquote() << warning;
    }
    if (m_servicesController)
        m_servicesController->stopModemsService();
    emit started();
}

void TestDialWidget::startTest()
{
    if (!m_wvdial)
        return;
    m_wvdial->stop();
    const QString name = ui->cbModem->currentText();
    // Wvdial does it once more, and says what is wrong with the modem.
    ModemReset::run(ModemSettings().modems().value(name), this);
    m_wvdial->start(name);
}

void TestDialWidget::workStarted()
{
    ui->pbStop->setEnabled(true);
    ui->cbDial->setEnabled(false);
}

void TestDialWidget::workFinished()
{
    ui->pbStop->setEnabled(false);
    ui->cbDial->setEnabled(true);
}

void TestDialWidget::showEvent(QShowEvent *event)
{
    loadModems();
    QWidget::showEvent(event);
}

void TestDialWidget::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
}

void TestDialWidget::loadModems()
{
    ui->cbModem->clear();
    ui->cbModem->insertItems(ui->cbModem->count(), ModemSettings().connectionsOrder());
}

void TestDialWidget::setupLogger()
{
    m_logPane = std::make_unique<LogPane>(ui->tbLog, DIALUP());
}
