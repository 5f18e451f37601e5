#pragma once

#include <QDialog>

#include <memory>
#include <optional>

class AbstractWorkerThread;
namespace Ui {
class MainDialog;
}

/// The program's window: its pages, the Internet indicator and the Close button. Owns the Internet
/// checker and its thread.
class MainDialog : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MainDialog)

public:
    explicit MainDialog(QWidget *parent = nullptr);
    ~MainDialog() override;

    bool saveSettings();
    void loadSettings();

    /// Closes without the window and without the event loop, when nobody is there to ask: ends the
    /// work under way, has the services start again, and hands the settings over as closing does.
    /// Whether the modem service is to have them stays open; they are there at the next start.
    void endWork();

    /// Escape comes this way, past closeEvent(): it closes the window as its Close button does.
    void reject() override;

public slots:
    void connectionTested(bool exists);

protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void stopTester();
    bool sendSettings();
    void endPages();
    void finishClosing(QCloseEvent *event);
    void stayOpen(QCloseEvent *event);

    const std::unique_ptr<Ui::MainDialog> ui;
    AbstractWorkerThread *m_testerThread = nullptr; // child of this
    std::optional<bool> m_isConnected; // by the latest Internet check, if there was one
    bool m_isClosing = false; // a close is under way, which processes events
    bool m_isConfirmed = false; // the user has confirmed it
};
