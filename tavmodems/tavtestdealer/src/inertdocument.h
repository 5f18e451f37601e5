#pragma once

#include <QTextDocument>

/// A document of rich text that comes from elsewhere: what its markup points to, be it a picture, a
/// style sheet or a page, is never opened. An empty picture stands for each.
class InertDocument : public QTextDocument
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(InertDocument)

public:
    using QTextDocument::QTextDocument;

protected:
    QVariant loadResource(int type, const QUrl &name) override;
};
