#include "ethernetwidget.h"

#include "ethernetconfigmodel.h"
#include "ethernetconfigurator.h"
#include "ui_ethernetwidget.h"

#include <QCloseEvent>
#include <QElapsedTimer>
#include <QMessageBox>

namespace {

constexpr int rowHeight = 60;
constexpr int quietTime = 5000; // ms without output until the buttons come back
constexpr int floodSize = 20000; // characters in the log
constexpr int slowInsert = 50; // ms
constexpr int pieceLines = 500; // to insert a piece takes time by the square of its lines
constexpr int pieceSize = 10000; // characters, up to the next line end
constexpr int turnTime = 20; // ms: how long the log may keep one turn of the event loop

// How much of the text to insert at once: whole lines where there are any.
int sizeOfPiece(const QString &text)
{
    int end = 0;
    for (int lines = 0; lines < pieceLines && end < pieceSize; ++lines) {
        end = text.indexOf(QLatin1Char('\n'), end) + 1;
        if (end == 0)
            return text.size();
    }
    return end;
}

// Only Yes is offered, but a box with one button takes it for the answer to Escape and to closing
// as well: here both decline, and Return alone does not agree.
class Question : public QMessageBox
{
public:
    Question(const QString &title, const QString &text, QWidget *parent)
        : QMessageBox(QMessageBox::Question, title, text, QMessageBox::Yes, parent)
    {
        button(QMessageBox::Yes)->setProperty("autoDefault", false);
    }

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->matches(QKeySequence::Cancel))
            reject();
        else
            QMessageBox::keyPressEvent(event);
    }

    void closeEvent(QCloseEvent *event) override
    {
        reject();
        event->accept();
    }
};

} // namespace

EthernetWidget::EthernetWidget(QWidget *parent)
    : EthernetWidget(new EthernetConfigurator, parent)
{
}

EthernetWidget::EthernetWidget(EthernetConfigurator *configurator, QWidget *parent)
    : QWidget(parent)
    , ui(new Ui::EthernetWidget)
    , m_model(new EthernetConfigModel(configurator, this))
{
    ui->setupUi(this);
    ui->tvInterfaces->horizontalHeader()->setStretchLastSection(true);
    ui->tvInterfaces->setModel(m_model);
    ui->tvInterfaces->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);

    reload();

    connect(ui->pbReload, &QPushButton::released, this, &EthernetWidget::reload);
    connect(ui->pbApply, &QPushButton::released, this, &EthernetWidget::apply);
    connect(ui->tvInterfaces, &QTableView::clicked, this, &EthernetWidget::onInterfacePressed);
    connect(ui->gbSettings, &EthernetSettingsBox::settingsChaged, m_model,
        &EthernetConfigModel::setSettings);
    connect(m_model, &EthernetConfigModel::logMessage, this, &EthernetWidget::showLog);
    connect(&m_buttonsTimer, &QTimer::timeout, this, &EthernetWidget::enableButtons);
    m_logPause.setSingleShot(true);
    connect(&m_logPause, &QTimer::timeout, this, &EthernetWidget::showUnshownLog);

    checkEnabled();
}

EthernetWidget::~EthernetWidget() = default;

void EthernetWidget::endWork()
{
    if (m_model)
        m_model->finishApplying();
}

void EthernetWidget::reload()
{
    if (!m_model)
        return;
    m_model->reload();
    for (int row = 0; row < m_model->rowCount(); ++row)
        ui->tvInterfaces->setRowHeight(row, rowHeight);
    checkEnabled();
}

void EthernetWidget::apply()
{
    clearLog();
    auto *const question = new Question(tr("Network settings applying"),
        tr("The network settings will reconfigures. continue?"), this);
    const QPointer<Question> stays = question;
    const int answer = question->exec();
    if (!stays)
        return; // gone with the page while it was open
    question->deleteLater();
    if (answer != QMessageBox::Yes)
        return;
    // Applying lets pending events through: neither a second tap nor the timer of the apply before
    // may get in between.
    m_buttonsTimer.stop();
    ui->pbApply->setEnabled(false);
    ui->pbReload->setEnabled(false);
    if (m_model)
        m_model->apply();
    m_buttonsTimer.start(quietTime);
}

void EthernetWidget::onInterfacePressed(const QModelIndex &idx)
{
    if (!m_model)
        return;
    QString name;
    InterfaceSettings settings;
    bool isUsed = false;
    const bool isFound = m_model->getSettings(idx, name, settings, isUsed);
    const bool isSwitched = idx.column() == 0;
    ui->gbSettings->setEnabled(isFound && isUsed != isSwitched);
    ui->gbSettings->setInterface(name);
    ui->gbSettings->setSettings(settings);
    m_model->switchAllow(idx);
}

void EthernetWidget::showLog(const QString &text)
{
    m_unshownLog += text;
    if (!m_logPause.isActive())
        showUnshownLog();
}

// The pane lays out a paragraph anew for each piece that is added to it, and looks for the end of a
// word in all of it for each line: a command that prints a lot without a line end would hang the
// page. So a flood is broken anywhere, and what comes while the pane is slow is added in one piece.
// Many lines are laid out one by one instead: they follow from the event loop, in one share a turn.
void EthernetWidget::showUnshownLog()
{
    QElapsedTimer time;
    time.start();
    if (ui->tbLog->document()->characterCount() + m_unshownLog.size() > floodSize)
        ui->tbLog->setWordWrapMode(QTextOption::WrapAnywhere);
    do {
        const int size = sizeOfPiece(m_unshownLog);
        ui->tbLog->insertPlainText(m_unshownLog.left(size));
        m_unshownLog.remove(0, size);
    } while (!m_unshownLog.isEmpty() && time.elapsed() < turnTime);
    ui->tbLog->ensureCursorVisible();
    if (!m_unshownLog.isEmpty())
        m_logPause.start(0);
    else if (time.elapsed() > slowInsert)
        m_logPause.start(static_cast<int>(time.elapsed()));
}

void EthernetWidget::clearLog()
{
    m_logPause.stop();
    m_unshownLog.clear();
    ui->tbLog->clear();
    ui->tbLog->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
}

void EthernetWidget::on_tbLog_textChanged()
{
    if (m_buttonsTimer.isActive()) {
        m_buttonsTimer.stop();
        m_buttonsTimer.start(quietTime);
    }
}

void EthernetWidget::enableButtons()
{
    ui->pbApply->setEnabled(true);
    ui->pbReload->setEnabled(true);
}

void EthernetWidget::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
}

void EthernetWidget::checkEnabled()
{
    ui->gbSettings->setEnabled(false);
    for (int row = 0; m_model && row < m_model->rowCount(); ++row) {
        QString name;
        InterfaceSettings settings;
        bool isUsed = false;
        if (m_model->getSettings(m_model->index(row, 0), name, settings, isUsed) && isUsed) {
            ui->gbSettings->setInterface(name);
            ui->gbSettings->setSettings(settings);
            ui->gbSettings->setEnabled(true);
            return;
        }
    }
}
