#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>

/// The scenarios and modem profiles that come with the program (kept in it as resources), and files
/// that take their place: a word is the name of one that comes along, anything with a slash or
/// ".json" is a path.
class BuiltInFiles
{
public:
    enum class Kind { Scenario, Profile };

    /// Hands a file's content to `parse`, whose error is told with the file's name.
    static bool load(Kind kind, const QString &nameOrPath,
        const std::function<bool(const QByteArray &content, QString *error)> &parse,
        QString *error);
    static QStringList names(Kind kind);
};
