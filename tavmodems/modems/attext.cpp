#include "attext.h"

#include "atfields.h"
#include "gsmcodec.h"
#include "onelinetext.h"

#include <QRegularExpression>

QString parseAtText(const QByteArray &field)
{
    const QByteArray bare = atfields::unquoted(field.trimmed());
    // Latin or Cyrillic characters all through; a name or number of such digits alone is none.
    static const QRegularExpression ucs2(QStringLiteral("^(?:0[04][0-9A-Fa-f]{2})+$"));
    const bool isUcs2 = bare.size() >= 8 && ucs2.match(QString::fromLatin1(bare)).hasMatch();
    return onelinetext::cleaned(
        isUcs2 ? gsmcodec::fromUcs2(QByteArray::fromHex(bare)) : QString::fromUtf8(bare))
        .trimmed();
}
