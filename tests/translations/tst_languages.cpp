#include "ethernetsettingsbox.h"
#include "maindialog.h"
#include "modemackwidget.h"
#include "modemswidget.h"
#include "searchwidget.h"
#include "terminalconf.h"
#include "testdealerroot.h"
#include "waitdialog.h"

#include "modemsettings.h"
#include "privatebus.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QRegularExpression>
#include <QStackedWidget>
#include <QStyle>
#include <QStyleOptionGroupBox>
#include <QTabWidget>
#include <QTest>
#include <QTextBrowser>
#include <QTextEdit>
#include <QTranslator>

#include <functional>
#include <memory>

namespace {

/// The tool's language as its start makes it, from a terminal configuration, for as long as this
/// lives.
class Language
{
public:
    Language(TestDealerRoot *root, const QString &name)
        : m_root(root)
        , m_conf(QStringLiteral("\n[paths]\ntranslations=" TRANSLATIONS "\n"))
    {
        m_root->setUpLocale(QLocale(name));
        QCoreApplication::sendPostedEvents();
    }
    ~Language()
    {
        // Removes them from the application as well.
        qDeleteAll(m_root->findChildren<QTranslator *>());
        QLocale::setDefault(QLocale::c());
        QCoreApplication::sendPostedEvents();
    }
    Language(const Language &) = delete;
    Language &operator=(const Language &) = delete;

private:
    TestDealerRoot *const m_root;
    const TerminalConf m_conf;
};

using Texts = QMap<QString, QString>; // by the place where each is shown

QString placeOf(const QWidget *widget)
{
    QString place;
    for (; widget; widget = widget->parentWidget())
        place.prepend(QLatin1Char('/') + widget->objectName());
    return place;
}

Texts textsOf(QWidget &window)
{
    Texts texts;
    QList<QWidget *> widgets = window.findChildren<QWidget *>();
    widgets.prepend(&window);
    for (const QWidget *widget : qAsConst(widgets)) {
        const QString place = placeOf(widget);
        if (place.contains(QLatin1String("/qt_")) || qobject_cast<const QTextEdit *>(widget))
            continue;
        for (const char *property :
            {"windowTitle", "text", "title", "toolTip", "placeholderText"}) {
            const QString text = widget->property(property).toString();
            if (!text.isEmpty())
                texts.insert(place + QLatin1Char('.') + QLatin1String(property), text);
        }
        if (const auto *tabs = qobject_cast<const QTabWidget *>(widget)) {
            for (int i = 0; i < tabs->count(); ++i)
                texts.insert(QStringLiteral("%1.tab%2").arg(place).arg(i), tabs->tabText(i));
        }
        if (const auto *usages = qobject_cast<const QComboBox *>(widget)) {
            for (int i = 0; i < usages->count(); ++i)
                texts.insert(QStringLiteral("%1.item%2").arg(place).arg(i), usages->itemText(i));
        }
    }
    return texts;
}

/// Written alike in every language: data, abbreviations, "Modem" in Uzbek.
bool isTheSameEverywhere(const QString &text)
{
    static const QRegularExpression same(
        QStringLiteral("^([^a-z]*|gsm1|eth0|ATDT|\\*99#|/dev/.*|Analog Modem|Modem|Telefon.*)$"));
    return same.match(text).hasMatch();
}

QString describe(const QWidget *widget, const QString &what)
{
    return QStringLiteral("%1 %2: %3x%4 of %5x%6")
        .arg(placeOf(widget), what)
        .arg(widget->width())
        .arg(widget->height())
        .arg(widget->sizeHint().width())
        .arg(widget->sizeHint().height());
}

/// Where a box's title is drawn, and beyond which it is clipped.
QRect titlePlace(const QGroupBox &box)
{
    QStyleOptionGroupBox option;
    option.initFrom(&box);
    option.text = box.title();
    option.subControls = QStyle::SC_GroupBoxFrame | QStyle::SC_GroupBoxLabel;
    return box.style()->subControlRect(
        QStyle::CC_GroupBox, &option, QStyle::SC_GroupBoxLabel, &box);
}

/// What of a window as it is shown cannot be read in full.
QStringList cutOff(const QWidget &window)
{
    QStringList found;
    const QList<QWidget *> widgets = window.findChildren<QWidget *>();
    for (const QWidget *widget : widgets) {
        if (!widget->isVisible() || widget->objectName().startsWith(QLatin1String("qt_")))
            continue;
        const QRect place(widget->mapTo(&window, QPoint()), widget->size());
        if (!window.rect().contains(place) && !qobject_cast<const QTextEdit *>(widget->parent()))
            found.append(describe(widget, QStringLiteral("lies outside")));
        const QSize least = widget->minimumSizeHint();
        if (widget->width() < least.width() || widget->height() < least.height())
            found.append(describe(widget, QStringLiteral("is squeezed")));
        if (const auto *label = qobject_cast<const QLabel *>(widget)) {
            const QSize wanted(label->wordWrap() ? 0 : label->sizeHint().width(),
                label->wordWrap() ? label->heightForWidth(label->width())
                                  : label->sizeHint().height());
            if (label->width() < wanted.width() || label->height() < wanted.height())
                found.append(describe(widget, label->text()));
        }
        if (const auto *button = qobject_cast<const QAbstractButton *>(widget)) {
            if (button->width() < button->sizeHint().width()
                || button->height() < button->sizeHint().height())
                found.append(describe(widget, button->text()));
        }
        if (const auto *bar = qobject_cast<const QTabBar *>(widget)) {
            if (bar->width() < bar->sizeHint().width())
                found.append(describe(widget, QStringLiteral("tabs")));
        }
        if (const auto *box = qobject_cast<const QGroupBox *>(widget)) {
            const int wanted = box->fontMetrics().horizontalAdvance(box->title());
            if (titlePlace(*box).width() < wanted || box->width() < wanted)
                found.append(describe(widget, box->title()));
        }
        if (const auto *edit = qobject_cast<const QLineEdit *>(widget)) {
            constexpr int frame = 10;
            if (edit->fontMetrics().horizontalAdvance(edit->placeholderText()) + frame
                > edit->width())
                found.append(describe(widget, edit->placeholderText()));
        }
        if (const auto *box = qobject_cast<const QComboBox *>(widget)) {
            if (box->width() < box->minimumSizeHint().width())
                found.append(describe(widget, box->currentText()));
        }
    }
    return found;
}

/// The same once the layouts have come to rest.
QStringList cutOffAtRest(const QWidget &window)
{
    constexpr int limit = 500; // ms
    QStringList found;
    const bool isWhole = QTest::qWaitFor([&] { return (found = cutOff(window)).isEmpty(); }, limit);
    return isWhole ? QStringList() : found;
}

/// Calls the action with every page of the window in view, one after the other.
void eachPage(QWidget *area, const std::function<void()> &action)
{
    const QList<QStackedWidget *> stacks = area->findChildren<QStackedWidget *>();
    for (QStackedWidget *stack : stacks) {
        if (!stack->isVisible())
            continue;
        auto *const tabs = qobject_cast<QTabWidget *>(stack->parentWidget());
        for (int i = 0; i < stack->count(); ++i) {
            if (tabs)
                tabs->setCurrentIndex(i);
            else
                stack->setCurrentIndex(i);
            eachPage(stack->currentWidget(), action);
        }
        return;
    }
    QCoreApplication::processEvents();
    action();
}

/// Leaves a picture in the folder that TAV_PICTURES names, for people to look at.
void takePicture(QWidget &window, const QString &name)
{
    const QString folder = qEnvironmentVariable("TAV_PICTURES");
    if (!folder.isEmpty())
        QVERIFY(window.grab().save(folder + QLatin1Char('/') + name + QLatin1String(".png")));
}

struct Box
{
    const char *context;
    const char *title;
    const char *text;
    QMessageBox::StandardButtons buttons;
};

const Box kBoxes[] = {
    {"TestDealerRoot", "Warning", "The application is already running!", QMessageBox::Ok},
    {"MainDialog", "Settings saving error", "Modems settings saving error. Continue exit?",
        QMessageBox::Yes},
    {"MainDialog", "Test dealer closing", "Save modems settings?",
        QMessageBox::Save | QMessageBox::No | QMessageBox::Cancel},
    {"ModemsWidget", "Settings saving error", "Modems settings saving error", QMessageBox::Ok},
    {"SearchWidget", "To modem only mode",
        "Modem was switched to Modem Only mode. Replug modem, please.", QMessageBox::Ok},
    {"EthernetWidget", "Network settings applying",
        "The network settings will reconfigures. continue?", QMessageBox::Yes},
    {"ModemsFinder", "No modem answers on any port.",
        "This machine has no serial ports. Is the modem plugged in?", QMessageBox::Ok},
};

} // namespace

class LanguagesTest : public QObject
{
    Q_OBJECT

public:
    explicit LanguagesTest(TestDealerRoot *root)
        : m_root(root)
    {
    }

private slots:
    void initTestCase()
    {
        QApplication::setQuitOnLastWindowClosed(false);
        m_bus = std::make_unique<PrivateBus>();
        ModemInfo info;
        info.setConnectionName(QStringLiteral("gsm1"));
        ModemSettings().setModems({{info.connectionName(), info}});
        ModemSettings().setConnectionsOrder({info.connectionName()});
    }
    void cleanupTestCase() { m_bus.reset(); }

    void everyStemIsLoaded_data() { languages(); }
    void everyStemIsLoaded()
    {
        QFETCH(QString, name);
        const Language language(m_root, name);
        QStringList stems;
        for (const QTranslator *translator : m_root->findChildren<QTranslator *>()) {
            QVERIFY(!translator->isEmpty());
            stems.append(
                QFileInfo(translator->filePath()).fileName().section(QLatin1Char('_'), 0, 0));
        }
        stems.sort();
        QCOMPARE(stems.join(QLatin1Char(' ')),
            QStringLiteral("netinterfaces qtbase servicescontroller tavmodems tavtestdealer"));
    }

    void windowChangesItsLanguageAsItStands_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("windowName");
        for (const char *name : {"ru_RU", "uk_UA", "kk_KZ", "be_BY", "uz_UZ"}) {
            for (const char *window : {"main dialog", "wait dialog"})
                QTest::addRow("%s %s", name, window)
                    << QString::fromLatin1(name) << QString::fromLatin1(window);
        }
    }
    void windowChangesItsLanguageAsItStands()
    {
        QFETCH(QString, name);
        QFETCH(QString, windowName);
        const auto make = [&windowName]() -> std::unique_ptr<QWidget> {
            if (windowName == QLatin1String("wait dialog"))
                return std::make_unique<WaitDialog>(true);
            auto dialog = std::make_unique<MainDialog>();
            dialog->connectionTested(false);
            return dialog;
        };
        const std::unique_ptr<QWidget> window = make();
        const Texts english = textsOf(*window);
        const Language language(m_root, name);
        Texts changed = textsOf(*window);
        Texts fresh = textsOf(*make());
        QCOMPARE(changed.keys(), fresh.keys());
        for (auto text = fresh.begin(); text != fresh.end(); ++text) {
            // An interface may have put its name into the title of a new window.
            const bool isTitle = text.key().endsWith(QLatin1String("/gbSettings.title"));
            const QString expected = isTitle ? EthernetSettingsBox::tr("GroupBox") : text.value();
            QVERIFY2(changed.value(text.key()) == expected,
                qPrintable(text.key() + QLatin1String(" reads ") + changed.value(text.key())));
            QVERIFY2(changed.value(text.key()) != english.value(text.key())
                    || isTheSameEverywhere(expected),
                qPrintable(text.key() + QLatin1String(" stays ") + expected));
        }
    }

    void nothingIsCutOff_data() { languages(); }
    void nothingIsCutOff()
    {
        QFETCH(QString, name);
        const Language language(m_root, name);
        MainDialog dialog;
        dialog.connectionTested(false);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QCOMPARE(dialog.size(), QSize(800, 600));
        auto *const settings = dialog.findChild<EthernetSettingsBox *>();
        settings->setInterface(QStringLiteral("enx00e04c360a1b"));
        InterfaceSettings fixed;
        fixed.setUseDhcp(false);
        settings->setSettings(fixed);
        settings->setEnabled(true);
        int page = 0;
        QStringList found;
        eachPage(&dialog, [&] {
            found += cutOffAtRest(dialog);
            takePicture(dialog, QStringLiteral("%1-page%2").arg(name).arg(++page));
        });
        QVERIFY2(page >= 4, "not every page was seen");

        WaitDialog wait(true);
        wait.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wait));
        found += cutOffAtRest(wait);
        takePicture(wait, name + QLatin1String("-wait"));

        int number = 0;
        for (const Box &given : kBoxes) {
            QMessageBox box(QMessageBox::Question,
                QCoreApplication::translate(given.context, given.title),
                QCoreApplication::translate(given.context, given.text), given.buttons);
            box.show();
            QVERIFY(QTest::qWaitForWindowExposed(&box));
            found += cutOffAtRest(box);
            takePicture(box, QStringLiteral("%1-box%2").arg(name).arg(++number));
            QVERIFY2(QRect(0, 0, 800, 600).contains(box.rect()), given.text);
        }
        QVERIFY2(found.isEmpty(), qPrintable(found.join(QLatin1Char('\n'))));
    }

    void qtItselfSpeaksTheLanguage_data() { languages(); }
    void qtItselfSpeaksTheLanguage()
    {
        QFETCH(QString, name);
        const auto texts = [] {
            QMessageBox box;
            box.setStandardButtons(QMessageBox::StandardButtons(0x3ffe400)); // all there are
            QStringList shown;
            for (const QAbstractButton *button : box.buttons())
                shown.append(button->text());
            QLineEdit line;
            QTextBrowser pane;
            QTextEdit edit;
            for (QMenu *menu : {line.createStandardContextMenu(), pane.createStandardContextMenu(),
                     edit.createStandardContextMenu()}) {
                for (const QAction *action : menu->actions())
                    shown.append(action->text().section(QLatin1Char('\t'), 0, 0));
                delete menu;
            }
            shown.removeAll(QString()); // separators
            shown.removeAll(QStringLiteral("OK"));
            return shown;
        };
        const QStringList english = texts();
        QVERIFY(
            english.contains(QStringLiteral("&Yes")) && english.contains(QStringLiteral("&Undo")));
        const Language language(m_root, name);
        const QStringList translated = texts();
        QCOMPARE(translated.size(), english.size());
        for (int i = 0; i < english.size(); ++i)
            QVERIFY2(translated.at(i) != english.at(i), qPrintable(english.at(i)));
    }

private:
    static void languages()
    {
        QTest::addColumn<QString>("name");
        for (const char *name : {"ru_RU", "uk_UA", "kk_KZ", "be_BY", "uz_UZ"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }

    TestDealerRoot *const m_root;
    std::unique_ptr<PrivateBus> m_bus;
};

int main(int argc, char **argv)
{
    TestDealerRoot root(argc, argv);
    LanguagesTest test(&root);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_languages.moc"
