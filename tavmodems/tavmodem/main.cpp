#include "commandline.h"
#include "modemcommand.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <atomic>
#include <csignal>
#include <cstdio>

namespace {

std::atomic<int> theSignal{0}; // that the program was told to end by
std::atomic<bool> theAbort{false};
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free,
    "both are set in a signal handler");

void endWork(int number)
{
    theSignal = number;
    theAbort = true;
}

// The port's lock is given back and the modem left in peace before the program ends.
void catchSignals()
{
    struct sigaction action = {};
    action.sa_handler = endWork;
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction former = {};
        // One that is ignored from the start (nohup, a background job) stays so.
        if (::sigaction(number, nullptr, &former) == 0 && former.sa_handler != SIG_IGN)
            ::sigaction(number, &action, nullptr);
    }
    ::signal(SIGPIPE, SIG_IGN); // writing fails then, and is told
}

bool write(FILE *file, const QByteArray &bytes)
{
    const auto size = static_cast<std::size_t>(bytes.size());
    return std::fwrite(bytes.constData(), 1, size, file) == size && std::fflush(file) == 0;
}

int fail(ExitStatus status, const QString &error)
{
    write(stderr, "tavmodem: " + error.simplified().toUtf8() + '\n');
    return static_cast<int>(status);
}

int run(const CommandLine &commandLine)
{
    ModemCommand command(
        commandLine, &theAbort, [](const QByteArray &answer) { return write(stdout, answer); });
    const ExitStatus status = command.run();
    if (theSignal != 0 && status != ExitStatus::Done)
        return 128 + theSignal; // as a shell would tell of it
    const QStringList notes = command.notes();
    for (const QString &note : notes)
        fail(status, note);
    return status == ExitStatus::Done ? 0 : fail(status, command.error());
}

} // namespace

int main(int argc, char **argv)
{
    catchSignals();
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tavmodem"));
    // Standard error is for the one line that says what went wrong; QT_LOGGING_RULES opens it for
    // the talk with the modem ("atmodem.debug=true").
    QLoggingCategory::setFilterRules(
        QStringLiteral("*.debug=false\n*.info=false\n*.warning=false"));

    CommandLineReader reader;
    switch (reader.read(QCoreApplication::arguments())) {
    case CommandLineReader::Outcome::Wrong:
        return fail(ExitStatus::WrongUse, reader.text());
    case CommandLineReader::Outcome::Tell:
        return write(stdout, reader.text().toUtf8()) ? 0 : 1;
    case CommandLineReader::Outcome::Run:
        break;
    }
    return run(reader.commandLine());
}
