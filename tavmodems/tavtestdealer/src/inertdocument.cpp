#include "inertdocument.h"

#include <QImage>
#include <QUrl>
#include <QVariant>

QVariant InertDocument::loadResource(int type, const QUrl &name)
{
    Q_UNUSED(name)
    if (type != ImageResource)
        return {};
    // Without any, the layout would look for a file of that name by itself.
    QImage nothing(1, 1, QImage::Format_ARGB32_Premultiplied);
    nothing.fill(Qt::transparent);
    return nothing;
}
