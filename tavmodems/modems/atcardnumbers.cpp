#include "atcardnumbers.h"

#include "atfields.h"
#include "attext.h"

#include <QRegularExpression>

#include <utility>

namespace {

// The first match among the lines, each with the name and the quotes that it may have.
QByteArray found(const QList<QByteArray> &lines, const QString &digits)
{
    const QRegularExpression pattern(
        QStringLiteral("^(?:[A-Z^+#$*%!_ ]*:)? *\"?(%1)\"? *(?:,.*)?$").arg(digits),
        QRegularExpression::CaseInsensitiveOption);
    for (const QByteArray &line : lines) {
        const auto match = pattern.match(QString::fromLatin1(line));
        if (match.hasMatch())
            return match.captured(1).toLatin1();
    }
    return {};
}

} // namespace

QByteArray parseImsi(const QList<QByteArray> &lines)
{
    return found(lines, QStringLiteral("[2-9]\\d{5,14}"));
}

QByteArray parseIccid(const QList<QByteArray> &lines)
{
    QByteArray iccid = found(lines, QStringLiteral("(?:89|98)\\d{14,17}[\\dF]{1,3}"));
    if (iccid.startsWith("98")) {
        for (int i = 0; i + 1 < iccid.size(); i += 2)
            std::swap(iccid.data()[i], iccid.data()[i + 1]);
    }
    while (iccid.endsWith('F') || iccid.endsWith('f'))
        iccid.chop(1);
    for (const char c : std::as_const(iccid)) {
        if (c < '0' || c > '9')
            return {};
    }
    return iccid.size() >= 18 && iccid.size() <= 20 ? iccid : QByteArray();
}

QByteArray parseImei(const QList<QByteArray> &lines)
{
    return found(lines, QStringLiteral("\\d{14,16}"));
}

QString parseOwnNumber(const QList<QByteArray> &lines)
{
    static const QRegularExpression number(QStringLiteral("^\\+?[0-9]{3,20}$"));
    for (const QByteArray &line : lines) {
        const auto value = atfields::valueOf("+CNUM", {line});
        if (!value)
            continue;
        const QList<QByteArray> fields = atfields::split(*value);
        const QString text = parseAtText(fields.value(1));
        if (!number.match(text).hasMatch())
            continue;
        // 24.008 10.5.4.7: type 145 is international.
        const bool isInternational = fields.value(2) == "145" && !text.startsWith(QLatin1Char('+'));
        return isInternational ? QLatin1Char('+') + text : text;
    }
    return {};
}
