#include "testmodemscfg.h"

#include "dircreator.h"
#include "initconfig.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMutexLocker>
#include <QSettings>
#include <QThread>

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

constexpr int maxNumbered = 9; // "Phone1" to "Phone9", "Init1" to "Init9"
constexpr qint64 clockTick = 20; // ms; the coarsest tick of a kernel's file time stamps is 10 ms

const QString resetLine = QStringLiteral("ATZ");

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
        for (int i = 0; i < qMin(values.size(), maxNumbered); ++i)
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
    if (!initLines.contains(resetLine))
        initLines.prepend(resetLine);

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

// The sections of the file. Not childGroups(), which ends a name at its first slash.
QStringList sections(const QSettings &settings)
{
    QStringList groups;
    const QStringList keys = settings.allKeys();
    for (const QString &key : keys)
        groups.append(key.left(key.lastIndexOf(QLatin1Char('/'))));
    groups.removeDuplicates();
    return groups;
}

// QSettings takes the bytes of a section's name for Latin-1 and knows no codec for it.
QString sectionName(const QString &group)
{
    return QString::fromUtf8(group.toLatin1());
}

ModemInfo readSection(const QSettings &section, const QString &connection)
{
    const auto text = [&section](const QString &key, const QString &fallback = QString()) {
        return section.value(key, fallback).toString();
    };
    ModemInfo modem;
    modem.setConnectionName(connection);
    modem.setPortName(text(TestModemsCfg::PORT, modem.portName()));
    modem.setPhone(text(TestModemsCfg::PHONE, modem.phone()));
    QStringList phones;
    for (int i = 1; i <= maxNumbered; ++i) {
        const QString phone = text(numbered(TestModemsCfg::PHONE, i));
        if (phone.isEmpty())
            break;
        phones.append(phone);
    }
    modem.setPhones(phones);
    QStringList initLines;
    for (int i = 1; i <= maxNumbered; ++i) {
        const QString line = text(numbered(TestModemsCfg::INIT_LINE, i));
        if (line.isEmpty())
            break;
        if (line != resetLine)
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

// QSettings keeps what it has read of a file for as long as its size and time stamp stay the same,
// and time stamps advance in ticks. A file is therefore read only once the tick in which it was
// written is over: whatever is written later then bears another stamp.
void waitOutClockTick(const QString &path)
{
    const qint64 age = QFileInfo(path).lastModified().msecsTo(QDateTime::currentDateTimeUtc());
    if (age >= 0 && age < clockTick)
        QThread::msleep(static_cast<unsigned long>(clockTick - age));
}

} // namespace

TestModemsCfg::TestModemsCfg()
{
    setConfigPath();
    const QString path = configPath();
    const QMutexLocker locker(&_configMutex);
    waitOutClockTick(path);
    m_settings = QSharedPointer<QSettings>::create(path, QSettings::NativeFormat);
    m_settings->setIniCodec("UTF-8");
}

TestModemsCfg::~TestModemsCfg() = default;

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
    QFile::setPermissions(_configPath,
        QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::WriteGroup
            | QFile::ReadOther);
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
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        m_lastError = file.errorString();
        return;
    }
    if (file.write(out.text()) != out.text().size() || !file.flush()) {
        m_lastError = file.errorString();
        // Half a record could be dialled with.
        file.resize(0);
    }
}

QMap<QString, ModemInfo> TestModemsCfg::modems() const
{
    const QString path = configPath();
    const QMutexLocker locker(&_configMutex);
    waitOutClockTick(path);
    m_settings->sync();
    QMap<QString, ModemInfo> modems;
    const QStringList groups = sections(*m_settings);
    for (const QString &group : groups) {
        const QString name = sectionName(group);
        if (!name.startsWith(CONNECTION_PREFIX))
            continue;
        const QString connection = name.mid(CONNECTION_PREFIX.size());
        m_settings->beginGroup(group);
        modems.insert(connection, readSection(*m_settings, connection));
        m_settings->endGroup();
    }
    return modems;
}
