#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QNetworkInterface>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <cerrno>

// The wired network of the simulated terminal, seen by programs that are run in it.

namespace {

const QString kProgram = QStringLiteral(TERMINALSIM);

struct Outcome
{
    int status = -1;
    QString out;
    QString error;
};

Outcome run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    Outcome outcome;
    if (process.waitForStarted() && process.waitForFinished(60000)
        && process.exitStatus() == QProcess::NormalExit)
        outcome.status = process.exitCode();
    outcome.out = QString::fromUtf8(process.readAllStandardOutput());
    outcome.error = QString::fromUtf8(process.readAllStandardError());
    return outcome;
}

// A shell script in a terminal with these wired interfaces and lines of the interfaces file.
class Terminal
{
public:
    explicit Terminal(const QByteArray &ethernet, const QByteArray &interfaces = "[]",
        const QString &program = kProgram)
        : m_program(program)
    {
        QFile file(scenario());
        if (!file.open(QIODevice::WriteOnly))
            qFatal("no scenario can be written");
        file.write(R"({"ethernet": )" + ethernet + R"(, "interfaces": )" + interfaces + '}');
    }

    Outcome run(const QString &script) const { return ::run(m_program, arguments(script)); }
    QStringList arguments(const QString &script) const
    {
        return {QStringLiteral("--scenario"), scenario(), QStringLiteral("--"),
            QStringLiteral("sh"), QStringLiteral("-c"), script};
    }

private:
    QString scenario() const { return m_box.filePath(QStringLiteral("wired.json")); }

    const QTemporaryDir m_box;
    const QString m_program;
};

const QString kNames = QStringLiteral("ls /sys/class/net | sort | tr '\\n' ' '");

} // namespace

class TestWiredNetwork : public QObject
{
    Q_OBJECT

private slots:
    void thereAreAsManyInterfacesAsTheScenarioSays_data();
    void thereAreAsManyInterfacesAsTheScenarioSays();
    void nothingIsConfiguredThatTheFileDoesNotName();
    void theFileIsInForceFromTheBeginning();
    void dhcpGivesAnAddress();
    void whereNothingIsThereSoonIsNoRoute();
    void theJournalTellsWhatIfupdownSaid();
    void theMachinesInterfacesStayAsTheyAre();
    void withoutIfupdownItsServiceIsRecorded();
    void withoutNamespacesForTheNetworkCommandsAreRecorded();
};

void TestWiredNetwork::thereAreAsManyInterfacesAsTheScenarioSays_data()
{
    QTest::addColumn<QByteArray>("ethernet");
    QTest::addColumn<QString>("names");
    QTest::newRow("none") << QByteArray("[]") << "lo ";
    QTest::newRow("one") << QByteArray(R"(["eth0"])") << "eth0 lo ";
    QTest::newRow("eight") << QByteArray(R"(["a1","a2","a3","a4","a5","a6","a7","enp0s31f6"])")
                           << "a1 a2 a3 a4 a5 a6 a7 enp0s31f6 lo ";
}

void TestWiredNetwork::thereAreAsManyInterfacesAsTheScenarioSays()
{
    QFETCH(QByteArray, ethernet);
    const Outcome outcome = Terminal(ethernet).run(kNames);
    QTEST(outcome.out, "names");
    QCOMPARE(outcome.error, QString());
}

void TestWiredNetwork::nothingIsConfiguredThatTheFileDoesNotName()
{
    const Outcome outcome
        = Terminal(R"(["eth0"])").run(QStringLiteral("ip -br -4 address; ip route"));
    QVERIFY2(!outcome.out.contains(QLatin1String("192.168.")), qPrintable(outcome.out));
}

void TestWiredNetwork::theFileIsInForceFromTheBeginning()
{
    const Outcome outcome
        = Terminal(R"(["eth0", "eth1"])",
            R"(["auto lo", "iface lo inet loopback", "auto eth1", "iface eth1 inet static",
                "address 192.168.0.7/24"])")
              .run(QStringLiteral("ip -br -4 address show up; ifquery --state; sudo service "
                                  "networking restart >/dev/null; echo $?"));
    QCOMPARE(outcome.error, QString());
    QVERIFY2(QRegularExpression(QStringLiteral("\\neth1@\\w+ +\\w+ +192\\.168\\.0\\.7/24 *\\n"))
                 .match(outcome.out)
                 .hasMatch(),
        qPrintable(outcome.out));
    QVERIFY2(!outcome.out.contains(QLatin1String("eth0")), qPrintable(outcome.out));
    QVERIFY2(outcome.out.endsWith(QLatin1String("eth1=eth1\nlo=lo\n0\n")), qPrintable(outcome.out));
}

void TestWiredNetwork::dhcpGivesAnAddress()
{
    const Outcome outcome
        = Terminal(R"(["eth0"])", R"(["auto eth0", "iface eth0 inet dhcp"])")
              .run(QStringLiteral("ip -br -4 address show eth0; ip route; cat /etc/resolv.conf"));
    QVERIFY2(QRegularExpression(QStringLiteral("^eth0@\\w+ +\\w+ +192\\.168\\.0\\.1\\d\\d/24 "))
                 .match(outcome.out)
                 .hasMatch(),
        qPrintable(outcome.out));
    QVERIFY(outcome.out.contains(QLatin1String("default via 192.168.0.1 dev eth0")));
    QVERIFY(outcome.out.contains(QLatin1String("nameserver 192.168.0.1\n")));
}

// Not a time-out: who tries the Internet by cable is told at once.
void TestWiredNetwork::whereNothingIsThereSoonIsNoRoute()
{
    const Outcome outcome
        = Terminal(R"(["eth0"])",
            R"(["auto eth0", "iface eth0 inet static", "address 192.168.0.7/24",
                "gateway 192.168.0.1"])")
              .run(QStringLiteral("python3 -c 'import socket\n"
                                  "for host in \"192.168.0.1\", \"203.0.113.1\":\n"
                                  "    end = socket.socket()\n"
                                  "    end.settimeout(20)\n"
                                  "    print(end.connect_ex((host, 9)))\n'"));
    QCOMPARE(outcome.out, QStringLiteral("%1\n%2\n").arg(ECONNREFUSED).arg(EHOSTUNREACH));
}

void TestWiredNetwork::theJournalTellsWhatIfupdownSaid()
{
    const Outcome outcome
        = Terminal(
            R"(["eth0"])", R"(["auto eth0", "iface eth0 inet static", "address 300.1.1.1/24"])")
              .run(QStringLiteral("busctl call org.ovrel.TerminalSim /org/ovrel/TerminalSim "
                                  "org.ovrel.TerminalSim1 journal"));
    QVERIFY2(outcome.out.contains(QLatin1String("networking: ifup: failed to bring up eth0")),
        qPrintable(outcome.out));
}

void TestWiredNetwork::theMachinesInterfacesStayAsTheyAre()
{
    const auto state = [] {
        QString all;
        QDebug(&all) << QNetworkInterface::allInterfaces();
        return all;
    };
    const QString before = state();
    const Outcome outcome
        = Terminal(R"(["eth0"])", R"(["auto eth0", "iface eth0 inet dhcp"])")
              .run(QStringLiteral("for i in eth0 ens0 enp0s3; do sudo ifconfig $i down; done; "
                                  "sudo service networking restart"));
    QCOMPARE(outcome.status, 0);
    QCOMPARE(state(), before);
}

void TestWiredNetwork::withoutIfupdownItsServiceIsRecorded()
{
    if (QFile::exists(QStringLiteral("/sbin/ifup")))
        QSKIP("this machine has ifupdown");
    // Beside a copy of the program nothing is unpacked.
    const QTemporaryDir box;
    const QDir programs = QFileInfo(kProgram).dir();
    for (const QString &name : {QStringLiteral("terminalsim"), QStringLiteral("tavbusd")})
        QVERIFY(QFile::copy(programs.filePath(name), box.filePath(name)));
    const Outcome outcome
        = Terminal(R"(["eth0"])", "[]", box.filePath(QStringLiteral("terminalsim")))
              .run(QStringLiteral("sudo service networking restart; "
                                  "sudo ifconfig eth0 192.168.0.3; ip -br -4 address show eth0; "
                                  "cat /run/terminal/commands"));
    QCOMPARE(outcome.status, 0);
    QVERIFY2(outcome.error.startsWith(QLatin1String("terminalsim: there is no ifupdown, ")),
        qPrintable(outcome.error));
    QVERIFY2(outcome.error.endsWith(QLatin1String("; only recorded: service\n")),
        qPrintable(outcome.error));
    const QString recorded = QStringLiteral("recorded: service networking restart\n");
    QVERIFY2(outcome.out.startsWith(recorded), qPrintable(outcome.out));
    QVERIFY2(outcome.out.endsWith(recorded), qPrintable(outcome.out));
    QVERIFY2(outcome.out.contains(QLatin1String("192.168.0.3/24")), qPrintable(outcome.out));
}

void TestWiredNetwork::withoutNamespacesForTheNetworkCommandsAreRecorded()
{
    // In a user namespace of its own a limit can be set: one for the terminal, none for its cables.
    const Terminal terminal(R"(["eth0"])");
    const Outcome outcome = run(QStringLiteral("unshare"),
        QStringList{QStringLiteral("-Ur"), QStringLiteral("sh"), QStringLiteral("-c"),
            QStringLiteral("echo 1 >/proc/sys/user/max_net_namespaces; exec \"$0\" \"$@\""),
            kProgram}
            + terminal.arguments(
                QStringLiteral("sudo ifconfig eth0 down && sudo service networking restart && "
                               "cat /run/terminal/commands")));
    QCOMPARE(outcome.status, 0);
    QVERIFY2(outcome.error.startsWith(QLatin1String("terminalsim: ip netns add lan: ")),
        qPrintable(outcome.error));
    QVERIFY2(outcome.error.endsWith(QLatin1String("; only recorded: ifconfig, service\n")),
        qPrintable(outcome.error));
    const QString recorded
        = QStringLiteral("recorded: ifconfig eth0 down\nrecorded: service networking restart\n");
    QCOMPARE(outcome.out, recorded + recorded);
}

QTEST_GUILESS_MAIN(TestWiredNetwork)

#include "tst_wirednetwork.moc"
