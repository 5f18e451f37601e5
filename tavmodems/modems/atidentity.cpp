#include "atidentity.h"

#include "atfields.h"

namespace {

constexpr int kMaxText = 64; // characters; longer ones are not names

QString text(const QByteArray &bytes)
{
    const QString all = QString::fromUtf8(atfields::unquoted(bytes.trimmed()));
    QString printable;
    for (const QChar c : all) {
        if (c.isPrint() && c != QChar::ReplacementCharacter)
            printable += c;
    }
    return printable.trimmed().left(kMaxText);
}

} // namespace

QString AtIdentity::name() const
{
    if (model.startsWith(maker, Qt::CaseInsensitive))
        return model;
    return QStringLiteral("%1 %2").arg(maker, model).trimmed();
}

QString parseIdentityText(const QByteArray &command, const QList<QByteArray> &lines)
{
    // SIMCom has "Revision:" in front of that.
    for (const QByteArray &name : {command.mid(2), QByteArray("Revision")}) {
        if (const auto named = atfields::valueOf(name, lines))
            return text(*named);
    }
    return lines.isEmpty() ? QString() : text(lines.first());
}

AtIdentity parseInformation(const QList<QByteArray> &lines)
{
    AtIdentity identity;
    const auto maker = atfields::valueOf("Manufacturer", lines);
    const auto model = atfields::valueOf("Model", lines);
    if (maker || model)
        return {text(maker.value_or(QByteArray())), text(model.value_or(QByteArray()))};
    // A lone line is a model, or a product code: nothing can be told from a number.
    if (lines.size() >= 2)
        return {text(lines.at(0)), text(lines.at(1))};
    if (lines.size() == 1)
        return {QString(), text(lines.at(0))};
    return identity;
}
