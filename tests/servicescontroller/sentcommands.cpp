#include "sentcommands.h"

#include <QRegularExpression>

namespace {

const auto kMarker = QStringLiteral("marker end");

} // namespace

SentCommands::SentCommands(const QString &busAddress)
    : m_address(busAddress)
{
    m_monitor.start(QStringLiteral("dbus-monitor"),
        {QStringLiteral("--address"), busAddress,
            QStringLiteral("type='method_call',interface='org.ovrel.TavBus1',"
                           "member='sendCommand'")});
    // It tells of its own name once it listens.
    while (!line().contains(QLatin1String("NameLost"))) { }
}

SentCommands::~SentCommands()
{
    m_monitor.terminate();
    m_monitor.waitForFinished();
}

QStringList SentCommands::take()
{
    // The bus keeps the order, so whatever was sent before this marker is shown before it. The
    // broker refuses it: its sender has not said who it is.
    QProcess::execute(QStringLiteral("dbus-send"),
        {QStringLiteral("--bus=") + m_address, QStringLiteral("--type=method_call"),
            QStringLiteral("--dest=org.ovrel.TavBus"), QStringLiteral("/org/ovrel/TavBus"),
            QStringLiteral("org.ovrel.TavBus1.sendCommand"), QStringLiteral("string:marker"),
            QStringLiteral("string:end")});
    static const QRegularExpression word(QStringLiteral("^   string \"(.*)\"$"));
    static const QRegularExpression key(QStringLiteral("^         string \"(.*)\"$"));
    static const QRegularExpression value(QStringLiteral("^         variant +(.*)$"));

    QStringList commands;
    while (commands.isEmpty() || commands.last() != kMarker) {
        const QString text = line();
        if (text.startsWith(QLatin1String("method call"))) {
            commands << QString();
        } else if (commands.isEmpty()) {
            continue; // the rest of the monitor's own beginning
        } else if (const auto match = word.match(text); match.hasMatch()) {
            QString &command = commands.last();
            command += (command.isEmpty() ? QString() : QStringLiteral(" ")) + match.captured(1);
        } else if (const auto name = key.match(text); name.hasMatch()) {
            commands.last() += QLatin1Char(' ') + name.captured(1) + QLatin1Char('=');
        } else if (const auto content = value.match(text); content.hasMatch()) {
            commands.last() += content.captured(1);
        }
    }
    commands.removeLast();
    return commands;
}

QString SentCommands::line()
{
    while (!m_monitor.canReadLine()) {
        if (!m_monitor.waitForReadyRead(30'000))
            qFatal(
                "the D-Bus monitor says nothing: %s", m_monitor.readAllStandardError().constData());
    }
    return QString::fromUtf8(m_monitor.readLine()).remove(QLatin1Char('\n'));
}
