#pragma once

#include <QByteArray>
#include <QDebug>

/// Bytes of unknown origin on their way into a log: `qDebug() << logbinary(bytes, "UTF-8")`.
///
/// They are shown as text in the encoding that `codec` names (Latin-1 when Qt knows no such codec);
/// line breaks and tabs stay, other control characters are shown in hexadecimal, so that what a
/// modem or a web page sends cannot steer the terminal the log is read in.
struct logbinary // NOLINT(readability-identifier-naming): reads as a function where it is used
{
    logbinary(const QByteArray &data, const char *codec)
        : bytes(data)
        , codecName(codec)
    {
    }

    QByteArray bytes;
    const char *codecName; ///< a literal: not copied
};

QDebug operator<<(QDebug debug, const logbinary &data);
