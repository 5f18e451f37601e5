#include "fuzzinput.h"

#include <QCoreApplication>
#include <QDBusObjectPath>
#include <QDBusSignature>
#include <QDBusVariant>
#include <QFile>
#include <QLoggingCategory>
#include <QStringList>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr int kMostDepth = 40; // more than anything takes that comes from outside

// What is logged of bad input would drown the fuzzer's own output.
void tellOnlyTheLast(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", qUtf8Printable(message));
}

} // namespace

// Called by libFuzzer before the first execution.
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    // Never destroyed, and with it what Qt keeps for the thread, or that would count as leaked.
    static const auto *const application = new QCoreApplication(*argc, *argv);
    Q_UNUSED(application)
    qInstallMessageHandler(tellOnlyTheLast);
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    qputenv("TAV_TERMINAL_CONF",
        fuzzFile(QStringLiteral("terminal.conf"),
            "[paths]\nworkDir=" + QFile::encodeName(fuzzDirectory())
                + "\nversions=" + QFile::encodeName(fuzzDirectory()) + '\n')
            .toLocal8Bit());
    return 0;
}

QByteArray FuzzInput::line()
{
    const int end = m_bytes.indexOf('\n', m_at);
    QByteArray found = end < 0 ? m_bytes.mid(m_at) : m_bytes.mid(m_at, end - m_at);
    m_at = end < 0 ? m_bytes.size() : end + 1;
    return found;
}

QString FuzzInput::text()
{
    const QByteArray bytes = line();
    if (!bytes.startsWith('='))
        return QString::fromUtf8(bytes);
    const QByteArray octets = QByteArray::fromHex(bytes.mid(1));
    QString wide;
    for (int i = 0; i + 1 < octets.size(); i += 2)
        wide += QChar(
            static_cast<unsigned char>(octets.at(i + 1)), static_cast<unsigned char>(octets.at(i)));
    return wide;
}

QByteArray FuzzInput::rest()
{
    QByteArray found = m_bytes.mid(m_at);
    m_at = m_bytes.size();
    return found;
}

QList<QByteArray> FuzzInput::lines()
{
    QList<QByteArray> all;
    while (!isAtEnd())
        all += line();
    return all;
}

bool FuzzInput::takesEnd()
{
    if (isAtEnd())
        return true;
    if (m_bytes.at(m_at) != 'e')
        return false;
    line();
    return true;
}

QVariant FuzzInput::variant(int depth)
{
    const char type = static_cast<char>(octet());
    const QString value = text();
    switch (type) {
    case 'l': {
        QVariantList list;
        while (depth < kMostDepth && !takesEnd())
            list.append(variant(depth + 1));
        return list;
    }
    case 'm': {
        QVariantMap map;
        while (depth < kMostDepth && !takesEnd()) {
            const QString key = text();
            map.insert(key, variant(depth + 1));
        }
        return map;
    }
    case 's':
        return value;
    case 'S':
        return value.split(QLatin1Char(','));
    case 'i':
        return value.toInt();
    case 'u':
        return value.toUInt();
    case 'x':
        return value.toLongLong();
    case 't':
        return value.toULongLong();
    case 'd':
        return value.toDouble();
    case 'b':
        return !value.isEmpty();
    case 'y':
        return value.toUtf8();
    case 'o':
        return QVariant::fromValue(QDBusObjectPath(value));
    case 'g':
        return QVariant::fromValue(QDBusSignature(value));
    case 'v':
        return depth < kMostDepth ? QVariant::fromValue(QDBusVariant(variant(depth + 1)))
                                  : QVariant();
    case 'c':
        return value.isEmpty() ? QVariant() : QVariant(value.at(0)); // a type of Qt's alone
    default:
        return {};
    }
}

void readOrWrite(FuzzInput &input, void (*read)(FuzzInput &), void (*write)(FuzzInput &))
{
    const bool isWritten = input.choice(2) == 1;
    input.line();
    (isWritten ? write : read)(input);
}

void require(bool condition, const char *what)
{
    if (condition)
        return;
    std::fprintf(stderr, "Not so: %s\n", what);
    std::abort();
}

QString fuzzDirectory()
{
    static const QTemporaryDir directory;
    require(directory.isValid(), "there is a directory to work in");
    return directory.path();
}

QString fuzzFile(const QString &name, const QByteArray &bytes)
{
    QString path = fuzzDirectory() + QLatin1Char('/') + name;
    QFile file(path);
    require(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)
            && file.write(bytes) == bytes.size(),
        "a file for the input can be written");
    return path;
}
