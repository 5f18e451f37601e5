#include "modemcommand.h"

#include "balancetext.h"
#include "modemsettings.h"
#include "modemsfinder.h"

#include <QDateTime>
#include <QEventLoop>
#include <QJsonArray>
#include <QJsonObject>
#include <QTimer>

#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr int kAttempts = 3;
constexpr std::chrono::milliseconds kLookForAbort = 100ms;

// Looks at one port, or at all.
class Search : public ModemsFinder
{
public:
    Search(const QString &port, int baudrate)
        : m_port(port)
        , m_baudrate(baudrate)
    {
    }

protected:
    QList<SearchPort> ports() const override
    {
        return m_port.isEmpty() ? ModemsFinder::ports() : QList<SearchPort>{searchPortOf(m_port)};
    }
    int baudrateOf(const SearchPort &) const override { return m_baudrate; }

private:
    const QString m_port;
    const int m_baudrate;
};

ExitStatus statusOf(AtModem::Error error)
{
    switch (error) {
    case AtModem::Error::Port:
        return ExitStatus::NoPort;
    case AtModem::Error::NoAnswer:
        return ExitStatus::NoAnswer;
    case AtModem::Error::Refused:
    case AtModem::Error::None:
        break;
    }
    return ExitStatus::Refused;
}

// Names and messages come from anywhere: what steers a terminal is shown, not obeyed.
QString shown(const QString &text)
{
    QString safe;
    for (const QChar c : text) {
        const bool isSafe = c == QLatin1Char('\n') || c.category() != QChar::Other_Control;
        if (isSafe)
            safe += c;
        else if (c != QLatin1Char('\r'))
            safe += QChar(QChar::ReplacementCharacter);
    }
    return safe;
}

// Columns as wide as what is in them.
QString table(const QList<QStringList> &rows)
{
    QVector<int> widths;
    for (const QStringList &row : rows) {
        widths.resize(qMax(widths.size(), row.size()));
        for (int i = 0; i < row.size(); ++i)
            widths[i] = qMax(widths.at(i), shown(row.at(i)).size());
    }
    QString text;
    for (const QStringList &row : rows) {
        QString line;
        for (int i = 0; i < row.size(); ++i)
            line += shown(row.at(i)).leftJustified(widths.at(i) + 2);
        while (line.endsWith(QLatin1Char(' ')))
            line.chop(1);
        text += line + QLatin1Char('\n');
    }
    return text;
}

// ISO 8601 with the offset, which Qt writes as a "Z" where there is none; empty when the message
// does not tell its time.
QString isoText(const QDateTime &time)
{
    if (!time.isValid())
        return {};
    QString text = time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODate);
    if (text.endsWith(QLatin1Char('Z')))
        text.replace(text.size() - 1, 1, QStringLiteral("+00:00"));
    return text;
}

// Of a list of maps: "cid A1B2C3, lac 1F40; cid ...".
QString inLine(const QVariant &value)
{
    if (value.userType() == QMetaType::QVariantMap) {
        QStringList parts;
        const QVariantMap map = value.toMap();
        for (auto part = map.cbegin(); part != map.cend(); ++part)
            parts << QStringLiteral("%1 %2").arg(part.key(), inLine(part.value()));
        return parts.join(QStringLiteral(", "));
    }
    if (value.userType() == QMetaType::QVariantList) {
        QStringList parts;
        const QVariantList list = value.toList();
        for (const QVariant &part : list)
            parts << inLine(part);
        return parts.join(QStringLiteral("; "));
    }
    return value.toString();
}

} // namespace

ModemCommand::ModemCommand(CommandLine commandLine, const std::atomic<bool> *abort, Deliver deliver)
    : m_commandLine(std::move(commandLine))
    , m_abort(abort)
    , m_deliver(std::move(deliver))
{
}

ExitStatus ModemCommand::run()
{
    const ExitStatus status = ask();
    return status == ExitStatus::Done && !m_isDelivered ? deliver() : status;
}

ExitStatus ModemCommand::deliver()
{
    m_isDelivered = m_deliver(
        m_commandLine.json ? m_json.toJson(QJsonDocument::Compact) + '\n' : m_text.toUtf8());
    return m_isDelivered
        ? ExitStatus::Done
        : fail(ExitStatus::Refused, QStringLiteral("The answer cannot be written."));
}

ExitStatus ModemCommand::ask()
{
    using Command = CommandLine::Command;
    if (m_commandLine.command == Command::List)
        return list();
    if (m_commandLine.port.isEmpty()) {
        const ExitStatus status = choosePort();
        if (status != ExitStatus::Done)
            return status;
    }
    AtModem modem;
    modem.setAbortFlag(m_abort);
    if (!modem.open(m_commandLine.port, m_commandLine.baudrate, kAttempts))
        return fail(modem);
    // What the network has to answer waits until the modem is in it.
    const Command command = m_commandLine.command;
    modem.reset(command == Command::Balance || command == Command::Ussd);
    if (modem.error() != AtModem::Error::None)
        return fail(modem);
    switch (command) {
    case Command::List:
        break;
    case Command::Info:
        return info(modem);
    case Command::Cells:
        return cells(modem);
    case Command::Signal:
        return signal(modem);
    case Command::Balance:
        return balance(modem);
    case Command::Number:
        return number(modem);
    case Command::Ussd:
        return ussd(modem);
    case Command::Sms:
        return sms(modem);
    case Command::ModemOnly:
        return modemOnly(modem);
    }
    return fail(ExitStatus::WrongUse, QStringLiteral("There is no such command."));
}

ExitStatus ModemCommand::list()
{
    QList<FoundModem> modems;
    const ExitStatus status = search(modems);
    if (status != ExitStatus::Done)
        return status;
    QJsonArray all;
    QList<QStringList> rows{{QStringLiteral("NAME"), QStringLiteral("PORT"),
        QStringLiteral("MANUFACTURER"), QStringLiteral("MODEL"), QStringLiteral("IMEI")}};
    for (const FoundModem &modem : modems) {
        const QString name = modem.info.connectionName();
        const QString port = modem.info.portName();
        rows << QStringList{name, port, modem.manufacturer, modem.model, modem.imei};
        all << QJsonObject{{QStringLiteral("name"), name}, {QStringLiteral("port"), port},
            {QStringLiteral("manufacturer"), modem.manufacturer},
            {QStringLiteral("model"), modem.model}, {QStringLiteral("imei"), modem.imei}};
    }
    m_json = QJsonDocument(all);
    if (!modems.isEmpty())
        m_text = table(rows);
    return ExitStatus::Done;
}

ExitStatus ModemCommand::info(AtModem &modem)
{
    QMap<QString, QVariant> facts;
    if (!modem.getInfo(facts))
        return fail(modem);
    facts.insert(QStringLiteral("dialect"), modem.gsmDialect());
    QList<QStringList> rows;
    for (auto fact = facts.cbegin(); fact != facts.cend(); ++fact)
        rows << QStringList{fact.key(), inLine(fact.value())};
    m_text = table(rows);
    m_json = QJsonDocument(QJsonObject::fromVariantMap(facts));
    return ExitStatus::Done;
}

ExitStatus ModemCommand::cells(AtModem &modem)
{
    int mcc = 0;
    int mnc = 0;
    QString lac;
    QString cid;
    if (!modem.getMnc(mcc, mnc) || !modem.getGsmCells(lac, cid))
        return fail(modem);
    m_json = QJsonDocument(QJsonObject{{QStringLiteral("mcc"), mcc}, {QStringLiteral("mnc"), mnc},
        {QStringLiteral("lac"), lac}, {QStringLiteral("cid"), cid}});
    m_text = table({{QStringLiteral("MCC"), QString::number(mcc)},
        {QStringLiteral("MNC"), QString::number(mnc)}, {QStringLiteral("LAC"), lac},
        {QStringLiteral("CID"), cid}});
    return ExitStatus::Done;
}

ExitStatus ModemCommand::signal(AtModem &modem)
{
    int level = 0;
    if (!modem.getSignalLevel(level))
        return fail(modem);
    m_json = QJsonDocument(QJsonObject{{QStringLiteral("dbm"), level}});
    m_text = QStringLiteral("%1 dBm\n").arg(level);
    return ExitStatus::Done;
}

ExitStatus ModemCommand::balance(AtModem &modem)
{
    OperatorData data;
    const ExitStatus known = operatorOf(modem, data);
    if (known != ExitStatus::Done)
        return known;
    if (data.balancePhone().isEmpty())
        return fail(ExitStatus::Refused,
            QStringLiteral("It is not known how to ask %1 for the balance; ask with \"ussd CODE\".")
                .arg(data.name()));
    QString answer;
    if (!modem.sendUSSD(data.balancePhone(), answer))
        return fail(modem);
    const std::optional<double> amount = findBalance(answer);
    m_json = QJsonDocument(QJsonObject{{QStringLiteral("answer"), answer},
        {QStringLiteral("balance"), amount ? QJsonValue(*amount) : QJsonValue()}});
    m_text = shown(answer) + QLatin1Char('\n');
    if (amount)
        m_text
            += QStringLiteral("Balance: %1\n").arg(*amount, 0, 'g', QLocale::FloatingPointShortest);
    return ExitStatus::Done;
}

ExitStatus ModemCommand::number(AtModem &modem)
{
    QMap<QString, QVariant> facts;
    if (!modem.getInfo(facts))
        return fail(modem);
    QString number = facts.value(QStringLiteral("simNumber")).toString();
    if (number.isEmpty()) {
        OperatorData data;
        const ExitStatus known = operatorOf(modem, data);
        if (known != ExitStatus::Done)
            return known;
        if (data.selfNumberPhone().isEmpty())
            return fail(ExitStatus::Refused,
                QStringLiteral("The card does not hold its number, and it is not known how to ask "
                               "%1 for it.")
                    .arg(data.name()));
        modem.reset(true);
        if (modem.error() != AtModem::Error::None
            || !modem.requestSelfNumber(data.selfNumberFromSms(), data.selfNumberPhone(), number))
            return fail(modem);
    }
    m_json = QJsonDocument(QJsonObject{{QStringLiteral("number"), number}});
    m_text = shown(number) + QLatin1Char('\n');
    return ExitStatus::Done;
}

ExitStatus ModemCommand::ussd(AtModem &modem)
{
    QString answer;
    if (!modem.sendUSSD(m_commandLine.code, answer))
        return fail(modem);
    m_json = QJsonDocument(QJsonObject{{QStringLiteral("answer"), answer}});
    m_text = shown(answer) + QLatin1Char('\n');
    return ExitStatus::Done;
}

ExitStatus ModemCommand::sms(AtModem &modem)
{
    QList<AtModem::SSms> messages;
    if (!m_commandLine.take) {
        if (!modem.readMessages(messages))
            return fail(modem);
        show(messages);
        return ExitStatus::Done;
    }
    ExitStatus delivered = ExitStatus::Done;
    if (!modem.takeMessages([&](const QList<AtModem::SSms> &read) {
            show(read);
            delivered = deliver();
            return m_isDelivered;
        }))
        return fail(modem);
    if (m_isDelivered && !modem.lastError().isEmpty()) // read, but not all deleted
        m_notes << modem.lastError();
    return delivered;
}

void ModemCommand::show(const QList<AtModem::SSms> &messages)
{
    QJsonArray all;
    for (const AtModem::SSms &message : messages) {
        const QString time = isoText(message.time);
        all << QJsonObject{{QStringLiteral("time"), time.isEmpty() ? QJsonValue() : time},
            {QStringLiteral("sender"), message.sender}, {QStringLiteral("text"), message.text}};
        m_text += QStringLiteral("%1 %2\n").arg(time, shown(message.sender));
        const QStringList lines = shown(message.text).split(QLatin1Char('\n'));
        for (const QString &line : lines)
            m_text += QStringLiteral("    %1\n").arg(line);
    }
    if (messages.isEmpty())
        m_text = QStringLiteral("No messages.\n");
    m_json = QJsonDocument(all);
}

ExitStatus ModemCommand::modemOnly(AtModem &modem)
{
    if (!modem.toModemOnly())
        return fail(modem);
    m_json = QJsonDocument(QJsonObject{{QStringLiteral("modemOnly"), true}});
    m_text = QStringLiteral("The modem was switched to modem-only mode. Unplug it and plug it in "
                            "again.\n");
    return ExitStatus::Done;
}

// The codes for balance and number are those of the card's own operator, wherever it is.
ExitStatus ModemCommand::operatorOf(AtModem &modem, OperatorData &data)
{
    int mcc = 0;
    int mnc = 0;
    const ModemSettings settings;
    if (modem.getHomeNetwork(mcc, mnc) && settings.getOperatorData(mcc, mnc, data))
        return ExitStatus::Done;
    if (!modem.getMnc(mcc, mnc))
        return fail(modem);
    if (settings.getOperatorData(mcc, mnc, data))
        return ExitStatus::Done;
    return fail(ExitStatus::Refused,
        QStringLiteral("Nothing is known of the operator of network %1 %2.")
            .arg(mcc)
            .arg(mnc, 2, 10, QLatin1Char('0')));
}

// Fails when it was broken off, or the one port that was named has no modem. What cannot be
// searched is noted.
ExitStatus ModemCommand::search(QList<FoundModem> &modems)
{
    Search search(m_commandLine.port, m_commandLine.baudrate);
    QEventLoop loop;
    QString reason;
    QObject::connect(&search, &ModemsFinder::noDevices, &loop,
        [&reason](const QString &error) { reason = error; });
    QObject::connect(&search, &ModemsFinder::finished, &loop, &QEventLoop::quit);
    QTimer abortTimer;
    QObject::connect(&abortTimer, &QTimer::timeout, &loop, [this, &loop] {
        if (*m_abort)
            loop.quit();
    });
    abortTimer.start(kLookForAbort);
    search.start();
    loop.exec();
    if (search.isRunning())
        return fail(ExitStatus::Refused, QStringLiteral("The search was broken off."));

    modems = search.found();
    const QList<PortFailure> failures = search.failures();
    if (!m_commandLine.port.isEmpty() && !failures.isEmpty())
        return fail(statusOf(failures.first().error), failures.first().text);
    if (modems.isEmpty()) {
        m_notes << reason;
        return ExitStatus::Done;
    }
    for (const PortFailure &failure : failures) {
        if (failure.error == AtError::Port)
            m_notes << failure.text;
    }
    return ExitStatus::Done;
}

ExitStatus ModemCommand::choosePort()
{
    QList<FoundModem> modems;
    const ExitStatus status = search(modems);
    if (status != ExitStatus::Done)
        return status;
    if (modems.isEmpty())
        return fail(ExitStatus::NoPort, m_notes.takeLast());
    if (modems.size() > 1) {
        QStringList ports;
        for (const FoundModem &modem : qAsConst(modems))
            ports << modem.info.portName();
        m_notes.clear();
        return fail(ExitStatus::WrongUse,
            QStringLiteral("There are several modems, on %1: choose one with --port.")
                .arg(ports.join(QStringLiteral(", "))));
    }
    m_notes.clear();
    m_commandLine.port = modems.first().info.portName();
    return ExitStatus::Done;
}

ExitStatus ModemCommand::fail(ExitStatus status, const QString &error)
{
    m_error = error;
    return status;
}

ExitStatus ModemCommand::fail(const AtModem &modem)
{
    return fail(statusOf(modem.error()), modem.lastError());
}
