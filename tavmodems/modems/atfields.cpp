#include "atfields.h"

std::optional<QByteArray> atfields::valueOf(const QByteArray &name, const QList<QByteArray> &lines)
{
    for (auto line = lines.crbegin(); line != lines.crend(); ++line) {
        if (line->startsWith(name + ':'))
            return line->mid(name.size() + 1).trimmed();
    }
    return std::nullopt;
}

QList<QByteArray> atfields::split(const QByteArray &value)
{
    QList<QByteArray> fields;
    QByteArray field;
    bool quoted = false;
    for (const char c : value) {
        if (c == '"')
            quoted = !quoted;
        if (c == ',' && !quoted) {
            fields << field.trimmed();
            field.clear();
        } else {
            field.append(c);
        }
    }
    fields << field.trimmed();
    return fields;
}

QByteArray atfields::unquoted(const QByteArray &field)
{
    if (field.size() >= 2 && field.startsWith('"') && field.endsWith('"'))
        return field.mid(1, field.size() - 2);
    return field;
}
