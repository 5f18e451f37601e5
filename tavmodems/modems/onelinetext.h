#pragma once

#include <QString>
#include <QStringList>

/**
 * The rule for texts that end up in a line of a file or of an AT command: no control characters
 * (a line end in a password would be a line of its own there).
 */
namespace onelinetext {

/** Longest text taken from outside, characters. */
constexpr int kMaxLength = 65536;
/** Most entries taken from outside in one list. */
constexpr int kMaxEntries = 4096;

/** Whether the text keeps the rule. */
bool isValid(const QString &text);

/** The text without its control characters. */
QString cleaned(QString text);
QStringList cleaned(QStringList texts);

} // namespace onelinetext
