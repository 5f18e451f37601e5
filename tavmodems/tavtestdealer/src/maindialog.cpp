#include "maindialog.h"

#include "abstractworkerthread.h"
#include "busnames.h"
#include "clientsettings.h"
#include "imageresources.h"
#include "inettester.h"
#include "modemsettings.h"
#include "tavbusqueryhandler.h"
#include "ui_maindialog.h"

#include <QButtonGroup>
#include <QCloseEvent>
#include <QDateTime>
#include <QIcon>
#include <QMessageBox>
#include <QPushButton>
#include <QScopedValueRollback>

namespace {

constexpr unsigned long kLongestTest = 2000; // ms

// Not QMessageBox::question(): that marks a button as default where it is told of none, and shows
// the one that it is told of even where it is none of the buttons asked for.
class Question : public QMessageBox
{
public:
    Question(const QString &title, const QString &text, StandardButtons buttons, QWidget *parent)
        : QMessageBox(QMessageBox::Question, title, text, buttons, parent)
    {
        forEachButton([](QPushButton *button) { button->setAutoDefault(false); });
    }

    StandardButton ask() { return static_cast<StandardButton>(exec()); }

protected:
    void showEvent(QShowEvent *event) override
    {
        QMessageBox::showEvent(event);
        // By now the box has chosen a default of its own.
        forEachButton([](QPushButton *button) { button->setDefault(false); });
    }

private:
    template <typename Action>
    void forEachButton(Action action)
    {
        const QList<QPushButton *> buttons = findChildren<QPushButton *>();
        for (QPushButton *button : buttons)
            action(button);
    }
};

} // namespace

MainDialog::MainDialog(QWidget *parent)
    : QDialog(parent)
    , ui(new Ui::MainDialog)
{
    initImageResources();
    ui->setupUi(this);

    auto *const tester = new InetTester;
    m_testerThread = new AbstractWorkerThread(tester, this);
    connect(tester, &InetTester::connectionExists, this, &MainDialog::connectionTested,
        Qt::QueuedConnection);
    m_testerThread->start();

    auto *const pages = new QButtonGroup(this);
    pages->addButton(ui->pbModems, 0);
    pages->addButton(ui->pbEth, 1);
    pages->setExclusive(true);
    connect(pages, &QButtonGroup::idReleased, ui->stackedWidget, &QStackedWidget::setCurrentIndex);
}

MainDialog::~MainDialog() = default;

bool MainDialog::saveSettings()
{
    return ui->pageModems->saveSettings();
}

void MainDialog::loadSettings()
{
    ui->pageModems->loadSettings();
}

void MainDialog::endWork()
{
    endPages();
    m_testerThread->quit();
    m_testerThread->wait(kLongestTest);
    if (!sendSettings())
        qWarning("The modem settings are not saved: the bus does not take them");
}

void MainDialog::reject()
{
    if (m_isConfirmed)
        QDialog::reject(); // closeEvent() of the base class comes here
    else
        close();
}

void MainDialog::connectionTested(bool exists)
{
    m_isConnected = exists;
    ui->toolButton->setIcon(
        QIcon(exists ? QStringLiteral(":/greenled.png") : QStringLiteral(":/redled.png")));
    ui->toolButton->setToolTip(exists ? tr("Connection on") : tr("Connection off"));
}

void MainDialog::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() != QEvent::LanguageChange)
        return;
    ui->retranslateUi(this);
    if (m_isConnected)
        connectionTested(*m_isConnected);
}

void MainDialog::closeEvent(QCloseEvent *event)
{
    // Another request, which the window manager may send at any time, changes nothing.
    if (m_isClosing || ui->pageModems->workIsStarted()) {
        event->ignore();
        return;
    }
    const QScopedValueRollback<bool> closing(m_isClosing, true);
    setEnabled(false);
    stopTester();
    if (!sendSettings()) {
        // Nothing to choose: Escape confirms as the one button does.
        Question question(tr("Settings saving error"),
            tr("Modems settings saving error. Continue exit?"), QMessageBox::Yes, this);
        if (question.ask() == QMessageBox::Yes)
            finishClosing(event);
        else
            stayOpen(event);
        return;
    }
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    Question question(tr("Test dealer closing"), tr("Save modems settings?"),
        QMessageBox::Save | QMessageBox::No | QMessageBox::Cancel, this);
    switch (question.ask()) {
    case QMessageBox::Save:
        // The page has told the user when it could not; the window goes all the same.
        if (saveSettings())
            finishClosing(event);
        else
            endPages();
        break;
    case QMessageBox::No:
        finishClosing(event);
        break;
    default:
        stayOpen(event);
    }
}

void MainDialog::stopTester()
{
    if (!m_testerThread)
        return;
    m_testerThread->quit();
    while (m_testerThread->isRunning())
        QCoreApplication::processEvents();
}

bool MainDialog::sendSettings()
{
    tavbus::TavBusQueryHandler handler(tavbus::BUSNAME_TESTDEALER, this);
    tavbus::ClientSettings settings;
    settings.setDescription(tr("From test dealer"));
    settings.setDt(QDateTime::currentDateTime());
    settings.setOwner(tavbus::BUSNAME_TESTDEALER);
    settings.setSettings(ModemSettings().toSettingsList());
    return handler.open() && handler.saveSettings(settings);
}

void MainDialog::endPages()
{
    // What could not be told to start at the time, when the bus did not answer, may hear it now.
    ui->pageModems->endWork();
    ui->pageEth->endWork();
}

void MainDialog::finishClosing(QCloseEvent *event)
{
    endPages();
    m_isConfirmed = true;
    QDialog::closeEvent(event);
}

void MainDialog::stayOpen(QCloseEvent *event)
{
    setEnabled(true);
    event->ignore();
}
