#pragma once

#include <QByteArray>
#include <QList>

/**
 * Cuts a stream of bytes into lines, however it arrives. CR and LF in any number and order end a
 * line; empty lines and NUL bytes are dropped, blanks at the ends too. Within the text of a +CUSD
 * (3GPP TS 27.007 7.15) the lines are the network's own and stay as they are, empty ones too. A
 * line longer than any answer has is dropped up to its end, so that babble without a line end costs
 * no memory.
 */
class AtLines
{
public:
    static constexpr int kMaxLine = 4096; ///< bytes

    /** The lines completed by these bytes. */
    QList<QByteArray> feed(const QByteArray &bytes);
    /** What has come of a line that has not ended, without blanks at the ends. */
    QByteArray unfinished() const { return m_line.trimmed(); }
    /** Forgets an unfinished line. */
    void clear();
    /** What comes from now on is no part of a text whose end was not seen. */
    void endText();

private:
    void endLine(QList<QByteArray> &lines);

    QByteArray m_line;
    bool m_tooLong = false;
    bool m_isTextOpen = false;
    char m_last = '\n';
    int m_returns = 0; // CRs that are empty lines, unless an LF shows that they are one line end
};
