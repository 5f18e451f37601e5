#pragma once

#include <QCoreApplication>
#include <QTranslator>

/// Puts an "x" in front of every text of one context, for as long as it lives.
class MarkTranslator : public QTranslator
{
public:
    explicit MarkTranslator(const char *context)
        : m_context(context)
    {
        QCoreApplication::installTranslator(this);
    }
    ~MarkTranslator() override { QCoreApplication::removeTranslator(this); }

    bool isEmpty() const override { return false; }
    QString translate(const char *context, const char *text, const char *, int) const override
    {
        return m_context == context ? QStringLiteral("x") + QString::fromUtf8(text) : QString();
    }

private:
    const QByteArray m_context;
};
