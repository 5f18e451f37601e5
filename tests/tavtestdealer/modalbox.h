#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QStringList>
#include <QTimer>
#include <QVector>

#include <algorithm>
#include <functional>

/// Answers the message boxes that come up while it lives, one after the other, each with the next
/// answer, and keeps what they showed.
class ModalBoxes : public QObject
{
public:
    using Answer = std::function<void(QMessageBox *)>;

    struct Shown
    {
        QString title;
        QString text;
        QStringList buttons; ///< in the order of the screen, left to right
        QMessageBox::Icon icon;
        bool hasDefault;
        int lowestButton; ///< height in pixels
        QWidget *parent;
    };

    explicit ModalBoxes(const QVector<Answer> &answers)
        : m_answers(answers)
    {
        connect(&m_timer, &QTimer::timeout, this, &ModalBoxes::look);
        m_timer.start(5);
    }

    static Answer click(QMessageBox::StandardButton button)
    {
        return [button](QMessageBox *box) { box->button(button)->click(); };
    }

    QVector<Shown> shown;

private:
    void look()
    {
        auto *const box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box || !box->isVisible() || box == m_last)
            return;
        m_last = box;
        connect(box, &QObject::destroyed, this, [this] { m_last = nullptr; });
        Shown what{
            box->windowTitle(), box->text(), {}, box->icon(), false, 10000, box->parentWidget()};
        QList<QAbstractButton *> buttons = box->buttons();
        std::sort(buttons.begin(), buttons.end(),
            [](const QAbstractButton *a, const QAbstractButton *b) { return a->x() < b->x(); });
        for (const QAbstractButton *button : qAsConst(buttons)) {
            what.buttons.append(button->text().remove(QLatin1Char('&')));
            what.lowestButton = qMin(what.lowestButton, button->height());
            const auto *push = qobject_cast<const QPushButton *>(button);
            what.hasDefault = what.hasDefault || (push && push->isDefault());
        }
        shown.append(what);
        if (m_answers.isEmpty())
            qFatal("a box that nobody expects: %s", qPrintable(box->text()));
        m_answers.takeFirst()(box);
    }

    QTimer m_timer;
    QVector<Answer> m_answers;
    QMessageBox *m_last = nullptr;
};
