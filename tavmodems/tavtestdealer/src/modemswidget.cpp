#include "modemswidget.h"

#include "busnames.h"
#include "clientsettings.h"
#include "modemsettings.h"
#include "tavbusqueryhandler.h"
#include "ui_modemswidget.h"

#include <QButtonGroup>
#include <QDateTime>
#include <QMessageBox>

ModemsWidget::ModemsWidget(QWidget *parent)
    : QWidget(parent)
    , ui(new Ui::ModemsWidget)
{
    ui->setupUi(this);
    auto *const pages = new QButtonGroup(this);
    pages->addButton(ui->pbDialPage, 0);
    pages->addButton(ui->pbAskPage, 1);
    pages->addButton(ui->pbSearchPage, 2);
    pages->setExclusive(true);
    ui->stackedWidget->setCurrentIndex(0);

    loadSettings();

    connect(pages, &QButtonGroup::idClicked, ui->stackedWidget, &QStackedWidget::setCurrentIndex);
    connect(ui->pageDial, &TestDialWidget::started, this, &ModemsWidget::workStarted);
    connect(ui->pageDial, &TestDialWidget::finished, this, &ModemsWidget::workFinished);
    connect(ui->pbSaveSettings, &QPushButton::released, this, &ModemsWidget::saveSettings);
}

ModemsWidget::~ModemsWidget() = default;

bool ModemsWidget::saveSettings()
{
    tavbus::TavBusQueryHandler handler(tavbus::BUSNAME_TESTDEALER);
    tavbus::ClientSettings settings;
    settings.setDescription(tr("From test dealer"));
    settings.setDt(QDateTime::currentDateTime());
    settings.setOwner(tavbus::BUSNAME_TAVMODEMS);
    settings.setSettings(ModemSettings().toSettingsList());
    if (handler.open() && handler.saveSettings(settings))
        return true;
    QMessageBox::critical(
        this, tr("Settings saving error"), tr("Modems settings saving error"), QMessageBox::Ok);
    return false;
}

void ModemsWidget::loadSettings()
{
    tavbus::TavBusQueryHandler handler(tavbus::BUSNAME_TESTDEALER);
    tavbus::ClientSettings settings;
    if (!handler.open())
        return;
    if (handler.loadSettings(tavbus::BUSNAME_TESTDEALER, settings)
        || handler.loadSettings(tavbus::BUSNAME_TAVMODEMS, settings))
        ModemSettings().setSettingsList(settings.settings());
}

void ModemsWidget::workStarted()
{
    m_workIsStarted = true;
    setButtonsEnabled(false);
}

void ModemsWidget::workFinished()
{
    m_workIsStarted = false;
    setButtonsEnabled(true);
}

void ModemsWidget::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
}

void ModemsWidget::setButtonsEnabled(bool enabled)
{
    for (QPushButton *button :
        {ui->pbDialPage, ui->pbAskPage, ui->pbSearchPage, ui->pbSaveSettings})
        button->setEnabled(enabled);
}
