#include "parsedcommand.h"

namespace {

// Splits at commas outside of quotes.
QList<QByteArray> split(const QByteArray &text)
{
    QList<QByteArray> parts{QByteArray()};
    bool inQuotes = false;
    for (const char character : text) {
        inQuotes = inQuotes != (character == '"');
        if (character == ',' && !inQuotes)
            parts.append(QByteArray());
        else
            parts.last().append(character);
    }
    return parts;
}

} // namespace

ParsedCommand ParsedCommand::parse(const QByteArray &text)
{
    ParsedCommand command;
    const int sign = text.indexOf('=');
    command.name = sign < 0 ? text : text.left(sign);
    if (sign < 0) {
        if (text.endsWith('?')) {
            command.kind = Kind::Read;
            command.name.chop(1);
        }
        return command;
    }
    const QByteArray value = text.mid(sign + 1);
    command.kind = value == "?" ? Kind::Test : Kind::Set;
    if (command.kind == Kind::Set)
        command.arguments = split(value);
    return command;
}

bool ParsedCommand::is(Kind wantedKind, const char *wantedName) const
{
    return kind == wantedKind && name == wantedName;
}

QByteArray ParsedCommand::text(int index) const
{
    const QByteArray argument = arguments.value(index);
    return argument.size() >= 2 && argument.startsWith('"') && argument.endsWith('"')
        ? argument.mid(1, argument.size() - 2)
        : argument;
}

int ParsedCommand::number(int index, int fallback) const
{
    bool isNumber = false;
    const int number = arguments.value(index).toInt(&isNumber);
    return isNumber ? number : fallback;
}

QByteArray quoted(const QByteArray &text)
{
    return '"' + text + '"';
}
