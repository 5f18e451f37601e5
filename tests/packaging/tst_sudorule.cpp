#include <QProcess>
#include <QTest>

#include <unistd.h>

namespace {

const QString kRule = QStringLiteral(SOURCE_FOLDER "/packaging/tavtestdialer.sudoers");

// In a mount namespace of its own, where /etc holds a technician, another user and the rule alone,
// and sudo's files belong to root whoever runs the test. Asks sudo whether it would run a command,
// and runs none.
const QString kAsk = QStringLiteral(R"(
set -eu
rule=$1 user=$2
shift 2
box=$(mktemp -d)
mount -t tmpfs tmpfs "$box"
rmdir_at_end() { cd /; umount -l "$box"; rmdir "$box"; }
trap rmdir_at_end EXIT
mkdir "$box/sudoers.d"
cat >"$box/passwd" <<'END'
root:x:0:0::/root:/bin/sh
technician:x:5001:5001::/:/bin/sh
other:x:5002:5002::/:/bin/sh
END
printf 'root:x:0:\ntechnician:x:5001:\nother:x:5002:\novrel:x:5003:technician\n' >"$box/group"
printf 'Defaults secure_path="/usr/sbin:/usr/bin:/sbin:/bin"\n@includedir /etc/sudoers.d\n' >"$box/sudoers"
cp "$rule" "$box/sudoers.d/tavtestdialer"
chmod 0440 "$box/sudoers" "$box/sudoers.d/tavtestdialer"
cp -r /usr/libexec/sudo "$box/libexec"
: >"$box/sudo.conf"
for file in passwd group sudoers sudoers.d sudo.conf; do mount --bind "$box/$file" "/etc/$file"; done
mount --bind "$box/libexec" /usr/libexec/sudo
status=0
/usr/bin/sudo -n -l -U "$user" "$@" || status=$?
exit $status
)");

struct Answer
{
    bool isAllowed = false;
    QByteArray command; ///< as sudo would run it
    QByteArray error;
};

/// sudo changes to users and groups, of which a namespace has more than one only by those set aside
/// for its maker (subuid(5)), or of root.
QStringList ownNamespace()
{
    QStringList options{
        QStringLiteral("--mount"), QStringLiteral("--propagation"), QStringLiteral("private")};
    if (::geteuid() != 0)
        options += {QStringLiteral("--user"), QStringLiteral("--map-root-user"),
            QStringLiteral("--map-auto")};
    return options;
}

Answer ask(const QString &user, const QStringList &command)
{
    QProcess process;
    process.start(QStringLiteral("unshare"),
        ownNamespace()
            + QStringList{QStringLiteral("sh"), QStringLiteral("-c"), kAsk, QStringLiteral("sh"),
                kRule, user}
            + command);
    Answer answer;
    if (!process.waitForStarted() || !process.waitForFinished()
        || process.exitStatus() != QProcess::NormalExit)
        answer.error = "sudo cannot be asked";
    answer.isAllowed = process.exitCode() == 0;
    answer.command = process.readAllStandardOutput().trimmed();
    answer.error += process.readAllStandardError();
    return answer;
}

const QString kTechnician = QStringLiteral("technician");

} // namespace

class SudoRuleTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const bool isPossible
            = QProcess::execute(QStringLiteral("unshare"), ownNamespace() << QStringLiteral("true"))
            == 0;
        if (!isPossible && ::geteuid() != 0)
            QSKIP("no users are set aside for this one in /etc/subuid");
        QVERIFY(isPossible);
    }

    void ruleIsWellFormed()
    {
        QProcess visudo;
        visudo.start(QStringLiteral("/usr/sbin/visudo"),
            {QStringLiteral("--check"), QStringLiteral("--strict"), QStringLiteral("--file"),
                kRule});
        QVERIFY(visudo.waitForFinished());
        QVERIFY2(visudo.exitCode() == 0, visudo.readAllStandardError().constData());
    }

    void technicianMayApplyNetworkSettings_data()
    {
        QTest::addColumn<QStringList>("command");
        QTest::addColumn<QByteArray>("run");
        for (const char *name : {"eth0", "enp3s0", "enx00e04c360a1b", "eth0.100", "br-lan", "x"})
            QTest::addRow("interface %s", name) << QStringList{QStringLiteral("ifconfig"),
                QString::fromLatin1(name),
                QStringLiteral("down")} << "/usr/sbin/ifconfig " + QByteArray(name) + " down";
        QTest::newRow("file")
            << QStringList{QStringLiteral("cp"), QStringLiteral("/run/ovrel/interfaces.tmp"),
                   QStringLiteral("/etc/network/interfaces")}
            << QByteArray("/usr/bin/cp /run/ovrel/interfaces.tmp /etc/network/interfaces");
        QTest::newRow("network") << QStringList{QStringLiteral("service"),
            QStringLiteral("networking"), QStringLiteral("restart")}
                                 << QByteArray("/usr/sbin/service networking restart");
    }
    void technicianMayApplyNetworkSettings()
    {
        QFETCH(QStringList, command);
        QFETCH(QByteArray, run);
        const Answer answer = ask(kTechnician, command);
        QCOMPARE(answer.error, QByteArray());
        QVERIFY(answer.isAllowed);
        QCOMPARE(answer.command, run);
        const Answer other = ask(QStringLiteral("other"), command);
        QCOMPARE(other.error, QByteArray());
        QVERIFY(!other.isAllowed);
    }

    void anythingElseIsRefused_data()
    {
        QTest::addColumn<QStringList>("command");
        const auto row
            = [](const char *name, const QStringList &command) { QTest::newRow(name) << command; };
        const QString ifconfig = QStringLiteral("ifconfig");
        const QString down = QStringLiteral("down");
        const QString eth0 = QStringLiteral("eth0");
        row("interface up", {ifconfig, eth0, QStringLiteral("up")});
        row("interface alone", {ifconfig, eth0});
        row("no interface", {ifconfig, down});
        row("empty interface", {ifconfig, QString(), down});
        row("address as well", {ifconfig, eth0, QStringLiteral("10.0.0.1"), down});
        row("word after down", {ifconfig, eth0, down, QStringLiteral("up")});
        row("word in the name", {ifconfig, QStringLiteral("eth0 10.0.0.1"), down});
        row("option as a name", {ifconfig, QStringLiteral("-a"), down});
        row("path as a name", {ifconfig, QStringLiteral("../eth0"), down});
        row("shell's characters", {ifconfig, QStringLiteral("eth0;id"), down});
        row("line break in the name", {ifconfig, QStringLiteral("eth0\nid"), down});
        row("name longer than the kernel's", {ifconfig, QStringLiteral("enx00e04c360a1bc"), down});
        const QString cp = QStringLiteral("cp");
        const QString source = QStringLiteral("/run/ovrel/interfaces.tmp");
        const QString target = QStringLiteral("/etc/network/interfaces");
        row("another source", {cp, QStringLiteral("/tmp/interfaces.tmp"), target});
        row("source on a roundabout way",
            {cp, QStringLiteral("/run/ovrel/../../tmp/interfaces.tmp"), target});
        row("another target", {cp, source, QStringLiteral("/etc/passwd")});
        row("the other way round", {cp, target, source});
        row("option", {cp, QStringLiteral("-a"), source, target});
        row("third file", {cp, source, QStringLiteral("/etc/shadow"), target});
        const QString service = QStringLiteral("service");
        const QString networking = QStringLiteral("networking");
        const QString restart = QStringLiteral("restart");
        row("another service", {service, QStringLiteral("ssh"), restart});
        row("another action", {service, networking, QStringLiteral("stop")});
        row("no action", {service, networking});
        row("one argument more", {service, networking, restart, restart});
        row("another program", {QStringLiteral("id")});
        row("shell", {QStringLiteral("sh")});
        row("as somebody else",
            {QStringLiteral("-u"), QStringLiteral("other"), ifconfig, eth0, down});
    }
    void anythingElseIsRefused()
    {
        QFETCH(QStringList, command);
        const Answer answer = ask(kTechnician, command);
        QVERIFY2(!answer.isAllowed, answer.command.constData());
        QCOMPARE(answer.error, QByteArray());
    }
};

QTEST_GUILESS_MAIN(SudoRuleTest)
#include "tst_sudorule.moc"
