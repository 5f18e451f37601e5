#pragma once

#include <QStringList>

/// What the controller says while this lives: "LEVEL text", a number at the end shown as
/// "#", the same line again left out.
class GuiLog
{
    Q_DISABLE_COPY_MOVE(GuiLog)

public:
    GuiLog();
    ~GuiLog();

    const QStringList &lines() const { return m_lines; }
    QStringList warnings() const;
    bool contains(const QString &line) const { return m_lines.contains(line); }

private:
    QStringList m_lines;
};
