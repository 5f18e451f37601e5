#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

// Programs that nobody here wrote work with the modems of otherclients.json: that is how we know
// that they are good ones. What each program must show is what stands in that file.

namespace {

constexpr int kQuickMs = 30000;
constexpr int kProbingMs = 120000; // ModemManager waits long for ports that say nothing

// ModemManager asks polkit about every call. In the terminal there is root alone, who may do
// everything, so that this answers for it.
class Authority : public QDBusVirtualObject
{
public:
    using QDBusVirtualObject::QDBusVirtualObject;

    QString introspect(const QString & /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        if (message.member() == QLatin1String("CheckAuthorization")) {
            QDBusArgument result; // (bba{ss}): authorized, challenge, details
            result.beginStructure();
            result << true << false;
            result.beginMap(QVariant::String, QVariant::String);
            result.endMap();
            result.endStructure();
            return connection.send(message.createReply(QVariant::fromValue(result)));
        }
        if (message.member() == QLatin1String("GetAll"))
            return connection.send(message.createReply(QVariant(QVariantMap())));
        return false;
    }
};

struct Result
{
    int exitCode = -1;
    QByteArray said; // on both outputs
};

// Runs a program to its end while the events of this one go on.
Result run(const QString &program, const QStringList &arguments, int timeoutMs = kQuickMs)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    QSignalSpy finished(&process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished));
    process.start(program, arguments);
    if (!process.waitForStarted())
        return {-1, process.errorString().toUtf8()};
    if (finished.isEmpty() && !finished.wait(timeoutMs)) {
        const QByteArray said = process.readAll();
        process.kill();
        process.waitForFinished();
        return {-1, said + "\n(no end within the time)"};
    }
    return {process.exitCode(), process.readAll()};
}

bool isInstalled(const char *program)
{
    return !QStandardPaths::findExecutable(QString::fromLatin1(program)).isEmpty();
}

QStringList texts(std::initializer_list<const char *> list)
{
    QStringList result;
    for (const char *text : list)
        result.append(QString::fromUtf8(text));
    return result;
}

} // namespace

class TestOtherClients : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qRegisterMetaType<QProcess::ExitStatus>(); } // for QSignalSpy
    void gammuAsksAModem_data();
    void gammuAsksAModem();
    void wvdialFindsAndInitialisesModems();
    void modemManagerKnowsModems();

private:
    QByteArray write(const QString &name, const QByteArray &content);

    QTemporaryDir m_directory;
};

QByteArray TestOtherClients::write(const QString &name, const QByteArray &content)
{
    QFile file(m_directory.filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size()
        ? QFile::encodeName(file.fileName())
        : QByteArray();
}

// On the ports for data: gammu waits for ever for an answer while a modem goes on saying other
// things.
void TestOtherClients::gammuAsksAModem_data()
{
    QTest::addColumn<QByteArray>("port");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("huawei") << QByteArray("ttyUSB0")
                            << texts({"Model                : E173 (E173)",
                                   "IMEI                 : 353142033840706",
                                   "SIM IMSI             : 250011234567890",
                                   ("Network              : 250 01 (MTS, Russian Federation), LAC "
                                    "1F40, CID A1B2C3"),
                                   "Service reply        : \"Balance: 150.50 r.\"",
                                   "Remote number        : \"MTS\"", "Welcome!",
                                   "Sent                 : Mon Mar  2 08:30:00 2026 +0300",
                                   "Баланс пополнен на 100 р.", "2 SMS parts in 2 SMS sequences"});
    QTest::newRow("quectel")
        << QByteArray("ttyUSB6")
        << texts({"Manufacturer         : Quectel", "IMEI                 : 861107030015432",
               ("Network              : 250 99 (Beeline, Russian Federation), "
                "LAC 5A03, CID 80D413D"),
               "Service reply        : \"Ваш баланс: 1 234,05 руб.\"",
               ("One of two: this text is too long for a single message of the "
                "default alphabet, which holds no more than a hundred and sixty "
                "characters, so that the network has cut it in two."),
               "SMS status report", "Delivery status      : Delivered", "Спасибо 👍",
               "4 SMS parts in 3 SMS sequences"});
    QTest::newRow("simcom") << QByteArray("ttyUSB7")
                            << texts({"Manufacturer         : SIMCOM_Ltd",
                                   "IMEI                 : 866104029736581",
                                   ("Network              : 250 02 (MegaFon, Russian Federation), "
                                    "LAC 2E11, CID 0D4F"),
                                   "Service reply        : \"Баланс: 73.10 р.\"",
                                   "Price: 5 € [net]"});
    QTest::newRow("zte") << QByteArray("ttyUSB10")
                         << texts({"Manufacturer         : ZTE",
                                "IMEI                 : 358921047301224",
                                ("Network              : 257 02 (MTS, Belarus), LAC 403, CID "
                                 "2A10B05"),
                                "Service reply        : \"Balans: 5.07 rub.\"",
                                "Remote number        : \"900\""});
    QTest::newRow("generic") << QByteArray("ttyUSB11")
                             << texts({"SIM IMSI             : 250011111111111",
                                    ("Network              : 250 01 (MTS, Russian Federation), LAC "
                                     "1f40, CID 00a1b2c3"),
                                    "Service reply        : \"Balance:0.99r\"",
                                    "Remote number        : \"InfoMTS\"", "Hello"});
}

void TestOtherClients::gammuAsksAModem()
{
    if (!isInstalled("gammu"))
        QSKIP("gammu is not installed");
    QFETCH(QByteArray, port);
    QFETCH(QStringList, lines);
    const QByteArray settings = write(
        QStringLiteral("gammurc"), "[gammu]\ndevice=/dev/" + port + "\nconnection=at115200\n");
    const QByteArray commands
        = write(QStringLiteral("commands"), "identify\nnetworkinfo\ngetussd *100#\ngeteachsms\n");
    const Result gammu = run(QStringLiteral("gammu"),
        {QStringLiteral("-c"), QFile::decodeName(settings), QStringLiteral("batch"),
            QFile::decodeName(commands)},
        2 * kQuickMs);
    QVERIFY2(gammu.exitCode == 0, gammu.said.constData());
    const QStringList said = QString::fromUtf8(gammu.said).split(QLatin1Char('\n'));
    for (const QString &line : qAsConst(lines))
        QVERIFY2(said.contains(line),
            qPrintable(line + QStringLiteral(" is not in:\n") + said.join(QLatin1Char('\n'))));
}

void TestOtherClients::wvdialFindsAndInitialisesModems()
{
    if (!isInstalled("wvdialconf") || !isInstalled("wvdial"))
        QSKIP("wvdial is not installed");
    qputenv("LD_BIND_NOW", "1"); // without it Debian's aborts at times on newer processors
    const QString path = m_directory.filePath(QStringLiteral("wvdial.conf"));
    const Result search = run(QStringLiteral("wvdialconf"), {path}, 2 * kQuickMs);
    QVERIFY2(search.exitCode == 0, search.said.constData());
    // Every port that takes commands, and no other.
    const QRegularExpression found(QStringLiteral("^(ttyUSB\\d+)<Info>: Speed \\d+; init"),
        QRegularExpression::MultilineOption);
    QStringList ports;
    for (auto it = found.globalMatch(QString::fromUtf8(search.said)); it.hasNext();)
        ports.append(it.next().captured(1));
    ports.sort();
    QCOMPARE(ports,
        texts({"ttyUSB0", "ttyUSB10", "ttyUSB11", "ttyUSB2", "ttyUSB5", "ttyUSB6", "ttyUSB7",
            "ttyUSB9"}));

    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QByteArray configuration = file.readAll();
    QVERIFY2(configuration.contains("\nModem = /dev/ttyUSB"), configuration.constData());
    configuration.replace("; Phone = <Target Phone Number>", "Phone = *99#");
    configuration.replace("; Username = <Your Login Name>", "Username = mts");
    configuration.replace("; Password = <Your Password>", "Password = mts");
    file.seek(0);
    file.write(configuration);
    file.close();

    QProcess dialer;
    dialer.setProcessChannelMode(QProcess::MergedChannels);
    dialer.start(QStringLiteral("wvdial"), {QStringLiteral("--config=") + path});
    QByteArray said;
    QTRY_VERIFY_WITH_TIMEOUT(
        (said += dialer.readAll(), said.contains("CONNECT 3600000")), kQuickMs);
    QVERIFY2(said.contains("--> Sending: ATQ0 V1 E1 S0=0 &C1 &D2 +FCLASS=0\nATQ0 V1 E1 S0=0 &C1 "
                           "&D2 +FCLASS=0\nOK\n"),
        said.constData());
    dialer.terminate();
    QVERIFY(dialer.waitForFinished(kQuickMs));
}

void TestOtherClients::modemManagerKnowsModems()
{
    if (!isInstalled("ModemManager") || !isInstalled("mmcli"))
        QSKIP("ModemManager is not installed");
    QDBusConnection bus = QDBusConnection::systemBus(); // the terminal's own
    Authority authority;
    QVERIFY(bus.registerVirtualObject(
        QStringLiteral("/org/freedesktop/PolicyKit1/Authority"), &authority));
    QVERIFY(bus.registerService(QStringLiteral("org.freedesktop.PolicyKit1")));

    QProcess manager;
    manager.setProcessChannelMode(QProcess::MergedChannels);
    manager.start(QStringLiteral("ModemManager"), QStringList());
    QVERIFY(manager.waitForStarted());

    // What mmcli tells, by key.
    const auto facts = [](const QString &path) {
        const Result told = run(QStringLiteral("mmcli"),
            {QStringLiteral("-m"), path, QStringLiteral("--output-keyvalue")});
        QMap<QString, QString> values;
        const QStringList lines = QString::fromUtf8(told.said).split(QLatin1Char('\n'));
        for (const QString &line : lines)
            values.insert(line.section(QLatin1Char(':'), 0, 0).trimmed(),
                line.section(QLatin1Char(':'), 1).trimmed());
        return values;
    };
    struct Expected
    {
        const char *imei;
        const char *model;
        const char *operatorCode;
        const char *operatorName;
        const char *signal; // per cent of 31
        const char *number;
    };
    const Expected modems[] = {
        {"353142033840706", "E173", "25001", "MTS RUS", "67", "+79161234567"},
        {"861107030015432", "EC25", "25099", "Beeline", "80", "+79031234567"},
    };
    const QRegularExpression modemPath(QStringLiteral("/org/freedesktop/ModemManager1/Modem/\\d+"));
    for (const Expected &modem : modems) {
        QString path;
        const auto find = [&] {
            const QString list = QString::fromUtf8(
                run(QStringLiteral("mmcli"), {QStringLiteral("--list-modems")}).said);
            for (auto it = modemPath.globalMatch(list); path.isEmpty() && it.hasNext();) {
                const QString candidate = it.next().captured();
                if (facts(candidate).value(QStringLiteral("modem.3gpp.imei"))
                    == QLatin1String(modem.imei))
                    path = candidate;
            }
            return !path.isEmpty();
        };
        QTRY_VERIFY2_WITH_TIMEOUT(find(), modem.model, kProbingMs);
        const Result enabling = run(QStringLiteral("mmcli"),
            {QStringLiteral("-m"), path, QStringLiteral("--enable")}, 2 * kQuickMs);
        QVERIFY2(enabling.exitCode == 0, enabling.said.constData());
        QTRY_COMPARE_WITH_TIMEOUT(facts(path).value(QStringLiteral("modem.generic.state")),
            QStringLiteral("registered"), kQuickMs);
        QTRY_COMPARE_WITH_TIMEOUT(
            facts(path).value(QStringLiteral("modem.generic.signal-quality.value")),
            QString::fromLatin1(modem.signal), kQuickMs);
        const QMap<QString, QString> told = facts(path);
        QCOMPARE(
            told.value(QStringLiteral("modem.generic.model")), QString::fromLatin1(modem.model));
        QCOMPARE(told.value(QStringLiteral("modem.3gpp.operator-code")),
            QString::fromLatin1(modem.operatorCode));
        QCOMPARE(told.value(QStringLiteral("modem.3gpp.operator-name")),
            QString::fromLatin1(modem.operatorName));
        QCOMPARE(told.value(QStringLiteral("modem.generic.own-numbers.value[1]")),
            QString::fromLatin1(modem.number));
    }
    manager.terminate();
    QVERIFY(manager.waitForFinished(kQuickMs));
}

QTEST_GUILESS_MAIN(TestOtherClients)

#include "tst_otherclients.moc"
