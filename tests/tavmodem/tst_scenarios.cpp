#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

/** Each scenario of the simulated terminal is what its name says: the program tells so. */
class TestScenarios : public QObject
{
    Q_OBJECT

private slots:
    void modemIsAsItsScenarioSays_data();
    void modemIsAsItsScenarioSays();
    void listHasEveryModemOnce_data();
    void listHasEveryModemOnce();
    void infoTellsOfRoaming();
    void fiftyMessagesAreRead();

private:
    struct Ended
    {
        int status = -1;
        QByteArray out;
        QByteArray error;
    };

    Ended run(const QString &scenario, const QStringList &arguments) const;

    const QTemporaryDir m_directory;
};

namespace {

constexpr int kLongest = 60000; // ms

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '));
}

QJsonObject scenarioOf(const QString &name)
{
    QFile file(QStringLiteral(SCENARIOS "/%1.json").arg(name));
    if (!file.open(QFile::ReadOnly))
        qFatal("no scenario %s", qPrintable(name));
    return QJsonDocument::fromJson(file.readAll()).object();
}

} // namespace

// In a copy of the scenario whose modem service leaves the ports alone.
TestScenarios::Ended TestScenarios::run(const QString &scenario, const QStringList &arguments) const
{
    Ended ended;
    QFile copy(m_directory.filePath(scenario + QStringLiteral(".json")));
    if (!copy.open(QFile::WriteOnly))
        return ended;
    QJsonObject terminal = scenarioOf(scenario);
    terminal[QStringLiteral("services")] = QJsonObject{
        {QStringLiteral("tavmodems"), QJsonObject{{QStringLiteral("holdsPorts"), false}}}};
    copy.write(QJsonDocument(terminal).toJson());
    copy.close();

    QProcess process;
    process.start(QStringLiteral(TERMINALSIM),
        QStringList{QStringLiteral("--scenario"), copy.fileName(), QStringLiteral("--"),
            QStringLiteral(TAVMODEM), QStringLiteral("--json")}
            + arguments);
    if (process.waitForFinished(kLongest) && process.exitStatus() == QProcess::NormalExit)
        ended.status = process.exitCode();
    ended.out = process.readAllStandardOutput().trimmed();
    ended.error = process.readAllStandardError().trimmed();
    return ended;
}

void TestScenarios::modemIsAsItsScenarioSays_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("said"); // the JSON, or else the error
    const auto row = [](const char *scenario, const char *command, int status, const char *said) {
        QTest::addRow("%s: %s", scenario, command)
            << QString::fromLatin1(scenario) << words(command) << status << QByteArray(said);
    };
    row("no-sim", "balance", 1, "tavmodem: There is no SIM card in the modem.");
    row("pin-wanted", "balance", 1, "tavmodem: The SIM card asks for its PIN.");
    row("not-registered", "cells", 1, "tavmodem: The modem is in no network.");
    row("roaming", "cells", 0, R"({"cid":"2A10B05","lac":"0403","mcc":257,"mnc":2})");
    row("foreign-operator", "balance", 0, R"({"answer":"Баланс 42 грн.","balance":42})");
    row("unknown-operator", "balance", 1,
        "tavmodem: Nothing is known of the operator of network 250 77.");
    row("empty-balance", "balance", 1,
        "tavmodem: The USSD request came to nothing: the answer is empty.");
}

void TestScenarios::modemIsAsItsScenarioSays()
{
    QFETCH(QString, scenario);
    QFETCH(QStringList, command);
    QFETCH(int, status);
    QFETCH(QByteArray, said);
    const Ended ended = run(scenario, command);
    QCOMPARE(status == 0 ? ended.out : ended.error, said);
    QCOMPARE(ended.status, status);
}

void TestScenarios::listHasEveryModemOnce_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<int>("modems");
    QTest::newRow("several modems") << QStringLiteral("several-modems") << 4;
    QTest::newRow("one modem with three ports") << QStringLiteral("three-ports") << 1;
}

void TestScenarios::listHasEveryModemOnce()
{
    QFETCH(QString, scenario);
    const Ended ended = run(scenario, {QStringLiteral("list")});
    QVERIFY2(ended.status == 0, ended.error.constData());
    QTEST(QJsonDocument::fromJson(ended.out).array().size(), "modems");
}

void TestScenarios::infoTellsOfRoaming()
{
    const Ended ended = run(QStringLiteral("roaming"), words("--port ttyUSB0 info"));
    QVERIFY2(ended.status == 0, ended.error.constData());
    const QJsonObject facts = QJsonDocument::fromJson(ended.out).object();
    QCOMPARE(facts.value(QStringLiteral("registration")).toString(), QStringLiteral("roaming"));
}

// Parts are joined; a status report and a broken one are no messages to read, and cost none.
void TestScenarios::fiftyMessagesAreRead()
{
    const auto written = [](const QJsonValue &message) {
        return QStringLiteral("%1 %2: %3")
            .arg(message[QLatin1String("time")].toString(),
                message[QLatin1String("sender")].toString(),
                message[QLatin1String("text")].toString());
    };
    QStringList expected;
    QString octets; // of the one that is no text: its time and sender
    const QString name = QStringLiteral("fifty-sms");
    const QJsonValue modem = scenarioOf(name)[QLatin1String("modems")].toArray().first();
    const QJsonArray stored = modem[QLatin1String("sim")][QLatin1String("sms")].toArray();
    for (const QJsonValue &message : stored) {
        if (message[QLatin1String("text")].isString())
            expected << written(message);
        else if (message[QLatin1String("data")].isString())
            octets = written(message);
    }
    QVERIFY(expected.size() > 40 && !octets.isEmpty());
    const Ended ended = run(name, {QStringLiteral("sms")});
    QVERIFY2(ended.status == 0, ended.error.constData());
    QStringList read;
    int others = 0;
    const QJsonArray told = QJsonDocument::fromJson(ended.out).array();
    for (const QJsonValue &message : told) {
        if (written(message).startsWith(octets))
            ++others;
        else
            read << written(message);
    }
    QCOMPARE(others, 1);
    expected.sort();
    read.sort();
    QCOMPARE(read, expected);
}

QTEST_GUILESS_MAIN(TestScenarios)

#include "tst_scenarios.moc"
