#include "acceptorstate.h"
#include "busnames.h"
#include "printservicestatetavbuswrapper.h"
#include "tavbuscommand.h"
#include "tavbusqueryhandler.h"
#include "terminalsim1proxy.h"
#include "watchdogstate.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHostInfo>
#include <QLibrary>
#include <QNetworkInterface>
#include <QProcess>
#include <QSerialPort>
#include <QSerialPortInfo>
#include <QTcpSocket>
#include <QTest>
#include <csignal>
#include <sys/sysmacros.h>

namespace {

const QString kHuawei = QStringLiteral("huawei");
const QString kSimcom = QStringLiteral("simcom");

// A serial port with a modem behind it, as any program opens it.
class Port
{
public:
    explicit Port(const QString &name)
        : m_port(name)
    {
        m_open = m_port.open(QIODevice::ReadWrite);
    }

    bool isOpen() const { return m_open; }
    QSerialPort &device() { return m_port; }

    QByteArray ask(const QByteArray &line, int timeoutMs = 3000)
    {
        m_port.readAll();
        m_port.write(line + '\r');
        return read(timeoutMs);
    }

    QByteArray read(int timeoutMs = 3000)
    {
        QByteArray said;
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < timeoutMs && !said.endsWith("OK\r\n")
            && !said.endsWith("ERROR\r\n") && m_port.waitForReadyRead(timeoutMs))
            said += m_port.readAll();
        return said;
    }

private:
    QSerialPort m_port;
    bool m_open = false;
};

QMap<QString, QSerialPortInfo> portsByName()
{
    QMap<QString, QSerialPortInfo> ports;
    const QList<QSerialPortInfo> all = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &info : all)
        ports.insert(info.portName(), info);
    return ports;
}

template <typename Function>
Function *udevCall(const char *name)
{
    return reinterpret_cast<Function *>(
        QLibrary::resolve(QStringLiteral("udev"), QStringLiteral("1"), name));
}

class UdevContext
{
    Q_DISABLE_COPY_MOVE(UdevContext)

public:
    UdevContext() = default;
    ~UdevContext() { udevCall<void *(void *)>("udev_unref")(m_context); }

    void *get() const { return m_context; }

private:
    void *const m_context = udevCall<void *()>("udev_new")();
};

bool pageAnswers(const QString &host, quint16 port)
{
    QTcpSocket socket;
    socket.connectToHost(host, port);
    if (!socket.waitForConnected(3000))
        return false;
    socket.write("GET / HTTP/1.1\r\nHost: " + host.toLatin1() + "\r\n\r\n");
    QByteArray answer;
    while (socket.waitForReadyRead(3000))
        answer += socket.readAll();
    return answer.startsWith("HTTP/1.1 200 OK\r\n") && answer.contains("This page answers.");
}

} // namespace

class TestInsideTerminal : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void portsHaveTheirIdentity_data();
    void portsHaveTheirIdentity();
    void everyModemAnswers_data();
    void everyModemAnswers();
    void diagnosticPortIsMute();
    void latencyOfTheScenario();
    void unsolicitedLinesComeOnTheControlPort();
    void hungModemSaysNothing();
    void silentModemOnlyEchoes();
    void garbageIsNoAnswer();
    void babbleNeverEnds();
    void faultOfTheSim();
    void modemAnswersWhileTheBusIsStopped();
    void pulledModemEndsTheRead();
    void pulledModemLeavesTheList();
    void whoListensHearsOfUnplugAndPlug_data();
    void whoListensHearsOfUnplugAndPlug();
    void udevKnowsThePort();
    void modemIsPulledOnACommand();
    void resetTakesTheModemOffTheBus();
    void modemOnlyLeavesFewerPorts();
    void nothingOfOneSessionIsLeftForTheNext();
    void soleUseEndsWithItsProgram();
    void everySessionOfManyIsAnswered();
    void heldPortHasALockFile();
    void commandsAreListed();

    void configurationIsThere();
    void servicesPublishThatTheyRun();
    void serviceObeys_data();
    void serviceObeys();
    void slowServiceTakesItsTime();
    void deafServiceHearsNothing();
    void deadServiceIsGone();
    void stuckServiceHearsAndStays();
    void stateCanBeHeld();
    void brokerComesBackAfterACrash();

    void pagesAnswerOrRefuse();
    void pageOverPppHasNoRoute();
    void wiredInterfaceIsThere();
    void dialReachesThePppDaemon();
    void unknownNamesAreErrors_data();
    void unknownNamesAreErrors();

private:
    QVariantMap stateOf(const QString &service);
    bool send(const QString &service, const QString &command, const QVariantMap &data = {});

    tavbus::TavBusQueryHandler m_bus{tavbus::BUSNAME_TESTDEALER};
    QDBusConnection m_connection = QDBusConnection::systemBus();
    OrgOvrelTerminalSim1Interface m_terminal{QStringLiteral("org.ovrel.TerminalSim"),
        QStringLiteral("/org/ovrel/TerminalSim"), m_connection};
};

void TestInsideTerminal::initTestCase()
{
    QVERIFY(m_bus.open());
    QVERIFY(m_terminal.isValid());
    QCOMPARE(m_terminal.modems().value(),
        QStringList({QStringLiteral("huawei"), QStringLiteral("zte"), QStringLiteral("simcom"),
            QStringLiteral("quectel"), QStringLiteral("generic"), QStringLiteral("e3372"),
            QStringLiteral("mf823"), QStringLiteral("telit"), QStringLiteral("ublox"),
            QStringLiteral("sierra"), QStringLiteral("cinterion")}));
}

// Every test finds the terminal as it came up.
void TestInsideTerminal::init()
{
    for (const QString &modem : m_terminal.modems().value()) {
        m_terminal.clearModemFault(modem).waitForFinished();
        m_terminal.plug(modem).waitForFinished();
    }
    for (const QString &service : {tavbus::BUSNAME_TAVMODEMS, tavbus::BUSNAME_ACCEPTORS,
             tavbus::BUSNAME_PRINTSERVICE, tavbus::BUSNAME_WATCHDOGS, tavbus::BUSNAME_TERMINAL_GUI})
        m_terminal.serviceFault(service, QString()).waitForFinished();
}

QVariantMap TestInsideTerminal::stateOf(const QString &service)
{
    tavbus::ClientState state;
    return m_bus.loadState(service, state) ? state.body() : QVariantMap();
}

bool TestInsideTerminal::send(
    const QString &service, const QString &command, const QVariantMap &data)
{
    TavBusCommand message;
    message.setAgent(service);
    message.setName(command);
    message.setData(data);
    return m_bus.sendMessage(message.toOutgoingMessage());
}

void TestInsideTerminal::portsHaveTheirIdentity_data()
{
    QTest::addColumn<QString>("port");
    QTest::addColumn<quint16>("vendor");
    QTest::addColumn<quint16>("product");
    QTest::addColumn<QString>("manufacturer");
    const auto row = [](const char *port, quint16 vendor, quint16 product, const char *name) {
        QTest::newRow(port) << QString::fromLatin1(port) << vendor << product
                            << QString::fromLatin1(name);
    };
    for (const char *port : {"ttyUSB0", "ttyUSB1", "ttyUSB2"})
        row(port, 0x12d1, 0x1001, "HUAWEI Technology");
    for (const char *port : {"ttyUSB3", "ttyUSB4", "ttyUSB5"})
        row(port, 0x19d2, 0x0117, "ZTE Incorporated");
    row("ttyUSB6", 0x10c4, 0xea60, "Silicon Labs");
    for (const char *port : {"ttyUSB7", "ttyUSB8", "ttyUSB9", "ttyUSB10"})
        row(port, 0x2c7c, 0x0125, "Quectel");
    row("ttyUSB11", 0x0403, 0x6001, "FTDI");
    for (const char *port : {"ttyUSB12", "ttyUSB13", "ttyUSB14"})
        row(port, 0x12d1, 0x1506, "HUAWEI MOBILE");
    for (const char *port : {"ttyUSB15", "ttyUSB16", "ttyUSB17"})
        row(port, 0x19d2, 0x0016, "ZTE Incorporated");
    for (const char *port : {"ttyUSB18", "ttyUSB19", "ttyUSB20", "ttyUSB21"})
        row(port, 0x1bc7, 0x1201, "Telit Wireless Solutions");
    for (const char *port : {"ttyUSB22", "ttyUSB23"})
        row(port, 0x0403, 0x6010, "FTDI");
    for (const char *port : {"ttyUSB24", "ttyUSB25", "ttyUSB26"})
        row(port, 0x1199, 0x68c0, "Sierra Wireless  Incorporated");
    row("ttyUSB27", 0x067b, 0x2303, "Prolific Technology Inc.");
}

void TestInsideTerminal::portsHaveTheirIdentity()
{
    QFETCH(QString, port);
    const QMap<QString, QSerialPortInfo> ports = portsByName();
    QCOMPARE(ports.size(), 28);
    const QSerialPortInfo info = ports.value(port);
    QVERIFY(info.hasVendorIdentifier());
    QTEST(info.vendorIdentifier(), "vendor");
    QTEST(info.productIdentifier(), "product");
    QTEST(info.manufacturer(), "manufacturer");
    QCOMPARE(info.systemLocation(), QStringLiteral("/dev/") + port);
}

void TestInsideTerminal::everyModemAnswers_data()
{
    QTest::addColumn<QString>("port");
    QTest::addColumn<QByteArray>("model");
    QTest::newRow("huawei data") << "ttyUSB0" << QByteArray("E173");
    QTest::newRow("huawei control") << "ttyUSB2" << QByteArray("E173");
    QTest::newRow("zte data") << "ttyUSB5" << QByteArray("MF180");
    QTest::newRow("simcom") << "ttyUSB6" << QByteArray("SIMCOM_SIM800");
    QTest::newRow("quectel data") << "ttyUSB10" << QByteArray("EC25");
    QTest::newRow("generic") << "ttyUSB11" << QByteArray("GPRS Modem");
    QTest::newRow("e3372 data") << "ttyUSB12" << QByteArray("E3372");
    QTest::newRow("mf823 data") << "ttyUSB17" << QByteArray("MF823");
    QTest::newRow("telit data") << "ttyUSB20" << QByteArray("LE910-EUG");
    QTest::newRow("ublox") << "ttyUSB22" << QByteArray("SARA-U201");
    QTest::newRow("sierra") << "ttyUSB26" << QByteArray("MC7304");
    QTest::newRow("cinterion") << "ttyUSB27" << QByteArray("BGS2-W");
}

void TestInsideTerminal::everyModemAnswers()
{
    QFETCH(QString, port);
    QFETCH(QByteArray, model);
    Port modem(port);
    QVERIFY(modem.isOpen());
    modem.ask("ATE0");
    QVERIFY(modem.ask("AT+CGMM").contains("\r\n" + model + "\r\n\r\nOK\r\n"));
}

void TestInsideTerminal::diagnosticPortIsMute()
{
    Port port(QStringLiteral("ttyUSB1"));
    QVERIFY(port.isOpen());
    QCOMPARE(port.ask("AT", 300), QByteArray());
}

void TestInsideTerminal::latencyOfTheScenario()
{
    Port modem(QStringLiteral("ttyUSB11"));
    QElapsedTimer clock;
    clock.start();
    QVERIFY(modem.ask("AT+CSQ").contains("+CSQ: 18,99"));
    QVERIFY(clock.elapsed() >= 400);
}

void TestInsideTerminal::unsolicitedLinesComeOnTheControlPort()
{
    Port data(QStringLiteral("ttyUSB0"));
    Port control(QStringLiteral("ttyUSB2"));
    QByteArray said;
    QTRY_VERIFY_WITH_TIMEOUT(
        (control.device().waitForReadyRead(100), said += control.device().readAll(),
            said.contains("\r\n^BOOT:") && said.contains("\r\n^RSSI:21\r\n")),
        10000);
    data.device().waitForReadyRead(10);
    QCOMPARE(data.device().readAll(), QByteArray());
}

void TestInsideTerminal::hungModemSaysNothing()
{
    Port modem(QStringLiteral("ttyUSB6"));
    m_terminal.modemFault(kSimcom, QStringLiteral("hung")).waitForFinished();
    QCOMPARE(modem.ask("AT", 300), QByteArray());
    m_terminal.clearModemFault(kSimcom).waitForFinished();
    QVERIFY(modem.ask("AT").endsWith("\r\nOK\r\n"));
}

void TestInsideTerminal::silentModemOnlyEchoes()
{
    Port modem(QStringLiteral("ttyUSB6"));
    modem.ask("ATE1");
    m_terminal.modemFault(kSimcom, QStringLiteral("silent")).waitForFinished();
    QCOMPARE(modem.ask("AT", 300), QByteArray("AT\r"));
}

void TestInsideTerminal::garbageIsNoAnswer()
{
    Port modem(QStringLiteral("ttyUSB6"));
    modem.ask("ATE0");
    m_terminal.modemFault(kSimcom, QStringLiteral("garbage")).waitForFinished();
    const QByteArray said = modem.ask("AT", 300);
    QCOMPARE(said.size(), 6);
    for (const char byte : said)
        QVERIFY(static_cast<uchar>(byte) >= 0x80);
    m_terminal.clearModemFault(kSimcom).waitForFinished();
    modem.ask("ATE1");
}

void TestInsideTerminal::babbleNeverEnds()
{
    Port modem(QStringLiteral("ttyUSB6"));
    m_terminal.modemFault(kSimcom, QStringLiteral("babble")).waitForFinished();
    QByteArray said;
    QTRY_VERIFY((modem.device().waitForReadyRead(100), said += modem.device().readAll(),
        said.count("^BOOT:") > 20));
}

void TestInsideTerminal::faultOfTheSim()
{
    Port modem(QStringLiteral("ttyUSB6"));
    QVERIFY(modem.ask("AT+CIMI").contains("250029876543210"));
    m_terminal.modemFault(kSimcom, QStringLiteral("noSim")).waitForFinished();
    QVERIFY(modem.ask("AT+CIMI").endsWith("\r\nERROR\r\n"));
}

void TestInsideTerminal::modemAnswersWhileTheBusIsStopped()
{
    const auto broker = static_cast<pid_t>(m_terminal.brokerPid().value());
    QVERIFY(broker > 0);
    Port modem(QStringLiteral("ttyUSB6"));
    ::kill(broker, SIGSTOP);
    // The services' thread now waits for the broker.
    m_terminal.serviceFault(tavbus::BUSNAME_WATCHDOGS, QString());
    QElapsedTimer clock;
    clock.start();
    const QByteArray answer = modem.ask("AT");
    const qint64 took = clock.elapsed();
    ::kill(broker, SIGCONT);
    QVERIFY(answer.endsWith("\r\nOK\r\n"));
    QVERIFY2(took < 1000, qPrintable(QString::number(took)));
}

void TestInsideTerminal::pulledModemEndsTheRead()
{
    Port modem(QStringLiteral("ttyUSB6"));
    m_terminal.unplug(kSimcom).waitForFinished();
    QVERIFY(!modem.device().waitForReadyRead(3000));
    QVERIFY(modem.device().error() != QSerialPort::NoError);
    QVERIFY(modem.device().error() != QSerialPort::TimeoutError);
    QVERIFY(!QFile::exists(QStringLiteral("/dev/ttyUSB6")));
}

void TestInsideTerminal::pulledModemLeavesTheList()
{
    m_terminal.unplug(kHuawei).waitForFinished();
    QCOMPARE(portsByName().size(), 25);
    QVERIFY(!portsByName().contains(QStringLiteral("ttyUSB0")));
    m_terminal.plug(kHuawei).waitForFinished();
    QCOMPARE(portsByName().size(), 28);
    Port modem(QStringLiteral("ttyUSB0"));
    QVERIFY(modem.ask("AT").endsWith("\r\nOK\r\n"));
}

void TestInsideTerminal::whoListensHearsOfUnplugAndPlug_data()
{
    QTest::addColumn<QByteArray>("subsystem");
    QTest::addColumn<QByteArray>("deviceType");
    QTest::addColumn<QByteArray>("property");
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("port") << QByteArray("tty") << QByteArray() << QByteArray("DEVNAME")
                          << QByteArray("/dev/ttyUSB6");
    QTest::newRow("device") << QByteArray("usb") << QByteArray("usb_device")
                            << QByteArray("DEVPATH")
                            << QByteArray("/devices/pci0000:00/0000:00:14.0/usb1/1-3");
}

void TestInsideTerminal::whoListensHearsOfUnplugAndPlug()
{
    QFETCH(QByteArray, subsystem);
    QFETCH(QByteArray, deviceType);
    QFETCH(QByteArray, property);
    QFETCH(QByteArray, value);
    const auto newMonitor = udevCall<void *(void *, const char *)>("udev_monitor_new_from_netlink");
    const auto filter = udevCall<int(void *, const char *, const char *)>(
        "udev_monitor_filter_add_match_subsystem_devtype");
    const auto enable = udevCall<int(void *)>("udev_monitor_enable_receiving");
    const auto receive = udevCall<void *(void *)>("udev_monitor_receive_device");
    const auto action = udevCall<const char *(void *)>("udev_device_get_action");
    const auto propertyOf
        = udevCall<const char *(void *, const char *)>("udev_device_get_property_value");
    const auto dropDevice = udevCall<void *(void *)>("udev_device_unref");
    const auto dropMonitor = udevCall<void *(void *)>("udev_monitor_unref");
    const UdevContext context;
    QVERIFY(newMonitor && filter && enable && receive && action && propertyOf && dropDevice
        && dropMonitor);

    void *const monitor = newMonitor(context.get(), "udev");
    QVERIFY(monitor != nullptr);
    QCOMPARE(filter(monitor, subsystem.constData(),
                 deviceType.isEmpty() ? nullptr : deviceType.constData()),
        0);
    QCOMPARE(enable(monitor), 0);
    m_terminal.unplug(kSimcom).waitForFinished();
    m_terminal.plug(kSimcom).waitForFinished();
    QList<QByteArray> heard;
    while (void *const device = receive(monitor)) {
        heard.append(QByteArray(action(device)) + ' ' + propertyOf(device, property.constData()));
        dropDevice(device);
    }
    dropMonitor(monitor);
    QCOMPARE(heard, QList<QByteArray>({"remove " + value, "add " + value}));
}

void TestInsideTerminal::udevKnowsThePort()
{
    const auto byName = udevCall<void *(void *, const char *, const char *)>(
        "udev_device_new_from_subsystem_sysname");
    const auto byNumber = udevCall<void *(void *, char, dev_t)>("udev_device_new_from_devnum");
    const auto isInitialized = udevCall<int(void *)>("udev_device_get_is_initialized");
    const auto propertyOf
        = udevCall<const char *(void *, const char *)>("udev_device_get_property_value");
    const auto attributeOf
        = udevCall<const char *(void *, const char *)>("udev_device_get_sysattr_value");
    const auto driver = udevCall<const char *(void *)>("udev_device_get_driver");
    const auto parent = udevCall<void *(void *)>("udev_device_get_parent");
    const auto usbDevice = udevCall<void *(void *, const char *, const char *)>(
        "udev_device_get_parent_with_subsystem_devtype");
    const auto dropDevice = udevCall<void *(void *)>("udev_device_unref");
    const UdevContext context;
    QVERIFY(byName && byNumber && isInitialized && propertyOf && attributeOf && driver && parent
        && usbDevice && dropDevice);

    void *const port = byName(context.get(), "tty", "ttyUSB9");
    QVERIFY(port != nullptr);
    QCOMPARE(isInitialized(port), 1);
    QCOMPARE(propertyOf(port, "ID_USB_INTERFACE_NUM"), "02");
    QCOMPARE(propertyOf(port, "ID_MM_CANDIDATE"), "1");
    QCOMPARE(driver(parent(port)), "option");
    QCOMPARE(driver(parent(parent(port))), "option"); // the interface, where ModemManager looks
    void *const device = usbDevice(port, "usb", "usb_device");
    QVERIFY(device != nullptr);
    QCOMPARE(attributeOf(device, "manufacturer"), "Quectel");
    QCOMPARE(attributeOf(device, "idProduct"), "0125");
    dropDevice(port); // its parents with it
    void *const samePort = byNumber(context.get(), 'c', makedev(188, 9));
    QVERIFY(samePort != nullptr);
    QCOMPARE(propertyOf(samePort, "DEVNAME"), "/dev/ttyUSB9");
    QCOMPARE(propertyOf(samePort, "ID_MM_PORT_TYPE_AT_PRIMARY"), "1");
    dropDevice(samePort);
}

void TestInsideTerminal::modemIsPulledOnACommand()
{
    Port modem(QStringLiteral("ttyUSB6"));
    m_terminal.unplugOn(kSimcom, QStringLiteral("at+cfun")).waitForFinished();
    QVERIFY(modem.ask("AT+CSQ").endsWith("\r\nOK\r\n"));
    QVERIFY(!modem.ask("AT+CFUN=1").contains("OK"));
    QTRY_VERIFY(!QFile::exists(QStringLiteral("/dev/ttyUSB6")));
}

void TestInsideTerminal::resetTakesTheModemOffTheBus()
{
    {
        Port modem(QStringLiteral("ttyUSB0"));
        QVERIFY(modem.ask("AT+CFUN=1,1").endsWith("\r\nOK\r\n"));
    }
    QTRY_VERIFY(!portsByName().contains(QStringLiteral("ttyUSB0")));
    QVERIFY(!QFile::exists(QStringLiteral("/dev/ttyUSB0")));
    QTRY_VERIFY(portsByName().contains(QStringLiteral("ttyUSB0")));
    Port modem(QStringLiteral("ttyUSB0"));
    QVERIFY(modem.ask("AT").endsWith("\r\nOK\r\n"));
}

void TestInsideTerminal::modemOnlyLeavesFewerPorts()
{
    const auto replug = [this] {
        m_terminal.unplug(kHuawei).waitForFinished();
        m_terminal.plug(kHuawei).waitForFinished();
    };
    {
        Port modem(QStringLiteral("ttyUSB0"));
        QVERIFY(modem.ask("AT^U2DIAG=0").endsWith("\r\nOK\r\n"));
    }
    QVERIFY(portsByName().contains(QStringLiteral("ttyUSB2"))); // until it is pulled out
    replug();
    const QMap<QString, QSerialPortInfo> ports = portsByName();
    QVERIFY(ports.contains(QStringLiteral("ttyUSB1")));
    QVERIFY(!ports.contains(QStringLiteral("ttyUSB2")));
    QVERIFY(!QFile::exists(QStringLiteral("/dev/ttyUSB2")));
    for (const char *name : {"ttyUSB0", "ttyUSB1"}) {
        Port port(QString::fromLatin1(name));
        QVERIFY2(port.ask("AT").endsWith("\r\nOK\r\n"), name);
    }
    {
        Port modem(QStringLiteral("ttyUSB0"));
        QVERIFY(modem.ask("AT^U2DIAG=255").endsWith("\r\nOK\r\n"));
    }
    replug();
    QVERIFY(portsByName().contains(QStringLiteral("ttyUSB2")));
}

void TestInsideTerminal::nothingOfOneSessionIsLeftForTheNext()
{
    {
        Port modem(QStringLiteral("ttyUSB11"));
        modem.device().write("AT+CSQ\r"); // answered only after this has gone
        QVERIFY(modem.device().waitForBytesWritten());
    }
    QTest::qWait(600);
    Port modem(QStringLiteral("ttyUSB11"));
    QVERIFY(!modem.device().waitForReadyRead(200));
    QVERIFY(modem.ask("AT").endsWith("\r\nOK\r\n"));
}

void TestInsideTerminal::soleUseEndsWithItsProgram()
{
    QProcess other;
    other.start(QStringLiteral("python3"),
        {QStringLiteral("-c"),
            QStringLiteral("import fcntl,os,time,termios\n"
                           "fd=os.open('/dev/ttyUSB11',os.O_RDWR|os.O_NOCTTY)\n"
                           "fcntl.ioctl(fd,termios.TIOCEXCL)\n"
                           "print('held',flush=True)\n"
                           "time.sleep(1000)\n")});
    QVERIFY(other.waitForReadyRead());
    QVERIFY(!Port(QStringLiteral("ttyUSB11")).isOpen());
    other.kill();
    QVERIFY(other.waitForFinished());
    QTRY_COMPARE(Port(QStringLiteral("ttyUSB11")).device().error(), QSerialPort::NoError);
    Port modem(QStringLiteral("ttyUSB11"));
    QVERIFY(modem.ask("AT").endsWith("\r\nOK\r\n"));
}

// One program after the other, with no time in between for the modem to notice. A modem that says
// nothing by itself, so that an answer is all there is.
void TestInsideTerminal::everySessionOfManyIsAnswered()
{
    for (int i = 0; i < 200; ++i) {
        Port modem(QStringLiteral("ttyUSB11"));
        QVERIFY2(modem.isOpen(), qPrintable(QString::number(i)));
        QVERIFY2(modem.ask("AT").endsWith("\r\nOK\r\n"), qPrintable(QString::number(i)));
    }
}

void TestInsideTerminal::heldPortHasALockFile()
{
    const QString lock = QStringLiteral("/run/lock/LCK..ttyUSB0");
    m_terminal.holdPort(kHuawei, true).waitForFinished();
    QFile file(lock);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray holder = file.readAll();
    QCOMPARE(holder.size(), 11); // ten characters and a line end
    QVERIFY(QFile::exists(QStringLiteral("/proc/%1").arg(holder.trimmed().toInt())));
    QVERIFY(!Port(QStringLiteral("ttyUSB0")).isOpen());
    m_terminal.holdPort(kHuawei, false).waitForFinished();
    QVERIFY(!QFile::exists(lock));
    QVERIFY(Port(QStringLiteral("ttyUSB0")).isOpen());
}

void TestInsideTerminal::commandsAreListed()
{
    const QString zte = QStringLiteral("zte");
    const int before = m_terminal.modemCommands(zte).value().size();
    Port modem(QStringLiteral("ttyUSB5"));
    modem.ask("AT+CSQ");
    modem.ask("at+cgmi");
    QCOMPARE(m_terminal.modemCommands(zte).value().mid(before),
        QStringList({QStringLiteral("AT+CSQ"), QStringLiteral("at+cgmi")}));
    const QStringList journal = m_terminal.journal().value();
    QVERIFY(journal.last().endsWith(QLatin1String(" zte < at+cgmi")));
}

void TestInsideTerminal::configurationIsThere()
{
    QVERIFY(QFile::exists(QStringLiteral("/etc/ovrel/terminalV4.conf")));
    QVERIFY(!qEnvironmentVariableIsSet("TAV_TERMINAL_CONF"));
    QCOMPARE(qgetenv("DBUS_SESSION_BUS_ADDRESS"), qgetenv("DBUS_SYSTEM_BUS_ADDRESS"));
}

void TestInsideTerminal::servicesPublishThatTheyRun()
{
    QCOMPARE(stateOf(tavbus::BUSNAME_TAVMODEMS).value(QStringLiteral("serviceMode")), QVariant(2));
    QCOMPARE(stateOf(tavbus::BUSNAME_WATCHDOGS).value(QStringLiteral("state")), QVariant(2));
    tavbus::ClientState state;
    QVERIFY(m_bus.loadState(tavbus::BUSNAME_ACCEPTORS, state));
    AcceptorState acceptors;
    QVERIFY(acceptors.loadFromClientState(state));
    QCOMPARE(acceptors.acceptors().size(), 2);
    QVERIFY(!acceptors.allDisabled());
    QVERIFY(m_bus.loadState(tavbus::BUSNAME_PRINTSERVICE, state));
    PrintServiceStateTavbusWrapper printers;
    QVERIFY(printers.setClientState(state));
    QVERIFY(!printers.state().isStopped());
}

void TestInsideTerminal::serviceObeys_data()
{
    QTest::addColumn<QString>("service");
    QTest::addColumn<QString>("stop");
    QTest::addColumn<QString>("start");
    QTest::newRow("modems") << tavbus::BUSNAME_TAVMODEMS << "stop"
                            << "restart";
    QTest::newRow("watchdogs") << tavbus::BUSNAME_WATCHDOGS << "stop"
                               << "restart";
    QTest::newRow("printers") << tavbus::BUSNAME_PRINTSERVICE << "stop"
                              << "restart";
    QTest::newRow("acceptors") << tavbus::BUSNAME_ACCEPTORS << "disable"
                               << "enable";
}

void TestInsideTerminal::serviceObeys()
{
    QFETCH(QString, service);
    QFETCH(QString, stop);
    QFETCH(QString, start);
    const QVariantMap running = stateOf(service);
    const int before = m_terminal.serviceCommands(service).value().size();
    QVERIFY(send(service, stop));
    QTRY_VERIFY(stateOf(service) != running);
    QTRY_VERIFY(
        m_terminal.journal().value().last().endsWith(service + QStringLiteral(": stopped")));
    const QVariantMap stopped = stateOf(service);
    QVERIFY(stopped != running);
    // Told once more, it stays what it is.
    QVERIFY(send(service, stop));
    QTest::qWait(500);
    QCOMPARE(stateOf(service), stopped);
    QVERIFY(send(service, start));
    QTRY_COMPARE(stateOf(service), running);
    QCOMPARE(
        m_terminal.serviceCommands(service).value().mid(before), QStringList({stop, stop, start}));
}

void TestInsideTerminal::slowServiceTakesItsTime()
{
    const QVariantMap running = stateOf(tavbus::BUSNAME_WATCHDOGS);
    m_terminal.serviceFault(tavbus::BUSNAME_WATCHDOGS, QStringLiteral("slow")).waitForFinished();
    QVERIFY(send(tavbus::BUSNAME_WATCHDOGS, QStringLiteral("stop")));
    QTest::qWait(2000);
    QCOMPARE(stateOf(tavbus::BUSNAME_WATCHDOGS), running);
    QTRY_VERIFY_WITH_TIMEOUT(stateOf(tavbus::BUSNAME_WATCHDOGS) != running, 10000);
    m_terminal.serviceFault(tavbus::BUSNAME_WATCHDOGS, QString()).waitForFinished();
    QVERIFY(send(tavbus::BUSNAME_WATCHDOGS, QStringLiteral("restart")));
    QTRY_COMPARE(stateOf(tavbus::BUSNAME_WATCHDOGS), running);
}

void TestInsideTerminal::deafServiceHearsNothing()
{
    const QString service = tavbus::BUSNAME_PRINTSERVICE;
    const QVariantMap running = stateOf(service);
    const int before = m_terminal.serviceCommands(service).value().size();
    m_terminal.serviceFault(service, QStringLiteral("deaf")).waitForFinished();
    QVERIFY(send(service, QStringLiteral("stop")));
    QTest::qWait(600);
    QCOMPARE(stateOf(service), running);
    QCOMPARE(m_terminal.serviceCommands(service).value().size(), before);
}

void TestInsideTerminal::deadServiceIsGone()
{
    const QString service = tavbus::BUSNAME_PRINTSERVICE;
    m_terminal.serviceFault(service, QStringLiteral("dead")).waitForFinished();
    QTRY_VERIFY(!send(service, QStringLiteral("stop")));
    m_terminal.serviceFault(service, QString()).waitForFinished();
    QVERIFY(send(service, QStringLiteral("restart")));
}

void TestInsideTerminal::stuckServiceHearsAndStays()
{
    const QString service = tavbus::BUSNAME_WATCHDOGS;
    const QVariantMap running = stateOf(service);
    m_terminal.serviceFault(service, QStringLiteral("stuck")).waitForFinished();
    QVERIFY(send(service, QStringLiteral("stop")));
    QTRY_COMPARE(m_terminal.serviceCommands(service).value().last(), QStringLiteral("stop"));
    QTest::qWait(600);
    QCOMPARE(stateOf(service), running);
}

void TestInsideTerminal::stateCanBeHeld()
{
    const QString service = tavbus::BUSNAME_TAVMODEMS;
    const QVariantMap running = stateOf(service);
    const QVariantMap body{{QStringLiteral("serviceMode"), 4},
        {QStringLiteral("nested"), QVariantList{QVariantMap{{QStringLiteral("a"), true}}, 1}}};
    const QDateTime stamp = QDateTime::fromMSecsSinceEpoch(1234567890123);
    QVERIFY(!m_terminal.serviceState(service, body, stamp.toMSecsSinceEpoch()).isError());
    tavbus::ClientState state;
    QTRY_VERIFY(m_bus.loadState(service, state) && state.dt() == stamp);
    QCOMPARE(state.body(), body);
    QVERIFY(send(service, QStringLiteral("stop")));
    QTest::qWait(600);
    QCOMPARE(stateOf(service), body); // held although it obeyed
    QVERIFY(send(service, QStringLiteral("restart")));
    QTest::qWait(600);
    m_terminal.serviceFault(service, QString()).waitForFinished();
    QTRY_COMPARE(stateOf(service), running);
}

void TestInsideTerminal::brokerComesBackAfterACrash()
{
    const uint before = m_terminal.brokerPid().value();
    QVERIFY(before > 0);
    m_terminal.killBroker().waitForFinished();
    QTRY_VERIFY(send(tavbus::BUSNAME_WATCHDOGS, QStringLiteral("restart")));
    const uint after = m_terminal.brokerPid().value();
    QVERIFY(after > 0 && after != before);
}

void TestInsideTerminal::pagesAnswerOrRefuse()
{
    const QString maker = QStringLiteral("check.maker.example");
    QVERIFY(pageAnswers(maker, 8081));
    m_terminal.page(QStringLiteral("maker"), false).waitForFinished();
    QVERIFY(!pageAnswers(maker, 8081));
    m_terminal.page(QStringLiteral("maker"), true).waitForFinished();
    QVERIFY(pageAnswers(maker, 8081));
}

void TestInsideTerminal::pageOverPppHasNoRoute()
{
    const QString host = QStringLiteral("www.public.example");
    QVERIFY(
        QHostInfo::fromName(host).addresses().contains(QHostAddress(QStringLiteral("10.0.2.2"))));
    QVERIFY(!pageAnswers(host, 8082));
    QVERIFY(pageAnswers(QStringLiteral("127.0.0.1"), 8082)); // as the call's other end sees it
}

void TestInsideTerminal::wiredInterfaceIsThere()
{
    QVERIFY(QNetworkInterface::interfaceFromName(QStringLiteral("eth0")).isValid());
    QProcess process;
    process.start(QStringLiteral("sudo"),
        {QStringLiteral("ifconfig"), QStringLiteral("eth0"), QStringLiteral("192.0.2.1")});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(
        QNetworkInterface::interfaceFromName(QStringLiteral("eth0")).addressEntries().value(0).ip(),
        QHostAddress(QStringLiteral("192.0.2.1")));
    process.start(QStringLiteral("sudo"),
        {QStringLiteral("ifconfig"), QStringLiteral("eth0"), QStringLiteral("down")});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
}

// With a kernel that has PPP the call would come up; without, the daemon says so.
void TestInsideTerminal::dialReachesThePppDaemon()
{
    const QString path = QDir::tempPath() + QStringLiteral("/dial.conf");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[Dialer gsm]\nModem = /dev/ttyUSB0\nBaud = 57600\nPhone = *99#\n"
               "Username = mts\nPassword = mts\nDial Command = ATDT\nStupid Mode = yes\n"
               "Init1 = ATZ\nInit2 = AT+CGDCONT=1,\"IP\",\"internet.mts.ru\"\nNew PPPD = yes\n");
    file.close();
    QProcess dialer;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LD_BIND_NOW"), QStringLiteral("1"));
    dialer.setProcessEnvironment(environment);
    dialer.setProcessChannelMode(QProcess::MergedChannels);
    dialer.start(QStringLiteral("/usr/bin/wvdial"),
        {QStringLiteral("gsm"), QStringLiteral("--config=") + path});
    QByteArray said;
    QTRY_VERIFY_WITH_TIMEOUT(
        (dialer.waitForReadyRead(100), said += dialer.readAll(), said.contains("Pid of pppd")),
        30000);
    QVERIFY2(said.contains("CONNECT 3600000"), said.constData());
    const bool hasPpp = QFile::exists(QStringLiteral("/dev/ppp"));
    if (hasPpp) {
        QTRY_VERIFY_WITH_TIMEOUT(
            QNetworkInterface::interfaceFromName(QStringLiteral("ppp0")).isValid(), 30000);
        dialer.terminate();
    }
    QVERIFY(dialer.waitForFinished(30000));
    said += dialer.readAll();
    if (!hasPpp)
        QVERIFY2(said.contains("No ppp module error"), said.constData());
    const QStringList journal = m_terminal.journal().value();
    QVERIFY(!journal.filter(QStringLiteral("huawei: call started")).isEmpty());
    QTRY_VERIFY(
        !m_terminal.journal().value().filter(QStringLiteral("huawei: call dropped")).isEmpty()
        || !m_terminal.journal().value().filter(QStringLiteral("huawei: call ended")).isEmpty());
    QFile secrets(QStringLiteral("/etc/ppp/pap-secrets"));
    QVERIFY(secrets.open(QIODevice::ReadOnly));
    QVERIFY(secrets.readAll().contains("mts"));
    // Neither is left, not even as a zombie: the tool waits until `ps -A` shows none.
    QProcess ps;
    const auto names = [&ps] {
        ps.start(QStringLiteral("ps"), {QStringLiteral("-A")});
        ps.waitForFinished();
        return ps.readAll();
    };
    QTRY_VERIFY(!names().contains("pppd"));
    QVERIFY(!names().contains("wvdial"));
    Port modem(QStringLiteral("ttyUSB0"));
    QVERIFY(modem.ask("AT").endsWith("\r\nOK\r\n"));
}

void TestInsideTerminal::unknownNamesAreErrors_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QVariantList>("arguments");
    const QString no = QStringLiteral("nobody");
    QTest::newRow("modem") << "unplug" << QVariantList{no};
    QTest::newRow("fault of a modem") << "modemFault" << QVariantList{kHuawei, no};
    QTest::newRow("service") << "serviceCommands" << QVariantList{no};
    QTest::newRow("fault of a service")
        << "serviceFault" << QVariantList{tavbus::BUSNAME_TAVMODEMS, no};
    QTest::newRow("page") << "page" << QVariantList{no, true};
    QTest::newRow("port") << "holdPort" << QVariantList{no, true};
}

void TestInsideTerminal::unknownNamesAreErrors()
{
    QFETCH(QString, method);
    QFETCH(QVariantList, arguments);
    const QDBusMessage answer = m_terminal.callWithArgumentList(QDBus::Block, method, arguments);
    QCOMPARE(answer.type(), QDBusMessage::ErrorMessage);
}

QTEST_GUILESS_MAIN(TestInsideTerminal)

#include "tst_insideterminal.moc"
