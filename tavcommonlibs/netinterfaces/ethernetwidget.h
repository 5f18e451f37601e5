#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <memory>

class EthernetConfigModel;
class EthernetConfigurator;
class QModelIndex;
namespace Ui {
class EthernetWidget;
}

/// The "Local network" page: which wired interfaces are used and with which settings; puts them
/// into force and shows what the commands print. The second before each command freezes the page.
class EthernetWidget : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(EthernetWidget)

public:
    explicit EthernetWidget(QWidget *parent = nullptr);
    /// Takes over the configurator.
    EthernetWidget(EthernetConfigurator *configurator, QWidget *parent);
    ~EthernetWidget() override;

    /// Finishes what is being applied, as EthernetConfigurator::finishApplying() does.
    void endWork();

public slots:
    void reload();
    /// Asks first. The question has a single button, Yes; closing it or Escape declines.
    void apply();
    /// Shows the interface for editing; in the icon's column also uses it from now on, or no
    /// longer.
    void onInterfacePressed(const QModelIndex &idx);
    void showLog(const QString &text);
    void on_tbLog_textChanged(); // connected by its name
    void enableButtons();

protected:
    void changeEvent(QEvent *event) override;

private:
    void checkEnabled();
    void showUnshownLog();
    void clearLog();

    const std::unique_ptr<Ui::EthernetWidget> ui;
    QPointer<EthernetConfigModel> m_model; // child of this
    QString m_unshownLog; // came during the pause
    QTimer m_logPause;
    QTimer m_buttonsTimer; // fires on and on once started, which does no harm
};
