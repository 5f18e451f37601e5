#include "testmodemscfg.h"

#include "dircreator.h"
#include "initconfig.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMutexLocker>
#include <QSettings>
#include <QTemporaryFile>

#include <optional>

const QString TestModemsCfg::CONNECTION_PREFIX = QStringLiteral("Dialer ");
const QString TestModemsCfg::PORT = QStringLiteral("Modem");
const QString TestModemsCfg::PHONE = QStringLiteral("Phone");
const QString TestModemsCfg::INIT_LINE = QStringLiteral("Init");
const QString TestModemsCfg::BAUDRATE = QStringLiteral("Baud");
const QString TestModemsCfg::USERNAME = QStringLiteral("Username");
const QString TestModemsCfg::PASSWORD = QStringLiteral("Password");
const QString TestModemsCfg::DIAL_COMMAND = QStringLiteral("Dial Command");
const QString TestModemsCfg::NEW_PPPD = QStringLiteral("New PPPD");
const QString TestModemsCfg::STUPID_MODE = QStringLiteral("Stupid Mode");
const QString TestModemsCfg::ISDN = QStringLiteral("ISDN");
const QString TestModemsCfg::MODEM_TYPE = QStringLiteral("Modem Type");

QString TestModemsCfg::_configPath;
QString TestModemsCfg::_activeModemName;
QMutex TestModemsCfg::_configMutex;
QMutex TestModemsCfg::_pathMutex;

namespace {

constexpr QFile::Permissions kForTheGroup = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup
    | QFile::WriteGroup | QFile::ReadOther;

constexpr int kMaxNumbered = 9; // "Phone1" to "Phone9", "Init1" to "Init9"

const QString kResetLine = QStringLiteral("ATZ");

QString numbered(const QString &key, int number)
{
    return key + QString::number(number);
}

// Records come from the bus: a line break in a field must not start another line of the dialer's
// file, where a "PPPD Path" names a program that is run.
QString oneLine(QString text)
{
    text.remove(QLatin1Char('\r')).remove(QLatin1Char('\n')).remove(QChar(QChar::Null));
    return text;
}

// QFile tells the reason only of a write that takes nothing at all.
bool writeAll(QFile &file, const QByteArray &bytes)
{
    for (qint64 written = 0; written < bytes.size();) {
        const qint64 count = file.write(bytes.constData() + written, bytes.size() - written);
        if (count <= 0)
            return false;
        written += count;
    }
    return true;
}

class SectionWriter
{
public:
    void begin(const QString &name)
    {
        addLine(QStringLiteral("[%1%2]").arg(TestModemsCfg::CONNECTION_PREFIX, name));
    }
    void add(const QString &key, const QString &value)
    {
        addLine(QStringLiteral("%1=%2").arg(key, value));
    }
    void add(const QString &key, int value) { add(key, QString::number(value)); }
    void addNumbered(const QString &key, const QStringList &values)
    {
        for (int i = 0; i < qMin(values.size(), kMaxNumbered); ++i)
            add(numbered(key, i + 1), values.at(i));
    }
    void end() { addLine(QString()); }
    QByteArray text() const { return m_text; }

private:
    void addLine(const QString &line) { m_text += oneLine(line).toUtf8() + '\n'; }

    QByteArray m_text;
};

void writeSection(SectionWriter &out, const ModemInfo &modem)
{
    const QString port = modem.portName();
    const QString devices = QStringLiteral("/dev/");
    QStringList initLines = modem.initLines();
    if (!initLines.contains(kResetLine))
        initLines.prepend(kResetLine);

    out.begin(modem.connectionName());
    out.add(TestModemsCfg::PORT, port.contains(devices) ? port : devices + port);
    out.add(TestModemsCfg::PHONE, modem.phone());
    out.addNumbered(TestModemsCfg::PHONE, modem.phones());
    out.addNumbered(TestModemsCfg::INIT_LINE, initLines);
    out.add(TestModemsCfg::BAUDRATE, modem.baudrate());
    if (!modem.userName().isEmpty())
        out.add(TestModemsCfg::USERNAME, modem.userName());
    if (!modem.password().isEmpty())
        out.add(TestModemsCfg::PASSWORD, modem.password());
    out.add(TestModemsCfg::DIAL_COMMAND, modem.dialCommand());
    // The dialer reads its switches as numbers.
    out.add(TestModemsCfg::NEW_PPPD, modem.newPppd() ? 1 : 0);
    out.add(TestModemsCfg::STUPID_MODE, modem.stupidMode() ? 1 : 0);
    out.add(TestModemsCfg::ISDN, modem.isdn());
    out.add(TestModemsCfg::MODEM_TYPE, modem.modemType());
    out.end();
}

struct Section
{
    QString name;
    QByteArray body; // the lines up to the next header
};

// Cut at the header lines, as the dialer does it. QSettings reads a name otherwise than it is
// written here (one ends at a "]" or ";", a backslash or "%" stands for something else), and takes
// a key for a section when there is a slash in it.
QList<Section> sections(const QByteArray &text)
{
    QList<Section> result;
    const QList<QByteArray> lines = text.split('\n');
    for (const QByteArray &line : lines) {
        const QByteArray trimmed = line.trimmed();
        if (trimmed.startsWith('[')) {
            const int end = trimmed.endsWith(']') ? trimmed.size() - 1 : trimmed.indexOf(']');
            const QByteArray name = end < 0 ? trimmed.mid(1) : trimmed.mid(1, end - 1);
            result.append({QString::fromUtf8(name.trimmed()), {}});
        } else if (!result.isEmpty()) {
            result.last().body += line + '\n';
        }
    }
    return result;
}

// The values are read by the rules of QSettings, from a file that holds nothing but this section.
std::optional<ModemInfo> readSection(const QByteArray &body, const QString &connection)
{
    QTemporaryFile file;
    if (!file.open() || file.write(body) != body.size() || !file.flush()) {
        // Half a record could be dialled with.
        qWarning().noquote() << "The dialer's file cannot be read:" << file.errorString();
        return std::nullopt;
    }
    QSettings section(file.fileName(), QSettings::IniFormat);
    section.setIniCodec("UTF-8");
    const auto text = [&section](const QString &key, const QString &fallback = QString()) {
        return section.value(key, fallback).toString();
    };
    ModemInfo modem;
    modem.setConnectionName(connection);
    modem.setPortName(text(TestModemsCfg::PORT, modem.portName()));
    modem.setPhone(text(TestModemsCfg::PHONE, modem.phone()));
    QStringList phones;
    for (int i = 1; i <= kMaxNumbered; ++i) {
        const QString phone = text(numbered(TestModemsCfg::PHONE, i));
        if (phone.isEmpty())
            break;
        phones.append(phone);
    }
    modem.setPhones(phones);
    QStringList initLines;
    for (int i = 1; i <= kMaxNumbered; ++i) {
        const QString line = text(numbered(TestModemsCfg::INIT_LINE, i));
        if (line.isEmpty())
            break;
        if (line != kResetLine)
            initLines.append(line);
    }
    modem.setInitLines(initLines);
    modem.setBaudrate(section.value(TestModemsCfg::BAUDRATE, modem.baudrate()).toInt());
    modem.setUserName(text(TestModemsCfg::USERNAME, modem.userName()));
    modem.setPassword(text(TestModemsCfg::PASSWORD, modem.password()));
    modem.setDialCommand(text(TestModemsCfg::DIAL_COMMAND, modem.dialCommand()));
    modem.setNewPppd(section.value(TestModemsCfg::NEW_PPPD, modem.newPppd()).toBool());
    modem.setStupidMode(section.value(TestModemsCfg::STUPID_MODE, modem.stupidMode()).toBool());
    modem.setIsdn(section.value(TestModemsCfg::ISDN, modem.isdn()).toInt());
    modem.setModemType(text(TestModemsCfg::MODEM_TYPE, modem.modemType()));
    return modem;
}

} // namespace

TestModemsCfg::TestModemsCfg()
{
    setConfigPath();
}

void TestModemsCfg::setConfigPath()
{
    const QMutexLocker locker(&_pathMutex);
    if (!_configPath.isEmpty())
        return;
    const QString directory = QStringLiteral("%1/modems").arg(InitConfig().workDir());
    DirCreator::checkAndCreate(directory, DirCreator::DEFAULT_ALL);
    _configPath = QDir::toNativeSeparators(directory + QStringLiteral("/testmodems.cfg"));
}

QString TestModemsCfg::configPath()
{
    const QMutexLocker locker(&_pathMutex);
    return _configPath;
}

bool TestModemsCfg::hasConfig()
{
    return QFileInfo::exists(_configPath);
}

QString TestModemsCfg::activeModemName()
{
    const QMutexLocker locker(&_pathMutex);
    return _activeModemName;
}

void TestModemsCfg::setActiveModemName(const QString &name)
{
    const QMutexLocker locker(&_pathMutex);
    _activeModemName = name;
    QFile::setPermissions(_configPath, kForTheGroup);
}

void TestModemsCfg::setModems(const QMap<QString, ModemInfo> &modems)
{
    SectionWriter out;
    for (const ModemInfo &modem : modems) {
        if (!modem.connectionName().isEmpty())
            writeSection(out, modem);
    }

    QFile file(configPath());
    const QMutexLocker locker(&_configMutex);
    m_lastError.clear();
    // Unbuffered: what the disk did not take would stand in the way of emptying the file below.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
        m_lastError = file.errorString();
        return;
    }
    // The next one to dial may be another user. Of another user's file this changes nothing.
    file.setPermissions(kForTheGroup);
    if (!writeAll(file, out.text())) {
        m_lastError = file.errorString();
        // Half a record could be dialled with.
        file.resize(0);
    }
}

QMap<QString, ModemInfo> TestModemsCfg::modems() const
{
    QFile file(configPath());
    QMap<QString, ModemInfo> modems;
    const QMutexLocker locker(&_configMutex);
    // A device could be read without end.
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly))
        return modems;
    const QList<Section> all = sections(file.readAll());
    for (const Section &section : all) {
        if (!section.name.startsWith(CONNECTION_PREFIX))
            continue;
        const QString connection = section.name.mid(CONNECTION_PREFIX.size());
        if (const auto modem = readSection(section.body, connection))
            modems.insert(connection, *modem);
    }
    return modems;
}
