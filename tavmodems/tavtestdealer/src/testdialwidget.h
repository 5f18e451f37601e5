#pragma once

#include "wvdial.h"

#include <QPointer>
#include <QWidget>

#include <memory>

class LogPane;
class ServicesController;
namespace Ui {
class TestDialWidget;
}

/// The "Dial test" page: dials through one of the stored connections with the terminal's modem
/// service stopped meanwhile, and shows what the dialer says.
class TestDialWidget : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TestDialWidget)

public:
    /// dialer: path of the dialer program.
    explicit TestDialWidget(
        QWidget *parent = nullptr, const QString &dialer = Wvdial::WVDIAL_COMMAND);
    ~TestDialWidget() override;

    /// Ends a test under way for good, without the event loop: its dialer is gone afterwards, and
    /// the modem service is told to start. There is no finished().
    void endWork();

public slots:
    void testDial();
    void startTest();
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

    const std::unique_ptr<Ui::TestDialWidget> ui;
    QPointer<Wvdial> m_wvdial; // child of this
    QPointer<ServicesController> m_servicesController; // child of this
    std::unique_ptr<LogPane> m_logPane;
};
