#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <unistd.h>

namespace {

struct Outcome
{
    int status = -1;
    QByteArray out;
    QByteArray error;
};

const QString kProgram = QStringLiteral(TERMINALSIM);

Outcome finish(QProcess &process)
{
    Outcome outcome;
    if (process.waitForStarted() && process.waitForFinished(30000)
        && process.exitStatus() == QProcess::NormalExit)
        outcome.status = process.exitCode();
    outcome.out = process.readAllStandardOutput();
    outcome.error = process.readAllStandardError();
    return outcome;
}

Outcome run(const QStringList &arguments)
{
    QProcess process;
    process.start(kProgram, arguments);
    return finish(process);
}

// As an ordinary user, also where the tests run as root.
Outcome runAsUser(const QStringList &arguments)
{
    if (geteuid() != 0)
        return run(arguments);
    // The tree may lie where only its owner may go (/root): the user gets copies, laid out alike.
    const QTemporaryDir box(QStringLiteral("/tmp/terminalsim.XXXXXX"));
    QFile::setPermissions(box.path(), QFile::Permissions(0x7755));
    // A build that counts what it reaches (libgcov) writes its counts where only its owner may.
    const QTemporaryDir counts(QStringLiteral("/tmp/terminalsim.XXXXXX"));
    QFile::setPermissions(counts.path(), QFile::Permissions(0x7777));
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("GCOV_PREFIX"), counts.path());
    const QDir programs(box.filePath(QStringLiteral("build/bin")));
    programs.mkpath(QStringLiteral("."));
    const QDir own = QFileInfo(kProgram).dir();
    for (const QString &name : {QStringLiteral("terminalsim"), QStringLiteral("tavbusd")})
        QFile::copy(own.filePath(name), programs.filePath(name));
    QProcess::execute(QStringLiteral("cp"),
        {QStringLiteral("-r"), own.filePath(QStringLiteral("../../ifupdown")), box.path()});
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(QStringLiteral("/"));
    process.start(QStringLiteral("setpriv"),
        QStringList{QStringLiteral("--reuid=65534"), QStringLiteral("--regid=65534"),
            QStringLiteral("--clear-groups"), programs.filePath(QStringLiteral("terminalsim"))}
            + arguments);
    return finish(process);
}

QStringList shell(const QString &script)
{
    return {QStringLiteral("--"), QStringLiteral("sh"), QStringLiteral("-c"), script};
}

// Processes on the machine whose command line holds the text.
int processesWith(const QByteArray &text)
{
    int count = 0;
    const QStringList pids
        = QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")}, QDir::Dirs);
    for (const QString &pid : pids) {
        QFile commandLine(QStringLiteral("/proc/%1/cmdline").arg(pid));
        if (commandLine.open(QIODevice::ReadOnly) && commandLine.readAll().contains(text))
            ++count;
    }
    return count;
}

QByteArray hashOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly)
        ? QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256)
        : QByteArray();
}

int freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

} // namespace

class TestTerminalSim : public QObject
{
    Q_OBJECT

private slots:
    void exitStatusIsThePrograms_data();
    void exitStatusIsThePrograms();
    void badCallIsRefused_data();
    void badCallIsRefused();
    void standardChannelsAreThePrograms();
    void ordinaryUserGetsTheSameTerminal();
    void machineIsOutOfSight();
    void machinesFilesStayAsTheyAre();
    void machineMayBeATerminalItself();
    void orphansAreReaped();
    void signalsArePassedOn();
    void nothingIsLeftWhenKilled();
    void nothingIsLeftWhenTheProgramLeavesChildren();
    void privateHomeVanishes();
    void portIsPublished();
    void portInUseIsTold();
    void withoutNamespacesItSaysWhatToDo();
    void sudoJustRuns();
    void languageStandsInTheConfiguration_data();
    void languageStandsInTheConfiguration();
    void modemShowsWhatItsProfileSays();
    void helpIsNoError();
};

void TestTerminalSim::exitStatusIsThePrograms_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::newRow("success") << shell(QStringLiteral("true")) << 0;
    QTest::newRow("its own") << shell(QStringLiteral("exit 7")) << 7;
    QTest::newRow("killed") << shell(QStringLiteral("kill -9 $$")) << 128 + SIGKILL;
    QTest::newRow("terminated") << shell(QStringLiteral("kill -15 $$")) << 128 + SIGTERM;
    QTest::newRow("crashed") << shell(QStringLiteral("kill -ABRT $$")) << 128 + SIGABRT;
    QTest::newRow("not there") << QStringList{QStringLiteral("--"), QStringLiteral("/no/such")}
                               << 127;
    QTest::newRow("not to be run")
        << QStringList{QStringLiteral("--"), QStringLiteral("/etc/passwd")} << 126;
    QTest::newRow("options are the program's")
        << QStringList{QStringLiteral("sh"), QStringLiteral("-c"), QStringLiteral("exit 3")} << 3;
}

void TestTerminalSim::exitStatusIsThePrograms()
{
    QFETCH(QStringList, arguments);
    const Outcome outcome = run(arguments);
    QTEST(outcome.status, "status");
    QCOMPARE(
        outcome.error.contains("terminalsim: "), outcome.status == 126 || outcome.status == 127);
}

void TestTerminalSim::badCallIsRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("error");
    const QString ran = QStringLiteral("touch /tmp/never");
    QTest::newRow("nothing to run") << QStringList() << QByteArray("terminalsim: usage: ");
    QTest::newRow("unknown option") << QStringList(QStringLiteral("--scenery")) + shell(ran)
                                    << QByteArray("terminalsim: Unknown option 'scenery'");
    QTest::newRow("no such file") << QStringList{QStringLiteral("--scenario"),
                                         QStringLiteral("/no/such.json")}
            + shell(ran) << QByteArray("terminalsim: cannot read /no/such.json: ");
    QTest::newRow("no such name") << QStringList{QStringLiteral("--scenario"),
                                         QStringLiteral("nowhere")}
            + shell(ran) << QByteArray("terminalsim: there is no \"nowhere\"; there are: ");
    QTest::newRow("no such locale")
        << QStringList{QStringLiteral("--locale"), QStringLiteral("xx_XX")} + shell(ran)
        << QByteArray("terminalsim: there is no locale xx_XX");
    QTest::newRow("port no number")
        << QStringList{QStringLiteral("--publish"), QStringLiteral("vnc")} + shell(ran)
        << QByteArray("terminalsim: cannot listen on port vnc");
}

void TestTerminalSim::badCallIsRefused()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, error);
    const Outcome outcome = run(arguments);
    QCOMPARE(outcome.status, 125);
    QVERIFY2(outcome.error.startsWith(error), outcome.error.constData());
    QVERIFY(!QFile::exists(QStringLiteral("/tmp/never")));
}

void TestTerminalSim::standardChannelsAreThePrograms()
{
    QProcess process;
    process.start(kProgram, shell(QStringLiteral("cat; echo oops >&2")));
    QVERIFY(process.waitForStarted());
    process.write("hello\n");
    process.closeWriteChannel();
    const Outcome outcome = finish(process);
    QCOMPARE(outcome.out, QByteArray("hello\n"));
    QCOMPARE(outcome.error, QByteArray("oops\n"));
}

void TestTerminalSim::ordinaryUserGetsTheSameTerminal()
{
    const QStringList script = shell(QStringLiteral(
        "id -u; cd /dev && echo ttyUSB*; test -x /usr/sbin/pppd && echo pppd runs; "
        "cat /etc/ppp/pap-secrets; ls /sys/class/tty; ls /sys/class/net; "
        "touch /etc/network/interfaces /etc/ppp/x /run/lock/x /var/lib/ovrel/x /var/log/ovrel/x && "
        "echo all to be written"));
    const Outcome root = run(script);
    QCOMPARE(root.status, 0);
    QVERIFY2(root.out.startsWith("0\nttyUSB0 ttyUSB1 ttyUSB2 ttyUSB3\npppd runs\n"),
        root.out.constData());
    QVERIFY2(root.out.endsWith("all to be written\n"), root.out.constData());
    const Outcome user = runAsUser(script);
    QCOMPARE(user.status, 0);
    QCOMPARE(user.out, root.out);
    QCOMPARE(user.error, QByteArray());
}

void TestTerminalSim::machineIsOutOfSight()
{
    const Outcome outcome = run(shell(QStringLiteral("ps -A -o comm=; ip -o link | cut -d: -f2")));
    const QList<QByteArray> lines = outcome.out.simplified().split(' ');
    for (const QByteArray &line : lines)
        QVERIFY2((QList<QByteArray>{"terminalsim", "dbus-daemon", "tavbusd", "sh", "ps", "cut",
                      "ip", "lo", "eth0@if2", "eth1@if3", "busybox", "dhclient"})
                     .contains(line),
            line.constData());
    QVERIFY(lines.contains("tavbusd"));
    QVERIFY(lines.contains("eth0@if2"));
}

void TestTerminalSim::machinesFilesStayAsTheyAre()
{
    const QStringList files{QStringLiteral("/etc/ppp/pap-secrets"),
        QStringLiteral("/etc/ppp/chap-secrets"), QStringLiteral("/etc/hosts"),
        QStringLiteral("/etc/network/interfaces"), QStringLiteral("/etc/passwd")};
    QList<QByteArray> before;
    for (const QString &file : files)
        before.append(hashOf(file));
    // Other tests lock pseudo-terminals there meanwhile: of those the list is without.
    const auto lockFiles = [] {
        return QDir(QStringLiteral("/run/lock"))
            .entryList()
            .filter(QRegularExpression(QStringLiteral("^(?!LCK\\.\\.(pts_)?[0-9]+$|LTMP\\.)")));
    };
    const QStringList locks = lockFiles();
    // As root of the machine, whom nothing but the terminal itself would stop.
    const Outcome outcome = run(shell(QStringLiteral(
        "for f in /etc/ppp/pap-secrets /etc/ppp/chap-secrets /etc/hosts /etc/network/interfaces "
        "/etc/passwd; do echo changed >>$f || exit 1; done; "
        "rm /etc/hosts; touch /run/lock/LCK..ttyUSB9; mkdir /var/lib/ovrel/x; "
        "touch /etc/init.d/tavx /etc/default/tavx /sbin/tavx || exit 3; "
        "touch /etc/alternatives/x 2>/dev/null && exit 2; exit 0")));
    QCOMPARE(outcome.status, 0);
    for (const char *directory : {"/etc/init.d", "/etc/default", "/sbin"})
        QVERIFY(!QFile::exists(QLatin1String(directory) + QStringLiteral("/tavx")));
    for (int i = 0; i < files.size(); ++i)
        QVERIFY2(hashOf(files.at(i)) == before.at(i), qPrintable(files.at(i)));
    QCOMPARE(lockFiles(), locks);
}

// Where the tool is installed, or was ever started by root.
void TestTerminalSim::machineMayBeATerminalItself()
{
    QProcess process;
    process.start(QStringLiteral("unshare"),
        {QStringLiteral("-Urm"), QStringLiteral("sh"), QStringLiteral("-c"),
            QStringLiteral("set -e; mount -t tmpfs tmpfs /var/lib; mount -t tmpfs tmpfs /var/log; "
                           "mkdir -p /var/lib/ovrel/tavbus /var/log/ovrel; "
                           "echo own >/var/lib/ovrel/own; "
                           "%1 -- sh -c 'test ! -e /var/lib/ovrel/own && "
                           "echo simulated >/var/lib/ovrel/new && echo wrote >/var/log/ovrel/new'; "
                           "ls -R /var/lib/ovrel")
                .arg(kProgram)});
    const Outcome outcome = finish(process);
    QVERIFY2(outcome.status == 0, outcome.error.constData());
    QCOMPARE(outcome.out, QByteArray("/var/lib/ovrel:\nown\ntavbus\n\n/var/lib/ovrel/tavbus:\n"));
}

void TestTerminalSim::orphansAreReaped()
{
    const Outcome outcome = run(
        shell(QStringLiteral("(sh -c 'exit 0' &); sleep 0.3; ps -A -o stat= | grep -c Z; exit 0")));
    QCOMPARE(outcome.out, QByteArray("0\n"));
}

void TestTerminalSim::signalsArePassedOn()
{
    QProcess process;
    process.start(kProgram,
        shell(QStringLiteral("trap 'echo told; exit 9' TERM; echo ready; "
                             "while :; do sleep 0.05; done")));
    QVERIFY(process.waitForReadyRead());
    process.terminate();
    const Outcome outcome = finish(process);
    QCOMPARE(outcome.status, 9);
    QCOMPARE(outcome.out, QByteArray("ready\ntold\n"));
}

void TestTerminalSim::nothingIsLeftWhenKilled()
{
    const QByteArray mark = "mark" + QByteArray::number(QCoreApplication::applicationPid());
    QProcess process;
    process.start(kProgram,
        shell(
            QStringLiteral("echo ready; : %1; sleep 1000 & wait").arg(QString::fromLatin1(mark))));
    QVERIFY(process.waitForReadyRead());
    QVERIFY(processesWith(mark) >= 3);
    process.kill();
    QVERIFY(process.waitForFinished());
    QTRY_COMPARE(processesWith(mark), 0);
}

void TestTerminalSim::nothingIsLeftWhenTheProgramLeavesChildren()
{
    const QByteArray mark = "left" + QByteArray::number(QCoreApplication::applicationPid());
    const Outcome outcome
        = run(shell(QStringLiteral("setsid sh -c ': %1; sleep 1000' >/dev/null 2>&1 </dev/null & "
                                   "sleep 0.2; exit 4")
                        .arg(QString::fromLatin1(mark))));
    QCOMPARE(outcome.status, 4);
    QTRY_COMPARE(processesWith(mark), 0);
}

void TestTerminalSim::privateHomeVanishes()
{
    const Outcome outcome = run(shell(QStringLiteral(
        "touch $HOME/x $TMPDIR/x $XDG_RUNTIME_DIR/x && echo $HOME $TMPDIR $XDG_RUNTIME_DIR")));
    QCOMPARE(outcome.status, 0);
    const QList<QByteArray> directories = outcome.out.trimmed().split(' ');
    QCOMPARE(directories.size(), 3);
    for (const QByteArray &directory : directories)
        QVERIFY2(!QFile::exists(QFile::decodeName(directory) + QStringLiteral("/x")),
            directory.constData());
}

void TestTerminalSim::portIsPublished()
{
    const QString port = QString::number(freePort());
    QProcess process;
    // Whoever connects outside talks to the server inside.
    process.start(kProgram,
        QStringList{QStringLiteral("--publish"), port}
            + shell(QStringLiteral("exec python3 -c \"import socket\n"
                                   "s=socket.create_server(('127.0.0.1',%1))\n"
                                   "print('ready',flush=True)\n"
                                   "c=s.accept()[0]\n"
                                   "c.sendall(b'you said '+c.recv(100))\n"
                                   "c.recv(1)\"") // until the other side has gone
                        .arg(port)));
    QVERIFY2(process.waitForReadyRead(), process.readAllStandardError().constData());
    QTcpSocket socket;
    socket.connectToHost(QHostAddress(QHostAddress::LocalHost), port.toUShort());
    QVERIFY(socket.waitForConnected());
    socket.write("hello");
    const QByteArray answer("you said hello");
    while (socket.bytesAvailable() < answer.size())
        QVERIFY(socket.waitForReadyRead());
    QCOMPARE(socket.readAll(), answer);
    socket.disconnectFromHost();
    QCOMPARE(finish(process).status, 0);
}

void TestTerminalSim::portInUseIsTold()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    const QString port = QString::number(server.serverPort());
    const Outcome outcome
        = run(QStringList{QStringLiteral("--publish"), port} + shell(QStringLiteral("true")));
    QCOMPARE(outcome.status, 125);
    QCOMPARE(outcome.error,
        QStringLiteral("terminalsim: cannot listen on port %1\n").arg(port).toLatin1());
}

void TestTerminalSim::withoutNamespacesItSaysWhatToDo()
{
    // In a user namespace of its own a limit can be set that forbids any further one.
    QProcess process;
    process.start(QStringLiteral("unshare"),
        {QStringLiteral("-Ur"), QStringLiteral("sh"), QStringLiteral("-c"),
            QStringLiteral("echo 0 >/proc/sys/user/max_user_namespaces; exec %1 -- true")
                .arg(kProgram)});
    const Outcome outcome = finish(process);
    QCOMPARE(outcome.status, 125);
    QVERIFY2(outcome.error.startsWith("terminalsim: no namespaces for the simulated terminal: "),
        outcome.error.constData());
    QVERIFY2(outcome.error.contains("user.max_user_namespaces"), outcome.error.constData());
    QVERIFY2(outcome.error.contains("--privileged"), outcome.error.constData());
}

void TestTerminalSim::sudoJustRuns()
{
    const Outcome outcome
        = run(shell(QStringLiteral("sudo -n -u root echo 'a  b' && sudo -- sh -c 'exit 5'")));
    QCOMPARE(outcome.status, 5);
    QCOMPARE(outcome.out, QByteArray("a  b\n"));
}

// Read as files, by a program that has nothing of the environment it was started in.
void TestTerminalSim::languageStandsInTheConfiguration_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("name");
    QTest::newRow("the environment's") << QStringList() << QString();
    QTest::newRow("chosen") << QStringList{QStringLiteral("--locale"), QStringLiteral("kk_KZ")}
                            << QStringLiteral("kk_KZ");
}

void TestTerminalSim::languageStandsInTheConfiguration()
{
    QFETCH(QStringList, options);
    QFETCH(QString, name);
    const Outcome outcome = run(options
        + QStringList{QStringLiteral("--"), QStringLiteral("cat"),
            QStringLiteral("/etc/ovrel/terminalV4.conf")});
    QCOMPARE(outcome.status, 0);
    QTemporaryDir box;
    QFile file(box.filePath(QStringLiteral("terminalV4.conf")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(outcome.out), qint64(outcome.out.size()));
    file.close();
    const QSettings configuration(file.fileName(), QSettings::IniFormat);
    QCOMPARE(configuration.value(QStringLiteral("locale/name")).toString(), name);
    const QDir translations(configuration.value(QStringLiteral("paths/translations")).toString());
    QVERIFY(translations.isAbsolute());
    QVERIFY(translations.exists(QStringLiteral("tavtestdealer_kk.qm")));
}

void TestTerminalSim::modemShowsWhatItsProfileSays()
{
    const QTemporaryDir directory;
    const auto write = [&directory](const QString &name, const QByteArray &text) {
        QFile file(directory.filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
    };
    QVERIFY(write(QStringLiteral("profile.json"),
        R"({"source": "this test", "ports": ["control", "data"],
            "usb": {"vendorId": "0bad", "productId": "cafe", "vendor": "Modems, Sons & Co.",
                    "product": "3G  \"Stick\"", "driver": "cdc_acm",
                    "properties": {"ID_MM_DEVICE_IGNORE": "1", "ID_MM_CANDIDATE": "0",
                                   "ID_NOTE": "two, three = four"}}})"));
    QVERIFY(write(QStringLiteral("scenario.json"),
        R"({"modems": [{"name": "gsm1", "imei": "350000000000006", "profile": ")"
            + QFile::encodeName(directory.filePath(QStringLiteral("profile.json"))) + "\"}]}"));
    const Outcome outcome = run(QStringList{QStringLiteral("--scenario"),
                                    directory.filePath(QStringLiteral("scenario.json"))}
        + shell(QStringLiteral(
            "exec env -i /bin/sh -c 'cd /sys/class/tty/ttyUSB1/device && "
            "readlink driver && cat ../../manufacturer && echo && cat ../../product && echo && "
            "cat ../../serial && echo && cat tty/ttyUSB1/uevent'")));
    QCOMPARE(outcome.error, QByteArray());
    const QList<QByteArray> lines = outcome.out.split('\n');
    QCOMPARE(lines.mid(0, 4),
        QList<QByteArray>({"/sys/bus/usb-serial/drivers/cdc_acm", "Modems, Sons & Co.",
            "3G  \"Stick\"", "350000000000006"}));
    for (const char *property : {"DEVNAME=ttyUSB1", "ID_VENDOR=Modems__Sons___Co.",
             "ID_MODEL=3G___Stick_", "ID_USB_INTERFACE_NUM=01", "ID_MM_DEVICE_IGNORE=1",
             "ID_MM_CANDIDATE=0", "ID_NOTE=two, three = four"})
        QVERIFY2(lines.contains(property), property);
    QVERIFY(!lines.contains("ID_MM_CANDIDATE=1"));
}

void TestTerminalSim::helpIsNoError()
{
    const Outcome outcome = run({QStringLiteral("--help")});
    QCOMPARE(outcome.status, 0);
    QVERIFY(outcome.out.startsWith("terminalsim [--scenario FILE]"));
}

QTEST_GUILESS_MAIN(TestTerminalSim)

#include "tst_terminalsim.moc"
