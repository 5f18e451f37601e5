#pragma once

#include <QByteArray>
#include <QString>

/**
 * A quoted or bare text parameter as text. A modem set to UCS2 (AT+CSCS) writes each character as
 * four hexadecimal digits, which is told from the text itself; else it is UTF-8.
 */
QString parseAtText(const QByteArray &field);
