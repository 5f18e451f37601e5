#include "smslisting.h"

#include "atfields.h"

#include <algorithm>

namespace {

struct Heading
{
    int index = -1;
    int state = -1;
    int length = -1;
};

std::optional<int> number(const QByteArray &field)
{
    bool ok = false;
    const int value = atfields::unquoted(field).toInt(&ok);
    return ok && value >= 0 ? std::optional<int>(value) : std::nullopt;
}

// False when the line is not one of PDU mode.
bool readHeading(const QByteArray &name, const QByteArray &value, Heading &into)
{
    QList<QByteArray> fields = atfields::split(value);
    const auto length = number(fields.takeLast());
    into.length = length.value_or(-1);
    bool ok = length.has_value();
    const auto take = [&fields, &ok] {
        const auto field = fields.isEmpty() ? std::nullopt : number(fields.takeFirst());
        ok = ok && field;
        return field.value_or(-1);
    };
    if (name == "+CMGL")
        into.index = take();
    if (name == "+CMGL" || name == "+CMGR")
        into.state = take();
    return ok;
}

bool isHex(const QByteArray &line)
{
    return !line.isEmpty() && std::all_of(line.begin(), line.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
    });
}

class Reader
{
public:
    void begin(const QByteArray &name, const QByteArray &value)
    {
        end();
        m_heading = Heading();
        m_isOpen = readHeading(name, value, m_heading);
        if (!m_isOpen)
            fail(QStringLiteral("it is not listed in PDU mode"));
    }
    void line(const QByteArray &text)
    {
        if (!m_isOpen || !isHex(text))
            return;
        m_isOpen = false;
        if (text.size() % 2 != 0)
            return fail(QStringLiteral("it ends within an octet"));
        QString error;
        const auto pdu = decodeSmsPdu(QByteArray::fromHex(text), m_heading.length, &error);
        if (pdu)
            listing.messages << StoredSms{m_heading.index, m_heading.state, *pdu};
        else
            fail(error);
    }
    void end()
    {
        if (m_isOpen)
            fail(QStringLiteral("its PDU is missing"));
        m_isOpen = false;
    }

    SmsListing listing;

private:
    void fail(const QString &error) { listing.broken << BrokenSms{m_heading.index, error}; }

    Heading m_heading;
    bool m_isOpen = false; // the PDU is still to come
};

} // namespace

SmsListing parseSmsListing(const QByteArray &name, const QList<QByteArray> &lines)
{
    Reader reader;
    for (const QByteArray &line : lines) {
        const auto value = atfields::valueOf(name, {line});
        if (value)
            reader.begin(name, *value);
        else
            reader.line(line);
    }
    reader.end();
    return reader.listing;
}
