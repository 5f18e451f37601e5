#include "logbinary.h"

#include <QTextCodec>

QDebug operator<<(QDebug debug, const logbinary &data)
{
    const QTextCodec *codec = data.codecName ? QTextCodec::codecForName(data.codecName) : nullptr;
    const QString decoded = codec ? codec->toUnicode(data.bytes) : QString::fromLatin1(data.bytes);

    QString text;
    text.reserve(decoded.size());
    for (const QChar c : decoded) {
        const bool isLayout = c == QLatin1Char('\n') || c == QLatin1Char('\t');
        if (c.category() == QChar::Other_Control && !isLayout)
            text += QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0'));
        else
            text += c;
    }
    const QDebugStateSaver saver(debug);
    debug.noquote() << text;
    return debug;
}
