#include "atlines.h"

QList<QByteArray> AtLines::feed(const QByteArray &bytes)
{
    QList<QByteArray> lines;
    for (const char c : bytes) {
        if (c == '\n' && m_last == '\r') {
            m_returns = 0;
        } else if (c == '\r' && m_last == '\r') {
            ++m_returns;
        } else if (c == '\r' || c == '\n') {
            endLine(lines);
        } else if (c != '\0') {
            for (; m_returns > 0; --m_returns)
                endLine(lines);
            if (m_line.size() >= kMaxLine)
                m_tooLong = true;
            else
                m_line.append(c);
        }
        if (c != '\0')
            m_last = c;
    }
    return lines;
}

void AtLines::clear()
{
    m_line.clear();
    m_tooLong = false;
}

void AtLines::endText()
{
    m_isTextOpen = false;
}

void AtLines::endLine(QList<QByteArray> &lines)
{
    const QByteArray line = m_line.trimmed();
    const bool hasLoneQuote = m_line.count('"') % 2 != 0;
    if (m_tooLong) {
        // dropped
    } else if (line.startsWith("+CUSD:")) {
        m_isTextOpen = hasLoneQuote;
        lines << line;
    } else if (m_isTextOpen) {
        m_isTextOpen = !hasLoneQuote;
        lines << m_line;
    } else if (!line.isEmpty()) {
        lines << line;
    }
    clear();
}
