#pragma once

#include "serialline.h"

#include <QString>

class QSocketNotifier;

/// A port that is a pseudo-terminal, whose outer end stands in the terminal's /dev under the port's
/// name.
///
/// It knows whether a program has the port open: what is sent while nobody listens is lost, as on a
/// real port, and nothing of one program's session is left for the next one.
class PseudoLine final : public SerialLine
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PseudoLine)

public:
    explicit PseudoLine(const QString &name, QObject *parent = nullptr);
    ~PseudoLine() override;

    bool isPlugged() const override { return m_master >= 0; }
    bool plug() override;
    void unplug() override;
    void send(const QByteArray &bytes) override;

private:
    void readBytes();
    QByteArray takeBytes();
    bool isHungUp() const;
    void updateUsers();
    bool takeEvents();
    void writeRest();
    bool makeLine();
    void dropLine();
    void dropNotifiers();
    void replaceLine();
    bool resetLine();

    const QString m_name;
    int m_master = -1;
    int m_watch = -1; // inotify: the outer end has been opened or closed
    bool m_open = false;
    QByteArray m_outerPath; // in /dev/pts
    QByteArray m_unsent;
    QSocketNotifier *m_reader = nullptr; // children of this
    QSocketNotifier *m_writer = nullptr;
    QSocketNotifier *m_userWatcher = nullptr;
};
