#include "modemreset.h"
#include "scriptedmodem.h"
#include "toldtoend.h"

#include "atmodem.h"
#include "modeminfo.h"

#include <QRegularExpression>
#include <QTest>

namespace {

ModemInfo modemOn(const QString &port)
{
    ModemInfo modem;
    modem.setPortName(port);
    return modem;
}

/// What a reset tells, warnings marked.
QStringList told(const ModemInfo &modem)
{
    QStringList lines;
    QObject parent;
    ModemReset::run(modem, &parent, [&lines](QtMsgType type, const QString &text) {
        lines.append(type == QtWarningMsg ? QStringLiteral("! ") + text : text);
    });
    return lines;
}

QString gone(const ScriptedModem &modem)
{
    return QStringLiteral("! The modem on %1 has gone: its port was unplugged or hung up.")
        .arg(modem.path());
}

} // namespace

class ModemResetTest : public QObject
{
    Q_OBJECT

private slots:
    void stepsAreToldAsTheyAreMade()
    {
        ScriptedModem modem;
        modem.start();
        QStringList lines = told(modemOn(modem.path()));
        QCOMPARE(lines.size(), 6);
        QVERIFY(QRegularExpression(QStringLiteral("^Modem reseted for \\d+ ms$"))
                    .match(lines.takeAt(4))
                    .hasMatch());
        QVERIFY(lines.at(1).startsWith(QStringLiteral("Modem name is ")));
        lines.removeAt(1);
        QCOMPARE(lines,
            QStringList({QStringLiteral("Open port ") + modem.path(),
                QStringLiteral("Modem dialect is Huawei"), QStringLiteral("Start modem resetting"),
                QStringLiteral("Modem is closed")}));
        const QList<QByteArray> commands = modem.commands();
        QVERIFY(commands.indexOf("ATZ") < commands.indexOf("AT+CREG=0"));
        QCOMPARE(commands.count("ATZ"), 1);
    }

    void portThatDoesNotOpenIsToldWithTheReason()
    {
        const QStringList lines = told(modemOn(QStringLiteral("/dev/nowhere")));
        QCOMPARE(lines.size(), 2);
        QCOMPARE(lines.first(), QStringLiteral("Open port /dev/nowhere"));
        QVERIFY(lines.last().startsWith(
            QStringLiteral("The porg /dev/nowhere is not opened: There is no port")));
    }

    void modemLostInTheResetIsToldOnce()
    {
        ScriptedModem modem;
        modem.hangUpOn = "ATZ";
        modem.start();
        const QStringList lines = told(modemOn(modem.path()));
        QCOMPARE(lines.count(gone(modem)), 1);
        QCOMPARE(lines.indexOf(gone(modem)), lines.size() - 2);
        QCOMPARE(lines.last(), QStringLiteral("Modem is closed"));
    }

    void modemLostWhenItIsSilencedIsTold()
    {
        ScriptedModem modem;
        modem.hangUpOn = "AT+CREG=0";
        modem.start();
        const QStringList lines = told(modemOn(modem.path()));
        QCOMPARE(lines.count(gone(modem)), 1);
        QVERIFY(lines.at(lines.size() - 3).startsWith(QStringLiteral("Modem reseted for ")));
        QCOMPARE(lines.last(), QStringLiteral("Modem is closed"));
    }

    void endOfTheProgramBreaksItOff()
    {
        ScriptedModem modem;
        modem.start();
        const ToldToEnd toldToEnd;
        QCOMPARE(told(modemOn(modem.path())).last(),
            QStringLiteral(
                "The porg %1 is not opened: The work with the modem on %1 was broken off.")
                .arg(modem.path()));
    }

    void withoutAListenerTheModemIsResetTheSame()
    {
        ScriptedModem modem;
        modem.start();
        QObject parent;
        ModemReset::run(modemOn(modem.path()), &parent);
        QVERIFY(modem.commands().contains("ATZ"));
        QCOMPARE(parent.findChildren<AtModem *>().size(), 1);
        QTRY_VERIFY(parent.children().isEmpty());
        // The port is free again.
        AtModem next;
        QVERIFY2(next.open(modem.path(), 57600, 1), qPrintable(next.lastError()));
    }
};

QTEST_GUILESS_MAIN(ModemResetTest)
#include "tst_modemreset.moc"
