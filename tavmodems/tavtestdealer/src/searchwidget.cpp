#include "searchwidget.h"

#include "atmodem.h"
#include "busnames.h"
#include "connectionedits.h"
#include "imageresources.h"
#include "modemsettings.h"
#include "modemsfinder.h"
#include "modemsmodel.h"
#include "servicescontroller.h"
#include "signalnotifier.h"
#include "ui_searchwidget.h"

#include <QMessageBox>
#include <QSerialPortInfo>

namespace {

constexpr int kLowestBaudrate = 9600; // a slower line is of no use for the Internet
constexpr int kOpenAttempts = 3;

} // namespace

SearchWidget::SearchWidget(QWidget *parent)
    : SearchWidget(new ModemsFinder, parent)
{
}

SearchWidget::SearchWidget(ModemsFinder *finder, QWidget *parent)
    : QWidget(parent)
    , ui(new Ui::SearchWidget)
    , m_finder(finder)
    , m_servicesController(std::make_shared<ServicesController>(tavbus::BUSNAME_TESTDEALER, this))
    , m_model(std::make_shared<ModemsModel>())
{
    initImageResources();
    finder->setParent(this);
    ui->setupUi(this);
    ui->listView->setModel(m_model.get());

    const ServicesController *const controller = m_servicesController.get();
    connect(finder, &ModemsFinder::noDevices, this, &SearchWidget::noDevices);
    connect(finder, &ModemsFinder::devicesFinded, this, &SearchWidget::devicesFinded);
    connect(controller, &ServicesController::stopped, finder, &ModemsFinder::start);
    connect(finder, &ModemsFinder::finished, controller, &ServicesController::startServices);
    connect(ui->listView, &QListView::clicked, this, &SearchWidget::modemSelected);
    connect(ui->tbDown, &QToolButton::released, this, &SearchWidget::downModem);
    connect(ui->tbRemove, &QToolButton::released, this, &SearchWidget::removeModem);
    connect(ui->tbUp, &QToolButton::released, this, &SearchWidget::upModem);
    connect(this, &SearchWidget::started, this, &SearchWidget::workStarted);
    connect(this, &SearchWidget::finished, this, &SearchWidget::workFinished);
    connect(controller, &ServicesController::started, this, &SearchWidget::finished);

    fillPorts();
    fillBaudrates();
    clearSettings();
    for (QToolButton *button : {ui->tbDown, ui->tbRemove, ui->tbUp})
        button->setEnabled(false);
}

SearchWidget::~SearchWidget() = default;

void SearchWidget::endWork()
{
    m_finder->breakOff();
    m_servicesController->giveServicesBack();
}

void SearchWidget::search()
{
    m_servicesController->stopServices();
    emit started();
}

void SearchWidget::devicesFinded(const QList<ModemInfo> &modems)
{
    ConnectionEdits::replaceAll(modems);
    m_model->setStringList(ModemSettings().connectionsOrder());
}

void SearchWidget::noDevices(const QString &err)
{
    clearSettings();
    ConnectionEdits::forgetAll();
    m_model->setStringList({});
    QMessageBox::warning(this, tr("No modems"), err, QMessageBox::Ok);
}

void SearchWidget::modemSelected(const QModelIndex &idx)
{
    clearSettings();
    const int count = m_model->rowCount();
    if (!idx.isValid() || idx.row() >= count)
        return;
    showSettings(m_model->connectionName(idx));
    ui->tbRemove->setEnabled(true);
    ui->tbDown->setEnabled(idx.row() < count - 1);
    ui->tbUp->setEnabled(idx.row() >= 1);
}

void SearchWidget::showSettings(const QString &name)
{
    // Before the lists are filled anew, which else would count as an edit of what they showed.
    disconnectSettings();
    fillPorts();
    fillBaudrates();
    const QMap<QString, ModemInfo> modems = ModemSettings().modems();
    const auto found = modems.constFind(name);
    if (found == modems.constEnd()) {
        clearSettings();
        ui->pbModemOnly->setEnabled(false);
        return;
    }
    const ModemInfo &modem = *found;
    ui->gbSettings->setEnabled(true);
    ui->gbSettings->setTitle(modem.connectionName());
    ui->leName->setText(modem.connectionName());
    ui->cbPort->setCurrentIndex(
        ui->cbPort->findText(modem.portName(), Qt::MatchExactly | Qt::MatchCaseSensitive));
    ui->leUser->setText(modem.userName());
    ui->lePassword->setText(modem.password());
    ui->cbBaudrate->setCurrentIndex(ui->cbBaudrate->findData(modem.baudrate()));
    ui->leDialCmd->setText(modem.dialCommand());
    ui->leISDN->setText(QString::number(modem.isdn()));
    ui->leModemType->setText(modem.modemType());
    ui->cbNewPppd->setChecked(modem.newPppd());
    ui->cbStupidMode->setChecked(modem.stupidMode());
    ui->phonesEditor->clear();
    ui->phonesEditor->setStrings(ConnectionEdits::phones(modem));
    ui->initLinesEditor->clear();
    ui->initLinesEditor->setStrings(modem.initLines());
    connectSettings();
    const QSerialPortInfo port(ui->cbPort->currentText());
    ui->pbModemOnly->setEnabled(
        port.manufacturer().contains(QLatin1String("huawei"), Qt::CaseInsensitive));
}

void SearchWidget::clearSettings()
{
    ui->gbSettings->setEnabled(false);
    ui->gbSettings->setTitle(QString());
    // The name first: without one, what the rest sets off here is nobody's edit.
    for (QLineEdit *line :
        {ui->leName, ui->leUser, ui->lePassword, ui->leDialCmd, ui->leISDN, ui->leModemType})
        line->clear();
    ui->cbPort->setCurrentIndex(-1);
    ui->cbBaudrate->setCurrentIndex(-1);
    ui->cbNewPppd->setChecked(true);
    ui->cbStupidMode->setChecked(true);
    ui->phonesEditor->clear();
    ui->initLinesEditor->clear();
}

void SearchWidget::settingsChanged()
{
    // Not showSettings()'s test, on purpose: a USB port that was chosen by hand is trusted.
    ui->pbModemOnly->setEnabled(
        ui->cbPort->currentText().contains(QLatin1String("usb"), Qt::CaseInsensitive));
    const QString name = ui->leName->text();
    if (name.isEmpty())
        return;
    ConnectionEdits::change(name, m_model->stringList(), [this](ModemInfo &modem) {
        modem.setPortName(ui->cbPort->currentText());
        modem.setBaudrate(ui->cbBaudrate->currentData().toInt());
        modem.setUserName(ui->leUser->text());
        modem.setPassword(ui->lePassword->text());
        modem.setDialCommand(ui->leDialCmd->text());
        modem.setIsdn(ui->leISDN->text().toInt());
        modem.setModemType(ui->leModemType->text());
        modem.setNewPppd(ui->cbNewPppd->isChecked());
        modem.setStupidMode(ui->cbStupidMode->isChecked());
        ConnectionEdits::setPhones(modem, ui->phonesEditor->strings());
        modem.setInitLines(ui->initLinesEditor->strings());
    });
}

void SearchWidget::removeModem()
{
    const QModelIndex idx = ui->listView->selectionModel()->selectedIndexes().value(0);
    if (!idx.isValid())
        return;
    const QString name = m_model->connectionName(idx);
    QStringList names = m_model->stringList();
    names.removeAt(idx.row());
    m_model->setStringList(names);
    ConnectionEdits::remove(name, names);
    clearSettings();
}

void SearchWidget::upModem()
{
    const QModelIndex idx = ui->listView->selectionModel()->selectedIndexes().value(0);
    if (idx.isValid())
        swapWithNext(idx.row() - 1);
}

void SearchWidget::downModem()
{
    const QModelIndex idx = ui->listView->selectionModel()->selectedIndexes().value(0);
    if (idx.isValid())
        swapWithNext(idx.row());
}

void SearchWidget::workStarted()
{
    m_model->setStringList({});
    clearSettings();
    for (QToolButton *button : {ui->tbSearch, ui->tbRemove, ui->tbUp, ui->tbDown})
        button->setEnabled(false);
    ui->listView->setEnabled(false);
}

void SearchWidget::workFinished()
{
    ui->tbSearch->setEnabled(true);
    ui->listView->setEnabled(true);
}

void SearchWidget::modemToModemOnly()
{
    AtModem modem;
    modem.setAbortFlag(SignalNotifier::flag());
    if (modem.open(ui->cbPort->currentText(), ui->cbBaudrate->currentData().toInt(), kOpenAttempts)
        && modem.toModemOnly())
        QMessageBox::information(this, tr("To modem only mode"),
            tr("Modem was switched to Modem Only mode. Replug modem, please."), QMessageBox::Ok);
}

void SearchWidget::showEvent(QShowEvent *event)
{
    m_model->setStringList(ModemSettings().connectionsOrder());
    QWidget::showEvent(event);
}

void SearchWidget::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
}

void SearchWidget::connectSettings()
{
    const auto add = [this](const auto *sender, auto signal) {
        m_changes.append(connect(sender, signal, this, &SearchWidget::settingsChanged));
    };
    for (const ShortStringListEditor *editor : {ui->phonesEditor, ui->initLinesEditor})
        add(editor, QOverload<>::of(&ShortStringListEditor::changed));
    for (const QLineEdit *line :
        {ui->leName, ui->leUser, ui->lePassword, ui->leDialCmd, ui->leISDN, ui->leModemType})
        add(line, &QLineEdit::textEdited);
    for (const QComboBox *box : {ui->cbPort, ui->cbBaudrate})
        add(box, QOverload<int>::of(&QComboBox::currentIndexChanged));
    for (const QCheckBox *box : {ui->cbNewPppd, ui->cbStupidMode})
        add(box, &QCheckBox::clicked);
}

void SearchWidget::disconnectSettings()
{
    for (const QMetaObject::Connection &change : qAsConst(m_changes))
        disconnect(change);
    m_changes.clear();
}

void SearchWidget::fillPorts()
{
    ui->cbPort->clear();
    const QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &port : ports)
        ui->cbPort->addItem(port.portName());
}

void SearchWidget::fillBaudrates()
{
    ui->cbBaudrate->clear();
    const QList<qint32> rates = QSerialPortInfo::standardBaudRates();
    for (const qint32 rate : rates) {
        if (rate >= kLowestBaudrate)
            ui->cbBaudrate->addItem(QString::number(rate), rate);
    }
}

void SearchWidget::swapWithNext(int row)
{
    QStringList names = m_model->stringList();
    if (row < 0 || row >= names.size() - 1)
        return;
    names.swapItemsAt(row, row + 1);
    m_model->setStringList(names);
    ModemSettings().setConnectionsOrder(names);
    clearSettings();
}
