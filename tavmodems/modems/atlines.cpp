#include "atlines.h"

QList<QByteArray> AtLines::feed(const QByteArray &bytes)
{
    QList<QByteArray> lines;
    for (const char c : bytes) {
        if (c == '\r' || c == '\n') {
            const QByteArray line = m_line.trimmed();
            if (!m_tooLong && !line.isEmpty())
                lines << line;
            clear();
        } else if (m_line.size() >= kMaxLine) {
            m_tooLong = true;
        } else if (c != '\0') {
            m_line.append(c);
        }
    }
    return lines;
}

void AtLines::clear()
{
    m_line.clear();
    m_tooLong = false;
}
