#pragma once

#include <QPointer>
#include <QWidget>

#include <memory>

class AtModem;
class LogPane;
class ServicesController;
namespace Ui {
class ModemAckWidget;
}

/// The "Ask modem" page: shows what the modem of one of the stored connections tells of itself, its
/// network and its SIM card, with the terminal's modem service stopped meanwhile.
class ModemAckWidget : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ModemAckWidget)

public:
    explicit ModemAckWidget(QWidget *parent = nullptr);
    /// Takes the driver over.
    explicit ModemAckWidget(AtModem *driver, QWidget *parent = nullptr);
    ~ModemAckWidget() override;

    /// Asks no modem any more and tells the modem service to start, without the event loop. There
    /// is no finished(). A query under way blocks: what breaks it off is SignalNotifier::flag().
    void endWork();

public slots:
    /// Asks the modem and starts the modem service again. Blocks until the modem has answered
    /// everything, or has been given up; results and log are painted as they come. False when there
    /// is nothing to ask, the port does not open, or network or operator are not known.
    bool queryModem();
    void start();
    void workStarted();
    void workFinished();

signals:
    void started();
    void finished(); ///< the modem service runs again

protected:
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void loadModems();
    void setupLogger();
    void showResult(const QString &html);

    const std::unique_ptr<Ui::ModemAckWidget> ui;
    QPointer<AtModem> m_modem; // child of this
    QPointer<ServicesController> m_servicesController; // child of this
    std::unique_ptr<LogPane> m_logPane;
};
