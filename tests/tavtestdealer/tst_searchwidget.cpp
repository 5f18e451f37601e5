#include "dragout.h"
#include "marktranslator.h"
#include "modalbox.h"
#include "portspeed.h"
#include "scriptedmodem.h"
#include "settingspage.h"
#include "toldtoend.h"
#include "touchstyle.h"

#include "atmodem.h"
#include "modemsettings.h"
#include "modemsfinder.h"
#include "servicescontroller.h"

#include <QApplication>
#include <QLabel>
#include <QSerialPortInfo>
#include <QSignalSpy>

#include <algorithm>
#include <functional>
#include <mutex>

namespace {

const QString a = QStringLiteral("a");
const QString b = QStringLiteral("b");
const QString c = QStringLiteral("c");
const QString usbPort = QStringLiteral("ttyUSB7");

/// A record that differs from the default one in every field.
ModemInfo modem(const QString &name)
{
    ModemInfo info;
    info.setConnectionName(name);
    info.setPortName(usbPort);
    info.setBaudrate(115200);
    info.setUserName(QStringLiteral("user of ") + name);
    info.setPassword(QStringLiteral("secret of ") + name);
    info.setPhone(QStringLiteral("p0"));
    info.setPhones({QStringLiteral("p1"), QStringLiteral("p2")});
    info.setInitLines({QStringLiteral("AT+CGDCONT=1,\"IP\",\"internet\""), QStringLiteral("AT&F")});
    info.setDialCommand(QStringLiteral("ATD"));
    info.setIsdn(1);
    info.setModemType(QStringLiteral("GPRS"));
    info.setNewPppd(false);
    info.setStupidMode(false);
    return info;
}

void store(const QStringList &names)
{
    QMap<QString, ModemInfo> modems;
    for (const QString &name : names)
        modems.insert(name, modem(name));
    ModemSettings().setModems(modems);
    ModemSettings().setConnectionsOrder(names);
}

ModemInfo stored(const QString &name)
{
    return ModemSettings().modems().value(name);
}

QStringList order()
{
    return ModemSettings().connectionsOrder();
}

QVariantList wholeStore()
{
    return ModemSettings().toSettingsList();
}

/// The page in the place that the main dialog leaves it.
class Page : public SearchWidget, public SettingsPage
{
public:
    Page()
        : SettingsPage(this)
        , startedSpy(this, &SearchWidget::started)
        , finishedSpy(this, &SearchWidget::finished)
    {
        setFixedSize(794, 460);
        show();
    }

    ModemsFinder *finder() const { return findChild<ModemsFinder *>(); }
    ServicesController *controller() const { return findChild<ServicesController *>(); }
    /// The same, and the modem's port is there, as if the system listed it.
    void selectPluggedIn(int row, const QString &name = usbPort)
    {
        select(row);
        const QSignalBlocker nothingIsEdited(port());
        port()->addItem(name);
        port()->setCurrentText(name);
    }
    /// The first row, with its modem on a port where modem-only mode may be had.
    void selectOnPort(const QString &path)
    {
        selectPluggedIn(0, path);
        modemOnly()->setEnabled(true);
    }
    QSignalSpy startedSpy;
    QSignalSpy finishedSpy;
};

} // namespace

Q_DECLARE_METATYPE(std::function<void(Page &)>)
Q_DECLARE_METATYPE(std::function<void(ModemInfo &)>)

class SearchWidgetTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QApplication::setStyle(new TouchStyle);
        TouchStyle::enlargeText();
    }
    void init() { store({a, b, c}); }

    void form()
    {
        const Page page;
        QCOMPARE(page.windowTitle(), QStringLiteral("Form"));
        for (const char *name : {"tbSearch", "tbRemove", "tbUp", "tbDown"}) {
            QCOMPARE(page.tool(name)->text(), QStringLiteral("..."));
            QVERIFY(page.tool(name)->y() < page.list()->y());
        }
        QVERIFY(page.tool("tbSearch")->x() < page.tool("tbRemove")->x());
        QVERIFY(page.tool("tbRemove")->x() < page.tool("tbUp")->x());
        QVERIFY(page.tool("tbUp")->x() < page.tool("tbDown")->x());
        QVERIFY(page.list()->geometry().right() < page.settings()->x());
        QVERIFY(page.line("leName")->isReadOnly());
        QCOMPARE(page.line("lePassword")->echoMode(), QLineEdit::Normal);
        QCOMPARE(page.line("leISDN")->inputMask(), QStringLiteral("0999999"));
        QVERIFY(page.settings()->isAncestorOf(page.tabs()));
        QVERIFY(page.line("leName")->mapTo(&page, QPoint()).y()
            < page.tabs()->mapTo(&page, QPoint()).y());
        QStringList titles;
        QStringList tabs;
        for (int i = 0; i < page.tabs()->count(); ++i) {
            titles.append(page.tabs()->tabText(i));
            tabs.append(page.tabs()->widget(i)->objectName());
        }
        QCOMPARE(titles,
            QStringList({QStringLiteral("Main"), QStringLiteral("Additional"),
                QStringLiteral("Phones"), QStringLiteral("APN")}));
        QCOMPARE(tabs,
            QStringList({QStringLiteral("tabPort"), QStringLiteral("tabAdditional"),
                QStringLiteral("tabPhones"), QStringLiteral("tabAPN")}));
        QCOMPARE(page.tabs()->currentIndex(), 0);
        QVERIFY(page.editor("tabPhones"));
        QVERIFY(page.editor("tabAPN"));
        QCOMPARE(page.modemOnly()->text(), QStringLiteral("Modem Only"));
        QCOMPARE(page.box("cbNewPppd")->text(), QStringLiteral("New pppd"));
        QCOMPARE(page.box("cbStupidMode")->text(), QStringLiteral("Stupid mode"));
    }

    void everyFieldHasItsLabel_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("tab");
        const auto row = [](const char *field, const char *text, const char *tab) {
            QTest::addRow("%s", field) << QString::fromLatin1(field) << QString::fromLatin1(text)
                                       << QString::fromLatin1(tab);
        };
        row("leName", "Name", "gbSettings");
        row("cbPort", "Port", "tabPort");
        row("cbBaudrate", "Baudrate", "tabPort");
        row("leUser", "User", "tabPort");
        row("lePassword", "Password", "tabPort");
        row("leDialCmd", "Dial cmd", "tabAdditional");
        row("leISDN", "ISDN", "tabAdditional");
        row("leModemType", "Modem Type", "tabAdditional");
    }
    void everyFieldHasItsLabel()
    {
        QFETCH(QString, field);
        QFETCH(QString, text);
        QFETCH(QString, tab);
        Page page;
        page.select(0);
        auto *const widget = page.findChild<QWidget *>(field);
        page.bringUp(widget);
        QVERIFY(page.findChild<QWidget *>(tab)->isAncestorOf(widget));
        // The label on its left.
        QString shown;
        const QList<QLabel *> labels
            = widget->parentWidget()->findChildren<QLabel *>(QString(), Qt::FindDirectChildrenOnly);
        for (const QLabel *label : labels) {
            if (qAbs(label->geometry().center().y() - widget->geometry().center().y()) < 10
                && label->geometry().right() < widget->x())
                shown = label->text();
        }
        QCOMPARE(shown, text);
    }

    void buttonsShowTheirSigns_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("image");
        QTest::newRow("search") << QStringLiteral("tbSearch") << QStringLiteral(":/search.png");
        QTest::newRow("remove") << QStringLiteral("tbRemove") << QStringLiteral(":/remove.png");
        QTest::newRow("up") << QStringLiteral("tbUp") << QStringLiteral(":/up.png");
        QTest::newRow("down") << QStringLiteral("tbDown") << QStringLiteral(":/down.png");
    }
    void buttonsShowTheirSigns()
    {
        QFETCH(QString, button);
        QFETCH(QString, image);
        const Page page;
        const QImage shown = page.findChild<QToolButton *>(button)->icon().pixmap(48).toImage();
        QVERIFY(!shown.isNull());
        QCOMPARE(shown, QIcon(image).pixmap(48).toImage());
    }

    void startsClearedWithNothingToMoveOrRemove()
    {
        store({});
        const Page page;
        QVERIFY(page.tool("tbSearch")->isEnabled());
        for (const char *name : {"tbRemove", "tbUp", "tbDown"})
            QVERIFY(!page.tool(name)->isEnabled());
        isCleared(page);
        QCOMPARE(page.names(), QStringList());
    }

    void portsAreThoseOfTheSystemInItsOrder()
    {
        Page page;
        QStringList ports;
        const QList<QSerialPortInfo> listed = QSerialPortInfo::availablePorts();
        for (const QSerialPortInfo &port : listed)
            ports.append(port.portName());
        for (const bool selected : {false, true}) {
            if (selected)
                page.select(0);
            QCOMPARE(page.port()->count(), ports.size());
            for (int i = 0; i < ports.size(); ++i) {
                QCOMPARE(page.port()->itemText(i), ports.at(i));
                QVERIFY(!page.port()->itemData(i).isValid());
            }
        }
    }

    void portListIsRefreshedAtEverySelection()
    {
        Page page;
        page.port()->addItem(QStringLiteral("gone"));
        page.select(0);
        QCOMPARE(page.port()->findText(QStringLiteral("gone")), -1);
    }

    void ratesAreTheStandardOnesFrom9600On()
    {
        Page page;
        QList<int> rates = QSerialPortInfo::standardBaudRates();
        QVERIFY(rates.contains(4800)); // left out
        rates.erase(
            std::remove_if(rates.begin(), rates.end(), [](int rate) { return rate < 9600; }),
            rates.end());
        QCOMPARE(rates.first(), 9600);
        for (const bool selected : {false, true}) {
            if (selected)
                page.select(0);
            QCOMPARE(page.baudrate()->count(), rates.size());
            for (int i = 0; i < rates.size(); ++i) {
                QCOMPARE(page.baudrate()->itemText(i), QString::number(rates.at(i)));
                QCOMPARE(page.baudrate()->itemData(i), QVariant(rates.at(i)));
            }
        }
    }

    void everyShowListsTheConnectionsInTheirOrder()
    {
        store({c, a, b});
        Page page;
        QCOMPARE(page.names(), QStringList({c, a, b}));
        page.hide();
        store({b});
        QCOMPARE(page.names(), QStringList({c, a, b}));
        page.show();
        QCOMPARE(page.names(), QStringList{b});
    }

    // A touch that lasts, or two, must not open an editor in the list: names are the records' keys.
    void namesInTheListCannotBeEdited()
    {
        Page page;
        page.select(0);
        const QPoint place = page.list()->visualRect(page.list()->model()->index(0, 0)).center();
        QTest::mouseDClick(page.list()->viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QTest::keyClick(page.list(), Qt::Key_F2);
        QVERIFY(page.list()->viewport()->findChildren<QLineEdit *>().isEmpty());
    }

    void selectingARowSaysWhereItCanMove_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<int>("row");
        QTest::addColumn<bool>("up");
        QTest::addColumn<bool>("down");
        QTest::newRow("first") << QStringList({a, b, c}) << 0 << false << true;
        QTest::newRow("middle") << QStringList({a, b, c}) << 1 << true << true;
        QTest::newRow("last") << QStringList({a, b, c}) << 2 << true << false;
        QTest::newRow("single") << QStringList{a} << 0 << false << false;
    }
    void selectingARowSaysWhereItCanMove()
    {
        QFETCH(QStringList, names);
        QFETCH(int, row);
        QFETCH(bool, up);
        QFETCH(bool, down);
        store(names);
        Page page;
        page.select(row);
        QCOMPARE(page.line("leName")->text(), names.at(row));
        QVERIFY(page.tool("tbRemove")->isEnabled());
        QCOMPARE(page.tool("tbUp")->isEnabled(), up);
        QCOMPARE(page.tool("tbDown")->isEnabled(), down);
    }

    void indexThatIsNoRowOnlyClears_data()
    {
        QTest::addColumn<bool>("valid");
        QTest::newRow("invalid") << false;
        QTest::newRow("row that is gone") << true;
    }
    void indexThatIsNoRowOnlyClears()
    {
        QFETCH(bool, valid);
        Page page;
        page.select(1);
        const QModelIndex gone = valid ? page.list()->model()->index(2, 0) : QModelIndex();
        store({a, b});
        page.hide();
        page.show();
        page.modemSelected(gone);
        isCleared(page);
        QVERIFY(page.tool("tbUp")->isEnabled()); // as the row before left it
    }

    void recordFillsTheForm()
    {
        Page page;
        page.select(1);
        const ModemInfo shown = stored(b);
        QVERIFY(page.settings()->isEnabled());
        QCOMPARE(page.settings()->title(), b);
        QCOMPARE(page.line("leName")->text(), b);
        QCOMPARE(page.port()->currentIndex(), -1); // not plugged in
        QCOMPARE(page.baudrate()->currentData().toInt(), 115200);
        QCOMPARE(page.line("leUser")->text(), shown.userName());
        QCOMPARE(page.line("lePassword")->text(), shown.password());
        QCOMPARE(page.line("lePassword")->displayText(), shown.password());
        QCOMPARE(page.line("leDialCmd")->text(), shown.dialCommand());
        QCOMPARE(page.line("leISDN")->text(), QStringLiteral("1"));
        QCOMPARE(page.line("leModemType")->text(), shown.modemType());
        QVERIFY(!page.box("cbNewPppd")->isChecked());
        QVERIFY(!page.box("cbStupidMode")->isChecked());
        QCOMPARE(page.editor("tabPhones")->strings(),
            QStringList({QStringLiteral("p0"), QStringLiteral("p1"), QStringLiteral("p2")}));
        QCOMPARE(page.editor("tabAPN")->strings(), shown.initLines());
    }

    void nextRecordLeavesNothingOfTheOneBefore()
    {
        store({a, b});
        ModemInfo bare;
        bare.setConnectionName(b);
        bare.setPhone(QString());
        ModemSettings().setModems({{a, modem(a)}, {b, bare}});
        Page page;
        page.select(0);
        page.select(1);
        QCOMPARE(page.line("leUser")->text(), QString());
        QCOMPARE(page.line("lePassword")->text(), QString());
        QCOMPARE(page.editor("tabPhones")->strings(), QStringList());
        QCOMPARE(page.editor("tabAPN")->strings(), QStringList());
        QVERIFY(page.box("cbNewPppd")->isChecked());
        QVERIFY(page.box("cbStupidMode")->isChecked());
    }

    void portIsShownWhenItsNameIsListed_data()
    {
        QTest::addColumn<QString>("storedAs");
        QTest::addColumn<bool>("isShown");
        QTest::newRow("bare name") << QStringLiteral("%1") << true;
        QTest::newRow("with /dev/ in front") << QStringLiteral("/dev/%1") << false;
        QTest::newRow("not there") << QStringLiteral("%1x") << false;
        QTest::newRow("in capitals") << QStringLiteral("UPPER %1") << false;
    }
    void portIsShownWhenItsNameIsListed()
    {
        QFETCH(QString, storedAs);
        QFETCH(bool, isShown);
        const QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
        if (ports.isEmpty())
            QSKIP("no serial port here: seen in the simulated terminal too");
        const QString name = ports.first().portName();
        ModemInfo info = modem(a);
        info.setPortName(
            storedAs.startsWith(QLatin1String("UPPER")) ? name.toUpper() : storedAs.arg(name));
        ModemSettings().setModems({{a, info}});
        Page page;
        page.select(0);
        QCOMPARE(page.port()->currentText(), isShown ? name : QString());
        QCOMPARE(page.port()->currentIndex() >= 0, isShown);
    }

    void rateThatIsNotListedShowsNoneAndAnyEditStoresZero_data()
    {
        QTest::addColumn<int>("rate");
        QTest::newRow("too low for the list") << 4800;
        QTest::newRow("no standard rate") << 12345;
    }
    void rateThatIsNotListedShowsNoneAndAnyEditStoresZero()
    {
        QFETCH(int, rate);
        ModemInfo info = modem(a);
        info.setBaudrate(rate);
        store({a});
        ModemSettings().setModems({{a, info}});
        Page page;
        page.select(0);
        QCOMPARE(page.baudrate()->currentIndex(), -1);
        QCOMPARE(stored(a).baudrate(), rate);
        page.type(page.line("leUser"), QStringLiteral("x"));
        QCOMPARE(stored(a).baudrate(), 0);
    }

    void portThatIsNotListedShowsNoneAndAnyEditStoresNone()
    {
        Page page;
        page.select(0);
        QCOMPARE(stored(a).portName(), usbPort);
        page.type(page.line("leUser"), QStringLiteral("x"));
        QCOMPARE(stored(a).portName(), QString());
    }

    void showingWritesNothingBack()
    {
        const QVariantList before = wholeStore();
        Page page;
        for (const int row : {0, 1, 2, 1, 0, 0})
            page.select(row);
        // One after the other without clearing in between, too.
        page.showSettings(b);
        page.showSettings(c);
        page.hide();
        page.show();
        QCOMPARE(wholeStore(), before);
    }

    void connectionWithoutARecordClearsTheForm()
    {
        ModemSettings().setModems({{a, modem(a)}});
        Page page;
        page.select(0);
        page.modemOnly()->setEnabled(true);
        page.select(1);
        isCleared(page);
        QVERIFY(!page.modemOnly()->isEnabled());
        // Unconnected: nothing that the form is told then counts as an edit.
        const QVariantList before = wholeStore();
        page.line("leName")->setText(a);
        emit page.box("cbNewPppd")->clicked(false);
        emit page.line("leUser")->textEdited(QStringLiteral("x"));
        QCOMPARE(wholeStore(), before);
    }

    void everyEditIsInTheStoreAtOnce_data()
    {
        using Edit = std::function<void(Page &)>;
        using Change = std::function<void(ModemInfo &)>;
        QTest::addColumn<Edit>("edit");
        QTest::addColumn<Change>("change");
        const auto row = [](const char *name, const Edit &edit, const Change &change) {
            QTest::newRow(name) << edit << change;
        };
        row(
            "port",
            [](Page &page) {
                page.port()->addItem(QStringLiteral("ttyUSB8"));
                page.port()->setFocus();
                QTest::keyClick(page.port(), Qt::Key_End);
            },
            [](ModemInfo &info) { info.setPortName(QStringLiteral("ttyUSB8")); });
        row(
            "baud rate",
            [](Page &page) {
                page.baudrate()->setFocus();
                QTest::keyClick(page.baudrate(), Qt::Key_Home);
            },
            [](ModemInfo &info) { info.setBaudrate(9600); });
        row(
            "user", [](Page &page) { page.type(page.line("leUser"), QStringLiteral("Петя")); },
            [](ModemInfo &info) { info.setUserName(QStringLiteral("Петя")); });
        row(
            "no user", [](Page &page) { page.type(page.line("leUser"), QString()); },
            [](ModemInfo &info) { info.setUserName(QString()); });
        row(
            "password",
            [](Page &page) { page.type(page.line("lePassword"), QStringLiteral("p@ss word")); },
            [](ModemInfo &info) { info.setPassword(QStringLiteral("p@ss word")); });
        row(
            "dial command",
            [](Page &page) { page.type(page.line("leDialCmd"), QStringLiteral("ATDP")); },
            [](ModemInfo &info) { info.setDialCommand(QStringLiteral("ATDP")); });
        row(
            "ISDN", [](Page &page) { page.type(page.line("leISDN"), QStringLiteral("42")); },
            [](ModemInfo &info) { info.setIsdn(42); });
        row(
            "no ISDN", [](Page &page) { page.type(page.line("leISDN"), QString()); },
            [](ModemInfo &info) { info.setIsdn(0); });
        row(
            "ISDN takes digits alone, seven of them",
            [](Page &page) { page.type(page.line("leISDN"), QStringLiteral("a1-2b345678")); },
            [](ModemInfo &info) { info.setIsdn(1234567); });
        row(
            "modem type",
            [](Page &page) { page.type(page.line("leModemType"), QStringLiteral("USB Modem")); },
            [](ModemInfo &info) { info.setModemType(QStringLiteral("USB Modem")); });
        row(
            "new pppd", [](Page &page) { page.tick("cbNewPppd"); },
            [](ModemInfo &info) { info.setNewPppd(true); });
        row(
            "stupid mode", [](Page &page) { page.tick("cbStupidMode"); },
            [](ModemInfo &info) { info.setStupidMode(true); });
        row(
            "main phone",
            [](Page &page) {
                page.type(page.editor("tabPhones")->findChild<QLineEdit *>(QStringLiteral("le0")),
                    QStringLiteral("*99***1#"));
            },
            [](ModemInfo &info) { info.setPhone(QStringLiteral("*99***1#")); });
        row(
            "main phone emptied: the next one takes its place",
            [](Page &page) {
                page.type(page.editor("tabPhones")->findChild<QLineEdit *>(QStringLiteral("le0")),
                    QString());
            },
            [](ModemInfo &info) {
                info.setPhone(QStringLiteral("p1"));
                info.setPhones({QStringLiteral("p2")});
            });
        row(
            "further phone",
            [](Page &page) {
                page.type(page.editor("tabPhones")->findChild<QLineEdit *>(QStringLiteral("le3")),
                    QStringLiteral("p3"));
            },
            [](ModemInfo &info) {
                info.setPhones({QStringLiteral("p1"), QStringLiteral("p2"), QStringLiteral("p3")});
            });
        row(
            "phones in another order",
            [](Page &page) {
                page.touch(
                    page.editor("tabPhones")->findChild<QToolButton *>(QStringLiteral("tbUp1")));
            },
            [](ModemInfo &info) {
                info.setPhone(QStringLiteral("p1"));
                info.setPhones({QStringLiteral("p0"), QStringLiteral("p2")});
            });
        row(
            "init line",
            [](Page &page) {
                page.type(page.editor("tabAPN")->findChild<QLineEdit *>(QStringLiteral("le1")),
                    QStringLiteral("AT&FE0"));
            },
            [](ModemInfo &info) {
                info.setInitLines({info.initLines().first(), QStringLiteral("AT&FE0")});
            });
        row(
            "init lines in another order",
            [](Page &page) {
                page.touch(
                    page.editor("tabAPN")->findChild<QToolButton *>(QStringLiteral("tbDown0")));
            },
            [](ModemInfo &info) {
                info.setInitLines({info.initLines().last(), info.initLines().first()});
            });
    }
    void everyEditIsInTheStoreAtOnce()
    {
        using Edit = std::function<void(Page &)>;
        using Change = std::function<void(ModemInfo &)>;
        QFETCH(Edit, edit);
        QFETCH(Change, change);
        Page page;
        page.selectPluggedIn(1);
        edit(page);
        ModemInfo expected = modem(b);
        change(expected);
        QCOMPARE(stored(b), expected);
        // The others and the order are as they were.
        QCOMPARE(stored(a), modem(a));
        QCOMPARE(stored(c), modem(c));
        QCOMPARE(order(), QStringList({a, b, c}));
    }

    // Read-only as it is, its signal is connected like the others'.
    void nameIsConnectedToo()
    {
        Page page;
        page.selectPluggedIn(0);
        page.line("leUser")->setText(QStringLiteral("by the program"));
        QCOMPARE(stored(a), modem(a));
        emit page.line("leName")->textEdited(a);
        QCOMPARE(stored(a).userName(), QStringLiteral("by the program"));
    }

    void everyTypedKeyCounts()
    {
        Page page;
        page.selectPluggedIn(0);
        page.type(page.line("leUser"), QString());
        QTest::keyClick(page.line("leUser"), Qt::Key_X);
        QCOMPARE(stored(a).userName(), QStringLiteral("x"));
        QTest::keyClick(page.line("leUser"), Qt::Key_Y);
        QCOMPARE(stored(a).userName(), QStringLiteral("xy"));
    }

    // Four lines are all that there is room for: the fifth text goes with the first edit.
    void listsLongerThanTheEditorAreCutByAnEdit()
    {
        ModemInfo info = modem(a);
        info.setInitLines({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"),
            QStringLiteral("4"), QStringLiteral("5")});
        store({a});
        ModemSettings().setModems({{a, info}});
        Page page;
        page.select(0);
        QCOMPARE(stored(a).initLines().size(), 5);
        page.type(page.line("leUser"), QStringLiteral("x"));
        QCOMPARE(stored(a).initLines().size(), 4);
    }

    void editOfAConnectionThatIsNotInTheStoreChangesOnlyTheOrder()
    {
        Page page;
        page.select(0);
        const QMap<QString, ModemInfo> left{{b, modem(b)}, {c, modem(c)}};
        ModemSettings().setModems(left);
        ModemSettings().setConnectionsOrder({c, b});
        page.touch(page.line("leUser"));
        QTest::keyClick(page.line("leUser"), Qt::Key_X);
        QCOMPARE(order(), QStringList({a, b, c}));
        QCOMPARE(stored(b), modem(b));
        QCOMPARE(stored(c), modem(c));
        QCOMPARE(stored(a), ModemInfo()); // a listed name has a record, be it a default one
    }

    void editWithoutANameIsNone()
    {
        Page page;
        page.select(0);
        page.clearSettings();
        const QVariantList before = wholeStore();
        page.settingsChanged();
        QCOMPARE(wholeStore(), before);
    }

    // The one test looks at the maker of the modem, the other at the name of the port.
    void modemOnlyIsOfferedOnAnEditWhenThePortIsUsb_data()
    {
        QTest::addColumn<QString>("port");
        QTest::addColumn<bool>("isOffered");
        QTest::newRow("ttyUSB7") << usbPort << true;
        QTest::newRow("in other letters") << QStringLiteral("MyUsbPort") << true;
        QTest::newRow("ttyACM0") << QStringLiteral("ttyACM0") << false;
    }
    void modemOnlyIsOfferedOnAnEditWhenThePortIsUsb()
    {
        QFETCH(QString, port);
        QFETCH(bool, isOffered);
        Page page;
        page.select(0);
        QVERIFY(!page.modemOnly()->isEnabled()); // nobody is known to have made it
        page.port()->addItem(port);
        page.port()->setCurrentText(port);
        QCOMPARE(page.modemOnly()->isEnabled(), isOffered);
        page.modemOnly()->setEnabled(!isOffered);
        page.type(page.line("leUser"), QStringLiteral("x"));
        QCOMPARE(page.modemOnly()->isEnabled(), isOffered);
    }

    void modemOnlySwitchesTheModemOnThePortShown()
    {
        ScriptedModem modem;
        std::mutex mutex;
        QList<unsigned int> speeds;
        modem.answers.insert("AT^U2DIAG=0", ScriptedModem::ok());
        modem.onCommand = [&](const QByteArray &command) {
            const std::lock_guard<std::mutex> lock(mutex);
            if (command == "AT^U2DIAG=0")
                speeds.append(speedOf(modem.path()));
        };
        modem.start();
        Page page;
        page.selectOnPort(modem.path());
        ModalBoxes boxes({ModalBoxes::click(QMessageBox::Ok)});
        QTest::mousePress(page.modemOnly(), Qt::LeftButton);
        QVERIFY(modem.commands().isEmpty()); // it acts when it is let go
        QTest::mouseRelease(page.modemOnly(), Qt::LeftButton);
        QCOMPARE(boxes.shown.size(), 1);
        const ModalBoxes::Shown &box = boxes.shown.first();
        QCOMPARE(box.title, QStringLiteral("To modem only mode"));
        QCOMPARE(box.text,
            QStringLiteral("Modem was switched to Modem Only mode. Replug modem, please."));
        QCOMPARE(box.buttons, QStringList{QStringLiteral("OK")});
        QCOMPARE(box.icon, QMessageBox::Information);
        QVERIFY(box.lowestButton >= 48);
        {
            const std::lock_guard<std::mutex> lock(mutex);
            QCOMPARE(speeds, QList<unsigned int>{115200U});
        }
        // The port is free again.
        AtModem next;
        QVERIFY2(next.open(modem.path(), 115200, 1), qPrintable(next.lastError()));
        // No service was stopped or started for it.
        QCOMPARE(page.startedSpy.count(), 0);
        QCOMPARE(page.finishedSpy.count(), 0);
    }

    void modemOnlyThatFailsIsSilent_data()
    {
        QTest::addColumn<QString>("what");
        QTest::newRow("the modem refuses") << QStringLiteral("refuses");
        QTest::newRow("the port does not open") << QStringLiteral("port");
        QTest::newRow("no port is shown") << QStringLiteral("none");
        QTest::newRow("no rate is shown") << QStringLiteral("rate");
    }
    void modemOnlyThatFailsIsSilent()
    {
        QFETCH(QString, what);
        ScriptedModem modem; // knows no such command
        modem.start();
        Page page;
        page.selectOnPort(
            what == QLatin1String("port") ? QStringLiteral("/dev/nowhere") : modem.path());
        if (what == QLatin1String("none"))
            page.port()->setCurrentIndex(-1);
        if (what == QLatin1String("rate"))
            page.baudrate()->setCurrentIndex(-1);
        ModalBoxes boxes({}); // ends the test at any box
        page.modemToModemOnly();
        QTest::qWait(0);
        QCOMPARE(boxes.shown.size(), 0);
        QCOMPARE(modem.commands().contains("AT^U2DIAG=0"), what == QLatin1String("refuses"));
    }

    void endOfTheProgramBreaksModemOnlyOff()
    {
        ScriptedModem modem;
        modem.answers.insert("AT^U2DIAG=0", ScriptedModem::ok());
        modem.start();
        Page page;
        page.selectOnPort(modem.path());
        ModalBoxes boxes({}); // ends the test at any box
        const ToldToEnd toldToEnd;
        page.modemToModemOnly();
        QVERIFY(!modem.commands().contains("AT^U2DIAG=0"));
    }

    void modemOnlyTriesThePortThreeTimes()
    {
        ScriptedModem modem;
        modem.answerToAll = "\r\nERROR\r\n";
        modem.start();
        Page page;
        page.selectOnPort(modem.path());
        page.modemToModemOnly();
        QCOMPARE(modem.commands(), QList<QByteArray>({"AT", "ATQ0V1", "ATQ0V1"}));
    }

    void removeTakesTheConnectionOutWithoutAsking()
    {
        Page page;
        page.select(1);
        page.press("tbRemove");
        QCOMPARE(page.names(), QStringList({a, c}));
        QCOMPARE(order(), QStringList({a, c}));
        QCOMPARE(ModemSettings().modems().keys(), QStringList({a, c}));
        isCleared(page);
        // Nothing is selected any more.
        page.press("tbRemove");
        QCOMPARE(order(), QStringList({a, c}));
    }

    void removingTheLastLeavesNothing()
    {
        store({a});
        Page page;
        page.select(0);
        page.press("tbRemove");
        QCOMPARE(page.names(), QStringList());
        QVERIFY(ModemSettings().modems().isEmpty());
        QVERIFY(order().isEmpty());
    }

    void upAndDownSwapWithTheNeighbour_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QStringList>("after");
        QTest::newRow("second up") << 1 << QStringLiteral("tbUp") << QStringList({b, a, c});
        QTest::newRow("last up") << 2 << QStringLiteral("tbUp") << QStringList({a, c, b});
        QTest::newRow("first down") << 0 << QStringLiteral("tbDown") << QStringList({b, a, c});
        QTest::newRow("second down") << 1 << QStringLiteral("tbDown") << QStringList({a, c, b});
    }
    void upAndDownSwapWithTheNeighbour()
    {
        QFETCH(int, row);
        QFETCH(QString, button);
        QFETCH(QStringList, after);
        Page page;
        page.select(row);
        const QMap<QString, ModemInfo> before = ModemSettings().modems();
        auto *const pressed = page.findChild<QToolButton *>(button);
        QTest::mousePress(pressed, Qt::LeftButton);
        QCOMPARE(order(), QStringList({a, b, c})); // it acts when it is let go
        QTest::mouseRelease(pressed, Qt::LeftButton);
        QCOMPARE(page.names(), after);
        QCOMPARE(order(), after);
        QCOMPARE(ModemSettings().modems(), before);
        isCleared(page);
    }

    void endsOfTheListStay()
    {
        Page page;
        page.select(0);
        page.upModem();
        QCOMPARE(order(), QStringList({a, b, c}));
        QCOMPARE(page.line("leName")->text(), a); // nothing happened at all
        page.select(2);
        page.downModem();
        QCOMPARE(order(), QStringList({a, b, c}));
        QCOMPARE(page.line("leName")->text(), c);
    }

    void withoutASelectionNothingMovesOrGoes()
    {
        Page page;
        const QVariantList before = wholeStore();
        page.upModem();
        page.downModem();
        page.removeModem();
        QCOMPARE(wholeStore(), before);
        QCOMPARE(page.names(), QStringList({a, b, c}));
    }

    // The buttons let go as soon as they are left, and that counts.
    void slidingOffAButtonActs()
    {
        Page page;
        page.select(0);
        dragOut(page.tool("tbDown"));
        QCOMPARE(order(), QStringList({b, a, c}));
    }

    void clearedFormHasBothBoxesChecked()
    {
        Page page;
        page.select(0);
        page.clearSettings();
        isCleared(page);
    }

    void workEmptiesAndHoldsThePage()
    {
        Page page;
        page.select(1);
        const QVariantList before = wholeStore();
        emit page.started();
        QCOMPARE(page.names(), QStringList());
        isCleared(page);
        for (const char *name : {"tbSearch", "tbRemove", "tbUp", "tbDown"})
            QVERIFY(!page.tool(name)->isEnabled());
        QVERIFY(!page.list()->isEnabled());
        QCOMPARE(wholeStore(), before);

        emit page.finished();
        QVERIFY(page.tool("tbSearch")->isEnabled());
        QVERIFY(page.list()->isEnabled());
        for (const char *name : {"tbRemove", "tbUp", "tbDown"})
            QVERIFY(!page.tool(name)->isEnabled());
    }

    void servicesThatAreBackFinishTheWork()
    {
        const Page page;
        emit page.controller()->started();
        QCOMPARE(page.finishedSpy.count(), 1);
    }

    void modemsFoundAreListedByName()
    {
        Page page;
        emit page.finder()->devicesFinded({modem(QStringLiteral("y")), modem(QStringLiteral("x"))});
        QCOMPARE(page.names(), QStringList({QStringLiteral("x"), QStringLiteral("y")}));
        QCOMPARE(order(), page.names());
        // Nothing of the earlier list is kept.
        QCOMPARE(ModemSettings().modems().keys(), page.names());
        QCOMPARE(page.finishedSpy.count(), 0);
    }

    void laterOfTwoModemsOfOneNameCounts()
    {
        Page page;
        ModemInfo second = modem(a);
        second.setUserName(QStringLiteral("second"));
        emit page.finder()->devicesFinded({modem(a), second});
        QCOMPARE(page.names(), QStringList{a});
        QCOMPARE(stored(a).userName(), QStringLiteral("second"));
    }

    void noModemsAreToldAndTheOrderStays()
    {
        Page page;
        page.select(1);
        ModalBoxes boxes({[&page](QMessageBox *box) {
            // All is done by the time the user reads it.
            QCOMPARE(page.names(), QStringList());
            QVERIFY(ModemSettings().modems().isEmpty());
            isCleared(page);
            box->button(QMessageBox::Ok)->click();
        }});
        emit page.finder()->noDevices(QStringLiteral("Nothing <there> & so on"));
        QCOMPARE(boxes.shown.size(), 1);
        const ModalBoxes::Shown &box = boxes.shown.first();
        QCOMPARE(box.title, QStringLiteral("No modems"));
        QCOMPARE(box.text, QStringLiteral("Nothing <there> & so on"));
        QCOMPARE(box.buttons, QStringList{QStringLiteral("OK")});
        QCOMPARE(box.icon, QMessageBox::Warning);
        QVERIFY(box.lowestButton >= 48);
        QCOMPARE(box.parent, &page);
        QCOMPARE(order(), QStringList({a, b, c}));
        QVERIFY(ModemSettings().modems().isEmpty());
    }

    void everythingCanBeSeenAndHitByAFinger_data()
    {
        QTest::addColumn<int>("tab");
        QTest::newRow("Main") << 0;
        QTest::newRow("Additional") << 1;
        QTest::newRow("Phones") << 2;
        QTest::newRow("APN") << 3;
    }
    void everythingCanBeSeenAndHitByAFinger()
    {
        QFETCH(int, tab);
        Page page;
        page.select(0);
        QVERIFY(page.list()->visualRect(page.list()->model()->index(0, 0)).height() >= 48);
        QVERIFY(page.tabs()->tabBar()->tabRect(tab).height() >= 48);
        QTest::mouseClick(page.tabs()->tabBar(), Qt::LeftButton, Qt::NoModifier,
            page.tabs()->tabBar()->tabRect(tab).center());
        QCOMPARE(page.tabs()->currentIndex(), tab);
        QVERIFY(page.minimumSizeHint().height() <= page.height());
        QVERIFY(page.minimumSizeHint().width() <= page.width());
        int seen = 0;
        const QList<QWidget *> widgets = page.findChildren<QWidget *>();
        for (QWidget *widget : widgets) {
            if (!widget->isVisible() || widget->focusPolicy() == Qt::NoFocus
                || qobject_cast<QTabWidget *>(widget) || qobject_cast<QTabBar *>(widget))
                continue;
            ++seen;
            const QByteArray name = widget->objectName().toUtf8();
            QVERIFY2(widget->height() >= 48, name.constData());
            QVERIFY2(page.rect().contains(QRect(widget->mapTo(&page, QPoint()), widget->size())),
                name.constData());
            QVERIFY2(widget->visibleRegion().boundingRect() == widget->rect(), name.constData());
        }
        QVERIFY(seen >= 10);
    }

    void textsFollowTheLanguage()
    {
        Page page;
        page.select(0);
        const MarkTranslator translator("SearchWidget");
        QTRY_COMPARE(page.windowTitle(), QStringLiteral("xForm"));
        QCOMPARE(page.tabs()->tabText(3), QStringLiteral("xAPN"));
        QCOMPARE(page.modemOnly()->text(), QStringLiteral("xModem Only"));
        // What is shown of the record stays.
        QCOMPARE(page.settings()->title(), a);
        QCOMPARE(page.line("leUser")->text(), stored(a).userName());
        QCOMPARE(page.line("leISDN")->inputMask(), QStringLiteral("0999999"));
        ModalBoxes boxes({ModalBoxes::click(QMessageBox::Ok)});
        page.noDevices(QString());
        QCOMPARE(boxes.shown.first().title, QStringLiteral("xNo modems"));
    }

private:
    static void isCleared(const Page &page)
    {
        QVERIFY(!page.settings()->isEnabled());
        QCOMPARE(page.settings()->title(), QString());
        for (const char *name :
            {"leName", "leUser", "lePassword", "leDialCmd", "leISDN", "leModemType"})
            QCOMPARE(page.line(name)->text(), QString());
        QCOMPARE(page.port()->currentIndex(), -1);
        QCOMPARE(page.baudrate()->currentIndex(), -1);
        QVERIFY(page.box("cbNewPppd")->isChecked());
        QVERIFY(page.box("cbStupidMode")->isChecked());
        QCOMPARE(page.editor("tabPhones")->strings(), QStringList());
        QCOMPARE(page.editor("tabAPN")->strings(), QStringList());
    }
};

QTEST_MAIN(SearchWidgetTest)
#include "tst_searchwidget.moc"
