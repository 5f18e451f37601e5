#include "ethernetconfigurator.h"
#include "ethernetsettingsbox.h"
#include "ethernetwidget.h"
#include "quickconfigurator.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QMessageBox>
#include <QNetworkConfigurationManager>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTcpSocket>
#include <QTextBrowser>
#include <QTimer>
#include <QtTest>

#include <sys/mount.h>
#include <unistd.h>

// In the simulated terminal: the page, ifconfig, cp and ifupdown are the real ones, and so are two
// wired interfaces with a router at the other end of their cables.

namespace {

// What ifupdown and a DHCP client may take on a busy machine.
constexpr int kApplied = 60000;

QString s(const char *text)
{
    return QString::fromUtf8(text);
}

const QString eth0 = s("eth0");
const QString eth1 = s("eth1");

QByteArray interfacesFile()
{
    QFile file(s("/etc/network/interfaces"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QJsonObject link(const QString &interface)
{
    QProcess ip;
    ip.start(s("ip"), {s("-j"), s("-4"), s("address"), s("show"), interface});
    ip.waitForFinished();
    return QJsonDocument::fromJson(ip.readAllStandardOutput()).array().first().toObject();
}

bool isUp(const QString &interface)
{
    return link(interface).value(s("flags")).toArray().contains(s("UP"));
}

/// Addresses with their prefix lengths.
QStringList addresses(const QString &interface)
{
    QStringList all;
    const QJsonArray infos = link(interface).value(s("addr_info")).toArray();
    for (const QJsonValue &info : infos)
        all += s("%1/%2")
                   .arg(info.toObject().value(s("local")).toString())
                   .arg(info.toObject().value(s("prefixlen")).toInt());
    return all;
}

/// The router answers, with a refusal: nothing listens there.
bool reachesTheRouter()
{
    QTcpSocket socket;
    socket.connectToHost(s("192.168.0.1"), 9);
    socket.waitForConnected(5000);
    return socket.error() == QAbstractSocket::ConnectionRefusedError;
}

/// The real one, but for the second before each command.
class HastyConfigurator : public EthernetConfigurator
{
protected:
    std::chrono::milliseconds pauseBeforeCommand() const override
    {
        return std::chrono::milliseconds(0);
    }
};

QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED

/// Qt looks at the interfaces every ten seconds; now it has seen them.
bool lookAtTheInterfaces()
{
    QNetworkConfigurationManager manager;
    QSignalSpy looked(&manager, &QNetworkConfigurationManager::updateCompleted);
    manager.updateConfigurations();
    return looked.wait();
}

QT_WARNING_POP

/// While it lives nobody can run the DHCP client.
class NoDhcpClient
{
public:
    NoDhcpClient() { m_hidden = mount("/dev/null", kClient, nullptr, MS_BIND, nullptr) == 0; }
    ~NoDhcpClient()
    {
        if (m_hidden)
            umount2(kClient, MNT_DETACH);
    }
    Q_DISABLE_COPY_MOVE(NoDhcpClient)
    bool isHidden() const { return m_hidden; }

private:
    static constexpr const char *kClient = "/sbin/dhclient";
    bool m_hidden = false;
};

} // namespace

class TestTerminalNetwork : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // On the machine itself this would take its network down.
        QVERIFY2(QFile::exists(s("/run/terminal/bin/sudo")), "only in the simulated terminal");
        m_atFirst = interfacesFile();
        QVERIFY(m_atFirst.contains("192.168.0.10"));
        QVERIFY2(!QFile::exists(s("/run/terminal/bin/service")), "ifupdown is not unpacked");
    }

    // Each test finds the terminal as it came up.
    void init()
    {
        QFile file(s("/etc/network/interfaces"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(m_atFirst);
        file.close();
        for (const QString &command : {s("killall -q dhclient"), s("ip address flush dev eth0"),
                 s("ip address flush dev eth1"), s("ifconfig eth1 down"),
                 s("service networking restart")}) {
            QProcess process;
            process.start(s("sh"), {s("-c"), command});
            QVERIFY(process.waitForFinished());
        }
        QCOMPARE(addresses(eth0), QStringList{s("192.168.0.10/24")});
        QCOMPARE(addresses(eth1), QStringList());

        QVERIFY(lookAtTheInterfaces());
        open(new HastyConfigurator);
    }
    void cleanup() { m_page.reset(); }

    void listsItsInterfacesAndNoOther()
    {
        const EthernetConfigurator configurator;
        QCOMPARE(configurator.availableEthernetInterfaces(),
            (QHash<QString, bool>{{eth0, true}, {eth1, false}}));
        QVERIFY(configurator.isOnline());
        QCOMPARE(configurator.availableEthernetSettings(),
            (SettingsMap{{eth0,
                staticSettings(s("192.168.0.10"), s("255.255.255.0"), s("192.168.0.1"),
                    s("192.168.0.1 9.9.9.9"))}}));
    }

    void thePageShowsThem()
    {
        QStringList names{rowName(0), rowName(1)};
        names.sort();
        QCOMPARE(names, (QStringList{eth0, eth1}));
        QCOMPARE(table()->model()->rowCount(), 2);
        QCOMPARE(box()->interface(), eth0); // the one in use
        QCOMPARE(edit("leIP")->text(), s("192.168.0.10"));
        QVERIFY(reachesTheRouter());
    }

    // At its own pace, from the question to the buttons that come back.
    void applyingChangesTheAddress()
    {
        open(new EthernetConfigurator);
        type("leIP", "192.168.0.77");
        apply();
        QVERIFY(!button("pbApply")->isEnabled() && !button("pbReload")->isEnabled());
        QCOMPARE(addresses(eth0), QStringList{s("192.168.0.77/24")});
        QVERIFY(reachesTheRouter());
        QVERIFY(interfacesFile().endsWith(
            "\nauto eth0\nallow-hotplug eth0\niface eth0 inet static\n\taddress 192.168.0.77\n"
            "\tnetmask 255.255.255.0\n\tgateway 192.168.0.1\n"
            "\tdns-nameservers 192.168.0.1 9.9.9.9\n"));
        QVERIFY2(log().contains(s("done.\n")), qPrintable(log()));

        // What was applied is what is read back.
        QTRY_VERIFY_WITH_TIMEOUT(button("pbReload")->isEnabled(), 7000);
        QVERIFY(button("pbApply")->isEnabled());
        QTest::mouseClick(button("pbReload"), Qt::LeftButton);
        QCOMPARE(edit("leIP")->text(), s("192.168.0.77"));
    }

    void anInterfaceSwitchedOnGetsItsAddress()
    {
        tapIcon(eth1);
        QCOMPARE(box()->interface(), eth1);
        combo()->setCurrentIndex(1);
        type("leIP", "10.1.2.3");
        type("leNetmask", "255.255.0.0");
        type("leGateway", "10.1.0.1");
        apply();
        QCOMPARE(addresses(eth1), QStringList{s("10.1.2.3/16")});
        QCOMPARE(addresses(eth0), QStringList{s("192.168.0.10/24")});
    }

    // By the time that the buttons are back the page knows which interfaces are in use now: one
    // that it took for unused would be left out by the next apply.
    void aReloadAfterwardsKnowsWhatIsInUse()
    {
        tapIcon(eth0);
        tapIcon(eth1);
        apply();
        QVERIFY(isUp(eth1) && !isUp(eth0));
        const EthernetConfigurator configurator;
        QTRY_COMPARE_WITH_TIMEOUT(configurator.availableEthernetInterfaces(),
            (QHash<QString, bool>{{eth0, false}, {eth1, true}}), 4000);
    }

    void anInterfaceSwitchedOffIsDown()
    {
        tapIcon(eth0);
        apply();
        QVERIFY(!isUp(eth0));
        QVERIFY(!interfacesFile().contains("eth0"));
        QVERIFY(!reachesTheRouter());
    }

    void aWrongSettingIsToldInTheLog_data()
    {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QString>("complaint");
        QTest::addColumn<QString>("whenRight");
        const auto row = [](const char *situation, const char *field, const char *value,
                             const char *complaint, const char *whenRight = "done.\n") {
            QTest::newRow(situation)
                << QByteArray(field) << QByteArray(value) << s(complaint) << s(whenRight);
        };
        row("address that cannot be", "leIP", "300.1.1.1", "300.1.1.1");
        row("address left empty", "leIP", "...", "...");
        row("net mask that cannot be", "leNetmask", "255.255.255.999", "255.255.255.999");
        row("gateway that cannot be", "leGateway", "192.168.0.300", "192.168.0.300",
            // ifupdown gives up half-way and does not take back what it has done.
            "Address already assigned");
    }

    void aWrongSettingIsToldInTheLog()
    {
        QFETCH(QByteArray, field);
        QFETCH(QByteArray, value);
        QFETCH(QString, complaint);
        const QString right = edit(field.constData())->text();
        type(field.constData(), value.constData());
        apply();
        QVERIFY2(log().contains(complaint), qPrintable(log()));
        QVERIFY2(log().contains(s("ifup: failed to bring up eth0")), qPrintable(log()));

        // The tool goes on.
        type(field.constData(), right.toUtf8().constData());
        apply();
        QFETCH(QString, whenRight);
        QVERIFY2(log().contains(whenRight), qPrintable(log()));
        QCOMPARE(addresses(eth0), QStringList{s("192.168.0.10/24")});
        QCOMPARE(reachesTheRouter(), whenRight == s("done.\n"));
    }

    void dhcpGetsAnAddressFromTheRouter()
    {
        combo()->setCurrentIndex(0);
        apply();
        QVERIFY2(log().contains(QRegularExpression(s("DHCPACK of 192\\.168\\.0\\.1\\d\\d from"))),
            qPrintable(log()));
        QVERIFY2(log().contains(s("done.\n")), qPrintable(log()));
        // ifupdown takes down what the new file says: the address of before stays beside it.
        QCOMPARE(
            addresses(eth0).filter(QRegularExpression(s("^192\\.168\\.0\\.1\\d\\d/24$"))).size(),
            1);
        QVERIFY(reachesTheRouter());
    }

    void withoutADhcpClientTheLogSaysSo()
    {
        const NoDhcpClient hidden;
        QVERIFY(hidden.isHidden());
        combo()->setCurrentIndex(0);
        apply();
        QVERIFY2(log().contains(s("No DHCP client software found!")), qPrintable(log()));
        QVERIFY2(log().contains(s("ifup: failed to bring up eth0")), qPrintable(log()));

        combo()->setCurrentIndex(1);
        type("leIP", "192.168.0.12");
        type("leNetmask", "255.255.255.0");
        type("leGateway", "192.168.0.1");
        apply();
        QVERIFY2(log().contains(s("done.\n")), qPrintable(log()));
        QVERIFY(addresses(eth0).contains(s("192.168.0.12/24")));
        QVERIFY(reachesTheRouter());
    }

private:
    QPushButton *button(const char *name) const
    {
        return m_page->findChild<QPushButton *>(s(name));
    }
    QTableView *table() const { return m_page->findChild<QTableView *>(s("tvInterfaces")); }
    EthernetSettingsBox *box() const { return m_page->findChild<EthernetSettingsBox *>(); }
    QComboBox *combo() const { return m_page->findChild<QComboBox *>(s("cbUseDHCP")); }
    QLineEdit *edit(const char *name) const { return m_page->findChild<QLineEdit *>(s(name)); }
    QString log() const { return m_page->findChild<QTextBrowser *>(s("tbLog"))->toPlainText(); }
    QString rowName(int row) const { return table()->model()->index(row, 1).data().toString(); }

    void type(const char *field, const char *value) const
    {
        edit(field)->selectAll();
        QTest::keyClick(edit(field), Qt::Key_Delete);
        edit(field)->home(false);
        QTest::keyClicks(edit(field), s(value));
        QCOMPARE(edit(field)->text(), s(value));
    }

    void tapIcon(const QString &name) const
    {
        const int row = rowName(0) == name ? 0 : 1;
        QTest::mouseClick(table()->viewport(), Qt::LeftButton, Qt::NoModifier,
            table()->visualRect(table()->model()->index(row, 0)).center());
    }

    void open(EthernetConfigurator *configurator)
    {
        m_page = std::make_unique<EthernetWidget>(configurator, nullptr);
        m_page->resize(800, 520);
        m_page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
    }

    // Presses Apply, says Yes, and waits until the last command has ended.
    void apply() const
    {
        m_page->enableButtons(); // after an apply of before it would take five seconds
        QTimer yes;
        connect(&yes, &QTimer::timeout, [] {
            if (auto *const asked = qobject_cast<QMessageBox *>(QApplication::activeModalWidget()))
                asked->button(QMessageBox::Yes)->click();
        });
        yes.start(5);
        const auto *const process = m_page->findChild<QProcess *>();
        QTest::mouseClick(button("pbApply"), Qt::LeftButton);
        const bool isOver = QTest::qWaitFor(
            [process] {
                return process->arguments().contains(s("networking"))
                    && process->state() == QProcess::NotRunning;
            },
            kApplied);
        QVERIFY2(isOver, qPrintable(log()));
    }

    QByteArray m_atFirst;
    std::unique_ptr<EthernetWidget> m_page;
};

QTEST_MAIN(TestTerminalNetwork)
#include "tst_terminalnetwork.moc"
