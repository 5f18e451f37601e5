#pragma once

#include <QEvent>
#include <QObject>
#include <QTextBrowser>

#include <mutex>

/// What a text browser has had on the screen.
class Painted : public QObject
{
public:
    explicit Painted(QTextBrowser *browser)
        : m_browser(browser)
    {
        browser->viewport()->installEventFilter(this);
    }
    /// From any thread.
    bool contains(const char *text)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_text.contains(QString::fromUtf8(text));
    }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_text = m_browser->toPlainText();
        }
        return false;
    }

private:
    QTextBrowser *const m_browser;
    std::mutex m_mutex;
    QString m_text;
};
