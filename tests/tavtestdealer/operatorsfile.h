#pragma once

#include "terminalconf.h"

#include <QFile>
#include <QTemporaryDir>

/// Operators laid over the machine's own table, which keeps the rest, for as long as this lives. To
/// be made before the first look-up in the process: the table is read once.
class OperatorsFile
{
public:
    explicit OperatorsFile(const QByteArray &text)
        : m_conf(QStringLiteral("\n[modems]\noperators=%1\n").arg(write(text)))
    {
    }

private:
    QString write(const QByteArray &text) const
    {
        QFile file(m_directory.filePath(QStringLiteral("operators.xml")));
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            qFatal("no file for the operators of the test");
        return file.fileName();
    }

    const QTemporaryDir m_directory;
    const TerminalConf m_conf;
};
