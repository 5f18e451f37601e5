#include "messagebus.h"

#include "busnames.h"
#include "privatefiles.h"

#include <QFile>

namespace {

const QString kServices = QStringLiteral("/run/terminal/dbus/services");
const QString kLog = QStringLiteral("/run/terminal/dbus/log");
const QString kConfig = QStringLiteral("/run/terminal/dbus/bus.conf");

// Everybody in the terminal is root: who may do what is not this bus's matter.
QByteArray configuration()
{
    return QByteArrayLiteral(
        R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>unix:path=/run/dbus/system_bus_socket</listen>
  <auth>EXTERNAL</auth>
  <servicedir>/run/terminal/dbus/services</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)");
}

} // namespace

MessageBus::MessageBus(QObject *parent)
    : QObject(parent)
    , m_daemon(this)
{
}

MessageBus::~MessageBus()
{
    m_daemon.kill();
    m_daemon.waitForFinished();
}

bool MessageBus::start(const QString &broker, QString *error)
{
    const QByteArray service = "[D-BUS Service]\nName=" + tavbus::BROKER_SERVICE.toLatin1()
        + "\nExec=\"" + broker.toUtf8() + "\"\n";
    PrivateFiles::write(
        kServices + QLatin1Char('/') + tavbus::BROKER_SERVICE + QStringLiteral(".service"),
        service);
    PrivateFiles::write(kConfig, configuration());
    // It complains about a limit that only a real root may raise.
    m_daemon.setStandardErrorFile(kLog);
    m_daemon.start(QStringLiteral("dbus-daemon"),
        {QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
            QStringLiteral("--print-address"), QStringLiteral("--config-file=") + kConfig});
    // It prints its address when it listens.
    if (m_daemon.waitForReadyRead(10000))
        return true;
    QFile log(kLog);
    log.open(QIODevice::ReadOnly);
    *error = QStringLiteral("dbus-daemon did not start: %1 %2")
                 .arg(m_daemon.errorString(), QString::fromLocal8Bit(log.readAll()));
    return false;
}
