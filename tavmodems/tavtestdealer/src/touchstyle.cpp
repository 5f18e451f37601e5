#include "touchstyle.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QStyleOption>

namespace {

constexpr int targetHeight = 48;
constexpr int buttonPadding = 16;
constexpr int scrollBarExtent = 32;
constexpr int textSize = 12; // points

} // namespace

TouchStyle::TouchStyle()
    : QProxyStyle(QStringLiteral("Fusion")) // looks the same on every terminal
{
}

TouchStyle::~TouchStyle() = default;

void TouchStyle::enlargeText()
{
    QFont font = QApplication::font();
    font.setPointSize(textSize);
    QApplication::setFont(font);
}

QSize TouchStyle::sizeFromContents(
    ContentsType type, const QStyleOption *option, const QSize &size, const QWidget *widget) const
{
    const QSize given = QProxyStyle::sizeFromContents(type, option, size, widget);
    switch (type) {
    case CT_PushButton:
        return (given + QSize(buttonPadding, 0)).expandedTo(QSize(2 * targetHeight, targetHeight));
    case CT_MenuItem: {
        const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
        if (item && item->menuItemType == QStyleOptionMenuItem::Separator)
            return given;
        return given.expandedTo(QSize(0, targetHeight));
    }
    default:
        return given;
    }
}

int TouchStyle::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
    QStyleHintReturn *returnData) const
{
    // The buttons of a question stand in the order in which it asks, on every desktop.
    if (hint == SH_DialogButtonLayout)
        return QDialogButtonBox::WinLayout;
    return QProxyStyle::styleHint(hint, option, widget, returnData);
}

int TouchStyle::pixelMetric(
    PixelMetric metric, const QStyleOption *option, const QWidget *widget) const
{
    if (metric == PM_ScrollBarExtent)
        return scrollBarExtent;
    return QProxyStyle::pixelMetric(metric, option, widget);
}
