#include "foundmodem.h"
#include "searchport.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

Q_DECLARE_METATYPE(AnsweringPort)

class TestFoundModem : public QObject
{
    Q_OBJECT

private slots:
    void choosesTheDataPort_data();
    void choosesTheDataPort();
    void tellsModemsApart_data();
    void tellsModemsApart();
    void namesConnections_data();
    void namesConnections();
    void namesEqualModemsDifferently();
    void fillsTheRecord();
    void takesFromEveryPortWhatItTells();
    void readsUsbInterfaces_data();
    void readsUsbInterfaces();
    void namesPorts_data();
    void namesPorts();
    void listsEachDeviceOnce();
};

namespace {

const QString IMEI = QStringLiteral("353142033840706");
const QString OTHER_IMEI = QStringLiteral("866884040012345");

AnsweringPort port(const QString &name, const QString &imei = IMEI, int interface = -1)
{
    AnsweringPort answering;
    answering.port.name = name;
    answering.port.usbInterface = interface;
    answering.port.usbDevice = interface < 0 ? QString() : QStringLiteral("/sys/usb1/1-1");
    answering.baudrate = 57600;
    answering.manufacturer = QStringLiteral("huawei");
    answering.model = QStringLiteral("E173");
    answering.dialect = QStringLiteral("Huawei");
    answering.imei = imei;
    return answering;
}

} // namespace

void TestFoundModem::choosesTheDataPort_data()
{
    QTest::addColumn<QString>("dialect");
    QTest::addColumn<QList<int>>("interfaces");
    QTest::addColumn<QString>("chosen");
    const auto row
        = [](const char *name, const QString &dialect, const QList<int> &interfaces,
              const QString &chosen) { QTest::newRow(name) << dialect << interfaces << chosen; };
    row("Huawei", QStringLiteral("Huawei"), {0, 2}, QStringLiteral("port0"));
    row("Huawei, in whatever order", QStringLiteral("Huawei"), {2, 0}, QStringLiteral("port1"));
    row("Quectel", QStringLiteral("Quectel"), {2, 3}, QStringLiteral("port1"));
    row("Quectel whose data port does not answer", QStringLiteral("Quectel"), {1, 2},
        QStringLiteral("port0"));
    row("SIMCom", QStringLiteral("SIMCom"), {2, 3, 4}, QStringLiteral("port1"));
    row("Sierra", QStringLiteral("Sierra"), {0, 3}, QStringLiteral("port1"));
    row("ZTE with three ports", QStringLiteral("ZTE"), {1, 2}, QStringLiteral("port1"));
    row("ZTE with four ports", QStringLiteral("ZTE"), {1, 2, 3}, QStringLiteral("port2"));
    row("ZTE with a card reader between", QStringLiteral("ZTE"), {1, 4}, QStringLiteral("port1"));
    row("a maker without a rule", QStringLiteral("Telit"), {4, 1, 3}, QStringLiteral("port1"));
    row("not on USB", QStringLiteral("Quectel"), {-1, -1}, QStringLiteral("port0"));
}

void TestFoundModem::choosesTheDataPort()
{
    QFETCH(QString, dialect);
    QFETCH(QList<int>, interfaces);
    QList<AnsweringPort> ports;
    for (int i = 0; i < interfaces.size(); ++i) {
        ports << port(QStringLiteral("port%1").arg(i), IMEI, interfaces.at(i));
        ports.last().dialect = dialect;
    }
    const auto modems = modemsBehind(ports);
    QCOMPARE(modems.size(), 1);
    QTEST(modems.first().info.portName(), "chosen");
    QCOMPARE(modems.first().ports.size(), interfaces.size());
    QCOMPARE(modems.first().ports.first(), modems.first().info.portName());
}

void TestFoundModem::tellsModemsApart_data()
{
    QTest::addColumn<QList<AnsweringPort>>("ports");
    QTest::addColumn<QList<QStringList>>("modems");
    using Ports = QList<AnsweringPort>;
    using Modems = QList<QStringList>;
    const QString a = QStringLiteral("a");
    const QString b = QStringLiteral("b");
    const QString c = QStringLiteral("c");
    const QString none;
    QTest::newRow("no port") << Ports() << Modems();
    QTest::newRow("one IMEI") << Ports{port(a), port(b), port(c)} << Modems{{a, b, c}};
    QTest::newRow("two mixed") << Ports{port(a), port(b, OTHER_IMEI), port(c)}
                               << Modems{{a, c}, {b}};
    QTest::newRow("no IMEI") << Ports{port(a, none), port(b, none)} << Modems{{a}, {b}};
    QTest::newRow("no IMEI on one USB device")
        << Ports{port(a, none, 0), port(b, none, 2)} << Modems{{a, b}};
    QTest::newRow("no IMEI on the first of its ports")
        << Ports{port(a, none, 0), port(b, IMEI, 2)} << Modems{{a, b}};
    QTest::newRow("no IMEI beside a modem that is not on USB")
        << Ports{port(a, none), port(b)} << Modems{{a}, {b}};
    QTest::newRow("two behind one USB device")
        << Ports{port(a, IMEI, 0), port(b, OTHER_IMEI, 1)} << Modems{{a}, {b}};
    QTest::newRow("two behind one USB device, no IMEI on the first port")
        << Ports{port(a, none, 0), port(b, IMEI, 1), port(c, OTHER_IMEI, 2)} << Modems{{a, b}, {c}};
}

void TestFoundModem::tellsModemsApart()
{
    QFETCH(QList<AnsweringPort>, ports);
    QList<QStringList> modems;
    const auto found = modemsBehind(ports);
    for (const FoundModem &modem : found)
        modems << modem.ports;
    QTEST(modems, "modems");
}

void TestFoundModem::namesConnections_data()
{
    QTest::addColumn<QString>("manufacturer");
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("portName");
    QTest::addColumn<QString>("name");
    const auto row = [](const char *what, const char *maker, const char *model,
                         const char *portName, const char *name) {
        QTest::newRow(what) << QString::fromUtf8(maker) << QString::fromUtf8(model)
                            << QString::fromUtf8(portName) << QString::fromUtf8(name);
    };
    row("plain", "huawei", "E173", "ttyUSB0", "E173-ttyUSB0");
    row("with hyphens", "Quectel", "SIM7600E-H", "ttyUSB3", "SIM7600E-H-ttyUSB3");
    row("with blanks", "Sierra", "MC 7455  v2", "ttyUSB2", "MC_7455_v2-ttyUSB2");
    row("in a folder of /dev", "huawei", "E173", "/dev/pts/3", "E173-pts_3");
    row("elsewhere", "huawei", "E173", "/tmp/modem", "E173-tmp_modem");
    row("brackets and line ends", "x", "[E]=1;#\"\n\\", "ttyUSB0", "E_1-ttyUSB0");
    row("like an option", "x", "--config", "ttyUSB0", "config-ttyUSB0");
    row("other letters", "x", "Модем 5", "ttyUSB0", "5-ttyUSB0");
    row("other digits", "x", "E\u0661\u0662", "ttyUSB0", "E-ttyUSB0");
    row("no model", "ZTE", "", "ttyUSB0", "ZTE-ttyUSB0");
    row("nothing told", "", "", "ttyS0", "modem-ttyS0");
    row("nothing that can be written", "", "модем", "ttyS0", "modem-ttyS0");
}

void TestFoundModem::namesConnections()
{
    QFETCH(QString, manufacturer);
    QFETCH(QString, model);
    QFETCH(QString, portName);
    AnsweringPort answering = port(portName);
    answering.manufacturer = manufacturer;
    answering.model = model;
    const auto modems = modemsBehind({answering});
    QCOMPARE(modems.size(), 1);
    QTEST(modems.first().info.connectionName(), "name");
    QCOMPARE(modems.first().info.portName(), portName);
}

void TestFoundModem::namesEqualModemsDifferently()
{
    const auto modems = modemsBehind({port(QStringLiteral("/dev/pts/3"), QString()),
        port(QStringLiteral("/dev/pts_3"), QString()), port(QStringLiteral("ttyUSB0"), QString())});
    QStringList names;
    for (const FoundModem &modem : modems)
        names << modem.info.connectionName();
    QCOMPARE(names,
        QStringList({QStringLiteral("E173-pts_3"), QStringLiteral("E173-pts_3-2"),
            QStringLiteral("E173-ttyUSB0")}));
}

void TestFoundModem::fillsTheRecord()
{
    OperatorData data;
    data.setModemInitLine(QStringLiteral("AT+CGDCONT=1,\"IP\",\"internet\""));
    data.setUserName(QStringLiteral("mts"));
    data.setPassword(QStringLiteral("secret"));
    AnsweringPort answering = port(QStringLiteral("ttyUSB0"));
    answering.baudrate = 115200;
    answering.operatorData = data;
    ModemInfo expected; // the rest are its defaults
    expected.setConnectionName(QStringLiteral("E173-ttyUSB0"));
    expected.setPortName(QStringLiteral("ttyUSB0"));
    expected.setBaudrate(115200);
    expected.addInitLine(data.modemInitLine());
    expected.setUserName(data.userName());
    expected.setPassword(data.password());
    QCOMPARE(modemsBehind({answering}).first().info, expected);

    answering.operatorData = {};
    expected.setInitLines({});
    expected.setUserName({});
    expected.setPassword({});
    QCOMPARE(modemsBehind({answering}).first().info, expected);
}

void TestFoundModem::takesFromEveryPortWhatItTells()
{
    AnsweringPort bare = port(QStringLiteral("ttyUSB0"), QString(), 0);
    bare.manufacturer.clear();
    bare.model.clear();
    AnsweringPort telling = port(QStringLiteral("ttyUSB1"), IMEI, 1);
    telling.operatorData.setUserName(QStringLiteral("mts"));
    const auto modems = modemsBehind({bare, telling});
    QCOMPARE(modems.size(), 1);
    QCOMPARE(modems.first().info.connectionName(), QStringLiteral("E173-ttyUSB0"));
    QCOMPARE(modems.first().info.userName(), QStringLiteral("mts"));
    QCOMPARE(modems.first().manufacturer, QStringLiteral("huawei"));
    QCOMPARE(modems.first().model, QStringLiteral("E173"));
    QCOMPARE(modems.first().imei, IMEI);
}

void TestFoundModem::readsUsbInterfaces_data()
{
    QTest::addColumn<QString>("device"); // what class/tty/NAME/device points to
    QTest::addColumn<QByteArray>("number");
    QTest::addColumn<int>("interface");
    QTest::newRow("behind a converter")
        << QStringLiteral("devices/1-2/1-2:1.3/ttyX0") << QByteArray("03\n") << 3;
    QTest::newRow("of the CDC class")
        << QStringLiteral("devices/1-2/1-2:1.3") << QByteArray("03\n") << 3;
    QTest::newRow("numbers are hexadecimal")
        << QStringLiteral("devices/1-2/1-2:1.3") << QByteArray("0a\n") << 10;
    QTest::newRow("no USB") << QStringLiteral("devices/platform/uart") << QByteArray() << -1;
    QTest::newRow("no number") << QStringLiteral("devices/1-2/1-2:1.3") << QByteArray("\n") << -1;
}

void TestFoundModem::readsUsbInterfaces()
{
    QFETCH(QString, device);
    QFETCH(QByteArray, number);
    QFETCH(int, interface);
    const QTemporaryDir sysfs;
    QDir root(sysfs.path());
    QVERIFY(root.mkpath(device) && root.mkpath(QStringLiteral("class/tty/ttyX0")));
    QVERIFY(QFile::link(
        root.filePath(device), root.filePath(QStringLiteral("class/tty/ttyX0/device"))));
    if (!number.isEmpty()) {
        QFile file(root.filePath(QStringLiteral("devices/1-2/1-2:1.3/bInterfaceNumber")));
        QVERIFY(file.open(QFile::WriteOnly));
        file.write(number);
    }
    // The device itself need not be there: only its name counts.
    const SearchPort port = searchPortOf(QStringLiteral("ttyX0"), sysfs.path());
    QCOMPARE(port.usbInterface, interface);
    QCOMPARE(port.usbDevice,
        interface < 0 ? QString() : root.canonicalPath() + QStringLiteral("/devices/1-2"));
}

void TestFoundModem::namesPorts_data()
{
    QTest::addColumn<QString>("device");
    QTest::addColumn<QString>("name");
    const auto row = [](const char *device, const char *name) {
        QTest::newRow(device) << QString::fromLatin1(device) << QString::fromLatin1(name);
    };
    row("ttyUSB0", "ttyUSB0");
    row("/dev/ttyUSB0", "ttyUSB0");
    row("/dev//ttyUSB0", "ttyUSB0");
    row("/dev/pts/0", "/dev/pts/0");
    row("pts/0", "/dev/pts/0");
    row("/tmp/x", "/tmp/x");
}

void TestFoundModem::namesPorts()
{
    QFETCH(QString, device);
    QTEST(searchPortOf(device).name, "name");
}

void TestFoundModem::listsEachDeviceOnce()
{
    const QTemporaryDir folder;
    const QString link = folder.filePath(QStringLiteral("modem"));
    QVERIFY(QFile::link(QStringLiteral("/dev/ptmx"), link));
    const int listed = allSearchPorts({}).size();
    const auto ports = allSearchPorts({QStringLiteral("/dev/ptmx"), link, QStringLiteral("ptmx"),
        QStringLiteral("/dev/not-there"), QStringLiteral("not-there")});
    QCOMPARE(ports.size(), listed + 2);
    QCOMPARE(ports.at(listed).name, QStringLiteral("ptmx"));
    QCOMPARE(ports.at(listed + 1).name, QStringLiteral("not-there"));
}

QTEST_GUILESS_MAIN(TestFoundModem)

#include "tst_foundmodem.moc"
