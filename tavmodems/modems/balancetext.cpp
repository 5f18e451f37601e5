#include "balancetext.h"

#include <QRegularExpression>

#include <algorithm>

namespace {

constexpr int kMostText = 4096; // characters; no answer is so long
constexpr int kMostDigits = 15; // beyond them a double is not exact, and it is no balance

QRegularExpression words(const QString &pattern)
{
    return QRegularExpression(pattern, QRegularExpression::UseUnicodePropertiesOption);
}

// What money is counted in; a letter may not follow.
const QString CURRENCY = QStringLiteral("(?:(?:бел\\.? ?)?руб\\w*|р|p|rub\\w*|r|₽|byn|br|"
                                        "грн|гривен\\w*|гривн\\w*|hrn|grn|uah|₴|"
                                        "тенге|теңге|тг|tenge|tg|kzt|₸|"
                                        "сум|сўм|so'm|som|sum|uzs|сом|"
                                        "usd|eur|долл\\w*|\\$|€)(?!\\w)");

// Hundredths of it.
const QString SMALL_CURRENCY = QStringLiteral("(?:коп\\w*|kop\\w*|тиын|тийин|tiyn|tiyin)(?!\\w)");

// What makes the number before it something else than money.
const QString UNIT = QStringLiteral(
    "(?:%|процент|protsent|percent|foiz|"
    "мин|min|хв|хвіл|хвил|дақиқа|daqiqa|сек|sec|секунд|час|hour|год|soat|"
    "[кмгт]б|[kmgt]i?b|мегабайт|гигабайт|megabayt|гбайт|мбайт|mbyte|[кмг]біт|"
    "смс|sms|ммс|mms|шт|дн|день|дня|dn|day|den|сут|күн|kun|кун|мес|mes|month|"
    "бонус|bonus|балл|ball|бал\\b|point|"
    "янв|фев|мар[та]|апр|мая|май|июн|июл|авг|сен|окт|ноя|дек|jan|feb|mar|apr|may|jun|jul|aug|sep|"
    "oct|nov|dec|січ|лют|бер|кві|тра|чер|лип|сер|вер|жов|лис|гру)");

// Words of an account and of what is on it.
const QString BALANCE = QStringLiteral(
    "\\b(?:баланс|balan[cs]|остат|ostat|сч[её]т|schet|schyot|средств|sredstv|"
    "рахун|rahun|rakhun|залиш|zalish|zalysh|коштів|кошти\\b|koshtiv|рэшт|reszt|resht|сродк|"
    "шот|shot|есепшот|қалды|qaldy|kaldy|теңгерім|тенгерим|tenger|қаражат|karazhat|qarazhat|"
    "hisob|ҳисоб|хисоб|qold|қолд|колди|qoldiq|маблағ|маблаг|mablag|"
    "account|funds|your credit)\\w*");

// Words of what is not on the account.
const QString OTHER = QStringLiteral(
    "\\b(?:бонус|bonus|балл|ball|point|кешб|кэшб|cashback|keshb|подар|podar|gift|sovg|"
    "тариф|tarif|пакет|paket|package|pack\\b|абон\\.? "
    "?пл|абонентск|абонентськ|abonpl|abonentsk|плат[аыу]|plata|лимит|ліміт|limit|порог|"
    "porog|кредит|kredit|довер|dover|обещ|obesch|скидк|skidk|знижк|"
    "минут|minut|хвилин|трафик|трафік|trafi|traffic|интернет|інтэрнэт|інтернет|internet|"
    "смс|sms|ммс|mms|пополн|popoln|поповн|popovn|top.?up|recharge|плат[её]ж|платіж|platezh|payment|"
    "спис|spis|списан|charged|сня[тл]|цена|price|стоим|stoim|кошту|koshtu|вартіст|narx|нарх|"
    "код|kod\\b|code|тел\\b|tel\\b|phone|номер|nomer|number|звон|zvon|call|дзвон|"
    "менее|менш|ниже|нижче|less|below|кемінде|kamida|акци|aksiya|выигр|приз|priz)\\w*");

// What makes the number behind it one below zero.
const QString MINUS
    = QStringLiteral("(?:минус|мінус|minus|manfiy|манфий|теріс|negative|"
                     "(?:задолж|zadolzh|заборг|zaborg|долг|dolg|борг|borg|debt|қарыз|qarz|қарз)\\w*"
                     "(?: составляет| sostavlyaet| становить| is)?)");

struct Number
{
    int start = 0;
    int end = 0;
    double value = 0;
    bool hasHundredths = false;
    bool isOther = false; // followed by a unit, or part of a word
    bool hasCurrency = false;
    bool isNegative = false;
};

QString normalised(const QString &answer)
{
    QString text = answer.left(kMostText).toLower();
    for (QChar &c : text) {
        switch (c.unicode()) {
        case 0x00A0: // blanks that do not break
        case 0x2007:
        case 0x2009:
        case 0x202F:
        case u'\t':
            c = u' ';
            break;
        case 0x2010: // dashes and the minus sign
        case 0x2011:
        case 0x2012:
        case 0x2013:
        case 0x2014:
        case 0x2212:
            c = u'-';
            break;
        case u'`': // apostrophes
        case 0x00B4:
        case 0x02BB:
        case 0x02BC:
        case 0x2018:
        case 0x2019:
            c = u'\'';
            break;
        default:
            break;
        }
    }
    return text;
}

// Dates, times, phone numbers and codes become bars of the same length.
QString withoutOtherNumbers(const QString &text)
{
    static const QRegularExpression others = words(QStringLiteral(
        "(?<![\\d.,])(?:"
        "\\d{1,2}[./-]\\d{1,2}[./-](?:\\d{4}|\\d{2})(?:\\s*г(?:ода?|\\.)?(?!\\w))?" // 20.11.2026
        "|\\d{4}[./-]\\d{1,2}[./-]\\d{1,2}" // 2026-11-20
        "|\\d{1,2}:\\d{2}(?::\\d{2})?" // 12:30
        "|(?:(?<=\\bдо )|(?<=\\bпо )|(?<=\\bна )|(?<=\\bс )|(?<=\\bот )|(?<=\\bвід )|(?<=\\bdo )"
        "|(?<=\\bpo )|(?<=\\bna )|(?<=\\bby )|(?<=\\bon )|(?<=\\btill )|(?<=\\buntil )|(?<=\\bfrom "
        "))"
        "(?:[0-2]\\d|3[01])[./](?:0[1-9]|1[0-2])(?! ?(?:%1))" // 20.11
        "|\\+\\d[\\d() -]{6,}\\d" // +7 916 899-91-00
        "|[78][ (-]*\\d{3}[) -]*\\d{3}[ -]?\\d{2}[ -]?\\d{2}" // 8-800-550-05-00
        "|\\d{1,4}(?:-\\d{2,4}){2,}" // 555-35-35
        "|\\d{10,}(?![.,]\\d)" // 9168999100
        "|[*#][\\d*]+#?" // *100#
        ")(?![\\d#*])")
                                                       .arg(CURRENCY));
    auto match = others.globalMatch(text);
    QString masked = text;
    while (match.hasNext()) {
        const auto found = match.next();
        masked.replace(found.capturedStart(), found.capturedLength(),
            QString(found.capturedLength(), QLatin1Char('|')));
    }
    return masked;
}

double valueOf(const QString &integer, const QString &fraction)
{
    QString digits = integer;
    digits.remove(QRegularExpression(QStringLiteral("\\D")));
    return (digits + QLatin1Char('.') + fraction).toDouble();
}

// The letters right in front of a number must be a currency, else the number belongs to a name.
bool isPartOfWord(const QString &before)
{
    static const QRegularExpression currency = words(QStringLiteral("\\b%1$").arg(CURRENCY));
    return !before.isEmpty() && (before.back().isLetter() || before.back() == QLatin1Char('_'))
        && !currency.match(before).hasMatch();
}

bool isNegative(const QString &before)
{
    // A dash between blanks, or between a word and the number, is none: "Balans - 5", "Balans-5".
    static const QRegularExpression sign
        = words(QStringLiteral("(?:(?:^|[^\\w-])-|[:=(] *- ?|(?<!\\w)%1 *[:-]? *)(?:%2\\.? *)?$")
                    .arg(MINUS, CURRENCY));
    return sign.match(before).hasMatch();
}

void readSurroundings(const QString &text, Number &number)
{
    static const QRegularExpression currencyBehind
        = words(QStringLiteral("^ ?%1\\.?").arg(CURRENCY));
    static const QRegularExpression currencyBefore
        = words(QStringLiteral("(?<!\\w)%1[.:]? ?-?$").arg(CURRENCY));
    static const QRegularExpression small
        = words(QStringLiteral("^,? ?(?:и |i |and )?(\\d{1,2}) ?%1").arg(SMALL_CURRENCY));
    static const QRegularExpression smallAlone = words(QStringLiteral("^ ?%1").arg(SMALL_CURRENCY));
    static const QRegularExpression unit = words(QStringLiteral("^[ -]?%1").arg(UNIT));
    static const QRegularExpression rate
        = words(QStringLiteral("^ ?(?:/|(?:в|у|за|per|a|kuniga|күніне) "
                               "(?:день|сут|мес|мин|хв|добу|month|day|min|week|нед))"));
    const QString before = text.left(number.start);
    QString behind = text.mid(number.end);

    const auto currency = currencyBehind.match(behind);
    if (currency.hasMatch()) {
        number.hasCurrency = true;
        behind = behind.mid(currency.capturedEnd());
        const auto hundredths = small.match(behind);
        if (hundredths.hasMatch() && !number.hasHundredths) {
            number.value += hundredths.captured(1).toInt() / 100.0;
            number.hasHundredths = true;
            number.end += currency.capturedEnd() + hundredths.capturedEnd();
        }
    } else {
        number.hasCurrency = currencyBefore.match(before).hasMatch();
        number.isOther = unit.match(behind).hasMatch() || smallAlone.match(behind).hasMatch()
            || (!behind.isEmpty() && behind.at(0).isLetter());
    }
    // "1. Balance", a choice of a menu.
    static const QRegularExpression choice = words(QStringLiteral("^[.)] *[^\\W\\d]"));
    const bool isChoice = (before.isEmpty() || before.endsWith(QLatin1Char('\n')))
        && number.end - number.start <= 2 && choice.match(behind).hasMatch();
    number.isOther
        = number.isOther || isChoice || isPartOfWord(before) || rate.match(behind).hasMatch();
    number.isNegative = isNegative(before);
}

QList<Number> numbersOf(const QString &text)
{
    // Thousands apart by blank, apostrophe, comma or point; a lone ".345" is a fraction.
    static const QRegularExpression pattern(QStringLiteral(
        "(?<![\\d.,])(?<whole>\\d{1,3}(?: \\d{3})+(?!\\d)|\\d{1,3}(?:'\\d{3})+(?!\\d)"
        "|[1-9]\\d{0,2}(?:,\\d{3})+(?![\\d])|[1-9]\\d{0,2}(?:\\.\\d{3}){2,}(?!\\d)"
        "|[1-9]\\d{0,2}(?:\\.\\d{3})+(?=,\\d{1,2}(?!\\d))|\\d+)"
        "(?:[.,](?<part>\\d{1,4}))?(?![.,]?\\d)"));
    QList<Number> numbers;
    int from = 0;
    for (;;) {
        const auto match = pattern.match(text, from);
        if (!match.hasMatch())
            return numbers;
        Number number;
        number.start = match.capturedStart();
        number.end = match.capturedEnd();
        number.value = valueOf(
            match.captured(QStringLiteral("whole")), match.captured(QStringLiteral("part")));
        number.hasHundredths = match.capturedLength(QStringLiteral("part")) == 2;
        number.isOther = match.capturedLength() > kMostDigits;
        const bool tooLong = number.isOther;
        readSurroundings(text, number);
        number.isOther = number.isOther || tooLong;
        from = number.end;
        numbers << number;
    }
}

struct Topic
{
    int end = -1; // -1: there is none
    bool isBalance = false;
};

// The last word in front that tells what the number is.
Topic topicOf(const QString &before)
{
    static const QRegularExpression topics
        = words(QStringLiteral("(?<balance>%1)|(?<other>%2)").arg(BALANCE, OTHER));
    Topic topic;
    int otherEnd = -1;
    auto match = topics.globalMatch(before);
    while (match.hasNext()) {
        const auto found = match.next();
        const bool isBalance = found.capturedLength(QStringLiteral("balance")) > 0;
        // "Bonus balance" is one of bonuses.
        const bool isOfOther = otherEnd >= 0
            && before.mid(otherEnd, found.capturedStart() - otherEnd).trimmed().isEmpty();
        topic = {found.capturedEnd(), isBalance && !isOfOther};
        if (!topic.isBalance)
            otherEnd = topic.end;
    }
    return topic;
}

bool endsSentence(const QString &between)
{
    static const QRegularExpression end(QStringLiteral("[!?;\\n]|\\.\\s"));
    return end.match(between).hasMatch();
}

int scoreOf(const QString &text, const Number &number, int consumed)
{
    const QString before = text.mid(consumed, number.start - consumed);
    const Topic topic = topicOf(before);
    int score = (number.hasCurrency ? 8 : 0) + (number.hasHundredths ? 3 : 0);
    if (topic.end >= 0 && topic.isBalance)
        return score + 20;
    if (topic.end >= 0 && !endsSentence(before.mid(topic.end)))
        return 0;
    static const QRegularExpression balanceBehind
        = words(QStringLiteral("^[^\\d!?;\\n]{0,40}?%1").arg(BALANCE));
    static const QRegularExpression otherBehind
        = words(QStringLiteral("^[^\\d!?;\\n]{0,15}?%1").arg(OTHER));
    const QString behind = text.mid(number.end);
    if (balanceBehind.match(behind).hasMatch() && !otherBehind.match(behind).hasMatch())
        score += 10;
    return score;
}

// Nothing but the number: what some operators answer.
bool isAlone(const QString &text)
{
    return std::none_of(text.begin(), text.end(), [](QChar c) { return c.isLetter(); });
}

} // namespace

std::optional<double> findBalance(const QString &answer)
{
    const QString text = withoutOtherNumbers(normalised(answer));
    const QList<Number> numbers = numbersOf(text);
    std::optional<double> balance;
    int best = 0;
    int consumed = 0; // a word tells of the first number behind it only
    for (const Number &number : numbers) {
        if (number.isOther) {
            if (!topicOf(text.mid(consumed, number.start - consumed)).isBalance)
                consumed = number.end;
            continue;
        }
        int score = scoreOf(text, number, consumed);
        if (numbers.size() == 1 && isAlone(text))
            score += 5;
        consumed = number.end;
        if (score > best) {
            best = score;
            balance = number.isNegative && number.value > 0 ? -number.value : number.value;
        }
    }
    return balance;
}
