#include "touchstyle.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QMessageBox>
#include <QPainter>
#include <QStyleOption>

#include <algorithm>

namespace {

constexpr int kTargetHeight = 48;
constexpr int kButtonPadding = 16;
constexpr int kScrollBarExtent = 32;
constexpr int kCheckBoxExtent = 28;
constexpr int kTextSize = 12; // points
constexpr int kBoxEdge = 3;

} // namespace

TouchStyle::TouchStyle()
    : QProxyStyle(QStringLiteral("Fusion")) // looks the same on every terminal
{
}

TouchStyle::~TouchStyle() = default;

void TouchStyle::enlargeText()
{
    QFont font = QApplication::font();
    font.setPointSize(kTextSize);
    QApplication::setFont(font);
}

void TouchStyle::polish(QWidget *widget)
{
    QProxyStyle::polish(widget);
    // Has the style asked to draw the ground of the box.
    if (qobject_cast<QMessageBox *>(widget))
        widget->setAttribute(Qt::WA_StyledBackground);
}

void TouchStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option,
    QPainter *painter, const QWidget *widget) const
{
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    // A terminal has no window manager to put a frame around it: a question would melt into the
    // window below.
    if (element == PE_Widget && qobject_cast<const QMessageBox *>(widget)) {
        painter->setPen(QPen(option->palette.color(QPalette::Highlight), 2 * kBoxEdge));
        painter->drawRect(option->rect);
    }
}

QSize TouchStyle::sizeFromContents(
    ContentsType type, const QStyleOption *option, const QSize &size, const QWidget *widget) const
{
    const QSize given = QProxyStyle::sizeFromContents(type, option, size, widget);
    switch (type) {
    case CT_PushButton:
        return (given + QSize(kButtonPadding, 0))
            .expandedTo(QSize(2 * kTargetHeight, kTargetHeight));
    case CT_CheckBox:
    case CT_ComboBox:
    case CT_ItemViewItem:
    case CT_LineEdit:
    case CT_TabBarTab:
        return given.expandedTo(QSize(0, kTargetHeight));
    case CT_MenuItem: {
        const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
        if (item && item->menuItemType == QStyleOptionMenuItem::Separator)
            return given;
        return given.expandedTo(QSize(0, kTargetHeight));
    }
    default:
        return given;
    }
}

QRect TouchStyle::subControlRect(ComplexControl control, const QStyleOptionComplex *option,
    SubControl subControl, const QWidget *widget) const
{
    const QRect given = QProxyStyle::subControlRect(control, option, subControl, widget);
    const auto *box = qstyleoption_cast<const QStyleOptionGroupBox *>(option);
    if (control != CC_GroupBox || subControl != SC_GroupBoxLabel || !box)
        return given;
    // Fusion makes room for what is black of a title and draws it with its bearings: the last
    // letter of a long one was cut.
    const int wanted = box->fontMetrics.horizontalAdvance(box->text + QLatin1Char(' '));
    const QRect whole(given.topLeft(), QSize(std::max(given.width(), wanted), given.height()));
    return box->direction == Qt::RightToLeft ? whole.translated(given.width() - whole.width(), 0)
                                             : whole;
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
    switch (metric) {
    case PM_ScrollBarExtent:
        return kScrollBarExtent;
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
        return kCheckBoxExtent;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}
