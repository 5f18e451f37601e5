#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariant>

#include <cstddef>
#include <cstdint>

/**
 * The bytes of one execution, taken from the front in a form that a person can write down as a
 * seed: lines, letters, numbers. Taking from what is used up gives empty values.
 */
class FuzzInput
{
public:
    FuzzInput(const std::uint8_t *data, std::size_t size)
        : m_bytes(reinterpret_cast<const char *>(data), static_cast<int>(size))
    {
    }

    bool isAtEnd() const { return m_at >= m_bytes.size(); }
    /// 0 to 255.
    int octet() { return isAtEnd() ? 0 : static_cast<unsigned char>(m_bytes.at(m_at++)); }
    /// 0 to `count` - 1, "a" being 0.
    int choice(int count) { return (octet() + 256 - 'a') % count; }
    /// Up to the next line feed, which is left out.
    QByteArray line();
    /// A line as UTF-8; one that begins with "=" as UTF-16, big-endian, in hexadecimal: the only
    /// way to half a surrogate pair.
    QString text();
    QByteArray rest();
    QList<QByteArray> lines();

    /**
     * A value of the types that cross the bus, and of some that must not: a letter for the type,
     * then its text up to the end of the line. `l` and `m` begin a list and a map (each key a line
     * of its own), `e` ends it; see the seeds.
     */
    QVariant variant() { return variant(0); }

private:
    QVariant variant(int depth);
    bool takesEnd();

    const QByteArray m_bytes;
    int m_at = 0;
};

/// The first line chooses: "b" gives what follows it to `write`, "a" to `read`.
void readOrWrite(FuzzInput &input, void (*read)(FuzzInput &), void (*write)(FuzzInput &));

/// Ends the process, as a crash would, unless the condition holds.
void require(bool condition, const char *what);

/// A directory for this run, in memory where the machine has such a place.
QString fuzzDirectory();
/// Puts a file with these bytes there and gives its path.
QString fuzzFile(const QString &name, const QByteArray &bytes);
