#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// The scenarios and modem profiles that come with the program (kept in it as resources), and files
/// that take their place: a word is the name of one that comes along, anything with a slash or
/// ".json" is a path.
class BuiltInFiles
{
public:
    enum class Kind { Scenario, Profile };

    static bool read(Kind kind, const QString &nameOrPath, QByteArray *content, QString *error);
    static QStringList names(Kind kind);
};
