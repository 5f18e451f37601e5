#include "privatebus.h"
#include "records.h"
#include "tavbusqueryhandler.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRandomGenerator>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <memory>
#include <vector>

#include <unistd.h>

using namespace tavbus;

namespace {

constexpr int kKills = 200;
constexpr int kSaves = 0; // that must have been taken in the end, beside the kills
constexpr int kWriters = 4;
constexpr int kOwnersOfWriter = 8;
constexpr int kLongestLife = 40; // ms that a broker is let live
constexpr int kLargestPayload = 20000; // bytes: some saves take several pages
constexpr int kPatienceMs = 30000;

/// A number of the test; TAV_DURABILITY_KILLS and TAV_DURABILITY_SAVES have others for long runs.
int option(const char *name, int usual)
{
    bool isNumber = false;
    const int number = qEnvironmentVariableIntValue(name, &isNumber);
    return isNumber ? number : usual;
}

const QString CHECKS = QStringLiteral("/checks"); // a line for each of the brokers' looks

std::atomic<int> brokersKilled{0};
std::atomic<int> savesAcknowledged{0};

/// Saves ever higher numbers under owners of its own, and sees after each death of a broker and
/// each failed call that the next broker still has every number that was ever taken.
class Writer
{
    Q_DISABLE_COPY_MOVE(Writer)

public:
    Writer(int id, quint32 seed)
        : m_random(seed)
    {
        for (int i = 0; i < kOwnersOfWriter; ++i)
            m_owners.append(QStringLiteral("writer%1-%2").arg(id).arg(i));
        m_thread.reset(QThread::create([this] { run(); }));
        m_thread->start();
    }
    ~Writer() { stop(); }

    void stop()
    {
        m_stopped = true;
        m_thread->wait();
    }

    bool isSaving() const { return m_saving; }

    // To be asked once it has stopped.
    int failed() const { return m_failed; }
    QStringList losses() const { return m_losses; }
    QStringList owners() const { return m_owners; }

private:
    void run()
    {
        TavBusQueryHandler handler(QStringLiteral("writer"));
        if (!handler.open())
            m_losses.append(QStringLiteral("cannot open"));
        int deathsSeen = 0;
        while (!m_stopped) {
            if (brokersKilled != deathsSeen) {
                deathsSeen = brokersKilled;
                compare(handler);
            }
            const QString owner = m_owners.at(m_random.bounded(kOwnersOfWriter));
            const int number = ++m_tried[owner];
            const QByteArray payload(m_random.bounded(kLargestPayload), 'x');
            m_saving = true;
            const bool saved = handler.saveSettings(records::settings(owner, {number, payload}));
            m_saving = false;
            if (saved) {
                m_taken[owner] = number;
                ++savesAcknowledged;
            } else {
                ++m_failed;
                compare(handler);
            }
        }
        compare(handler);
    }

    void compare(TavBusQueryHandler &handler)
    {
        QList<ClientSettings> list;
        QDeadlineTimer deadline(kPatienceMs);
        while (!handler.loadSettings(m_owners, list)) {
            if (!m_stopped) { // on a busy machine one broker after the other dies too young
                deadline.setRemainingTime(kPatienceMs);
            } else if (deadline.hasExpired()) {
                m_losses.append(QStringLiteral("the broker does not come back"));
                return;
            }
        }
        QHash<QString, int> kept;
        for (const ClientSettings &settings : qAsConst(list))
            kept.insert(settings.owner(), settings.settings().value(0).toInt());
        for (const QString &owner : qAsConst(m_owners)) {
            const int number = kept.value(owner);
            if (number < m_taken.value(owner) || number > m_tried.value(owner))
                m_losses.append(QStringLiteral("%1: %2 was taken, %3 is kept, %4 was tried")
                                    .arg(owner)
                                    .arg(m_taken.value(owner))
                                    .arg(number)
                                    .arg(m_tried.value(owner)));
        }
    }

    QRandomGenerator m_random;
    QStringList m_owners;
    QHash<QString, int> m_tried; // highest number, by owner
    QHash<QString, int> m_taken; // highest one that was acknowledged
    int m_failed = 0;
    QStringList m_losses;
    std::atomic<bool> m_stopped{false};
    std::atomic<bool> m_saving{false};
    std::unique_ptr<QThread> m_thread;
};

QStringList integrity(const QString &file)
{
    QStringList answers;
    {
        auto database
            = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("integrity"));
        database.setDatabaseName(file);
        database.open();
        QSqlQuery query(QStringLiteral("PRAGMA integrity_check"), database);
        while (query.next())
            answers.append(query.value(0).toString());
    }
    QSqlDatabase::removeDatabase(QStringLiteral("integrity"));
    return answers;
}

// Every broker of the test: looks at what the one before has left, in a copy so as not to mend
// anything, and notes it; then it becomes the real one.
int checkAndServe(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QByteArray address = qgetenv("DBUS_STARTER_ADDRESS");
    const QString directory = QFileInfo(QString::fromLocal8Bit(address)
                                            .section(QLatin1String("path="), 1)
                                            .section(QLatin1Char(','), 0, 0))
                                  .path();
    const QString database = directory + QStringLiteral("/tavbus.db");
    if (QFile::exists(database)) {
        const QTemporaryDir copies;
        const QString copy = copies.filePath(QStringLiteral("copy.db"));
        const QString log = QStringLiteral("-wal");
        QFile::copy(database, copy);
        QFile::copy(database + log, copy + log);
        QFile checks(directory + CHECKS);
        if (!checks.open(QIODevice::Append))
            qFatal("cannot note what the check has found");
        checks.write(integrity(copy).join(QLatin1Char(' ')).toUtf8() + '\n');
    }
    const QByteArray file = QFile::encodeName(database);
    ::execl(TAVBUSD, TAVBUSD, "--address", address.constData(), "--database", file.constData(),
        static_cast<char *>(nullptr));
    return 1;
}

} // namespace

class DurabilityTest : public QObject
{
    Q_OBJECT

private slots:
    void noAcknowledgedSaveIsLostWhenTheBrokerIsKilled();
};

void DurabilityTest::noAcknowledgedSaveIsLostWhenTheBrokerIsKilled()
{
    PrivateBus::Options options;
    options.brokerCommand = QCoreApplication::applicationFilePath() + QStringLiteral(" --broker");
    const PrivateBus bus(options);
    const quint32 seed = QRandomGenerator::global()->generate();
    QRandomGenerator random(seed);
    std::vector<std::unique_ptr<Writer>> writers;
    writers.reserve(kWriters);
    for (int i = 0; i < kWriters; ++i)
        writers.push_back(std::make_unique<Writer>(i, random.generate()));

    const int kills = option("TAV_DURABILITY_KILLS", kKills);
    const int saves = option("TAV_DURABILITY_SAVES", kSaves);
    int hits = 0; // brokers that died with a save under way
    while (brokersKilled < kills || savesAcknowledged < saves) {
        const qint64 broker = bus.startBroker();
        QVERIFY(broker > 0);
        if (brokersKilled % 2 == 0) { // the others may die before they have taken anything
            const int before = savesAcknowledged;
            QTRY_VERIFY_WITH_TIMEOUT(savesAcknowledged > before, kPatienceMs);
        }
        QThread::msleep(random.bounded(kLongestLife));
        hits += std::any_of(writers.cbegin(), writers.cend(),
            [](const std::unique_ptr<Writer> &writer) { return writer->isSaving(); });
        bus.killBroker();
        ++brokersKilled;
    }

    int failed = 0;
    QStringList losses;
    for (const auto &writer : writers) {
        writer->stop();
        failed += writer->failed();
        losses += writer->losses();
    }
    qInfo("seed %u: %d kills, %d in the middle of a save, %d saves acknowledged, %d calls failed,"
          " %lld lost",
        seed, int(brokersKilled), hits, int(savesAcknowledged), failed, qlonglong(losses.size()));
    QVERIFY2(losses.isEmpty(), qPrintable(losses.join(QLatin1Char('\n'))));
    QVERIFY(hits > brokersKilled / 4); // the load was hit
    QFile checks(bus.directory() + CHECKS);
    QVERIFY(checks.open(QIODevice::ReadOnly));
    const QList<QByteArray> results = checks.readAll().trimmed().split('\n');
    QVERIFY(results.size() >= brokersKilled - 1); // the first found no file
    QCOMPARE(results.count("ok"), results.size());
    bus.endBroker();
    QCOMPARE(integrity(bus.databaseFile()), QStringList(QStringLiteral("ok")));
    QCOMPARE(QDir(bus.directory()).entryList({QStringLiteral("*damaged*")}), QStringList());
}

int main(int argc, char *argv[])
{
    if (argc > 1 && qstrcmp(argv[1], "--broker") == 0)
        return checkAndServe(argc, argv);
    QCoreApplication application(argc, argv);
    qputenv("QTEST_FUNCTION_TIMEOUT", "3600000");
    DurabilityTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "durabilitytest.moc"
