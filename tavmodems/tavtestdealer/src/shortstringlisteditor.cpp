#include "shortstringlisteditor.h"

#include "imageresources.h"
#include "ui_shortstringlisteditor.h"

#include <QEvent>
#include <QSignalMapper>

ShortStringListEditor::ShortStringListEditor(QWidget *parent)
    : QWidget(parent)
    , ui(new Ui::ShortStringListEditor)
{
    initImageResources();
    ui->setupUi(this);
    m_lines = {ui->le0, ui->le1, ui->le2, ui->le3};

    const auto map = [this](void (ShortStringListEditor::*slot)(int),
                         const QMap<int, QToolButton *> &buttons) {
        auto *const mapper = new QSignalMapper(this);
        for (auto it = buttons.cbegin(); it != buttons.cend(); ++it) {
            mapper->setMapping(it.value(), it.key());
            connect(
                it.value(), &QToolButton::released, mapper, QOverload<>::of(&QSignalMapper::map));
        }
        connect(mapper, &QSignalMapper::mappedInt, this, slot);
    };
    map(&ShortStringListEditor::upLine, {{1, ui->tbUp1}, {2, ui->tbUp2}, {3, ui->tbUp3}});
    map(&ShortStringListEditor::downLine, {{0, ui->tbDown0}, {1, ui->tbDown1}, {2, ui->tbDown2}});
    for (const QLineEdit *line : qAsConst(m_lines))
        connect(line, &QLineEdit::textEdited, this, &ShortStringListEditor::textEdited);
}

ShortStringListEditor::~ShortStringListEditor() = default;

QStringList ShortStringListEditor::strings() const
{
    QStringList texts;
    for (const QLineEdit *line : m_lines) {
        if (!line->text().isEmpty())
            texts.append(line->text());
    }
    return texts;
}

void ShortStringListEditor::setStrings(const QStringList &strings)
{
    for (int i = 0; i < qMin(strings.size(), m_lines.size()); ++i)
        m_lines.at(i)->setText(strings.at(i));
}

void ShortStringListEditor::clear()
{
    for (QLineEdit *line : qAsConst(m_lines))
        line->clear();
}

void ShortStringListEditor::upLine(int idx)
{
    if (idx > 0 && idx < m_lines.size())
        swapLines(idx, idx - 1);
}

void ShortStringListEditor::downLine(int idx)
{
    if (idx >= 0 && idx < m_lines.size() - 1)
        swapLines(idx, idx + 1);
}

void ShortStringListEditor::textEdited()
{
    emit changed();
    emit changed(strings());
}

void ShortStringListEditor::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
}

void ShortStringListEditor::swapLines(int first, int second)
{
    const QString text = m_lines.at(first)->text();
    m_lines.at(first)->setText(m_lines.at(second)->text());
    m_lines.at(second)->setText(text);
    textEdited();
}
