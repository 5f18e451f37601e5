#include "simulatedmodem.h"

#include "atinterpreter.h"
#include "journal.h"
#include "ppppeer.h"
#include "serialline.h"

namespace {

constexpr int kUntilReset = 200; // ms from the answer until the device leaves the bus

QList<int> portNumbers(int first, int count)
{
    QList<int> numbers;
    for (int i = 0; i < count; ++i)
        numbers.append(first + i);
    return numbers;
}

bool isCommand(const QString &line, const QString &command)
{
    return !command.isEmpty() && line.startsWith(command, Qt::CaseInsensitive);
}

UsbIdentity identityOf(const ModemProfile &profile, const ScenarioModem &scenario)
{
    UsbIdentity identity = profile.usb;
    if (identity.serial.isEmpty())
        identity.serial = scenario.imei;
    return identity;
}

} // namespace

SimulatedModem::SimulatedModem(const UsbBus &bus, const ScenarioModem &scenario,
    const ModemProfile &profile, int number, int firstPort, Journal *journal)
    : m_state(profile, scenario)
    , m_journal(journal)
    , m_firstPort(firstPort)
    , m_usb(bus(number, identityOf(profile, scenario)))
    , m_babble(this)
{
    makePorts();
    for (const PeriodicLine &line : profile.periodicLines) {
        auto *timer = new QTimer(this);
        timer->setInterval(line.periodMs);
        connect(timer, &QTimer::timeout, this, [this, text = line.text] { notifyAll(text); });
        m_periodic.append(timer);
    }
    m_babble.setInterval(20);
    connect(&m_babble, &QTimer::timeout, this, [this] {
        for (const Port &port : qAsConst(m_ports))
            port.line->send("\r\n+CREG: 0\r\n^BOOT:20571085,0,0,0,72\r\n");
    });
}

SimulatedModem::~SimulatedModem() = default;

QStringList SimulatedModem::faultNames()
{
    return {QStringLiteral("hung"), QStringLiteral("silent"), QStringLiteral("garbage"),
        QStringLiteral("babble"), QStringLiteral("noSim"), QStringLiteral("notRegistered"),
        QStringLiteral("wrongApn"), QStringLiteral("busy"), QStringLiteral("noDialtone"),
        QStringLiteral("noCarrier"), QStringLiteral("noPpp")};
}

// The ports that the device shows; a command may have chosen fewer since it was last plugged in.
void SimulatedModem::makePorts()
{
    m_roles = m_state.portsWhenPlugged;
    for (const Port &port : qAsConst(m_ports)) {
        delete port.interpreter;
        delete port.line;
    }
    m_ports.clear();
    m_usb->setPorts(portNumbers(m_firstPort, m_roles.size()));
    for (int i = 0; i < m_roles.size(); ++i)
        addPort(m_roles.at(i), i);
    const bool hasControl = m_roles.contains(QStringLiteral("control"));
    for (int i = 0; i < m_ports.size(); ++i)
        m_ports[i].notifies
            = m_roles.at(i) == (hasControl ? QLatin1String("control") : QLatin1String("data"));
}

void SimulatedModem::addPort(const QString &role, int index)
{
    Port port;
    port.line = m_usb->makeLine(index, this);
    if (role != QLatin1String("diagnostic")) { // that one speaks a protocol of its maker's
        port.interpreter = new AtInterpreter(&m_state, this);
        AtInterpreter *interpreter = port.interpreter;
        SerialLine *line = port.line;
        connect(line, &SerialLine::received, this,
            [this, interpreter](const QByteArray &bytes) { heard(interpreter, bytes); });
        connect(line, &SerialLine::hungUp, interpreter, &AtInterpreter::hangUp);
        connect(interpreter, &AtInterpreter::send, this,
            [this, line](const QByteArray &bytes) { say(line, bytes); });
        connect(interpreter, &AtInterpreter::commandArrived, this, &SimulatedModem::commandArrived);
        connect(interpreter, &AtInterpreter::callStarted, this, [this, port] { startCall(port); });
        connect(interpreter, &AtInterpreter::callDropped, this, [this] {
            m_journal->add(m_state.scenario.name + QStringLiteral(": call dropped"));
            delete m_call;
        });
        connect(interpreter, &AtInterpreter::dataReceived, this, [this](const QByteArray &bytes) {
            if (m_call)
                m_call->write(bytes);
        });
        // Queued: the interpreter is still at work, and what follows takes its port away.
        connect(interpreter, &AtInterpreter::resetWanted, this, &SimulatedModem::reset,
            Qt::QueuedConnection);
    }
    m_ports.append(port);
}

bool SimulatedModem::plug()
{
    if (m_ports.first().line->isPlugged())
        return true;
    if (m_roles != m_state.portsWhenPlugged)
        makePorts();
    m_state.powerUp();
    for (const Port &port : qAsConst(m_ports)) {
        if (port.interpreter != nullptr)
            port.interpreter->powerUp();
        if (!port.line->plug())
            return false;
    }
    m_journal->add(m_state.scenario.name + QStringLiteral(": plugged"));
    QTimer::singleShot(m_state.profile.bootMs, this, [this] {
        for (const QString &line : m_state.profile.bootLines)
            notifyAll(line);
    });
    setPeriodicLines(true);
    setFault({});
    return m_usb->plug();
}

void SimulatedModem::unplug()
{
    if (!m_ports.first().line->isPlugged())
        return;
    m_journal->add(m_state.scenario.name + QStringLiteral(": unplugged"));
    setPeriodicLines(false);
    m_babble.stop();
    delete m_call;
    for (const Port &port : qAsConst(m_ports))
        port.line->unplug();
    m_usb->unplug();
}

void SimulatedModem::setPeriodicLines(bool on)
{
    for (QTimer *timer : qAsConst(m_periodic)) {
        if (on)
            timer->start();
        else
            timer->stop();
    }
}

void SimulatedModem::setFault(const QString &fault)
{
    if (!fault.isEmpty()) {
        m_journal->add(m_state.scenario.name + QStringLiteral(": fault ") + fault);
        m_state.faults.insert(fault);
    }
    if (m_state.has("babble"))
        m_babble.start();
}

void SimulatedModem::clearFaults()
{
    m_journal->add(m_state.scenario.name + QStringLiteral(": faults cleared"));
    m_state.faults.clear();
    m_unplugOn.clear();
    m_babble.stop();
}

void SimulatedModem::unplugOn(const QString &commandPrefix)
{
    m_unplugOn = commandPrefix.toLatin1().toUpper();
}

void SimulatedModem::heard(AtInterpreter *interpreter, const QByteArray &bytes)
{
    if (!m_state.has("hung"))
        interpreter->receive(bytes);
}

void SimulatedModem::say(SerialLine *line, const QByteArray &bytes)
{
    if (m_state.has("hung"))
        return;
    const bool isAnswer = bytes.size() > 1; // an echo is one character
    if (m_state.has("silent") && isAnswer)
        return;
    if (!m_state.has("garbage")) {
        line->send(bytes);
        return;
    }
    QByteArray noise = bytes;
    for (char &byte : noise) {
        m_noise = m_noise * 1664525 + 1013904223; // the same noise in every run
        byte = static_cast<char>(0x80 | (m_noise >> 24));
    }
    line->send(noise);
}

void SimulatedModem::commandArrived(const QByteArray &line)
{
    const QString text = QString::fromLatin1(line);
    m_commands.append(text);
    m_journal->add(m_state.scenario.name + QStringLiteral(" < ") + text);
    for (int i = 0; i < m_periodic.size(); ++i) {
        const PeriodicLine &periodic = m_state.profile.periodicLines.at(i);
        if (isCommand(text, periodic.stoppedBy))
            m_periodic.at(i)->stop();
        else if (isCommand(text, periodic.startedBy))
            m_periodic.at(i)->start();
    }
    if (m_unplugOn.isEmpty() || !line.toUpper().startsWith(m_unplugOn))
        return;
    m_unplugOn.clear();
    unplug();
}

void SimulatedModem::startCall(const Port &port)
{
    m_journal->add(m_state.scenario.name + QStringLiteral(": call started"));
    delete m_call;
    if (m_state.has("noPpp"))
        return; // connected, but there is nobody
    m_call = new PppPeer(this);
    connect(m_call, &PppPeer::received, port.line, &SerialLine::send);
    connect(m_call, &PppPeer::ended, this, [this, interpreter = port.interpreter] {
        m_journal->add(m_state.scenario.name + QStringLiteral(": call ended"));
        if (m_call)
            m_call->deleteLater();
        m_call.clear();
        interpreter->callEnded();
    });
    if (!m_call->start(m_state.scenario.network.login))
        port.interpreter->callEnded();
}

void SimulatedModem::reset()
{
    if (m_state.profile.resetReplugs) {
        // Not before the program has had the time to read the answer: the hang-up would take it
        // away.
        QTimer::singleShot(kUntilReset, this, [this] {
            if (!m_ports.first().line->isPlugged())
                return; // pulled out meanwhile
            unplug();
            QTimer::singleShot(m_state.profile.bootMs, this, &SimulatedModem::plug);
        });
        return;
    }
    m_state.powerUp();
    for (const Port &port : qAsConst(m_ports)) {
        if (port.interpreter != nullptr)
            port.interpreter->powerUp();
    }
    QTimer::singleShot(m_state.profile.bootMs, this, [this] {
        for (const QString &line : m_state.profile.bootLines)
            notifyAll(line);
    });
}

void SimulatedModem::notifyAll(const QString &text)
{
    for (const Port &port : qAsConst(m_ports)) {
        if (port.notifies && port.interpreter != nullptr)
            port.interpreter->notify(m_state.filled(text));
    }
}
