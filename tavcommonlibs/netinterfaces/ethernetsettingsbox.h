#pragma once

#include "interfacesettings.h"

#include <QGroupBox>

#include <memory>

namespace Ui {
class EthernetSettingsBox;
}

/// Edits the settings of one interface. Every change is told at once, a change by setSettings()
/// too. What is typed is not checked beyond the form of an address: 300.1.1.1 is told as it stands,
/// and an address left empty reads as its bare dots, "...".
class EthernetSettingsBox : public QGroupBox
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(EthernetSettingsBox)

public:
    explicit EthernetSettingsBox(QWidget *parent = nullptr);
    ~EthernetSettingsBox() override;

    QString interface() const;
    void setInterface(const QString &iface);

    /// The plain defaults while DHCP is chosen, whatever the edits hold.
    InterfaceSettings settings() const;
    void setSettings(const InterfaceSettings &settings);

public slots:
    void dhcpUsageChanged(int idx);
    void dataChanged();

signals:
    void settingsChaged(const QString &iface, const InterfaceSettings &settings);

protected:
    void changeEvent(QEvent *e) override;

private:
    void fillUsages();

    const std::unique_ptr<Ui::EthernetSettingsBox> ui;
};
