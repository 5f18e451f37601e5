#include "modemsfinder.h"

#include "atmodem.h"
#include "atmodemlog.h"
#include "modemsenvs.h"
#include "modemsettings.h"

#include <QPointer>
#include <QThread>

#include <mutex>
#include <optional>

namespace {

// More would only lengthen the silence of a silent port; a modem hears the first.
constexpr int kAttempts = 1;

// A modem that does not answer one question is not asked the next: it may have hung.
bool isThere(const AtModem &modem)
{
    return modem.isOpen() && modem.error() != AtModem::Error::NoAnswer;
}

// That of the card's own operator, wherever the modem is registered: the access point is its.
OperatorData operatorOf(AtModem &modem)
{
    int mcc = 0;
    int mnc = 0;
    OperatorData data;
    const ModemSettings settings;
    const bool isKnown = modem.getHomeNetwork(mcc, mnc) && settings.getOperatorData(mcc, mnc, data);
    if (!isKnown && isThere(modem) && modem.getMnc(mcc, mnc))
        settings.getOperatorData(mcc, mnc, data);
    return data;
}

AnsweringPort ask(AtModem &modem)
{
    AnsweringPort answering;
    answering.manufacturer = modem.manufacturer();
    answering.model = modem.model();
    answering.dialect = modem.gsmDialect();
    modem.getImei(answering.imei);
    if (isThere(modem))
        answering.operatorData = operatorOf(modem);
    return answering;
}

} // namespace

struct ModemsFinder::Probe
{
    SearchPort port;
    int baudrate = 0;
    std::mutex mutex; // of what comes of it
    std::optional<AnsweringPort> answering;
    PortFailure failure; // else
    std::unique_ptr<QThread> thread;

    // In the probe's thread.
    void run(const QString &lockDirectory, const std::atomic<bool> *abort)
    {
        AtModem modem(nullptr, lockDirectory);
        modem.setAbortFlag(abort);
        std::optional<AnsweringPort> told;
        if (modem.open(port.name, baudrate, kAttempts))
            told = ask(modem);
        if (!modem.isOpen()) // it may have gone in between
            told.reset();
        const std::lock_guard<std::mutex> guard(mutex);
        answering = told;
        if (answering) {
            answering->port = port;
            answering->baudrate = baudrate;
            qCInfo(AT_MODEM).noquote()
                << QStringLiteral("%1: %2, IMEI %3, %4 commands")
                       .arg(port.name, modem.modemName(), answering->imei, answering->dialect);
        } else {
            failure = {port.name, modem.error(), modem.lastError()};
            qCInfo(AT_MODEM).noquote() << QStringLiteral("%1: %2").arg(port.name, failure.text);
        }
    }
};

ModemsFinder::ModemsFinder(QObject *parent, const QString &lockDirectory)
    : QObject(parent)
    , m_lockDirectory(lockDirectory)
{
}

ModemsFinder::~ModemsFinder()
{
    breakOff();
}

void ModemsFinder::breakOff()
{
    m_abort = true;
    for (const auto &probe : m_probes)
        probe->thread->wait();
    m_running = false;
}

void ModemsFinder::start()
{
    if (m_running || m_abort)
        return;
    m_running = true;
    m_found.clear();
    m_failures.clear();
    m_clock.start();
    const QList<SearchPort> all = ports();
    QStringList names;
    for (const SearchPort &port : all) {
        auto probe = std::make_unique<Probe>();
        probe->port = port;
        probe->baudrate = baudrateOf(port);
        probe->thread.reset(QThread::create(
            [this, probe = probe.get()] { probe->run(m_lockDirectory, &m_abort); }));
        connect(probe->thread.get(), &QThread::finished, this, &ModemsFinder::probeEnded);
        m_probes.push_back(std::move(probe));
        names << port.name;
    }
    qCInfo(AT_MODEM).noquote() << "Search for modems on" << names.join(QStringLiteral(", "));
    m_pending = m_probes.size();
    for (const auto &probe : m_probes) {
        probe->thread->start();
        if (!probe->thread->isRunning() && !probe->thread->isFinished()) {
            probe->failure = {probe->port.name, AtError::Port,
                QStringLiteral("The port %1 was not searched: the system has no thread to spare.")
                    .arg(probe->port.name)};
            qCWarning(AT_MODEM).noquote() << probe->failure.text;
            QMetaObject::invokeMethod(this, &ModemsFinder::probeEnded, Qt::QueuedConnection);
        }
    }
    if (m_probes.empty())
        QMetaObject::invokeMethod(this, &ModemsFinder::finish, Qt::QueuedConnection);
}

QList<SearchPort> ModemsFinder::ports() const
{
    return allSearchPorts(ModemsEnvs().extraPorts());
}

// A modem on a real line may be set to one speed: the one its record has.
int ModemsFinder::baudrateOf(const SearchPort &port) const
{
    const auto modems = ModemSettings().modems();
    for (const ModemInfo &info : modems) {
        if (info.baudrate() > 0 && searchPortOf(info.portName()).name == port.name)
            return info.baudrate();
    }
    return ModemInfo().baudrate();
}

void ModemsFinder::probeEnded()
{
    if (--m_pending == 0)
        finish();
}

void ModemsFinder::finish()
{
    if (m_abort)
        return;
    QList<AnsweringPort> answering;
    for (const auto &probe : m_probes) {
        probe->thread->wait();
        const std::lock_guard<std::mutex> guard(probe->mutex);
        if (probe->answering)
            answering << *probe->answering;
        else
            m_failures << probe->failure;
    }
    m_found = modemsBehind(answering);
    QList<ModemInfo> records;
    for (const FoundModem &modem : qAsConst(m_found)) {
        records << modem.info;
        qCInfo(AT_MODEM).noquote()
            << QStringLiteral("Found %1, on %2")
                   .arg(modem.info.connectionName(), modem.ports.join(QStringLiteral(", ")));
    }
    qCInfo(AT_MODEM).noquote() << QStringLiteral("The search took %1 ms, modems found: %2")
                                      .arg(m_clock.elapsed())
                                      .arg(records.size());
    const QString reason = records.isEmpty() ? whyNone() : QString();
    m_probes.clear();

    const QPointer<ModemsFinder> alive(this); // a slot may delete it
    if (records.isEmpty())
        emit noDevices(reason);
    else
        emit devicesFinded(records);
    if (!alive)
        return;
    m_running = false;
    emit finished();
}

QString ModemsFinder::whyNone() const
{
    if (m_probes.empty())
        return tr("This machine has no serial ports. Is the modem plugged in?");
    QStringList lines{tr("No modem answers on any port.")};
    for (const PortFailure &failure : m_failures) {
        if (failure.error == AtError::Port) // somebody can do something about it
            lines << failure.text;
    }
    return lines.join(QLatin1Char('\n'));
}
