#include "dragout.h"
#include "marktranslator.h"
#include "shortstringlisteditor.h"
#include "touchstyle.h"

#include <QApplication>
#include <QGridLayout>
#include <QLineEdit>
#include <QSignalMapper>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

QStringList list(const char *texts) // "a|b||d"
{
    return QString::fromUtf8(texts).split(QLatin1Char('|'));
}

/// The editor as the user has it, with its widgets by their names.
class Editor : public ShortStringListEditor
{
public:
    Editor()
        : changedSpy(this, QOverload<>::of(&ShortStringListEditor::changed))
        , listSpy(this, QOverload<const QStringList &>::of(&ShortStringListEditor::changed))
    {
        resize(500, 320);
        show();
    }
    /// With these texts in the lines, top to bottom.
    explicit Editor(const char *texts)
        : Editor()
    {
        setLines(list(texts));
    }

    QLineEdit *line(int row) const
    {
        return findChild<QLineEdit *>(QStringLiteral("le%1").arg(row));
    }
    QToolButton *up(int row) const
    {
        return findChild<QToolButton *>(QStringLiteral("tbUp%1").arg(row));
    }
    QToolButton *down(int row) const
    {
        return findChild<QToolButton *>(QStringLiteral("tbDown%1").arg(row));
    }
    void setLines(const QStringList &texts)
    {
        for (int i = 0; i < texts.size(); ++i)
            line(i)->setText(texts.at(i));
    }
    /// Line by line, the empty ones too.
    QStringList lines() const
    {
        QStringList texts;
        for (int row = 0; row < 4; ++row)
            texts.append(line(row)->text());
        return texts;
    }

    QSignalSpy changedSpy;
    QSignalSpy listSpy;
};

} // namespace

class ShortStringListEditorTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setStyle(new TouchStyle); }

    void form()
    {
        const Editor editor;
        const auto *outer = qobject_cast<QVBoxLayout *>(editor.layout());
        QVERIFY(outer);
        QCOMPARE(outer->objectName(), QStringLiteral("verticalLayout"));
        const auto *grid = outer->findChild<QGridLayout *>(QStringLiteral("gridLayout"));
        QVERIFY(grid);
        QCOMPARE(editor.findChildren<QLineEdit *>().size(), 4);
        QCOMPARE(editor.findChildren<QToolButton *>().size(), 6);
        QVERIFY(!editor.up(0)); // nothing is above the first row,
        QVERIFY(!editor.down(3)); // and nothing below the last one
        for (int row = 0; row < 4; ++row) {
            int gridRow = -1;
            int column = -1;
            int span = 0;
            grid->getItemPosition(grid->indexOf(editor.line(row)), &gridRow, &column, &span, &span);
            QCOMPARE(gridRow, row);
            QCOMPARE(editor.line(row)->text(), QString());
            for (const QToolButton *button : {editor.up(row), editor.down(row)}) {
                if (!button)
                    continue;
                QVERIFY(grid->indexOf(const_cast<QToolButton *>(button)) >= 0);
                QCOMPARE(button->minimumSize(), QSize(60, 60));
                QCOMPARE(button->iconSize(), QSize(48, 48));
                QVERIFY(qAbs(button->geometry().center().y()
                            - editor.line(row)->geometry().center().y())
                    <= 1);
            }
        }
    }

    void buttonsShowArrows()
    {
        const Editor editor;
        for (int row = 0; row < 3; ++row) {
            QCOMPARE(editor.down(row)->icon().pixmap(48).toImage(),
                QIcon(QStringLiteral(":/down.png")).pixmap(48).toImage());
            QCOMPARE(editor.up(row + 1)->icon().pixmap(48).toImage(),
                QIcon(QStringLiteral(":/up.png")).pixmap(48).toImage());
        }
        QVERIFY(!editor.up(1)->icon().pixmap(48).isNull());
        QVERIFY(!editor.down(0)->icon().pixmap(48).isNull());
    }

    void twoMappersNumberTheButtons()
    {
        const Editor editor;
        const QList<QSignalMapper *> mappers
            = editor.findChildren<QSignalMapper *>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(mappers.size(), 2);
        for (int row = 0; row < 4; ++row) {
            const auto mapped = [&mappers, row](QToolButton *button) {
                return mappers.at(0)->mapping(row) == button
                    || mappers.at(1)->mapping(row) == button;
            };
            QVERIFY(row == 0 || mapped(editor.up(row)));
            QVERIFY(row == 3 || mapped(editor.down(row)));
        }
    }

    void stringsLeaveOutEmptyLines_data()
    {
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QStringList>("strings");
        QTest::newRow("all empty") << list("|||") << QStringList();
        QTest::newRow("full") << list("a|b|c|d") << list("a|b|c|d");
        QTest::newRow("gap closes up") << list("a||c|") << list("a|c");
        QTest::newRow("last one alone") << list("|||d") << list("d");
        QTest::newRow("a blank is a text") << list("a| ||") << list("a| ");
        QTest::newRow("same text twice") << list("a||a|") << list("a|a");
        QTest::newRow("quotes and commas of an init line") << list(
            "AT+CGDCONT=1,\"IP\",\"internet\"|||") << list("AT+CGDCONT=1,\"IP\",\"internet\"");
    }
    void stringsLeaveOutEmptyLines()
    {
        QFETCH(QStringList, lines);
        QFETCH(QStringList, strings);
        Editor editor;
        editor.setLines(lines);
        QCOMPARE(editor.strings(), strings);
    }

    void setStringsFillsFromTheTopAndClearsNothing_data()
    {
        QTest::addColumn<QStringList>("before");
        QTest::addColumn<QStringList>("given");
        QTest::addColumn<QStringList>("after");
        QTest::newRow("into an empty editor") << list("|||") << list("a|b") << list("a|b||");
        QTest::newRow("the fifth is lost") << list("|||") << list("a|b|c|d|e") << list("a|b|c|d");
        QTest::newRow("rows beyond the list keep their text")
            << list("a|b|c|d") << list("x") << list("x|b|c|d");
        QTest::newRow("an empty list changes nothing")
            << list("a|b|c|d") << QStringList() << list("a|b|c|d");
        QTest::newRow("an empty text is put like any other")
            << list("a|b|c|d") << list("|x") << list("|x|c|d");
    }
    void setStringsFillsFromTheTopAndClearsNothing()
    {
        QFETCH(QStringList, before);
        QFETCH(QStringList, given);
        QFETCH(QStringList, after);
        Editor editor;
        editor.setLines(before);
        editor.setStrings(given);
        QCOMPARE(editor.lines(), after);
    }

    void clearEmptiesEveryLine()
    {
        Editor editor("a|b|c|d");
        editor.clear();
        QCOMPARE(editor.lines(), list("|||"));
        QCOMPARE(editor.strings(), QStringList());
    }

    void fillingByTheProgramEmitsNothing()
    {
        Editor editor;
        editor.setStrings(list("a|b|c|d|e"));
        editor.clear();
        editor.setStrings({});
        QCOMPARE(editor.changedSpy.count(), 0);
        QCOMPARE(editor.listSpy.count(), 0);
    }

    void everyKeyTypedEmitsBoth_data()
    {
        QTest::addColumn<int>("row");
        for (int row = 0; row < 4; ++row)
            QTest::addRow("line %d", row) << row;
    }
    void everyKeyTypedEmitsBoth()
    {
        QFETCH(int, row);
        Editor editor;
        QTest::mouseClick(editor.line(row), Qt::LeftButton);
        QTest::keyClicks(editor.line(row), QStringLiteral("*99"));
        QCOMPARE(editor.changedSpy.count(), 3);
        QCOMPARE(editor.listSpy.count(), 3);
        QCOMPARE(editor.listSpy.at(1).first().toStringList(), list("*9"));
        QTest::keyClick(editor.line(row), Qt::Key_Backspace);
        QCOMPARE(editor.changedSpy.count(), 4);
        QCOMPARE(editor.listSpy.last().first().toStringList(), list("*9"));
    }

    void signalWithoutTheListComesFirst()
    {
        Editor editor("a|b||");
        QStringList order;
        connect(&editor, QOverload<>::of(&ShortStringListEditor::changed), this,
            [&order] { order.append(QStringLiteral("plain")); });
        connect(&editor, QOverload<const QStringList &>::of(&ShortStringListEditor::changed), this,
            [&order](const QStringList &strings) { order.append(strings); });
        QTest::keyClicks(editor.line(1), QStringLiteral("!"));
        QTest::mouseClick(editor.up(1), Qt::LeftButton);
        QTest::mouseClick(editor.down(0), Qt::LeftButton);
        QCOMPARE(order, list("plain|a|b!|plain|b!|a|plain|a|b!"));
    }

    void buttonsMoveTheTexts_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QStringList>("before");
        QTest::addColumn<QStringList>("after");
        const auto row = [](const char *button, const char *after) {
            QTest::addRow("%s", button)
                << QString::fromLatin1(button) << list("a|b|c|d") << list(after);
        };
        row("tbUp1", "b|a|c|d");
        row("tbUp2", "a|c|b|d");
        row("tbUp3", "a|b|d|c");
        row("tbDown0", "b|a|c|d");
        row("tbDown1", "a|c|b|d");
        row("tbDown2", "a|b|d|c");
        QTest::newRow("up onto an empty line")
            << QStringLiteral("tbUp1") << list("|b|c|") << list("b||c|");
        QTest::newRow("an empty line down")
            << QStringLiteral("tbDown1") << list("a||c|") << list("a|c||");
        QTest::newRow("two empty lines")
            << QStringLiteral("tbDown2") << list("a|b||") << list("a|b||");
    }
    void buttonsMoveTheTexts()
    {
        QFETCH(QString, button);
        QFETCH(QStringList, before);
        QFETCH(QStringList, after);
        Editor editor;
        editor.setLines(before);
        auto *const pressed = editor.findChild<QToolButton *>(button);
        QTest::mousePress(pressed, Qt::LeftButton);
        QCOMPARE(editor.lines(), before); // it acts when it is let go
        QCOMPARE(editor.changedSpy.count(), 0);
        QTest::mouseRelease(pressed, Qt::LeftButton);
        QCOMPARE(editor.lines(), after);
        QCOMPARE(editor.changedSpy.count(), 1);
        QCOMPARE(editor.listSpy.count(), 1);
        QStringList texts = after;
        texts.removeAll(QString());
        QCOMPARE(editor.listSpy.first().first().toStringList(), texts);
    }

    // Also when the list of texts stays as it was.
    void movingOntoAnEmptyLineEmitsAlthoughTheListIsTheSame()
    {
        Editor editor("|b||");
        const QStringList before = editor.strings();
        QTest::mouseClick(editor.up(1), Qt::LeftButton);
        QCOMPARE(editor.lines(), list("b|||"));
        QCOMPARE(editor.strings(), before);
        QCOMPARE(editor.changedSpy.count(), 1);
        QCOMPARE(editor.listSpy.count(), 1);
    }

    // The button lets go as soon as it is left, and that counts.
    void slidingOffAButtonMoves()
    {
        Editor editor("a|b|c|d");
        dragOut(editor.down(2));
        QCOMPARE(editor.lines(), list("a|b|d|c"));
        QCOMPARE(editor.changedSpy.count(), 1);
    }

    void rowsWithoutANeighbourStay_data()
    {
        QTest::addColumn<bool>("isUp");
        QTest::addColumn<int>("row");
        QTest::newRow("up from the top") << true << 0;
        QTest::newRow("up from above the top") << true << -1;
        QTest::newRow("up from below the bottom") << true << 4;
        QTest::newRow("down from the bottom") << false << 3;
        QTest::newRow("down from above the top") << false << -1;
        QTest::newRow("down from below the bottom") << false << 4;
    }
    void rowsWithoutANeighbourStay()
    {
        QFETCH(bool, isUp);
        QFETCH(int, row);
        Editor editor("a|b|c|d");
        if (isUp)
            editor.upLine(row);
        else
            editor.downLine(row);
        QCOMPARE(editor.lines(), list("a|b|c|d"));
        QCOMPARE(editor.changedSpy.count(), 0);
        QCOMPARE(editor.listSpy.count(), 0);
    }

    void aFingerHitsEveryPart()
    {
        const Editor editor;
        for (int row = 0; row < 4; ++row)
            QVERIFY2(editor.line(row)->height() >= 48, qPrintable(QString::number(row)));
    }

    void languageChangeKeepsTheTexts()
    {
        Editor editor("a|b||");
        const MarkTranslator translator("ShortStringListEditor");
        QTRY_COMPARE(editor.windowTitle(), QStringLiteral("xForm"));
        QCOMPARE(editor.lines(), list("a|b||"));
        QCOMPARE(editor.changedSpy.count(), 0);
    }
};

QTEST_MAIN(ShortStringListEditorTest)
#include "tst_shortstringlisteditor.moc"
