// What the broker keeps: the registry of agents and the store of records and states, each beside a
// plain model of itself. One letter an operation, its arguments behind it.

#include "agentregistry.h"
#include "fuzzinput.h"
#include "store.h"
#include "wire.h"

#include <QFile>

#include <memory>

namespace {

using namespace tavbus;

QString databaseFile()
{
    return fuzzDirectory() + QStringLiteral("/fuzzed.db");
}

class Run
{
public:
    explicit Run(FuzzInput &input)
        : m_input(input)
    {
        for (const char *suffix : {"", "-wal", "-shm", "-journal"})
            QFile::remove(databaseFile() + QLatin1String(suffix));
        open();
    }

    void step()
    {
        constexpr void (Run::*kSteps[])() = {&Run::add, &Run::leave, &Run::saveSettings,
            &Run::removeSettings, &Run::saveState, &Run::reopen};
        (this->*kSteps[m_input.choice(6)])();
    }

    void compareAll()
    {
        for (auto it = m_settings.cbegin(); it != m_settings.cend(); ++it) {
            ClientSettings kept;
            require(m_store->loadSettings(it.key(), kept) == Store::Look::Found,
                "a record that was saved is there");
            require(kept.owner() == it.key() && kept.description() == it->description()
                    && wire::fromDateTime(kept.dt()) == wire::fromDateTime(it->dt())
                    && wire::packed(kept.settings()) == wire::packed(it->settings()),
                "a record is as it was saved");
        }
        for (auto it = m_states.cbegin(); it != m_states.cend(); ++it) {
            const auto kept = m_store->state(it.key());
            require(kept && wire::fromDateTime(kept->dt()) == wire::fromDateTime(it->dt())
                    && wire::packed(kept->body()) == wire::packed(it->body()),
                "a state is as it was saved");
        }
    }

private:
    void open()
    {
        m_store = std::make_unique<Store>();
        require(m_store->open(databaseFile()), "the store opens");
    }

    void reopen()
    {
        m_input.line();
        m_store.reset();
        open();
        compareAll();
    }

    void add()
    {
        const auto user = static_cast<uint>(m_input.choice(3));
        const QString connection(QLatin1Char(static_cast<char>('a' + m_input.choice(4))));
        const QString agent = m_input.text();
        const bool wasKnown = m_registry.speaksAs(connection, agent);
        const auto answer = m_registry.add(agent, connection, user, true);
        const bool isIn = answer == AgentRegistry::Answer::Registered;
        require(m_registry.speaksAs(connection, agent) == (isIn || wasKnown),
            "who was taken speaks as the agent, who was not does not");
        require(m_registry.listeners(agent).count(connection) == (isIn || wasKnown ? 1 : 0),
            "a connection hears a command once");
        require(m_registry.isKnown(connection) || !isIn, "who was taken is known");
    }

    void leave()
    {
        const QString connection(QLatin1Char(static_cast<char>('a' + m_input.choice(4))));
        const QString agent = m_input.text();
        m_registry.removeConnection(connection);
        require(!m_registry.isKnown(connection) && !m_registry.speaksAs(connection, agent)
                && !m_registry.listeners(agent).contains(connection),
            "who has left is gone");
    }

    void saveSettings()
    {
        ClientSettings record;
        record.setOwner(m_input.text());
        record.setDescription(m_input.text());
        record.setDt(wire::toDateTime(m_input.line().toLongLong()));
        const auto list = wire::checked(QVariantList{m_input.variant()}, wire::kMaxRecord);
        if (!list || !wire::isName(record.owner()) || !wire::isText(record.description()))
            return;
        record.setSettings(*list);
        require(m_store->saveSettings(record) == Store::Change::Done, "a record is saved");
        m_settings[record.owner()] = record;
    }

    void removeSettings()
    {
        const bool withState = m_input.choice(2) == 1;
        const QString owner = m_input.text();
        require(m_store->removeSettings(owner, withState) == Store::Change::Done,
            "a record is removed, there or not");
        m_settings.remove(owner);
        if (withState)
            m_states.remove(owner);
        ClientSettings kept;
        require(m_store->loadSettings(owner, kept) == Store::Look::Missing
                && m_store->state(owner).has_value() == m_states.contains(owner),
            "what was removed is gone");
    }

    void saveState()
    {
        const QString agent = m_input.text();
        ClientState state;
        state.setDt(wire::toDateTime(m_input.line().toLongLong()));
        const auto map = wire::checked(m_input.variant().toMap(), wire::kMaxState);
        if (!map || !wire::isName(agent))
            return;
        state.setBody(*map);
        require(m_store->saveState(agent, state) == Store::Change::Done, "a state is saved");
        m_states[agent] = state;
    }

    FuzzInput &m_input;
    AgentRegistry m_registry;
    std::unique_ptr<Store> m_store;
    QMap<QString, ClientSettings> m_settings;
    QMap<QString, ClientState> m_states;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    Run run(input);
    for (int steps = 0; steps < 50 && !input.isAtEnd(); ++steps)
        run.step();
    run.compareAll();
    return 0;
}
