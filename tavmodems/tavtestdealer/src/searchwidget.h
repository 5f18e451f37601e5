#pragma once

#include "modeminfo.h"

#include <QList>
#include <QMetaObject>
#include <QWidget>

#include <memory>

class ModemsFinder;
class ModemsModel;
class QModelIndex;
class ServicesController;
namespace Ui {
class SearchWidget;
}

/// The "Settings" page: finds the modems of the terminal with its services stopped meanwhile, lists
/// the connections in their order of use and edits them. Every edit is in the store of modems at
/// once; saving the store is the Modems page's job.
class SearchWidget : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SearchWidget)

public:
    explicit SearchWidget(QWidget *parent = nullptr);
    /// Takes the finder over.
    explicit SearchWidget(ModemsFinder *finder, QWidget *parent = nullptr);
    ~SearchWidget() override;

    /// Breaks off a search under way, which leaves the connections as they are, and tells the
    /// services to start, without the event loop. There is no finished().
    void endWork();

public slots:
    void search();
    /// The modems found take the place of all connections known before.
    void devicesFinded(const QList<ModemInfo> &modems);
    /// No connection is left; err tells the user why.
    void noDevices(const QString &err);

    void modemSelected(const QModelIndex &idx);
    /// Fills the form with a connection's record, without writing it back; clears it when there is
    /// no such connection.
    void showSettings(const QString &name);
    void clearSettings();
    /// Writes the form into the store.
    void settingsChanged();

    void removeModem();
    void upModem();
    void downModem();

    void workStarted();
    void workFinished();

    /// Has the modem on the port shown drop its disk drive and its other extras. Blocks until it
    /// has answered.
    void modemToModemOnly();

signals:
    void started();
    void finished(); ///< the services run again

protected:
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void connectSettings();
    void disconnectSettings();
    void fillPorts();
    void fillBaudrates();
    void swapWithNext(int row);

    const std::unique_ptr<Ui::SearchWidget> ui;
    const std::shared_ptr<ModemsFinder> m_finder;
    const std::shared_ptr<ServicesController> m_servicesController;
    const std::shared_ptr<ModemsModel> m_model;
    QList<QMetaObject::Connection> m_changes; // the form's, to settingsChanged()
};
