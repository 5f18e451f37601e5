#include "fakesudo.h"
#include "interfaceshead.h"
#include "quickconfigurator.h"

#include <QDir>
#include <QProcess>
#include <QtTest>

namespace {

QString s(const char *text)
{
    return QString::fromUtf8(text);
}

const InterfaceSettings dhcp;

QString writtenFile()
{
    return QDir::tempPath() + s("/interfaces.tmp");
}

// Lets the commands, all of them stand-ins, run to their end.
bool apply(QuickConfigurator &configurator, const FakeSudo &sudo, const SettingsMap &settings)
{
    configurator.applySettings(settings);
    const auto *const process = configurator.findChild<QProcess *>();
    return QTest::qWaitFor([&] {
        return !sudo.calls().isEmpty() && sudo.calls().last() == s("[service][networking][restart]")
            && process->state() == QProcess::NotRunning;
    });
}

QByteArray write(const SettingsMap &settings)
{
    const FakeSudo sudo;
    QuickConfigurator configurator;
    if (!apply(configurator, sudo, settings))
        return "the commands did not come to their end";
    QFile file(writtenFile());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("not written");
}

} // namespace

class TestInterfacesWriter : public QObject
{
    Q_OBJECT

private slots:
    void writes_data()
    {
        QTest::addColumn<SettingsMap>("settings");
        QTest::addColumn<QByteArray>("expected"); // after the head
        const auto row
            = [](const char *situation, const SettingsMap &settings, const QByteArray &expected) {
                  QTest::newRow(situation) << settings << expected;
              };
        row("no interface", {}, "");
        row("DHCP", {{s("eth1"), dhcp}}, "\nauto eth1\nallow-hotplug eth1\niface eth1 inet dhcp\n");
        row("static",
            {{s("eth0"),
                staticSettings(s("192.168.0.10"), s("255.255.255.0"), s("192.168.0.1"),
                    s("8.8.8.8 8.8.4.4"))}},
            "\nauto eth0\nallow-hotplug eth0\niface eth0 inet static\n\taddress 192.168.0.10\n"
            "\tnetmask 255.255.255.0\n\tgateway 192.168.0.1\n"
            "\tdns-nameservers 8.8.8.8 8.8.4.4\n");
        row("static without servers",
            {{s("eth0"), staticSettings(s("10.0.0.1"), s("255.0.0.0"), s("10.0.0.2"))}},
            "\nauto eth0\nallow-hotplug eth0\niface eth0 inet static\n\taddress 10.0.0.1\n"
            "\tnetmask 255.0.0.0\n\tgateway 10.0.0.2\n");
        row("static and all empty", {{s("eth0"), staticSettings()}},
            "\nauto eth0\nallow-hotplug eth0\niface eth0 inet static\n\taddress \n\tnetmask \n"
            "\tgateway \n");
        row("bare dots and impossible numbers as they were typed",
            {{s("eth0"), staticSettings(s("300.1.1.1"), s("..."), s("1..."), s("one, two"))}},
            "\nauto eth0\nallow-hotplug eth0\niface eth0 inet static\n\taddress 300.1.1.1\n"
            "\tnetmask ...\n\tgateway 1...\n\tdns-nameservers one, two\n");
        row("entry without a name", {{QString(), staticSettings(s("10.0.0.1"))}}, "");
        InterfaceSettings unused = staticSettings(s("10.0.0.1"), s("a"), s("b"), s("c"));
        unused.setUseDhcp(true);
        row("the texts of a DHCP interface", {{s("eth0"), unused}},
            "\nauto eth0\nallow-hotplug eth0\niface eth0 inet dhcp\n");
        row("placeholders in a name and in values",
            {{s("e%1%2"), staticSettings(s("%1"), s("%2"), s("%3"), s("%n"))}},
            "\nauto e%1%2\nallow-hotplug e%1%2\niface e%1%2 inet static\n\taddress %1\n"
            "\tnetmask %2\n\tgateway %3\n\tdns-nameservers %n\n");
        row("beyond ASCII", {{s("сеть0"), staticSettings(s("é"), s("ж"), s("€"), s("😀"))}},
            "\nauto сеть0\nallow-hotplug сеть0\niface сеть0 inet static\n\taddress é\n"
            "\tnetmask ж\n\tgateway €\n\tdns-nameservers 😀\n");
        row("line breaks in values start no line",
            {{s("eth0"),
                staticSettings(s("10.0.0.1\nup rm -rf /"), s("255.0.0.0\r\nup a"), s("10.0.0.2\r"),
                    s("8.8.8.8\n\n\tup reboot"))}},
            "\nauto eth0\nallow-hotplug eth0\niface eth0 inet static\n"
            "\taddress 10.0.0.1 up rm -rf /\n\tnetmask 255.0.0.0  up a\n\tgateway 10.0.0.2 \n"
            "\tdns-nameservers 8.8.8.8  \tup reboot\n");
        row("a backslash at the end of a value draws no line in",
            {{s("eth0"), staticSettings(s("10.0.0.1\\"), s("\\\\"), s("a\\b"), s("8.8.8.8\n\\"))}},
            "\nauto eth0\nallow-hotplug eth0\niface eth0 inet static\n\taddress 10.0.0.1\n"
            "\tnetmask \n\tgateway a\\b\n\tdns-nameservers 8.8.8.8 \n");
        row("NUL in a value", {{s("eth0"), staticSettings(QString(QChar(0)) + s("1"), {}, {}, {})}},
            "\nauto eth0\nallow-hotplug eth0\niface eth0 inet static\n\taddress  1\n\tnetmask \n"
            "\tgateway \n");
    }

    void writes()
    {
        QFETCH(SettingsMap, settings);
        QFETCH(QByteArray, expected);
        QCOMPARE(write(settings), interfacesHead + expected);
    }

    void namesThatAreNoPlainWordAreLeftOut_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("space") << s("Wired connection 1");
        QTest::newRow("line feed") << s("eth0\n\tup reboot");
        QTest::newRow("carriage return") << s("eth0\rup");
        QTest::newRow("tab") << s("eth0\tinet");
        QTest::newRow("no-break space") << s("eth0\xc2\xa0x");
        QTest::newRow("line separator") << s("eth0\xe2\x80\xa8x");
        QTest::newRow("NUL") << s("eth0") + QChar(0);
        QTest::newRow("bell") << s("eth0\a");
        QTest::newRow("double quote") << s("eth\"0");
        QTest::newRow("single quote") << s("eth'0");
        QTest::newRow("backslash at the end") << s("eth0\\");
        QTest::newRow("option") << s("-a");
        QTest::newRow("path") << s("../eth0");
    }

    void namesThatAreNoPlainWordAreLeftOut()
    {
        QFETCH(QString, name);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(s("^Not written, for its name:")));
        QCOMPARE(write({{name, dhcp}}), interfacesHead);
    }

    void theOrderIsTheMaps()
    {
        SettingsMap settings;
        for (int i = 0; i < 20; ++i)
            settings.insert(s("eth%1").arg(i), dhcp);
        QByteArray expected = interfacesHead;
        for (auto it = settings.cbegin(); it != settings.cend(); ++it) {
            const QByteArray name = it.key().toUtf8();
            expected += "\nauto " + name + "\nallow-hotplug " + name + "\niface " + name
                + " inet dhcp\n";
        }
        QCOMPARE(write(settings), expected);
    }

    void aLongerFileOfBeforeLeavesNothing()
    {
        write({{s("eth0"), dhcp}, {s("eth1"), staticSettings(s("10.0.0.1"))}});
        QCOMPARE(write({}), interfacesHead);
    }

    void whatWasWrittenIsReadBack_data() { settingMaps(); }

    void whatWasWrittenIsReadBack()
    {
        QFETCH(SettingsMap, settings);
        write(settings);
        SettingsMap expected;
        for (auto it = settings.cbegin(); it != settings.cend(); ++it)
            expected.insert(it->useDhcp() ? s("iface") : it.key(), *it);
        const QuickConfigurator reader(settings.keys(), writtenFile());
        QCOMPARE(reader.availableEthernetSettings(), expected);
    }

    void ifupdownUnderstandsIt_data() { settingMaps(); }

    void ifupdownUnderstandsIt()
    {
        QFETCH(SettingsMap, settings);
        write(settings);

        QStringList names = settings.keys();
        names.sort();
        QCOMPARE(listed({s("--list"), s("--allow=hotplug")}), names);
        names += s("lo");
        names.sort();
        QCOMPARE(listed({s("--list")}), names);

        for (auto it = settings.cbegin(); it != settings.cend(); ++it) {
            const QStringList options = listed({it.key()});
            QCOMPARE(options.isEmpty(), it->useDhcp());
            QCOMPARE(valueOf(s("address"), options), it->address());
            QCOMPARE(valueOf(s("netmask"), options), it->netMask());
            QCOMPARE(valueOf(s("gateway"), options), it->gateway());
            QCOMPARE(valueOf(s("dns-nameservers"), options), it->dnsServers());
        }
    }

private:
    static void settingMaps()
    {
        QTest::addColumn<SettingsMap>("settings");
        const auto row = [](const char *situation, const SettingsMap &settings) {
            QTest::newRow(situation) << settings;
        };
        const InterfaceSettings office = staticSettings(
            s("192.168.0.10"), s("255.255.255.0"), s("192.168.0.1"), s("8.8.8.8 8.8.4.4"));
        const InterfaceSettings plant
            = staticSettings(s("10.1.2.3"), s("255.0.0.0"), s("10.0.0.1"));
        const auto with = [](const char *address, const char *mask, const char *gateway,
                              const char *servers = "") {
            return SettingsMap{
                {s("eth0"), staticSettings(s(address), s(mask), s(gateway), s(servers))}};
        };
        row("none", {});
        row("one on DHCP", {{s("eth0"), dhcp}});
        row("two on DHCP", {{s("eth0"), dhcp}, {s("eth1"), dhcp}});
        row("one static", {{s("eth0"), office}});
        row("one static without servers", {{s("eth0"), plant}});
        row("two static", {{s("eth0"), office}, {s("eth1"), plant}});
        row("one of each", {{s("eth0"), office}, {s("eth1"), dhcp}});
        row("the other way round", {{s("eth0"), dhcp}, {s("eth1"), office}});
        row("eight mixed",
            {{s("ens1"), office}, {s("ens2"), dhcp}, {s("ens3"), plant}, {s("ens4"), dhcp},
                {s("ens5"), office}, {s("ens6"), plant}, {s("ens7"), dhcp}, {s("ens8"), office}});
        row("predictable name", {{s("enp0s31f6"), plant}});
        row("name by hardware address", {{s("enx001122aabbcc"), office}});
        row("name with a dash, a dot and an underscore", {{s("lan-1_a.7"), plant}});
        row("name of one letter", {{s("q"), plant}});
        row("name of fifteen letters", {{s("abcdefghijklmno"), office}});
        row("point to point", with("10.0.0.1", "255.255.255.255", "10.0.0.2"));
        row("smallest subnet", with("10.0.0.1", "255.255.255.252", "10.0.0.2"));
        row("large subnet", with("172.16.5.4", "255.240.0.0", "172.16.0.1"));
        row("high octets", with("254.254.254.254", "255.255.255.0", "254.254.254.1"));
        row("the default gateway of a home router",
            with("192.168.178.20", "255.255.255.0", "192.168.178.1", "192.168.178.1"));
        row("three servers", with("10.0.0.1", "255.0.0.0", "10.0.0.2", "1.1.1.1 8.8.8.8 9.9.9.9"));
        row("server over IPv6", with("10.0.0.1", "255.0.0.0", "10.0.0.2", "2001:4860:4860::8888"));
        row("four servers, one twice",
            with("10.0.0.1", "255.0.0.0", "10.0.0.2", "1.1.1.1 1.0.0.1 1.1.1.1 9.9.9.9"));
    }

    QString ifquery(const QStringList &arguments) const
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(s(IFQUERY),
            QStringList{s("--interfaces"), writtenFile(), s("--state-dir"), m_state.path()}
                + arguments);
        if (!process.waitForFinished() || process.exitCode() != 0)
            return s("ifquery failed: ") + process.errorString()
                + QString::fromUtf8(process.readAll());
        return QString::fromUtf8(process.readAll());
    }

    QStringList listed(const QStringList &arguments) const
    {
        QStringList lines = ifquery(arguments).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        lines.sort();
        return lines;
    }

    static QString valueOf(const QString &option, const QStringList &lines)
    {
        for (const QString &line : lines) {
            if (line.startsWith(option + s(": ")))
                return line.mid(option.size() + 2);
        }
        return QString();
    }

    QTemporaryDir m_state;
};

QTEST_GUILESS_MAIN(TestInterfacesWriter)
#include "tst_interfaceswriter.moc"
