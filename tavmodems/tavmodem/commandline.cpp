#include "commandline.h"

#include "appversion.h"
#include "modeminfo.h"

#include <QCommandLineParser>

#include <array>

namespace {

struct Name
{
    CommandLine::Command command;
    const char *name;
    const char *description;
};

constexpr std::array kNames{
    Name{CommandLine::Command::List, "list", "the modems on all serial ports"},
    Name{
        CommandLine::Command::Info, "info", "what the modem knows of itself, its card and network"},
    Name{CommandLine::Command::Cells, "cells", "the network's codes and the cell"},
    Name{CommandLine::Command::Signal, "signal", "the signal's strength"},
    Name{CommandLine::Command::Balance, "balance", "the balance, by the operator's own code"},
    Name{CommandLine::Command::Number, "number", "the SIM card's own telephone number"},
    Name{CommandLine::Command::Ussd, "ussd", "the network's answer to a code: ussd CODE"},
    Name{CommandLine::Command::Sms, "sms", "the messages on the modem, which stay there"},
    Name{CommandLine::Command::ModemOnly, "modem-only",
        "make the stick show its modem alone when it is plugged in again"},
};

QString descriptions()
{
    QString text = QStringLiteral("What to do:");
    for (const Name &name : kNames)
        text += QStringLiteral("\n%1 %2")
                    .arg(QLatin1String(name.name), -10)
                    .arg(QLatin1String(name.description));
    return text;
}

} // namespace

CommandLineReader::Outcome CommandLineReader::read(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Asks a GSM modem on a serial port what a technician wants to know."));
    const QCommandLineOption port(QStringLiteral("port"),
        QStringLiteral("The modem's port: a device name or path. Without it the only modem that "
                       "there is."),
        QStringLiteral("port"));
    const QCommandLineOption baud(QStringLiteral("baud"),
        QStringLiteral("The line speed in bits per second, %1 without it.")
            .arg(ModemInfo().baudrate()),
        QStringLiteral("number"), QString::number(ModemInfo().baudrate()));
    const QCommandLineOption json(
        QStringLiteral("json"), QStringLiteral("Answer as one JSON value."));
    const QCommandLineOption take(QStringLiteral("take"),
        QStringLiteral("With sms: delete the messages from the modem once they are read."));
    const QCommandLineOption help(
        {QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Tell what there is."));
    const QCommandLineOption version(
        {QStringLiteral("v"), QStringLiteral("version")}, QStringLiteral("Tell the version."));
    parser.addOptions({port, baud, json, take, help, version});
    parser.addPositionalArgument(QStringLiteral("command"), descriptions());

    if (!parser.parse(arguments))
        return wrong(parser.errorText());
    if (parser.isSet(help)) {
        m_text = parser.helpText();
        return Outcome::Tell;
    }
    if (parser.isSet(version)) {
        m_text = QStringLiteral("tavmodem %1\n").arg(AppVersion::VERSION);
        return Outcome::Tell;
    }

    m_commandLine.port = parser.value(port);
    if (parser.isSet(port) && m_commandLine.port.isEmpty())
        return wrong(QStringLiteral("The name of the port is empty."));
    bool isNumber = false;
    m_commandLine.baudrate = parser.value(baud).toInt(&isNumber);
    if (!isNumber || m_commandLine.baudrate <= 0)
        return wrong(QStringLiteral("%1 is not a line speed.").arg(parser.value(baud)));
    m_commandLine.json = parser.isSet(json);
    m_commandLine.take = parser.isSet(take);

    QStringList words = parser.positionalArguments();
    if (words.isEmpty())
        return wrong(QStringLiteral("What to do is missing; --help tells what there is."));
    const QString word = words.takeFirst();
    const auto name = std::find_if(kNames.begin(), kNames.end(),
        [&](const Name &known) { return word == QLatin1String(known.name); });
    if (name == kNames.end())
        return wrong(
            QStringLiteral("There is no command %1; --help tells what there is.").arg(word));
    m_commandLine.command = name->command;
    if (m_commandLine.command == CommandLine::Command::Ussd) {
        if (words.isEmpty() || words.first().isEmpty())
            return wrong(QStringLiteral("The code to send is missing: ussd CODE."));
        m_commandLine.code = words.takeFirst();
    }
    if (!words.isEmpty())
        return wrong(QStringLiteral("%1 is too much for %2.").arg(words.first(), word));
    if (m_commandLine.take && m_commandLine.command != CommandLine::Command::Sms)
        return wrong(QStringLiteral("--take goes with sms only."));
    return Outcome::Run;
}

CommandLineReader::Outcome CommandLineReader::wrong(const QString &text)
{
    m_text = text;
    return Outcome::Wrong;
}
