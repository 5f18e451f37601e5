#pragma once

#include <QList>
#include <QStringList>
#include <QWidget>

#include <memory>

class QLineEdit;
namespace Ui {
class ShortStringListEditor;
}

/// Edits a short ordered list of texts: four lines, and buttons that move a text up or down. Only
/// what the user does is told by signals, so that a form can be filled without saving anything.
class ShortStringListEditor : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ShortStringListEditor)

public:
    explicit ShortStringListEditor(QWidget *parent = nullptr);
    ~ShortStringListEditor() override;

    /// The texts from top to bottom, without the empty ones.
    QStringList strings() const;

    /// Puts the first four texts into the lines from the top on. Lines beyond the end of the list
    /// keep theirs: clear() first.
    void setStrings(const QStringList &strings);

    void clear();

public slots:
    /// Swaps the text of a line (0 is the top one) with the one above or below it. A line that has
    /// no such neighbour stays.
    void upLine(int idx);
    void downLine(int idx);

    void textEdited();

signals:
    /// Always both, in this order.
    void changed();
    void changed(const QStringList &strings);

protected:
    void changeEvent(QEvent *event) override;

private:
    void swapLines(int first, int second);

    const std::unique_ptr<Ui::ShortStringListEditor> ui;
    QList<QLineEdit *> m_lines; // the form's, top to bottom
};
