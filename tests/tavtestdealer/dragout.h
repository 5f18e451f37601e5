#pragma once

#include <QCoreApplication>
#include <QMouseEvent>
#include <QTest>
#include <QWidget>

/// Presses the left mouse button on a widget, drags out of it and lets go there.
inline void dragOut(QWidget *widget)
{
    QTest::mousePress(widget, Qt::LeftButton);
    const QPointF outside(widget->width() + 50, widget->height() + 50);
    QMouseEvent move(QEvent::MouseMove, outside, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(widget, &move);
    QMouseEvent release(
        QEvent::MouseButtonRelease, outside, Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(widget, &release);
}
