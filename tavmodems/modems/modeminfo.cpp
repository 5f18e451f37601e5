#include "modeminfo.h"

#include "onelinetext.h"
#include "wholenumber.h"

#include <algorithm>

namespace {

const QString CONNECTION_NAME = QStringLiteral("connectionName");
const QString PORT_NAME = QStringLiteral("portName");
const QString BAUDRATE = QStringLiteral("baudrate");
const QString USER_NAME = QStringLiteral("userName");
const QString PASSWORD = QStringLiteral("password");
const QString PHONE = QStringLiteral("phone");
const QString PHONES = QStringLiteral("phones");
const QString INIT_LINES = QStringLiteral("initLines");
const QString DIAL_COMMAND = QStringLiteral("dialCommand");
const QString ISDN = QStringLiteral("isdn");
const QString MODEM_TYPE = QStringLiteral("modemType");
const QString NEW_PPPD = QStringLiteral("newPppd");
const QString STUPID_MODE = QStringLiteral("stupidMode");

// Takes values out of a map by name and type; after the first that is wrong it only remembers why.
class Reader
{
public:
    explicit Reader(const QVariantMap &map)
        : m_rest(map)
    {
    }

    void take(const QString &key, QString &field)
    {
        if (const auto value = takeValue(key, {QMetaType::QString}))
            field = checked(key, value->toString());
    }

    void take(const QString &key, QStringList &field)
    {
        const auto value = takeValue(key, {QMetaType::QStringList, QMetaType::QVariantList});
        if (!value)
            return;
        const QVariantList entries = value->toList();
        if (entries.size() > onelinetext::kMaxEntries)
            return fail(key, QStringLiteral("has too many entries"));
        QStringList texts;
        for (const QVariant &entry : entries) {
            if (entry.userType() != QMetaType::QString)
                return fail(key, QStringLiteral("holds something that is not a text"));
            texts << checked(key, entry.toString());
        }
        field = texts;
    }

    void take(const QString &key, int &field)
    {
        const auto value = takeValue(key);
        if (!value)
            return;
        if (const auto number = wholeNumber(*value))
            field = *number;
        else
            fail(key, QStringLiteral("is not a number in range"));
    }

    void take(const QString &key, bool &field)
    {
        if (const auto value = takeValue(key, {QMetaType::Bool}))
            field = value->toBool();
    }

    QVariantMap rest() const { return m_rest; }
    QString error() const { return m_error; }

private:
    // Any type when none is named.
    std::optional<QVariant> takeValue(const QString &key, std::initializer_list<int> types = {})
    {
        const auto it = m_rest.find(key);
        if (it == m_rest.end())
            return std::nullopt;
        const QVariant value = *it;
        m_rest.erase(it);
        const int type = value.userType();
        if (types.size() > 0 && std::find(types.begin(), types.end(), type) == types.end()) {
            fail(key, QStringLiteral("has the wrong type"));
            return std::nullopt;
        }
        return value;
    }

    QString checked(const QString &key, const QString &text)
    {
        if (text.size() > onelinetext::kMaxLength)
            fail(key, QStringLiteral("is too long"));
        else if (!onelinetext::isValid(text))
            fail(key, QStringLiteral("holds a control character"));
        return text;
    }

    void fail(const QString &key, const QString &what)
    {
        if (m_error.isEmpty())
            m_error = QStringLiteral("\"%1\" %2").arg(key, what);
    }

    QVariantMap m_rest;
    QString m_error;
};

} // namespace

void ModemInfo::setConnectionName(const QString &name)
{
    m_connectionName = onelinetext::cleaned(name);
}

void ModemInfo::setPortName(const QString &name)
{
    m_portName = onelinetext::cleaned(name);
}

void ModemInfo::setUserName(const QString &name)
{
    m_userName = onelinetext::cleaned(name);
}

void ModemInfo::setPassword(const QString &password)
{
    m_password = onelinetext::cleaned(password);
}

void ModemInfo::setPhone(const QString &phone)
{
    m_phone = onelinetext::cleaned(phone);
}

void ModemInfo::setPhones(const QStringList &phones)
{
    m_phones = onelinetext::cleaned(phones);
}

void ModemInfo::setInitLines(const QStringList &lines)
{
    m_initLines = onelinetext::cleaned(lines);
}

void ModemInfo::addInitLine(const QString &line)
{
    m_initLines << onelinetext::cleaned(line);
}

void ModemInfo::setDialCommand(const QString &command)
{
    m_dialCommand = onelinetext::cleaned(command);
}

void ModemInfo::setModemType(const QString &type)
{
    m_modemType = onelinetext::cleaned(type);
}

QVariantMap ModemInfo::toMap() const
{
    QVariantMap map = m_unknown;
    map[CONNECTION_NAME] = m_connectionName;
    map[PORT_NAME] = m_portName;
    map[BAUDRATE] = m_baudrate;
    map[USER_NAME] = m_userName;
    map[PASSWORD] = m_password;
    map[PHONE] = m_phone;
    map[PHONES] = m_phones;
    map[INIT_LINES] = m_initLines;
    map[DIAL_COMMAND] = m_dialCommand;
    map[ISDN] = m_isdn;
    map[MODEM_TYPE] = m_modemType;
    map[NEW_PPPD] = m_newPppd;
    map[STUPID_MODE] = m_stupidMode;
    return map;
}

std::optional<ModemInfo> ModemInfo::fromMap(const QVariantMap &map, QString *error)
{
    ModemInfo info;
    Reader reader(map);
    reader.take(CONNECTION_NAME, info.m_connectionName);
    reader.take(PORT_NAME, info.m_portName);
    reader.take(BAUDRATE, info.m_baudrate);
    reader.take(USER_NAME, info.m_userName);
    reader.take(PASSWORD, info.m_password);
    reader.take(PHONE, info.m_phone);
    reader.take(PHONES, info.m_phones);
    reader.take(INIT_LINES, info.m_initLines);
    reader.take(DIAL_COMMAND, info.m_dialCommand);
    reader.take(ISDN, info.m_isdn);
    reader.take(MODEM_TYPE, info.m_modemType);
    reader.take(NEW_PPPD, info.m_newPppd);
    reader.take(STUPID_MODE, info.m_stupidMode);
    if (!reader.error().isEmpty()) {
        if (error)
            *error = reader.error();
        return std::nullopt;
    }
    info.m_unknown = reader.rest();
    return info;
}

bool ModemInfo::operator==(const ModemInfo &other) const
{
    return toMap() == other.toMap();
}

QDebug operator<<(QDebug debug, const ModemInfo &info)
{
    const QDebugStateSaver saver(debug);
    QVariantMap map = info.toMap();
    if (!info.password().isEmpty())
        map[PASSWORD] = QStringLiteral("***");
    return debug.nospace() << "ModemInfo" << map;
}
