#include "onelinetext.h"

#include <algorithm>

namespace {

bool isControl(QChar c)
{
    return c.category() == QChar::Other_Control;
}

} // namespace

bool onelinetext::isValid(const QString &text)
{
    return std::none_of(text.cbegin(), text.cend(), isControl);
}

QString onelinetext::cleaned(QString text)
{
    const auto end = std::remove_if(text.begin(), text.end(), isControl);
    text.truncate(static_cast<int>(end - text.begin()));
    return text;
}

QStringList onelinetext::cleaned(QStringList texts)
{
    for (QString &text : texts)
        text = cleaned(text);
    return texts;
}
