#include "busprobe.h"

#include <QTemporaryDir>
#include <QTest>

#include <cstddef>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

using namespace tavbus;
using namespace std::chrono_literals;

namespace {

// Says one word to the one who asks, as a bus says "OK".
class Listener
{
    Q_DISABLE_COPY_MOVE(Listener)

public:
    // A name that begins with NUL is an abstract one.
    explicit Listener(const QByteArray &name)
        : m_descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un to{};
        to.sun_family = AF_UNIX;
        std::memcpy(to.sun_path, name.constData(), size_t(name.size()));
        const auto length = socklen_t(offsetof(sockaddr_un, sun_path) + size_t(name.size()));
        if (::bind(m_descriptor, reinterpret_cast<sockaddr *>(&to), length) != 0
            || ::listen(m_descriptor, 1) != 0)
            qFatal("cannot listen");
        m_thread = std::thread([this] {
            const int caller = ::accept(m_descriptor, nullptr, nullptr);
            if (caller < 0)
                return;
            // Who hangs up before all is said is not heard.
            char byte = 0;
            while (::recv(caller, &byte, 1, 0) == 1 && byte != '\n') { }
            ::send(caller, "OK\r\n", 4, MSG_NOSIGNAL);
            ::close(caller);
        });
    }
    ~Listener()
    {
        ::shutdown(m_descriptor, SHUT_RDWR); // ends the waiting
        m_thread.join();
        ::close(m_descriptor);
    }

private:
    const int m_descriptor;
    std::thread m_thread;
};

} // namespace

/// By which addresses a bus is found; buses that are there but do not answer are frozenbustest's.
class BusProbeTest : public QObject
{
    Q_OBJECT

private slots:
    void busIsFoundByItsAddress_data();
    void busIsFoundByItsAddress();
    void nothingAnswers_data();
    void nothingAnswers();

private:
    QTemporaryDir m_directory;
};

void BusProbeTest::busIsFoundByItsAddress_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("address");

    const QByteArray folder = m_directory.path().toLocal8Bit();
    const QString path = QStringLiteral("unix:path=") + m_directory.path();
    QTest::newRow("path") << folder + "/socket" << path + QStringLiteral("/socket");
    QTest::newRow("path with escapes") << folder + "/a b,c" << path + QStringLiteral("/a%20b%2cc");
    QTest::newRow("path and more")
        << folder + "/known" << path + QStringLiteral("/known,guid=0123456789abcdef");
    // Abstract names are the whole machine's.
    const QByteArray abstractName = "tavbus-busprobetest-" + QByteArray::number(::getpid());
    QTest::newRow("abstract") << '\0'
            + abstractName << QStringLiteral("unix:abstract=") + QString::fromLatin1(abstractName);
    QTest::newRow("the session's in the run-time directory")
        << folder + "/bus" << QStringLiteral("unix:runtime=yes");
}

void BusProbeTest::busIsFoundByItsAddress()
{
    QFETCH(const QByteArray, name);
    QFETCH(const QString, address);
    const QByteArray former = qgetenv("XDG_RUNTIME_DIR");
    qputenv("XDG_RUNTIME_DIR", m_directory.path().toLocal8Bit());
    {
        const Listener bus(name);
        QVERIFY(busAnswers(address, QDeadlineTimer(30s)));
    }
    QVERIFY(!busAnswers(address, QDeadlineTimer(30s))); // gone
    qputenv("XDG_RUNTIME_DIR", former);
}

void BusProbeTest::nothingAnswers_data()
{
    QTest::addColumn<QString>("address");

    QTest::newRow("no such path") << QStringLiteral("unix:path=/nowhere/socket");
    QTest::newRow("no such abstract name") << QStringLiteral("unix:abstract=tavbus-nowhere");
    QTest::newRow("no value") << QStringLiteral("unix:path=");
    QTest::newRow("no keys") << QStringLiteral("unix:");
    QTest::newRow("keys that are not known") << QStringLiteral("unix:tmpdir=/tmp");
    QTest::newRow("path longer than a socket's may be")
        << QStringLiteral("unix:path=/") + QString(200, QLatin1Char('a'));
}

void BusProbeTest::nothingAnswers()
{
    QFETCH(const QString, address);
    QVERIFY(!busAnswers(address, QDeadlineTimer(30s)));
}

QTEST_APPLESS_MAIN(BusProbeTest)
#include "busprobetest.moc"
