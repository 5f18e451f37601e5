#pragma once

#include <QLoggingCategory>
#include <QStringList>

/// Keeps what is logged in one category while it lives; one at a time.
class LogCapture
{
public:
    explicit LogCapture(const QByteArray &category)
        : m_category(category)
        , m_former(qInstallMessageHandler(handle))
    {
        s_current = this;
    }
    ~LogCapture()
    {
        qInstallMessageHandler(m_former);
        s_current = nullptr;
    }
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    /// "debug: text" and so on, in order.
    QStringList lines;

    bool contains(const QString &line) const { return lines.contains(line); }
    /// Of the first line that begins so, -1 when there is none.
    int indexOf(const QString &begin) const
    {
        for (int i = 0; i < lines.size(); ++i) {
            if (lines.at(i).startsWith(begin))
                return i;
        }
        return -1;
    }
    int count(const QString &begin) const
    {
        int count = 0;
        for (const QString &line : lines)
            count += line.startsWith(begin) ? 1 : 0;
        return count;
    }

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &text)
    {
        if (!s_current || s_current->m_category != context.category) {
            if (s_current && s_current->m_former)
                s_current->m_former(type, context, text);
            return;
        }
        const char *level = type == QtDebugMsg ? "debug"
            : type == QtWarningMsg             ? "warning"
            : type == QtCriticalMsg            ? "critical"
                                               : "info";
        s_current->lines.append(QString::fromLatin1(level) + QStringLiteral(": ") + text);
    }

    inline static LogCapture *s_current = nullptr;
    const QByteArray m_category;
    const QtMessageHandler m_former;
};
