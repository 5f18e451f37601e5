#pragma once

#include <QProxyStyle>

/// Qt's own style with what a finger needs: whatever is pressed or typed into and the rows of lists
/// and menus at least 48 pixels high, scroll bars wide enough to be grabbed, and questions with an
/// edge of their own. A style, not a style sheet: that would slow every widget down, the first
/// window above all.
class TouchStyle : public QProxyStyle
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TouchStyle)

public:
    TouchStyle();
    ~TouchStyle() override;

    /// Text that can be read at arm's length, wherever a form sets no size. Unlike the style it can
    /// only be set once there is an application object.
    static void enlargeText();

    using QProxyStyle::polish;
    void polish(QWidget *widget) override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
        const QWidget *widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
        const QWidget *widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex *option,
        SubControl subControl, const QWidget *widget) const override;
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
        QStyleHintReturn *returnData) const override;
    int pixelMetric(
        PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override;
};
