#pragma once

#include <QObject>
#include <QVariantMap>

/**
 * The least that a service on D-Bus can be: takes a record and gives a state, keeping nothing.
 */
class BareService : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.ovrel.Bare1")

public slots:
    /// The state that loadState() gives from now on.
    void setState(qlonglong stamp, const QVariantMap &body);
    qlonglong loadState(const QString &agent, QVariantMap &body);
    void saveSettings(const QString &owner, const QString &description, qlonglong stamp,
        const QVariantList &settings);

private:
    qlonglong m_stamp = 0;
    QVariantMap m_body;
};
