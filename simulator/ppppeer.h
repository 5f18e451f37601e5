#pragma once

#include <QByteArray>
#include <QObject>
#include <QProcess>

class QSocketNotifier;
struct ScenarioLogin;

/// The network's end of one data call, on a pseudo-terminal of its own.
///
/// Debian's user-mode PPP peer: to who dials in, 10.0.2.2 is this terminal's loopback. It asks no
/// caller for a name. Where the network does, the end is Debian's PPP daemon, which needs a kernel
/// with PPP, and 10.0.2.2 is a host that answers nothing but pings.
class PppPeer : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PppPeer)

public:
    explicit PppPeer(QObject *parent = nullptr);
    ~PppPeer() override;

    bool start(const ScenarioLogin &login);
    void write(const QByteArray &bytes);

signals:
    void received(const QByteArray &bytes);
    void ended();

private:
    void readBytes();
    void writeRest();

    // It reads and writes on its standard input, which QProcess would open for reading alone.
    class Process : public QProcess
    {
    public:
        using QProcess::QProcess;
        int line = -1; // while it is being started

    protected:
        void setupChildProcess() override;
    };

    Process m_process;
    int m_line = -1;
    QByteArray m_unsent;
    QSocketNotifier *m_reader = nullptr; // children of this
    QSocketNotifier *m_writer = nullptr;
};
