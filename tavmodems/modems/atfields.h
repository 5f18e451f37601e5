#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

/** How the parameters of an information line are told apart (ITU-T V.250 5.4, 5.7). */
namespace atfields {

/** What follows "NAME:" in the last such line; none when there is no such line. */
std::optional<QByteArray> valueOf(const QByteArray &name, const QList<QByteArray> &lines);

/** "1,\"a,b\",,2" into its four parts, blanks around them removed, quotes kept. */
QList<QByteArray> split(const QByteArray &value);

/** A text without its quotes. */
QByteArray unquoted(const QByteArray &field);

} // namespace atfields
