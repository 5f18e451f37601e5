// A full query, all that the Ask modem page wants to know, against the time that the modem itself
// takes to answer, for a modem that answers at once, quickly and slowly; and against gammu, which
// gathers what it can of the same from the same modem.

#include "atmodem.h"
#include "modemsettings.h"
#include "scriptedmodem.h"
#include "ussd.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QLoggingCategory>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kBaudrate = 57600;
constexpr int kRounds = 3;
constexpr double kMostRatio = 1.05;
constexpr double kMostAtOnceMs = 30;
constexpr int kGammuLatencyMs = 20;
const QString BALANCE = QStringLiteral("*100#");
const QString NUMBER = QStringLiteral("*111*0887#");
constexpr int kGiveUpAfterMs = 120000;

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

/// A stick that answers all that is asked, each command after its latency.
class SlowModem
{
public:
    SlowModem()
    {
        const auto ok = [](const QByteArray &text = {}) { return ScriptedModem::ok(text); };
        const QMap<QByteArray, QByteArray> answers{
            // What gammu wants besides.
            {"ATE1", ok()},
            {"AT+CFUN=1", ok()},
            {"AT+CPMS=\"SM\",\"SM\"", ok("+CPMS: 1,20,1,20,1,20")},
            {"AT+CUSD=0", ok()},
            {"AT+CUSD=2", ok()},
            {"AT+CREG=1", ok()},
            {"AT+CGREG=1", ok()},
            {"AT+CGREG=2", ok()},
            {"AT+CGREG?", ok("+CGREG: 2,1,\"1A2B\",\"00C3F4D5\"")},
            {"AT+CGATT?", ok("+CGATT: 1")},
            {"AT^PORTSEL=1", ok()},
            {"AT^CURC=1", ok()},
            {"AT+CPIN?", ok("+CPIN: READY")},
            {"AT+CREG=0", ok()},
            {"AT+CUSD=1", ok()},
            {"AT+CUSD=1,\"*100#\",15", ok() + "\r\n+CUSD: 0,\"Balance: 150.50 r.\",15\r\n"},
            {"AT+COPS=3,2", ok()},
            {"AT+COPS=3,0", ok()},
            {"AT+COPS?", ok("+COPS: 0,2,\"25001\",2")},
            {"AT+CREG=2", ok()},
            {"AT+CREG?", ok("+CREG: 2,1,\"1A2B\",\"00C3F4D5\",2")},
            {"AT+CGMR", ok("11.126.10.00.00")},
            {"AT+GMR", ok("11.126.10.00.00")},
            {"AT+CGSN", ok("353142031234567")},
            {"AT+CIMI", ok("250011234567890")},
            {"AT^ICCID?", ok("^ICCID: 98101230000000000121")},
            {"AT+CNUM", ok()},
            {"AT+CSCS?", ok("+CSCS: \"IRA\"")},
            {"AT+CSCS=?", ok("+CSCS: (\"IRA\",\"UCS2\",\"GSM\")")},
            {"AT+CSCS=\"GSM\"", ok()},
            {"AT+CSCS=\"UCS2\"", ok()},
            {ussdCommand(BALANCE, UssdForm::PackedHex).value(),
                ok() + "\r\n+CUSD: 0,\"C2303BEC9E83623598AB0603C9EB62\",15\r\n"},
            {ussdCommand(NUMBER, UssdForm::PackedHex).value(),
                ok() + "\r\n+CUSD: 0,\"Your number is +79161234567\",15\r\n"},
            {"AT+CSQ", ok("+CSQ: 21,99")},
            {"AT+CMGF=0", ok()},
            {"AT+CMGF?", ok("+CMGF: 0")},
            {"AT+CMGF=?", ok("+CMGF: (0,1)")},
            {"AT+CPMS?", ok("+CPMS: \"SM\",1,20,\"SM\",1,20,\"SM\",1,20")},
            {"AT+CPMS=?", ok("+CPMS: (\"SM\"),(\"SM\"),(\"SM\")")},
            {"AT+CMGL=4",
                ok("+CMGL: 3,1,,28\r\n07917283010010F5040BC87238880900F10000993092516195800AE8"
                   "329BFD4697D9EC37")},
            {"AT+CMGD=3", ok()},
        };
        for (auto answer = answers.cbegin(); answer != answers.cend(); ++answer)
            m_modem.answers.insert(answer.key(), answer.value());
        m_modem.onCommand = [this](const QByteArray &command) {
            m_modem.echo = m_modem.echo || command == "ATE1"; // gammu tells answers by the echo
            answerLater();
        };
        m_modem.start();
    }

    void setLatency(int milliseconds) { m_latencyMs = milliseconds; }
    /// The milliseconds since the last call that the modem took for its answers, and how many.
    double takeLatency(int *commands)
    {
        *commands = m_commands.exchange(0);
        return static_cast<double>(m_latencyNs.exchange(0)) / 1e6;
    }
    QString path() const { return m_modem.path(); }

private:
    void answerLater() // in the modem's thread
    {
        QElapsedTimer clock;
        clock.start();
        if (m_latencyMs > 0)
            ::usleep(static_cast<useconds_t>(m_latencyMs) * 1000);
        m_latencyNs += clock.nsecsElapsed();
        ++m_commands;
    }

    std::atomic<int> m_latencyMs{0};
    std::atomic<int> m_commands{0};
    std::atomic<qint64> m_latencyNs{0};
    ScriptedModem m_modem;
};

/// In the order of the page; milliseconds, or nothing when it did not learn something.
double query(const QString &port, const QString &lockDirectory)
{
    QElapsedTimer clock;
    clock.start();
    AtModem modem(nullptr, lockDirectory);
    int mcc = 0;
    int mnc = 0;
    QString lac;
    QString cid;
    OperatorData operatorData;
    QMap<QString, QVariant> info;
    QString number;
    QString answer;
    int level = 0;
    QList<AtModem::SSms> messages;
    bool done = modem.open(port, kBaudrate, 3);
    modem.reset(true);
    done = done && modem.error() == AtModem::Error::None && modem.getMnc(mcc, mnc)
        && modem.getGsmCells(lac, cid) && ModemSettings().getOperatorData(mcc, mnc, operatorData)
        && modem.getInfo(info);
    done = done && modem.requestSelfNumber(false, NUMBER, number) && modem.sendUSSD(BALANCE, answer)
        && modem.getSignalLevel(level) && modem.takeMessages(messages) && messages.size() == 1;
    modem.beforeDial();
    modem.close();
    const double taken = static_cast<double>(clock.nsecsElapsed()) / 1e6;
    if (!done)
        out() << "the query failed: " << modem.lastError() << Qt::endl;
    return done ? taken : -1;
}

bool measure(SlowModem &modem, int latencyMs, const QString &locks)
{
    modem.setLatency(latencyMs);
    double best = -1;
    double bestRatio = 0;
    double bestLatency = 0;
    int commands = 0;
    for (int round = 0; round < kRounds; ++round) {
        modem.takeLatency(&commands);
        const double taken = query(modem.path(), locks);
        const double latency = modem.takeLatency(&commands);
        if (taken < 0)
            return false;
        if (best < 0 || taken < best) {
            best = taken;
            bestLatency = latency;
            bestRatio = taken / latency;
        }
    }
    out() << latencyMs << " ms a command: " << best << " ms for " << commands
          << " commands, the modem's own " << bestLatency << " ms; ";
    if (latencyMs == 0) {
        out() << "at most " << kMostAtOnceMs << " ms" << Qt::endl;
        return best <= kMostAtOnceMs;
    }
    out() << "ratio " << bestRatio << " (at most " << kMostRatio << ")" << Qt::endl;
    return bestRatio <= kMostRatio;
}

/// gammu in one process; milliseconds, or nothing when it did not say `expected`.
double gammu(const SlowModem &modem, const QString &directory, const QByteArray &commands,
    const QByteArray &expected)
{
    QFile configuration(directory + QStringLiteral("/gammurc"));
    QFile batch(directory + QStringLiteral("/batch"));
    if (!configuration.open(QFile::WriteOnly) || !batch.open(QFile::WriteOnly))
        return -1;
    configuration.write("[gammu]\nport = " + modem.path().toUtf8() + "\nconnection = at57600\n");
    configuration.close();
    batch.write(commands);
    batch.close();
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    QElapsedTimer clock;
    clock.start();
    process.start(QStringLiteral("gammu"),
        {QStringLiteral("-c"), configuration.fileName(), QStringLiteral("batch"),
            batch.fileName()});
    const bool ended = process.waitForFinished(kGiveUpAfterMs);
    const double taken = static_cast<double>(clock.nsecsElapsed()) / 1e6;
    const QByteArray said = process.readAll();
    if (ended && said.contains(expected))
        return taken;
    out() << "gammu did not learn all:\n" << said << Qt::endl;
    return -1;
}

bool compare(SlowModem &modem, const QString &directory)
{
    modem.setLatency(kGammuLatencyMs);
    int commands = 0;
    modem.takeLatency(&commands);
    const double own = query(modem.path(), directory);
    modem.takeLatency(&commands);
    if (own < 0)
        return false;
    out() << kGammuLatencyMs << " ms a command: " << own << " ms for " << commands << " commands"
          << Qt::endl;
    bool isFaster = true;
    const auto against = [&](const char *what, const QByteArray &batch, const QByteArray &last) {
        const double peer = gammu(modem, directory, batch, last);
        modem.takeLatency(&commands);
        isFaster = isFaster && peer > own;
        if (peer > 0)
            out() << "gammu, " << what << ": " << peer << " ms for " << commands
                  << " commands; ratio " << own / peer << " (below 1)" << Qt::endl;
    };
    against("all it can", "identify\nnetworkinfo\ngetussd *100#\ngetallsms\n", "hellohello");
    // It waits some seconds more behind an answer to USSD.
    against("without USSD", "identify\nnetworkinfo\ngetallsms\n", "hellohello");
    return isFaster;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("atmodem=false"));
    const QTemporaryDir directory;
    OperatorData data;
    ModemSettings().getOperatorData(250, 1, data); // the table is read once in a process

    SlowModem modem;
    bool done = true;
    for (const int latencyMs : {0, 20, 200})
        done = measure(modem, latencyMs, directory.path()) && done;
    done = compare(modem, directory.path()) && done;
    return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
