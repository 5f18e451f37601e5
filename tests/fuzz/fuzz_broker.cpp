// The broker's methods with arguments of any kind, called over a real bus of this process's own:
// through D-Bus's own marshalling, the broker's adaptor and its checks into its store.

#include "broker.h"
#include "busnames.h"
#include "fuzzinput.h"
#include "privatebus.h"
#include "wire.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QEventLoop>
#include <QFile>
#include <QMap>

#include <algorithm>

namespace {

using namespace tavbus;

const QString kBrokerLink = QStringLiteral("broker");
const QString kCallerLink = QStringLiteral("caller");

// What a D-Bus library sends at all: given anything else, it aborts its own process.
bool canBeSent(const QVariant &value)
{
    if (!QDBusMetaType::typeToSignature(value.userType()))
        return false;
    const int type = value.userType();
    if (type == qMetaTypeId<QDBusVariant>())
        return canBeSent(value.value<QDBusVariant>().variant());
    const QVariantList parts = type == QMetaType::QVariantMap ? value.toMap().values()
        : type == QMetaType::QVariantList                     ? value.toList()
                                                              : QVariantList();
    return std::all_of(parts.cbegin(), parts.cend(), canBeSent);
}

PrivateBus::Options brokerless()
{
    PrivateBus::Options options;
    options.withBroker = false;
    return options;
}

// One broker for the whole run; each execution calls it over a connection of its own.
struct Terminal
{
    Terminal()
    {
        require(store.open(fuzzDirectory() + QStringLiteral("/broker.db")), "the store opens");
        require(broker.start(), "the broker starts");
    }

    PrivateBus bus{brokerless()};
    Store store;
    Broker broker{&store, QDBusConnection::connectToBus(bus.address(), kBrokerLink)};
};

Terminal &terminal()
{
    static auto *const theTerminal = new Terminal; // libFuzzer ends the process with _Exit
    return *theTerminal;
}

class Caller
{
public:
    Caller()
        : m_bus(QDBusConnection::connectToBus(terminal().bus.address(), kCallerLink))
    {
    }
    ~Caller() { QDBusConnection::disconnectFromBus(kCallerLink); }
    Q_DISABLE_COPY_MOVE(Caller)

    QDBusMessage call(const QString &method, const QVariantList &arguments)
    {
        auto message
            = QDBusMessage::createMethodCall(BROKER_SERVICE, BROKER_PATH, BROKER_INTERFACE, method);
        message.setArguments(arguments);
        const QDBusPendingCall pending = m_bus.asyncCall(message);
        QDBusPendingCallWatcher watcher(pending);
        QEventLoop loop;
        QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &loop, &QEventLoop::quit);
        if (!watcher.isFinished())
            loop.exec();
        require(watcher.isFinished(), "every call is answered");
        return watcher.reply();
    }

private:
    QDBusConnection m_bus;
};

struct Record
{
    QString description;
    qint64 stamp = 0;
    QByteArray settings; // packed
};

class Run
{
public:
    explicit Run(FuzzInput &input)
        : m_input(input)
    {
    }
    ~Run()
    {
        const QStringList owners = m_records.keys();
        if (!owners.isEmpty())
            call("registerAgent", {QStringLiteral("cleaner"), false});
        for (const QString &owner : owners)
            require(isDone(call("removeSettings", {owner, true})), "a record is removed");
    }
    Q_DISABLE_COPY_MOVE(Run)

    void step()
    {
        constexpr void (Run::*kSteps[])()
            = {&Run::registerAgent, &Run::save, &Run::load, &Run::remove, &Run::other};
        (this->*kSteps[m_input.choice(5)])();
    }

private:
    static bool isDone(const QDBusMessage &reply)
    {
        return reply.type() == QDBusMessage::ReplyMessage;
    }

    QDBusMessage call(const char *method, const QVariantList &arguments)
    {
        return m_caller.call(QLatin1String(method), arguments);
    }

    QVariant value()
    {
        const QVariant value = m_input.variant();
        return canBeSent(value) ? value : QVariant(QString());
    }

    void registerAgent()
    {
        const QString agent = m_input.text();
        m_isKnown = isDone(call("registerAgent", {agent, false})) || m_isKnown;
    }

    void save()
    {
        const QString owner = m_input.text();
        const QString description = m_input.text();
        const qlonglong stamp = m_input.line().toLongLong();
        const QVariantList settings = value().toList();
        if (!isDone(call("saveSettings", {owner, description, stamp, settings})))
            return;
        require(m_isKnown, "a record is taken only from who is known");
        const auto list = wire::checked(settings, wire::kMaxRecord);
        require(list.has_value(), "a record that was taken is in order");
        m_records[owner]
            = {description, wire::fromDateTime(wire::toDateTime(stamp)), wire::packed(*list)};
        look(owner);
    }

    void load() { look(m_input.text()); }

    void look(const QString &owner)
    {
        const QDBusMessage reply = call("loadSettings", {owner});
        require(isDone(reply) == m_records.contains(owner), "a record is there or not");
        if (!isDone(reply))
            return;
        const Record &record = m_records[owner];
        const QVariantList out = reply.arguments();
        require(out.size() == 3 && out.at(0).toString() == record.description
                && out.at(1).toLongLong() == record.stamp,
            "a record comes with its description and time");
        const auto list = wire::checked(qdbus_cast<QVariantList>(out.at(2)), wire::kMaxRecord);
        require(list && wire::packed(*list) == record.settings, "a record comes as it went");
    }

    void remove()
    {
        const QString owner = m_input.text();
        if (isDone(call("removeSettings", {owner, true})))
            m_records.remove(owner);
        look(owner);
    }

    // Any method, any arguments.
    void other()
    {
        static const char *const METHODS[] = {"registerAgent", "saveSettings", "loadSettings",
            "removeSettings", "publishState", "loadState", "sendCommand", "noSuchMethod"};
        const char *const method = METHODS[m_input.choice(8)];
        m_input.line();
        QVariantList arguments;
        for (int i = 0; i < 5 && !m_input.isAtEnd(); ++i)
            arguments += value();
        const QDBusMessage reply = call(method, arguments);
        if (!isDone(reply))
            return;
        const QString name = arguments.value(0).toString();
        if (qstrcmp(method, "registerAgent") == 0)
            m_isKnown = true;
        if (qstrcmp(method, "removeSettings") == 0)
            m_records.remove(name);
        if (qstrcmp(method, "saveSettings") != 0)
            return;
        const auto list = wire::checked(arguments.value(3).toList(), wire::kMaxRecord);
        require(list.has_value(), "a record that was taken is in order");
        m_records[name] = {arguments.value(1).toString(),
            wire::fromDateTime(wire::toDateTime(arguments.value(2).toLongLong())),
            wire::packed(*list)};
    }

    FuzzInput &m_input;
    Caller m_caller;
    bool m_isKnown = false;
    QMap<QString, Record> m_records;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    terminal();
    Run run(input);
    for (int steps = 0; steps < 20 && !input.isAtEnd(); ++steps)
        run.step();
    return 0;
}
