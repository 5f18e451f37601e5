#include "phonenumbertext.h"

#include <QRegularExpression>

namespace {

constexpr int kMostText = 4096; // characters; no answer is so long
constexpr int kFewestDigits = 9; // national numbers with their area code
constexpr int kMostDigits = 15; // ITU-T E.164

QRegularExpression words(const QString &pattern)
{
    return QRegularExpression(pattern,
        QRegularExpression::UseUnicodePropertiesOption | QRegularExpression::CaseInsensitiveOption);
}

} // namespace

std::optional<QString> findPhoneNumber(const QString &text)
{
    // Groups of digits, a blank, hyphen or parentheses between them; no part of a code (*100#), an
    // amount (1000.50), a date or a longer number.
    static const QRegularExpression candidate
        = words(QStringLiteral("(?<![\\w*#.,:/])\\+?\\(?\\d(?:[ \\x{a0}]?[-()]?[ \\x{a0}]?\\d)*"
                               "(?![\\w*#/:]|[.,]\\d)"));
    static const QRegularExpression naming
        = words(QStringLiteral("(?:номер|нөмір|нумар|рақам|ракам|nomer|nomir|raqam|number|msisdn|"
                               "тел|tel|phone)[^\\d+]*$"));
    const QString searched = text.left(kMostText);
    QString first;
    QString named;
    auto matches = candidate.globalMatch(searched);
    while (matches.hasNext()) {
        const auto match = matches.next();
        QString digits;
        for (const QChar c : match.capturedRef()) {
            if (c.isDigit())
                digits += c;
        }
        if (digits.size() < kFewestDigits || digits.size() > kMostDigits)
            continue;
        if (match.capturedRef().startsWith(QLatin1Char('+')))
            return QLatin1Char('+') + digits;
        if (named.isEmpty() && naming.match(searched.left(match.capturedStart())).hasMatch())
            named = digits;
        if (first.isEmpty())
            first = digits;
    }
    const QString &found = named.isEmpty() ? first : named;
    return found.isEmpty() ? std::nullopt : std::optional<QString>(found);
}
