#include "modemswidget.h"

#include "busnames.h"
#include "clientsettings.h"
#include "modemsettings.h"
#include "tavbusqueryhandler.h"
#include "ui_modemswidget.h"

#include <QButtonGroup>
#include <QDateTime>
#include <QDebug>
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
    const auto followWork = [this](const auto *page) {
        using Page = std::remove_const_t<std::remove_pointer_t<decltype(page)>>;
        connect(page, &Page::started, this, &ModemsWidget::workStarted);
        connect(page, &Page::finished, this, &ModemsWidget::workFinished);
    };
    followWork(ui->pageSearch);
    followWork(ui->pageAsk);
    followWork(ui->pageDial);
    connect(ui->pbSaveSettings, &QPushButton::released, this, &ModemsWidget::saveSettings);
}

ModemsWidget::~ModemsWidget() = default;

void ModemsWidget::endWork()
{
    ui->pageDial->endWork();
    ui->pageAsk->endWork();
    ui->pageSearch->endWork();
}

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
    if (!handler.open()) {
        qWarning("The modems settings are not loaded: the bus cannot be reached");
        return;
    }
    for (const QString &owner : {tavbus::BUSNAME_TESTDEALER, tavbus::BUSNAME_TAVMODEMS}) {
        // As a list, which tells an owner without a record from a bus that does not answer.
        QList<tavbus::ClientSettings> records;
        if (!handler.loadSettings(QStringList(owner), records)) {
            qWarning().noquote() << "The bus does not give the modems settings of" << owner;
        } else if (!records.isEmpty()) {
            if (!ModemSettings().setSettingsList(records.first().settings()))
                qWarning().noquote() << "The modems settings of" << owner << "are refused";
            return;
        }
    }
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
