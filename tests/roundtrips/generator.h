#pragma once

#include <QRandomGenerator>
#include <QString>
#include <QStringList>

/**
 * Values for tests of what must hold for all values: the same ones in every run, so that what fails
 * once fails again.
 */
class Generator
{
public:
    explicit Generator(quint32 seed)
        : m_random(seed)
    {
    }

    int number(int least, int most) { return m_random.bounded(least, most + 1); }
    bool flag() { return number(0, 1) == 1; }

    /// Up to `most` characters out of `characters`.
    QString text(const QString &characters, int most)
    {
        QString text;
        for (int left = number(0, most); left > 0; --left)
            text += characters.at(number(0, characters.size() - 1));
        return text;
    }
    /// With one character at least.
    QString word(const QString &characters, int most)
    {
        return characters.at(number(0, characters.size() - 1)) + text(characters, most - 1);
    }
    QStringList words(const QString &characters, int most)
    {
        QStringList words;
        for (int left = number(0, most); left > 0; --left)
            words += word(characters, 12);
        return words;
    }
    QString address()
    {
        return QStringLiteral("%1.%2.%3.%4")
            .arg(number(0, 255))
            .arg(number(0, 255))
            .arg(number(0, 255))
            .arg(number(0, 255));
    }

private:
    QRandomGenerator m_random;
};
