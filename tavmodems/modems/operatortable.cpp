#include "operatortable.h"

#include "atmodemlog.h"
#include "onelinetext.h"

#include <QFile>
#include <QXmlStreamReader>

const QString OperatorTable::SYSTEM_FILE
    = QStringLiteral("/usr/share/mobile-broadband-provider-info/serviceproviders.xml");

namespace {

constexpr int kMostCode = 999;

struct Provider
{
    OperatorData data;
    QList<int> networks;
    bool isPrimary = false;
    bool hasAccessPoint = false;
    bool isForInternet = false; // the access point says so itself
};

struct Entry
{
    OperatorData data;
    bool isPrimary = false;
};

int key(int mcc, int mnc)
{
    return mcc * (kMostCode + 1) + mnc;
}

// The entries of one file.
class Reader
{
public:
    explicit Reader(QIODevice *device)
        : m_xml(device)
    {
    }

    QHash<int, Entry> read()
    {
        if (m_xml.readNextStartElement() && m_xml.name() != QLatin1String("serviceproviders"))
            m_xml.raiseError(QStringLiteral("it is not a list of service providers"));
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() != QLatin1String("country")) {
                m_xml.skipCurrentElement();
                continue;
            }
            while (m_xml.readNextStartElement()) {
                if (m_xml.name() == QLatin1String("provider"))
                    readProvider();
                else
                    m_xml.skipCurrentElement();
            }
        }
        return m_entries;
    }

    QString error() const
    {
        return m_xml.hasError()
            ? QStringLiteral("line %1: %2").arg(m_xml.lineNumber()).arg(m_xml.errorString())
            : QString();
    }

private:
    QString attribute(const char *name) const
    {
        return m_xml.attributes().value(QLatin1String(name)).trimmed().toString();
    }

    QString text()
    {
        return onelinetext::cleaned(
            m_xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed());
    }

    void readProvider()
    {
        Provider provider;
        provider.isPrimary = attribute("primary") == QLatin1String("true");
        bool hasPlainName = false;
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() == QLatin1String("name")) {
                // The one without a language is the name that the operator itself goes by.
                const bool isPlain = !m_xml.attributes().hasAttribute(QLatin1String("xml:lang"));
                const QString name = text();
                if (provider.data.name().isEmpty() || (isPlain && !hasPlainName))
                    provider.data.setName(name);
                hasPlainName = hasPlainName || isPlain;
            } else if (m_xml.name() == QLatin1String("gsm")) {
                readGsm(provider);
            } else {
                m_xml.skipCurrentElement();
            }
        }
        if (m_xml.hasError()) // cut off: half a provider is none
            return;
        for (const int network : qAsConst(provider.networks)) {
            const auto known = m_entries.constFind(network);
            if (known == m_entries.constEnd() || (provider.isPrimary && !known->isPrimary))
                m_entries.insert(network, {provider.data, provider.isPrimary});
        }
    }

    void readGsm(Provider &provider)
    {
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() == QLatin1String("network-id"))
                readNetwork(provider);
            else if (m_xml.name() == QLatin1String("balance-check"))
                readBalanceCheck(provider.data);
            else if (m_xml.name() == QLatin1String("msisdn-query"))
                readNumberQuery(provider.data);
            else if (m_xml.name() == QLatin1String("apn"))
                readAccessPoint(provider);
            else
                m_xml.skipCurrentElement();
        }
    }

    void readNetwork(Provider &provider)
    {
        bool isMcc = false;
        bool isMnc = false;
        const int mcc = attribute("mcc").toInt(&isMcc);
        const int mnc = attribute("mnc").toInt(&isMnc);
        if (isMcc && isMnc && mcc > 0 && mcc <= kMostCode && mnc >= 0 && mnc <= kMostCode)
            provider.networks << key(mcc, mnc);
        else
            qCWarning(AT_MODEM) << "A network's codes are not numbers in line"
                                << m_xml.lineNumber();
        m_xml.skipCurrentElement();
    }

    void readBalanceCheck(OperatorData &into)
    {
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() == QLatin1String("ussd") && into.balancePhone().isEmpty())
                into.setBalancePhone(text());
            else
                m_xml.skipCurrentElement();
        }
    }

    // A USSD code is preferred: its answer comes at once and costs nothing.
    void readNumberQuery(OperatorData &into)
    {
        while (m_xml.readNextStartElement()) {
            const bool isUssd = m_xml.name() == QLatin1String("ussd");
            const bool isSms = m_xml.name() == QLatin1String("sms");
            if ((isUssd && (into.selfNumberPhone().isEmpty() || into.selfNumberFromSms()))
                || (isSms && into.selfNumberPhone().isEmpty())) {
                const QString message = isSms ? onelinetext::cleaned(attribute("text")) : QString();
                into.setSelfNumberPhone((text() + QLatin1Char(' ') + message).trimmed());
                into.setSelfNumberFromSms(isSms);
            } else {
                m_xml.skipCurrentElement();
            }
        }
    }

    void readAccessPoint(Provider &provider)
    {
        const QString name = attribute("value");
        QString user;
        QString password;
        bool hasUsage = false;
        bool isForInternet = false;
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() == QLatin1String("username")) {
                user = text();
            } else if (m_xml.name() == QLatin1String("password")) {
                password = text();
            } else {
                if (m_xml.name() == QLatin1String("usage")) {
                    hasUsage = true;
                    isForInternet = attribute("type") == QLatin1String("internet");
                }
                m_xml.skipCurrentElement();
            }
        }
        // One that does not say what it is for will do as long as there is no better.
        if ((hasUsage && !isForInternet) || provider.isForInternet
            || (provider.hasAccessPoint && !isForInternet))
            return;
        if (name.isEmpty() || name.contains(QLatin1Char('"')) || !onelinetext::isValid(name)) {
            qCWarning(AT_MODEM) << "An access point cannot be used, its name is" << name;
            return;
        }
        provider.hasAccessPoint = true;
        provider.isForInternet = isForInternet;
        provider.data.setModemInitLine(QStringLiteral("AT+CGDCONT=1,\"IP\",\"%1\"").arg(name));
        provider.data.setUserName(user);
        provider.data.setPassword(password);
    }

    QXmlStreamReader m_xml;
    QHash<int, Entry> m_entries;
};

void layOver(const OperatorData &upper, OperatorData &lower)
{
    if (!upper.name().isEmpty())
        lower.setName(upper.name());
    if (!upper.modemInitLine().isEmpty()) {
        lower.setModemInitLine(upper.modemInitLine());
        lower.setUserName(upper.userName());
        lower.setPassword(upper.password());
    }
    if (!upper.balancePhone().isEmpty())
        lower.setBalancePhone(upper.balancePhone());
    if (!upper.selfNumberPhone().isEmpty()) {
        lower.setSelfNumberPhone(upper.selfNumberPhone());
        lower.setSelfNumberFromSms(upper.selfNumberFromSms());
    }
}

} // namespace

bool OperatorTable::read(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qCWarning(AT_MODEM).noquote()
            << "The operators in" << path << "cannot be read:" << file.errorString();
        return false;
    }
    Reader reader(&file);
    const QHash<int, Entry> entries = reader.read();
    for (auto entry = entries.cbegin(); entry != entries.cend(); ++entry)
        layOver(entry->data, m_operators[entry.key()]);
    if (reader.error().isEmpty())
        return true;
    qCWarning(AT_MODEM).noquote() << "The operators in" << path << "end early:" << reader.error();
    return false;
}

std::optional<OperatorData> OperatorTable::find(int mcc, int mnc) const
{
    if (mcc < 0 || mcc > kMostCode || mnc < 0 || mnc > kMostCode)
        return std::nullopt;
    const auto found = m_operators.constFind(key(mcc, mnc));
    return found == m_operators.constEnd() ? std::nullopt : std::optional<OperatorData>(*found);
}
