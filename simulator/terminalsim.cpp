#include "terminalsim.h"

#include "control.h"
#include "firstprocess.h"
#include "machine.h"
#include "portforwarder.h"
#include "privatefiles.h"
#include "terminalnamespace.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <QLocale>
#include <cstdio>
#include <unistd.h>

namespace {

constexpr char kUsage[] = "terminalsim [--scenario FILE] [--locale NAME] [--publish PORT] -- "
                          "PROGRAM [ARGUMENTS]\n"
                          "Runs PROGRAM in a simulated payment terminal and ends with its status.\n"
                          "FILE may be the name of a scenario that comes along, too.";

void complain(const QString &text)
{
    std::fprintf(stderr, "terminalsim: %s\n", qUtf8Printable(text));
}

QString ownFolder()
{
    return QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).path();
}

// The broker of the same build or installation as this program.
QString findBroker()
{
    for (const char *place : {"/tavbusd", "/../libexec/ovrel/tavbusd"}) {
        const QFileInfo broker(ownFolder() + QLatin1String(place));
        if (broker.isExecutable())
            return broker.canonicalFilePath();
    }
    return {};
}

// The translations likewise; none when they have not been built.
QString findTranslations()
{
    return QFileInfo(ownFolder() + QLatin1String("/../share/ovrel/translations"))
        .canonicalFilePath();
}

} // namespace

bool TerminalSim::readArguments(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    const QCommandLineOption scenario(
        QStringLiteral("scenario"), {}, QStringLiteral("file"), QStringLiteral("default"));
    const QCommandLineOption locale(QStringLiteral("locale"), {}, QStringLiteral("name"));
    const QCommandLineOption publish(QStringLiteral("publish"), {}, QStringLiteral("port"));
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    parser.addOptions({scenario, locale, publish, help});
    if (!parser.parse(QStringList(QString()) + arguments)) {
        complain(parser.errorText());
        return false;
    }
    m_program = parser.positionalArguments();
    m_helpWanted = parser.isSet(help);
    if (m_helpWanted)
        return true;
    if (m_program.isEmpty()) {
        complain(QStringLiteral("usage: ") + QLatin1String(kUsage));
        return false;
    }
    QString error;
    if (!Scenario::load(parser.value(scenario), &m_scenario, &error)) {
        complain(error);
        return false;
    }
    m_language = {parser.value(locale), findTranslations()};
    // QLocale answers every name that it does not know with "C".
    if (parser.isSet(locale) && m_language.locale != QLatin1String("C")
        && QLocale(m_language.locale).language() == QLocale::C) {
        complain(QStringLiteral("there is no locale %1").arg(m_language.locale));
        return false;
    }
    if (parser.isSet(publish)) {
        m_publishedPort = parser.value(publish).toUShort();
        m_published = m_publishedPort == 0 ? -1 : PortForwarder::listenOn(m_publishedPort);
        if (m_published < 0) {
            complain(QStringLiteral("cannot listen on port %1").arg(parser.value(publish)));
            return false;
        }
    }
    m_broker = findBroker();
    if (m_broker.isEmpty()) {
        complain(QStringLiteral("there is no tavbusd beside this program"));
        return false;
    }
    return true;
}

int TerminalSim::run(const QStringList &arguments)
{
    if (!readArguments(arguments))
        return TerminalNamespace::kRefused;
    if (m_helpWanted) {
        std::puts(kUsage);
        return 0;
    }
    TerminalNamespace terminal;
    const int status = terminal.run([this] {
        PrivateFiles files;
        QString error;
        if (!files.setUp()) {
            complain(files.errorText());
            return TerminalNamespace::kRefused;
        }
        if (!Machine::writeFiles(m_scenario, m_language, &error)) {
            complain(error);
            return TerminalNamespace::kRefused;
        }
        Machine::setEnvironment();
        return FirstProcess([this](int readyFd) { return runMachine(readyFd); }, m_program).run();
    });
    if (!terminal.errorText().isEmpty())
        complain(terminal.errorText());
    return status;
}

int TerminalSim::runMachine(int readyFd) const
{
    int argc = 1;
    char name[] = "terminalsim";
    char *argv[] = {name, nullptr};
    QCoreApplication application(argc, argv);
    Machine machine(m_scenario, m_broker);
    QString error;
    if (!machine.start(&error)) {
        complain(error);
        return TerminalNamespace::kRefused;
    }
    Control control(&machine);
    if (!control.publish()) {
        complain(QStringLiteral("the control interface does not get onto the bus"));
        return TerminalNamespace::kRefused;
    }
    if (m_published >= 0)
        new PortForwarder(m_published, m_publishedPort, &application);
    const char ready = 1;
    if (write(readyFd, &ready, 1) != 1)
        return TerminalNamespace::kRefused;
    return QCoreApplication::exec();
}
