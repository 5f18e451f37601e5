#pragma once

#include <QByteArray>
#include <QList>

/// One command of a line, taken apart (ITU-T V.250, 5.4).
struct ParsedCommand
{
    enum class Kind {
        Run, ///< "+CSQ"
        Read, ///< "+CREG?"
        Test, ///< "+CREG=?"
        Set, ///< "+CREG=2"
    };

    /// `text` is the command without "AT", its name in capitals: "+CREG=2", "I", "&F".
    static ParsedCommand parse(const QByteArray &text);

    bool is(Kind wantedKind, const char *wantedName) const;
    int count() const { return arguments.size(); }
    /// An argument without its quotes; empty when it is not there.
    QByteArray text(int index) const;
    /// An argument as a number; `fallback` when it is none.
    int number(int index, int fallback = -1) const;

    Kind kind = Kind::Run;
    QByteArray name; ///< "+CREG"
    QList<QByteArray> arguments; ///< as they stand, quotes and all; one or more for Set
};

QByteArray quoted(const QByteArray &text);
