#include "quickconfigurator.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

QString s(const char *text)
{
    return QString::fromUtf8(text);
}

const InterfaceSettings dhcp;
const QString dhcpKey = s("iface");

void row(const char *situation, const QByteArray &text, const SettingsMap &expected,
    const QStringList &interfaces = {s("eth0"), s("eth1")})
{
    QTest::newRow(situation) << interfaces << text << expected;
}

// The option lines under one static stanza of eth0.
void optionRow(const char *situation, const QByteArray &options, const InterfaceSettings &expected)
{
    row(situation, "iface eth0 inet static\n" + options, {{s("eth0"), expected}});
}

} // namespace

class TestInterfacesReader : public QObject
{
    Q_OBJECT

private slots:
    void reads_data()
    {
        QTest::addColumn<QStringList>("interfaces");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<SettingsMap>("expected");
        wholeFiles();
        stanzas();
        names();
        options();
        addresses();
        brokenFiles();
    }

    void reads()
    {
        QFETCH(QStringList, interfaces);
        QFETCH(QByteArray, text);
        QFETCH(SettingsMap, expected);
        QFile file(m_box.filePath(s("interfaces")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
        file.close();

        const QuickConfigurator configurator(interfaces, file.fileName());
        QCOMPARE(configurator.availableEthernetSettings(), expected);
    }

    void aMissingFileGivesNothing()
    {
        const QuickConfigurator configurator({s("eth0")}, m_box.filePath(s("missing")));
        QVERIFY(configurator.availableEthernetSettings().isEmpty());
    }

    void aDirectoryInItsPlaceGivesNothing()
    {
        const QuickConfigurator configurator({s("eth0")}, m_box.path());
        QVERIFY(configurator.availableEthernetSettings().isEmpty());
    }

    void anInactiveInterfaceIsACandidateToo()
    {
        QFile file(m_box.filePath(s("interfaces")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("iface eth7 inet static\n");
        file.close();
        const QuickConfigurator configurator({}, file.fileName(), {s("eth7")});
        QCOMPARE(
            configurator.availableEthernetSettings(), (SettingsMap{{s("eth7"), staticSettings()}}));
    }

private:
    static void wholeFiles()
    {
        row("empty", "", {});
        row("only a line end", "\n", {});
        row("Debian's installer, DHCP",
            "# This file describes the network interfaces available on your system\n"
            "# and how to activate them. For more information, see interfaces(5).\n\n"
            "source /etc/network/interfaces.d/*\n\n"
            "# The loopback network interface\nauto lo\niface lo inet loopback\n\n"
            "# The primary network interface\nallow-hotplug enp0s3\niface enp0s3 inet dhcp\n",
            {{dhcpKey, dhcp}}, {s("enp0s3")});
        row("Debian's installer, static, with its comment on DNS",
            "auto lo\niface lo inet loopback\n\n"
            "# The primary network interface\nallow-hotplug enp0s3\niface enp0s3 inet static\n"
            "\taddress 192.168.178.20/24\n\tgateway 192.168.178.1\n"
            "\t# dns-* options are implemented by the resolvconf package, if installed\n"
            "\tdns-nameservers 192.168.178.1\n\tdns-search example.org\n",
            {{s("enp0s3"),
                staticSettings(s("192.168.178.20"), {}, s("192.168.178.1"), s("192.168.178.1"))}},
            {s("enp0s3")});
        row("as this program writes it",
            "# This file describes the network interfaces available on your system\n"
            "# and how to activate them. For more information, see interfaces(5).\n\n"
            "# The loopback network interface\nauto lo\niface lo inet loopback\n\n"
            "#Network interfaces\n\n"
            "auto eth0\nallow-hotplug eth0\niface eth0 inet static\n\taddress 192.168.0.10\n"
            "\tnetmask 255.255.255.0\n\tgateway 192.168.0.1\n"
            "\tdns-nameservers 8.8.8.8 8.8.4.4\n\n"
            "auto eth1\nallow-hotplug eth1\niface eth1 inet dhcp\n",
            {{s("eth0"),
                 staticSettings(s("192.168.0.10"), s("255.255.255.0"), s("192.168.0.1"),
                     s("8.8.8.8 8.8.4.4"))},
                {dhcpKey, dhcp}});
        row("edited by hand: spaces, blank lines, old values kept as comments of their own",
            "auto eth0\n\n  iface   eth0   inet   static\n\n      address   10.1.2.3\n\n"
            "   netmask\t255.0.0.0   \n# 2019: moved to the new router\n gateway 10.0.0.1\n\n\n",
            {{s("eth0"), staticSettings(s("10.1.2.3"), s("255.0.0.0"), s("10.0.0.1"))}});
        row("two static interfaces",
            "iface eth0 inet static\naddress 10.0.0.1\niface eth1 inet static\naddress 10.0.0.2\n",
            {{s("eth0"), staticSettings(s("10.0.0.1"))},
                {s("eth1"), staticSettings(s("10.0.0.2"))}});
        row("bridge over the interfaces: its own name matches none",
            "iface eth0 inet manual\niface br0 inet static\n address 10.0.0.1\n"
            " bridge_ports eth0 eth1\n",
            {});
        row("bonded pair",
            "iface bond0 inet static\n address 10.31.1.5\n netmask 255.255.255.0\n"
            " bond-slaves eth0 eth1\n bond-mode active-backup\n",
            {});
        row("wireless interface beside the wired one: its options go nowhere",
            "iface eth0 inet static\naddress 10.0.0.1\n"
            "iface wlan0 inet static\naddress 10.0.0.2\ngateway 10.0.0.254\n",
            {{s("eth0"), staticSettings(s("10.0.0.1"))}});
        row("the system knows no interface", "iface eth0 inet static\naddress 10.0.0.1\n", {}, {});
    }

    static void stanzas()
    {
        row("two DHCP stanzas give one entry", "iface eth0 inet dhcp\niface eth1 inet dhcp\n",
            {{dhcpKey, dhcp}});
        row("options after a DHCP stanza go nowhere",
            "iface eth0 inet dhcp\n\taddress 10.0.0.1\n\tdns-nameservers 1.1.1.1\n",
            {{dhcpKey, dhcp}});
        row("options before any stanza go nowhere",
            "address 10.0.0.1\nnetmask 255.0.0.0\ngateway 10.0.0.2\ndns-nameservers 1.1.1.1\n"
            "iface eth0 inet static\n",
            {{s("eth0"), staticSettings()}});
        row("static stanza ended by the end of the file", "iface eth0 inet static",
            {{s("eth0"), staticSettings()}});
        row("manual stanza", "iface eth0 inet manual\n\taddress 10.0.0.1\n", {});
        row("loopback method", "iface eth0 inet loopback\n", {});
        row("point-to-point method", "iface eth0 inet ppp\n\tprovider dsl\n", {});
        row("stanza without a method", "iface eth0 inet\n\taddress 10.0.0.1\n", {});
        row("later static stanza replaces the earlier one",
            "iface eth0 inet static\naddress 10.0.0.1\ngateway 10.0.0.254\n"
            "iface eth0 inet static\naddress 10.0.0.2\n",
            {{s("eth0"), staticSettings(s("10.0.0.2"))}});
        row("static, then DHCP for the same interface",
            "iface eth0 inet static\naddress 10.0.0.1\niface eth0 inet dhcp\naddress 10.0.0.2\n",
            {{s("eth0"), staticSettings(s("10.0.0.1"))}, {dhcpKey, dhcp}});
        row("static, then manual for the same interface",
            "iface eth0 inet static\naddress 10.0.0.1\niface eth0 inet manual\naddress 10.0.0.2\n",
            {{s("eth0"), staticSettings(s("10.0.0.1"))}});
        row("inet6 auto beside inet",
            "iface eth0 inet static\naddress 10.0.0.1\niface eth0 inet6 auto\n",
            {{s("eth0"), staticSettings(s("10.0.0.1"))}});
        row("inet6 static beside inet replaces it and has no IPv4 address",
            "iface eth0 inet static\naddress 10.0.0.1\nnetmask 255.0.0.0\n"
            "iface eth0 inet6 static\naddress 2001:db8::2\nnetmask 64\ngateway 2001:db8::1\n",
            {{s("eth0"), staticSettings()}});
        row("inet6 DHCP beside inet",
            "iface eth0 inet static\naddress 10.0.0.1\niface eth0 inet6 dhcp\n",
            {{s("eth0"), staticSettings(s("10.0.0.1"))}, {dhcpKey, dhcp}});
        row("commented-out stanza counts", "# iface eth0 inet static\n#\taddress 10.0.0.1\n",
            {{s("eth0"), staticSettings(s("10.0.0.1"))}});
        row("commented-out DHCP stanza ends the static one",
            "iface eth0 inet static\naddress 10.0.0.1\n#iface eth0 inet dhcp\ngateway 10.0.0.2\n",
            {{s("eth0"), staticSettings(s("10.0.0.1"))}, {dhcpKey, dhcp}});
        row("static with a remark that it was dhcp",
            "iface eth0 inet static # was dhcp\naddress 10.0.0.1\n", {{dhcpKey, dhcp}});
        row("words in capitals are no stanza", "IFACE eth0 INET static\naddress 10.0.0.1\n", {});
        row("method in capitals is none", "iface eth0 inet STATIC\naddress 10.0.0.1\n", {});
        row("stanza continued on the next line is none",
            "iface eth0 \\\n inet static\naddress 10.0.0.1\n", {});
        row("words in another order and run together", "inetifaceeth0static\naddress 10.0.0.1\n",
            {{s("eth0"), staticSettings(s("10.0.0.1"))}});
        row("command line with both words ends the stanza",
            "iface eth0 inet static\naddress 10.0.0.1\npre-up check-iface --inet\n"
            "gateway 10.0.0.2\n",
            {{s("eth0"), staticSettings(s("10.0.0.1"))}});
        row("mapping, auto and hotplug lines are nothing",
            "auto eth0\nallow-hotplug eth0\nno-auto-down eth1\nmapping eth0\n\tscript guess\n", {});
        row("stanza that inherits", "iface eth0 inet static inherits office\n\tgateway 10.0.0.1\n",
            {{s("eth0"), staticSettings({}, {}, s("10.0.0.1"))}});
    }

    static void names()
    {
        const QByteArray eth10 = "iface eth10 inet static\naddress 10.0.0.1\n";
        row("eth1 is taken from a stanza of eth10 when it comes first", eth10,
            {{s("eth1"), staticSettings(s("10.0.0.1"))}}, {s("eth1"), s("eth10")});
        row("eth10 is taken when it comes first", eth10,
            {{s("eth10"), staticSettings(s("10.0.0.1"))}}, {s("eth10"), s("eth1")});
        row("eth10 does not match a stanza of eth1", "iface eth1 inet static\n",
            {{s("eth1"), staticSettings()}}, {s("eth10"), s("eth1")});
        row("VLAN counts as its interface",
            "iface eth0 inet static\naddress 10.0.0.1\n"
            "iface eth0.100 inet static\naddress 10.100.0.1\n",
            {{s("eth0"), staticSettings(s("10.100.0.1"))}});
        row("alias counts as its interface",
            "iface eth0 inet static\naddress 10.0.0.1\n"
            "iface eth0:1 inet static\naddress 10.0.0.99\n",
            {{s("eth0"), staticSettings(s("10.0.0.99"))}});
        row("name found in a remark only", "iface wan inet static # on eth1\naddress 10.0.0.1\n",
            {{s("eth1"), staticSettings(s("10.0.0.1"))}});
        row("name found within the word iface", "iface eth0 inet static\naddress 10.0.0.1\n",
            {{s("fac"), staticSettings(s("10.0.0.1"))}}, {s("fac"), s("eth0")});
        row("name that holds the word dhcp", "iface dhcp0 inet static\naddress 10.0.0.1\n",
            {{dhcpKey, dhcp}}, {s("dhcp0")});
        row("name in other letters is another name", "iface ETH0 inet static\n", {});
        row("name by hardware address", "iface enx001122aabbcc inet static\naddress 10.0.0.1\n",
            {{s("enx001122aabbcc"), staticSettings(s("10.0.0.1"))}}, {s("enx001122aabbcc")});
        row("name in Cyrillic", "iface сеть0 inet static\naddress 10.0.0.1\n",
            {{s("сеть0"), staticSettings(s("10.0.0.1"))}}, {s("сеть0")});
    }

    static void options()
    {
        optionRow("all four",
            "address 10.0.0.1\nnetmask 255.0.0.0\ngateway 10.0.0.2\n"
            "dns-nameservers 1.1.1.1\n",
            staticSettings(s("10.0.0.1"), s("255.0.0.0"), s("10.0.0.2"), s("1.1.1.1")));
        optionRow("all four the other way round",
            "dns-nameservers 1.1.1.1\ngateway 10.0.0.2\nnetmask 255.0.0.0\naddress 10.0.0.1\n",
            staticSettings(s("10.0.0.1"), s("255.0.0.0"), s("10.0.0.2"), s("1.1.1.1")));
        optionRow("the last of several address lines holds", "address 10.0.0.1\naddress 10.0.0.2\n",
            staticSettings(s("10.0.0.2")));
        optionRow("hardware address takes the address away",
            "address 10.0.0.1\nhwaddress ether 00:11:22:33:44:55\n", staticSettings());
        optionRow("hardware address before the address does no harm",
            "hwaddress ether 00:11:22:33:44:55\naddress 10.0.0.1\n", staticSettings(s("10.0.0.1")));
        optionRow("remark on the address takes it away", "address 10.0.0.1\n# address is leased\n",
            staticSettings());
        optionRow("address before netmask and gateway in one line",
            "gateway 10.0.0.2 netmask 255.0.0.0 address 10.0.0.1\n", staticSettings(s("10.0.0.2")));
        optionRow("netmask before gateway in one line", "gateway 10.0.0.2 netmask 255.0.0.0\n",
            staticSettings({}, s("10.0.0.2")));
        optionRow("gateway before DNS in one line", "dns-nameservers 10.0.0.2 # our gateway\n",
            staticSettings({}, {}, s("10.0.0.2")));
        optionRow("search domain that holds the word address",
            "address 10.0.0.1\ndns-search address.example\n", staticSettings());
        optionRow("route command that holds the word netmask",
            "netmask 255.255.255.0\nup route add -net 10.0.0.0 netmask 255.0.0.0 gw 10.1.1.1\n",
            staticSettings({}, s("10.0.0.0")));
        optionRow("other options are nothing",
            "broadcast 10.255.255.255\nnetwork 10.0.0.0\nmtu 1400\npointopoint 10.0.0.9\n"
            "up true\n",
            staticSettings());
        optionRow("option in capitals is none", "Address 10.0.0.1\nNETMASK 255.0.0.0\n",
            staticSettings());
        optionRow("option run together with its value", "address10.0.0.1\ngateway=10.0.0.2\n",
            staticSettings({}, {}, s("10.0.0.2")));
        optionRow("options after a blank line and a remark", "\n\n# office\naddress 10.0.0.1\n",
            staticSettings(s("10.0.0.1")));
        optionRow("tabs on both sides", "\t\taddress\t10.0.0.1\t\n\tnetmask\t255.0.0.0\t\n",
            staticSettings(s("10.0.0.1"), s("255.0.0.0")));
        optionRow(
            "one server", "\tdns-nameservers 8.8.8.8\n", staticSettings({}, {}, {}, s("8.8.8.8")));
        optionRow("two servers", "\tdns-nameservers 8.8.8.8 8.8.4.4\n",
            staticSettings({}, {}, {}, s("8.8.8.8 8.8.4.4")));
        optionRow("what stands between two servers is kept",
            " dns-nameservers  8.8.8.8 \t 8.8.4.4  \n",
            staticSettings({}, {}, {}, s("8.8.8.8 \t 8.8.4.4")));
        optionRow("servers are not checked", "dns-nameservers 2001:db8::1 none, 999\n",
            staticSettings({}, {}, {}, s("2001:db8::1 none, 999")));
        optionRow("the last of several server lines holds",
            "dns-nameservers 8.8.8.8\ndns-nameservers 8.8.4.4\n",
            staticSettings({}, {}, {}, s("8.8.4.4")));
        optionRow("servers keyword twice in a line",
            "\tdns-nameservers 1.1.1.1 dns-nameservers 2.2.2.2\n",
            staticSettings({}, {}, {}, s("1.1.1.1  2.2.2.2")));
        optionRow("no server", "dns-nameservers 8.8.8.8\ndns-nameservers\n", staticSettings());
        optionRow("servers keyword in the singular", "dns-nameserver 8.8.8.8\n", staticSettings());
        optionRow("commented-out servers count", "#dns-nameservers 8.8.8.8\n",
            staticSettings({}, {}, {}, s("# 8.8.8.8")));
    }

    static void addresses()
    {
        const auto addressRow
            = [](const char *situation, const QByteArray &value, const char *expected) {
                  optionRow(situation, "address " + value + '\n', staticSettings(s(expected)));
              };
        addressRow("with a prefix length", "192.168.0.10/24", "192.168.0.10");
        addressRow("largest", "255.255.255.255", "255.255.255.255");
        addressRow("smallest", "0.0.0.0", "0.0.0.0");
        addressRow("with leading zeros", "192.168.000.010", "192.168.000.010");
        addressRow("first octet too large", "300.1.1.1", "");
        addressRow("last octet too large", "192.168.0.256", "");
        addressRow("octet of four digits", "1921.168.0.1", "");
        addressRow("three octets", "192.168.0", "");
        addressRow("five octets: the first four", "10.0.0.1.5", "10.0.0.1");
        addressRow("two addresses: the first", "10.0.0.1 10.0.0.2", "10.0.0.1");
        addressRow("grown together with a word before it", "ip10.0.0.1", "");
        addressRow("grown together with a word after it", "10.0.0.1x", "");
        addressRow("in brackets", "[10.0.0.1]", "10.0.0.1");
        addressRow("host name", "terminal.example.org", "");
        addressRow("digits of another script", "١٠.٠.٠.١", "");
        addressRow("mapped into IPv6", "::ffff:10.0.0.1", "10.0.0.1");
        addressRow("bare dots of an empty field", "...", "");
        optionRow("netmask as a prefix length", "netmask 24\n", staticSettings());
        optionRow("netmask in hexadecimal", "netmask 0xffffff00\n", staticSettings());
        optionRow("gateway that is none", "gateway 10.0.0.1\ngateway none\n", staticSettings());
    }

    static void brokenFiles()
    {
        const QByteArray plain = "iface eth0 inet static\n\taddress 10.0.0.1\n"
                                 "\tdns-nameservers 8.8.8.8 8.8.4.4\n";
        const SettingsMap expected
            = {{s("eth0"), staticSettings(s("10.0.0.1"), {}, {}, s("8.8.8.8 8.8.4.4"))}};
        row("line ends of another system", QByteArray(plain).replace('\n', "\r\n"), expected);
        row("no final line end", plain.chopped(1), expected);
        row("carriage returns alone end no line", QByteArray(plain).replace('\n', '\r'),
            {{s("eth0"), staticSettings()}});
        row("byte order mark", "\xEF\xBB\xBF" + plain, expected);
        row("a megabyte of comments",
            QByteArray(20000, '#')
                    .replace("#", "# quite a long remark on nothing at all, once more\n")
                + plain,
            expected);
        row("a line of a megabyte", '#' + QByteArray(1 << 20, 'x') + '\n' + plain, expected);
        row("a stanza line of a megabyte",
            "iface " + QByteArray(1 << 20, ' ') + "eth0 inet static\naddress 10.0.0.1\n",
            {{s("eth0"), staticSettings(s("10.0.0.1"))}});
        row("a hundred thousand stanzas",
            QByteArray(100000, 'x').replace("x", "iface eth0 inet dhcp\n") + plain,
            {{s("eth0"), expected.value(s("eth0"))}, {dhcpKey, dhcp}});
        row("invalid UTF-8 in a remark", "# \xff\xfe\xc3\n" + plain, expected);
        row("invalid UTF-8 in a value is replaced",
            "iface eth0 inet static\n"
            "dns-nameservers 8.8.8.8\xff\n",
            {{s("eth0"), staticSettings({}, {}, {}, s("8.8.8.8\xEF\xBF\xBD"))}});
        row("UTF-8 cut off at the end", plain + "\xd0", expected);
        row("NUL bytes between the lines", QByteArray("\0\0\n", 3) + plain + QByteArray("\0", 1),
            expected);
        row("NUL byte within a keyword",
            QByteArray("iface eth0 inet static\naddr\0ess 10.0.0.1\n", 41),
            {{s("eth0"), staticSettings()}});
        row("NUL byte after a value",
            QByteArray("iface eth0 inet static\naddress 10.0.0.1\0\n", 41),
            {{s("eth0"), staticSettings(s("10.0.0.1"))}});
        QByteArray noise;
        for (int i = 0; i < (1 << 16); ++i)
            noise += static_cast<char>((i * 7919) >> 3);
        row("noise", noise, {});
    }

    QTemporaryDir m_box;
};

QTEST_GUILESS_MAIN(TestInterfacesReader)
#include "tst_interfacesreader.moc"
