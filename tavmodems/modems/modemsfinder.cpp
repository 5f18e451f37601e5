#include "modemsfinder.h"

#include "atmodem.h"
#include "atmodemlog.h"
#include "modemsenvs.h"
#include "modemsettings.h"

#include <QHash>
#include <QPointer>
#include <QThread>

#include <mutex>
#include <optional>

namespace {

// More would only lengthen the silence of a silent port; a modem hears the first.
constexpr int kAttempts = 1;

// A modem on a real line may be set to one speed: the one its record has.
QHash<QString, int> knownBaudrates()
{
    QHash<QString, int> baudrates;
    const auto modems = ModemSettings().modems();
    for (const ModemInfo &info : modems) {
        if (info.baudrate() > 0)
            baudrates.insert(searchPortOf(info.portName()).name, info.baudrate());
    }
    return baudrates;
}

AnsweringPort ask(AtModem &modem)
{
    AnsweringPort answering;
    answering.dialect = modem.gsmDialect();
    answering.model = modem.modemName();
    return answering;
}

} // namespace

struct ModemsFinder::Probe
{
    SearchPort port;
    int baudrate = 0;
    std::mutex mutex; // of what follows
    std::optional<AnsweringPort> answering;
    QString error; // why not
    std::unique_ptr<QThread> thread;

    // In the probe's thread.
    void run(const QString &lockDirectory, const std::atomic<bool> *abort)
    {
        AtModem modem(nullptr, lockDirectory);
        modem.setAbortFlag(abort);
        std::optional<AnsweringPort> told;
        if (modem.open(port.name, baudrate, kAttempts))
            told = ask(modem);
        if (told && modem.isOpen()) { // still there
            told->port = port;
            told->baudrate = baudrate;
            qCInfo(AT_MODEM).noquote()
                << QStringLiteral("%1: a modem, %2").arg(port.name, told->model);
        } else {
            told.reset();
            qCInfo(AT_MODEM).noquote()
                << QStringLiteral("%1: %2").arg(port.name, modem.lastError());
        }
        const std::lock_guard<std::mutex> guard(mutex);
        answering = told;
        error = modem.lastError();
    }
};

ModemsFinder::ModemsFinder(QObject *parent, const QString &lockDirectory)
    : QObject(parent)
    , m_lockDirectory(lockDirectory)
{
}

ModemsFinder::~ModemsFinder()
{
    m_abort = true;
    for (const auto &probe : m_probes)
        probe->thread->wait();
}

void ModemsFinder::start()
{
    if (m_running)
        return;
    m_running = true;
    m_found.clear();
    m_clock.start();
    const QList<SearchPort> all = ports();
    const QHash<QString, int> baudrates = knownBaudrates();
    QStringList names;
    for (const SearchPort &port : all) {
        auto probe = std::make_unique<Probe>();
        probe->port = port;
        probe->baudrate = baudrates.value(port.name, ModemInfo().baudrate());
        probe->thread.reset(QThread::create(
            [this, probe = probe.get()] { probe->run(m_lockDirectory, &m_abort); }));
        connect(probe->thread.get(), &QThread::finished, this, &ModemsFinder::probeEnded);
        m_probes.push_back(std::move(probe));
        names << port.name;
    }
    qCInfo(AT_MODEM).noquote() << QStringLiteral("Modems are searched on %1 ports: %2")
                                      .arg(names.size())
                                      .arg(names.join(QStringLiteral(", ")));
    m_pending = m_probes.size();
    for (const auto &probe : m_probes)
        probe->thread->start();
    if (m_probes.empty())
        QMetaObject::invokeMethod(this, &ModemsFinder::finish, Qt::QueuedConnection);
}

QList<SearchPort> ModemsFinder::ports() const
{
    return allSearchPorts(ModemsEnvs().extraPorts());
}

void ModemsFinder::probeEnded()
{
    if (--m_pending == 0)
        finish();
}

void ModemsFinder::finish()
{
    QList<AnsweringPort> answering;
    for (const auto &probe : m_probes) {
        probe->thread->wait();
        const std::lock_guard<std::mutex> guard(probe->mutex);
        if (probe->answering)
            answering << *probe->answering;
    }
    m_found = modemsBehind(answering);
    QList<ModemInfo> records;
    for (const FoundModem &modem : qAsConst(m_found)) {
        qCInfo(AT_MODEM).noquote()
            << QStringLiteral("%1: %2 on %3")
                   .arg(modem.info.connectionName(),
                       modem.imei.isEmpty() ? QStringLiteral("a modem") : modem.imei,
                       modem.ports.join(QStringLiteral(", ")));
        records << modem.info;
    }
    qCInfo(AT_MODEM).noquote() << QStringLiteral("The search found %1 modems in %2 ms")
                                      .arg(records.size())
                                      .arg(m_clock.elapsed());
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
    return tr("No modem answers on any of the %n serial ports.", nullptr,
        static_cast<int>(m_probes.size()));
}
