#pragma once

#include <QDir>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// A `sudo` of the test's own, first on PATH for as long as this lives: a shell script that notes
/// its arguments, one in brackets each, and then does what the test says. Make it before the
/// configurator, which takes its environment when it is made.
class FakeSudo
{
public:
    explicit FakeSudo(const QByteArray &script = "exit 0")
        : m_path(qgetenv("PATH"))
    {
        QFile file(m_box.filePath(QStringLiteral("sudo")));
        if (!file.open(QIODevice::WriteOnly))
            qFatal("no stand-in for sudo can be written");
        file.write("#!/bin/sh\n{ for a; do printf '[%s]' \"$a\"; done; echo; } >>'"
            + QFile::encodeName(m_box.filePath(QStringLiteral("log"))) + "'\n" + script + '\n');
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv("PATH", QFile::encodeName(m_box.path()) + ':' + m_path);
    }
    ~FakeSudo() { qputenv("PATH", m_path); }
    FakeSudo(const FakeSudo &) = delete;
    FakeSudo &operator=(const FakeSudo &) = delete;

    QStringList calls() const
    {
        QFile log(m_box.filePath(QStringLiteral("log")));
        if (!log.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(log.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }
    /// For what the script needs beside itself.
    QString filePath(const QString &name) const { return m_box.filePath(name); }

private:
    const QByteArray m_path;
    QTemporaryDir m_box;
};
