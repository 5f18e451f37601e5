#include "saboteur.h"

#include "fault.h"
#include "terminalsim1proxy.h"

#include <QDBusConnection>

using namespace std::chrono_literals;

Saboteur::Saboteur(Reached reached, const Fault &fault)
    : m_thread([this, reached = std::move(reached), &fault] {
        const QString name = QStringLiteral("saboteur");
        {
            OrgOvrelTerminalSim1Interface terminal(QStringLiteral("org.ovrel.TerminalSim"),
                QStringLiteral("/org/ovrel/TerminalSim"),
                QDBusConnection::connectToBus(QDBusConnection::SystemBus, name));
            while (!m_isOver && !reached(terminal))
                std::this_thread::sleep_for(10ms);
            if (!m_isOver) {
                fault.strike(terminal);
                m_hasStruck = true;
            }
        }
        QDBusConnection::disconnectFromBus(name);
    })
{
}

Saboteur::~Saboteur()
{
    m_isOver = true;
    m_thread.join();
}
