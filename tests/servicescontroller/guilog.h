#pragma once

#include <QElapsedTimer>
#include <QStringList>
#include <QVector>

/// What the controller says while this lives: word for word as messages(); else as "LEVEL text", a
/// number at the end shown as "#", the same line again left out.
class GuiLog
{
    Q_DISABLE_COPY_MOVE(GuiLog)

public:
    GuiLog();
    ~GuiLog();

    /// Every message as it was, and when: ms after this was made.
    struct Message
    {
        QString text;
        qint64 at;
    };
    const QVector<Message> &messages() const { return m_messages; }

    const QStringList &lines() const { return m_lines; }
    QStringList warnings() const;
    bool contains(const QString &line) const { return m_lines.contains(line); }

private:
    QElapsedTimer m_clock;
    QVector<Message> m_messages;
    QStringList m_lines;
};
