#pragma once

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

/// Programs of the test's own in place of the dialer, ps and killall. The directory stands first on
/// PATH, before the stand-ins of every test, for as long as this lives.
class FakeDialer
{
public:
    /// The dialer notes its arguments and then runs `script` (sh).
    explicit FakeDialer(const QByteArray &script = "exit 0")
        : m_path(qgetenv("PATH"))
    {
        qputenv("PATH", QFile::encodeName(m_directory.path()) + ':' + m_path);
        add(QStringLiteral("dialer"),
            "for word in \"$@\"; do echo \"$word\" >>'" + file("arguments").toUtf8()
                + "'; done\necho \"$$\" >'" + file("pid").toUtf8() + "'\n" + script);
        QFile processes(file("processes"));
        if (!processes.open(QIODevice::WriteOnly))
            qFatal("no file for the fake processes");
        qputenv("TAV_FAKE_PS", QFile::encodeName(file("processes")));
        qputenv("TAV_FAKES_LOG", QFile::encodeName(file("calls")));
    }
    ~FakeDialer()
    {
        qputenv("PATH", m_path);
        qunsetenv("TAV_FAKE_PS");
    }
    FakeDialer(const FakeDialer &) = delete;
    FakeDialer &operator=(const FakeDialer &) = delete;

    QString program() const { return file("dialer"); }
    /// Arguments of all starts, one after the other.
    QStringList arguments() const { return read(file("arguments")); }
    /// Of the last start, 0 before the first.
    qint64 pid() const { return read(file("pid")).value(0).toLongLong(); }
    /// How ps, killall and so on were called, in order.
    QStringList calls() const { return read(file("calls")); }
    void forgetCalls() { QFile::remove(file("calls")); }

    /// Lines that ps shows until killall has ended the process named in them.
    void showProcesses(const QByteArray &lines)
    {
        QFile processes(file("processes"));
        if (!processes.open(QIODevice::WriteOnly) || processes.write(lines) != lines.size())
            qFatal("no file for the fake processes");
    }

    /// A further program, found before any other of its name.
    void add(const QString &name, const QByteArray &script)
    {
        QFile program(m_directory.filePath(name));
        if (!program.open(QIODevice::WriteOnly))
            qFatal("no fake program");
        program.write("#!/bin/sh\n" + script + '\n');
        program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    QString file(const char *name) const { return m_directory.filePath(QLatin1String(name)); }

private:
    static QStringList read(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly)
            ? QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts)
            : QStringList();
    }

    QTemporaryDir m_directory;
    QByteArray m_path;
};
