#pragma once

#include <QObject>
#include <QString>

class QSocketNotifier;

/// The inside of one serial port: a pseudo-terminal whose outer end stands in the terminal's /dev
/// under the port's name. Lives in the modems' thread.
///
/// It knows whether a program has the port open: what is sent while nobody listens is lost, as on a
/// real port, and nothing of one program's session is left for the next one.
class SerialLine : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SerialLine)

public:
    explicit SerialLine(const QString &name, QObject *parent = nullptr);
    ~SerialLine() override;

    QString name() const { return m_name; }
    bool isPlugged() const { return m_master >= 0; }
    bool isOpen() const { return m_open; }

    bool plug();
    /// Hangs the line up: whoever has it open gets an error; the device node goes.
    void unplug();
    void send(const QByteArray &bytes);

signals:
    void received(const QByteArray &bytes);
    /// The last program that had the port open has closed it (DTR has dropped).
    void hungUp();

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
