#include "ethernetsettingsbox.h"

#include "ui_ethernetsettingsbox.h"

#include <QEvent>

namespace {

enum Usage { Dhcp, Static };

} // namespace

EthernetSettingsBox::EthernetSettingsBox(QWidget *parent)
    : QGroupBox(parent)
    , ui(new Ui::EthernetSettingsBox)
{
    ui->setupUi(this);
    fillUsages();
    connect(ui->cbUseDHCP, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
        &EthernetSettingsBox::dhcpUsageChanged);
    dhcpUsageChanged(Dhcp);
    for (QLineEdit *edit : {ui->leGateway, ui->leIP, ui->leNetmask, ui->leDNS})
        connect(edit, &QLineEdit::textChanged, this, &EthernetSettingsBox::dataChanged);
}

EthernetSettingsBox::~EthernetSettingsBox() = default;

QString EthernetSettingsBox::interface() const
{
    return ui->lIface->text();
}

void EthernetSettingsBox::setInterface(const QString &iface)
{
    setTitle(tr("Customizing interface %1").arg(iface));
    ui->lIface->setText(iface);
}

InterfaceSettings EthernetSettingsBox::settings() const
{
    InterfaceSettings settings;
    if (ui->cbUseDHCP->currentIndex() != Dhcp) {
        settings.setUseDhcp(false);
        settings.setAddress(ui->leIP->text());
        settings.setGateway(ui->leGateway->text());
        settings.setNetMask(ui->leNetmask->text());
        settings.setDnsServers(ui->leDNS->text());
    }
    return settings;
}

void EthernetSettingsBox::setSettings(const InterfaceSettings &settings)
{
    ui->cbUseDHCP->setCurrentIndex(settings.useDhcp() ? Dhcp : Static);
    ui->leGateway->setText(settings.gateway());
    ui->leIP->setText(settings.address());
    ui->leNetmask->setText(settings.netMask());
    ui->leDNS->setText(settings.dnsServers());
}

void EthernetSettingsBox::dhcpUsageChanged(int idx)
{
    ui->gbStaticSettings->setEnabled(idx == Static);
    dataChanged();
}

void EthernetSettingsBox::dataChanged()
{
    emit settingsChaged(interface(), settings());
}

void EthernetSettingsBox::changeEvent(QEvent *e)
{
    QGroupBox::changeEvent(e);
    if (e->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
        fillUsages();
    }
}

void EthernetSettingsBox::fillUsages()
{
    ui->cbUseDHCP->clear();
    ui->cbUseDHCP->addItems({tr("DHCP"), tr("STATIC")});
}
