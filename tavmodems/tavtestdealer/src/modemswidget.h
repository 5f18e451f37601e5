#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class ModemsWidget;
}

/// The Modems page: switches between its sub-pages, holds its buttons while one of them is at work,
/// and loads and saves the store of modems as a settings record on the terminal's bus.
class ModemsWidget : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ModemsWidget)

public:
    explicit ModemsWidget(QWidget *parent = nullptr);
    ~ModemsWidget() override;

    bool workIsStarted() const { return m_workIsStarted; }

    /// Ends the work of the sub-pages for good, without the event loop.
    void endWork();

public slots:
    /// Saves the store as the modem service's record: the one it reads when it starts again. True
    /// when the bus accepted it; the user is told otherwise.
    bool saveSettings();

    /// Fills the store from this program's own record, else from the modem service's. Without
    /// either the store stays as it is.
    void loadSettings();

    void workStarted();
    void workFinished();

protected:
    void changeEvent(QEvent *event) override;

private:
    void setButtonsEnabled(bool enabled);

    const std::unique_ptr<Ui::ModemsWidget> ui;
    bool m_workIsStarted = false;
};
