#include "smsstores.h"

#include "atfields.h"

QList<QByteArray> parseSmsStores(const QList<QByteArray> &lines)
{
    const auto value = atfields::valueOf("+CPMS", lines);
    if (!value)
        return {};
    // Three stores, each with what is used of it and how much there is.
    const QList<QByteArray> fields = atfields::split(*value);
    const QByteArray read = atfields::unquoted(fields.first());
    const QByteArray received = atfields::unquoted(fields.value(6));
    if (read.isEmpty())
        return {};
    QList<QByteArray> stores{read};
    // "MT" is the card's and the modem's together.
    if (!received.isEmpty() && received != read && read != "MT")
        stores << received;
    return stores;
}
