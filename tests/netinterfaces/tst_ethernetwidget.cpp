#include "ethernetsettingsbox.h"
#include "ethernetwidget.h"
#include "fakesudo.h"
#include "quickconfigurator.h"
#include "runningtimers.h"

#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSplitter>
#include <QTableView>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTranslator>
#include <QtTest>

#include <ctime>
#include <functional>

namespace {

QString s(const char *text)
{
    return QString::fromUtf8(text);
}

// Answers whatever is asked with a mark in front.
class MarkingTranslator : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char *, const char *text, const char *, int) const override
    {
        return s("~") + s(text);
    }
};

// Finds the question as soon as it is open.
void whenAsked(const std::function<void(QMessageBox *)> &answer)
{
    auto *const timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, answer] {
        if (auto *const box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
            timer->deleteLater();
            timer->stop();
            answer(box);
        }
    });
    timer->start(1);
}

// What this thread has computed, in ns: on a busy machine it is not the clock that tells of a
// stall.
qint64 workOfThisThread()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return time.tv_sec * Q_INT64_C(1'000'000'000) + time.tv_nsec;
}

void sayYes(QMessageBox *box)
{
    QTest::mouseClick(box->button(QMessageBox::Yes), Qt::LeftButton);
}

} // namespace

class TestEthernetWidget : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("iface eth0 inet static\n\taddress 10.0.0.1\n\tnetmask 255.0.0.0\n"
                   "\tgateway 10.0.0.2\n\tdns-nameservers 8.8.8.8 8.8.4.4\niface eth1 inet dhcp\n");
    }

    void anUntouchedPageRunsNoTimer()
    {
        auto *const configurator = new QuickConfigurator({s("eth0")}, path());
        constexpr int second = 1000; // the table's own, to lay itself out, are of no time
        const QSet<int> before = runningTimers(second);
        const EthernetWidget page(configurator, nullptr);
        QCOMPARE(runningTimers(second), before);
    }

    void theFormIsAsGiven()
    {
        const EthernetWidget page(new QuickConfigurator({s("eth0")}, path()), nullptr);
        QCOMPARE(page.windowTitle(), s("Form"));
        QCOMPARE(button(page, "pbReload")->text(), s("Reload\ninterfaces"));
        QCOMPARE(button(page, "pbApply")->text(), s("Apply"));
        QCOMPARE(page.findChild<QLabel *>(s("label"))->text(), s("Select interface"));
        QCOMPARE(page.findChild<QSplitter *>(s("splitter"))->orientation(), Qt::Horizontal);
        QCOMPARE(page.findChild<QSplitter *>(s("splitter"))->widget(1), box(page));
        const QTableView *const view = table(page);
        QCOMPARE(view->selectionMode(), QAbstractItemView::SingleSelection);
        QCOMPARE(view->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(view->iconSize(), QSize(48, 48));
        QVERIFY(view->horizontalHeader()->stretchLastSection());
        QCOMPARE(view->verticalHeader()->sectionResizeMode(0), QHeaderView::Fixed);
        QCOMPARE(view->rowHeight(0), 60);

        QCOMPARE(page.findChild<QGroupBox *>(s("gbStaticSettings"))->title(), s("Static settings"));
        const QComboBox *const usage = combo(*box(page));
        QCOMPARE(usage->count(), 2);
        QCOMPARE(usage->itemText(0), s("DHCP"));
        QCOMPARE(usage->itemText(1), s("STATIC"));
        for (const char *name : {"leIP", "leNetmask", "leGateway"})
            QCOMPARE(edit(*box(page), name)->inputMask(), s("900.900.900.900"));
        QCOMPARE(edit(*box(page), "leDNS")->inputMask(), QString());
        QCOMPARE(
            edit(*box(page), "leDNS")->placeholderText(), s("space separated DNS IP addresses"));
        QStringList labels;
        const auto all
            = page.findChild<QGroupBox *>(s("gbStaticSettings"))->findChildren<QLabel *>();
        for (const QLabel *label : all)
            labels += label->text();
        QCOMPARE(labels, (QStringList{s("Address"), s("Netmask"), s("Gateway"), s("DNS")}));
    }

    void anEmptyBoxOffersDhcp()
    {
        const EthernetSettingsBox settingsBox;
        QCOMPARE(settingsBox.title(), s("GroupBox"));
        QCOMPARE(settingsBox.interface(), QString());
        QCOMPARE(settingsBox.settings(), InterfaceSettings());
        QCOMPARE(edit(settingsBox, "leIP")->text(), s("..."));
        QVERIFY(!settingsBox.findChild<QGroupBox *>(s("gbStaticSettings"))->isEnabled());
    }

    void theBoxGivesBackWhatItShows()
    {
        EthernetSettingsBox settingsBox;
        settingsBox.setInterface(s("eth5"));
        QCOMPARE(settingsBox.title(), s("Customizing interface eth5"));
        QCOMPARE(settingsBox.interface(), s("eth5"));
        const InterfaceSettings given
            = staticSettings(s("300.1.1.1"), s("255.0.0.0"), s("10.0.0.2"), s("1.1.1.1 x"));
        settingsBox.setSettings(given);
        QCOMPARE(settingsBox.settings(), given);
        settingsBox.setSettings(staticSettings());
        QCOMPARE(settingsBox.settings(), staticSettings(s("..."), s("..."), s("...")));
        InterfaceSettings dhcp = given;
        dhcp.setUseDhcp(true);
        settingsBox.setSettings(dhcp);
        QCOMPARE(edit(settingsBox, "leIP")->text(), s("300.1.1.1"));
        QCOMPARE(settingsBox.settings(), InterfaceSettings());
    }

    // Every edit is told as it is filled in, so the last word is the whole of it.
    void theFieldsAreFilledInTheirOrder()
    {
        EthernetSettingsBox settingsBox;
        QSignalSpy changes(&settingsBox, &EthernetSettingsBox::settingsChaged);
        settingsBox.setSettings(staticSettings(s("1.1.1.1"), s("2.2.2.2"), s("3.3.3.3"), s("4")));
        const QString none = s("...");
        QVector<InterfaceSettings> told;
        for (const QList<QVariant> &change : qAsConst(changes))
            told += change.at(1).value<InterfaceSettings>();
        QCOMPARE(told,
            (QVector<InterfaceSettings>{staticSettings(none, none, none),
                staticSettings(none, none, s("3.3.3.3")),
                staticSettings(s("1.1.1.1"), none, s("3.3.3.3")),
                staticSettings(s("1.1.1.1"), s("2.2.2.2"), s("3.3.3.3")),
                staticSettings(s("1.1.1.1"), s("2.2.2.2"), s("3.3.3.3"), s("4"))}));
    }

    void choosingTellsAtOnce()
    {
        EthernetSettingsBox settingsBox;
        settingsBox.setInterface(s("eth5"));
        edit(settingsBox, "leDNS")->setText(s("8.8.8.8"));
        QSignalSpy changes(&settingsBox, &EthernetSettingsBox::settingsChaged);
        const auto *const group = settingsBox.findChild<QGroupBox *>(s("gbStaticSettings"));

        combo(settingsBox)->setCurrentIndex(1);
        QVERIFY(group->isEnabled());
        QCOMPARE(changes.count(), 1);
        QCOMPARE(changes.last().at(0).toString(), s("eth5"));
        QCOMPARE(changes.last().at(1).value<InterfaceSettings>(),
            staticSettings(s("..."), s("..."), s("..."), s("8.8.8.8")));

        combo(settingsBox)->setCurrentIndex(0);
        QVERIFY(!group->isEnabled());
        QCOMPARE(changes.count(), 2);
        QCOMPARE(changes.last().at(1).value<InterfaceSettings>(), InterfaceSettings());
    }

    void typing_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("expected");
        for (const char *name : {"leIP", "leNetmask", "leGateway"}) {
            const auto row = [name](const char *situation, const char *keys, const char *expected) {
                QTest::addRow("%s, %s", name, situation)
                    << QByteArray(name) << s(keys) << s(expected);
            };
            row("whole groups", "192.168.100.200", "192.168.100.200");
            row("short groups", "10.0.0.1", "10.0.0.1");
            row("more than an octet holds", "300.1.1.1", "300.1.1.1");
            row("letters are refused", "a1b0.x0.0.1z", "10.0.0.1");
            row("unfinished", "10.0", "10.0..");
            row("a fourth digit goes on in the next group", "1921", "192.1..");
        }
        QTest::newRow("servers") << QByteArray("leDNS") << s("8.8.8.8 any") << s("8.8.8.8 any");
    }

    void typing()
    {
        QFETCH(QByteArray, name);
        QFETCH(QString, keys);
        QFETCH(QString, expected);
        EthernetSettingsBox settingsBox;
        settingsBox.setSettings(staticSettings());
        QLineEdit *const field = edit(settingsBox, name.constData());
        QSignalSpy changes(&settingsBox, &EthernetSettingsBox::settingsChaged);
        field->home(false);
        QTest::keyClicks(field, keys);
        QCOMPARE(field->text(), expected);
        QVERIFY(changes.count() > 0);
        const auto told = changes.last().at(1).value<InterfaceSettings>();
        QCOMPARE(told, settingsBox.settings());
        QVERIFY((QStringList{told.address(), told.netMask(), told.gateway(), told.dnsServers()})
                    .contains(expected));
    }

    void theFirstUsedInterfaceIsShown()
    {
        const EthernetWidget page(
            new QuickConfigurator({s("eth0")}, path(), {s("eth1"), s("eth2")}), nullptr);
        QVERIFY(box(page)->isEnabledTo(&page));
        QCOMPARE(box(page)->interface(), s("eth0"));
        QCOMPARE(box(page)->settings(), eth0());
    }

    void theFirstOfSeveralUsedInterfacesIsShown()
    {
        const EthernetWidget page(
            new QuickConfigurator({s("eth0"), s("eth1"), s("eth2")}, path(), {s("eth3")}), nullptr);
        QStringList used = rowNames(page);
        used.removeOne(s("eth3"));
        QCOMPARE(box(page)->interface(), used.first());
    }

    void withoutAUsedInterfaceNothingCanBeEdited_data()
    {
        QTest::addColumn<QStringList>("inactive");
        QTest::newRow("none at all") << QStringList();
        QTest::newRow("two inactive") << QStringList{s("eth0"), s("eth1")};
    }

    void withoutAUsedInterfaceNothingCanBeEdited()
    {
        QFETCH(QStringList, inactive);
        const EthernetWidget page(new QuickConfigurator({}, path(), inactive), nullptr);
        QCOMPARE(table(page)->model()->rowCount(), inactive.size());
        QVERIFY(!box(page)->isEnabledTo(&page));
        QCOMPARE(box(page)->title(), s("GroupBox"));
    }

    void aReloadWithoutAUsedInterfaceLeavesTheLastOneShown()
    {
        auto *const configurator = new QuickConfigurator({s("eth0")}, path());
        EthernetWidget page(configurator, nullptr);
        configurator->interfaces = {{s("eth0"), false}};
        page.reload();
        QVERIFY(!box(page)->isEnabledTo(&page));
        QCOMPARE(box(page)->interface(), s("eth0"));
        QCOMPARE(box(page)->settings(), eth0());
    }

    void aSwitchKeepsTheListWhereItIs()
    {
        QStringList names;
        for (int i = 0; i < 8; ++i)
            names += s("eth%1").arg(i);
        EthernetWidget page(new QuickConfigurator(names, path()), nullptr);
        show(page);
        table(page)->scrollToBottom();
        const int place = table(page)->verticalScrollBar()->value();
        QVERIFY(place > 0);
        tap(page, 7, 0);
        QCOMPARE(box(page)->interface(), table(page)->model()->index(7, 1).data().toString());
        QCoreApplication::processEvents();
        QCOMPARE(table(page)->verticalScrollBar()->value(), place);
    }

    void aTapOnTheIconSwitchesAndOnTheNameDoesNot()
    {
        EthernetWidget page(new QuickConfigurator({s("eth0")}, path()), nullptr);
        show(page);
        const QSignalSpy resets(table(page)->model(), &QAbstractItemModel::modelReset);

        tap(page, 0, 1);
        QCOMPARE(resets.count(), 0);
        QVERIFY(box(page)->isEnabled());
        QVERIFY(table(page)->selectionModel()->isRowSelected(0, QModelIndex()));

        tap(page, 0, 0);
        QCOMPARE(resets.count(), 1);
        QVERIFY(!box(page)->isEnabled());
        QVERIFY2(!table(page)->selectionModel()->hasSelection(), "a switch clears it");
        QCOMPARE(table(page)->rowHeight(0), 60);

        tap(page, 0, 1);
        QVERIFY2(!box(page)->isEnabled(), "an unused interface cannot be edited");
        QCOMPARE(resets.count(), 1);

        tap(page, 0, 0);
        QCOMPARE(resets.count(), 2);
        QVERIFY(box(page)->isEnabled());
        QCOMPARE(box(page)->interface(), s("eth0"));
        QCOMPARE(box(page)->settings(), eth0());
    }

    void aTapBesideTheRowsDisables()
    {
        EthernetWidget page(new QuickConfigurator({s("eth0")}, path()), nullptr);
        page.onInterfacePressed(QModelIndex());
        QVERIFY(!box(page)->isEnabledTo(&page));
        QCOMPARE(box(page)->interface(), QString());
        QCOMPARE(box(page)->title(), s("Customizing interface "));
    }

    void goingBetweenInterfacesMixesNothingUp()
    {
        EthernetWidget page(
            new QuickConfigurator({s("eth0"), s("eth1"), s("eth2")}, path()), nullptr);
        show(page);
        for (int round = 0; round < 2; ++round) {
            for (int row = 0; row < 3; ++row) {
                tap(page, row, 1);
                const QString name = table(page)->model()->index(row, 1).data().toString();
                QCOMPARE(box(page)->interface(), name);
                QCOMPARE(box(page)->settings(), name == s("eth0") ? eth0() : InterfaceSettings());
            }
        }
    }

    void anEditIsKeptUntilTheReload()
    {
        EthernetWidget page(new QuickConfigurator({s("eth0")}, path()), nullptr);
        show(page);
        edit(*box(page), "leIP")->home(false);
        QTest::keyClicks(edit(*box(page), "leIP"), s("99"));
        tap(page, 0, 1);
        QVERIFY(edit(*box(page), "leIP")->text().startsWith(s("99")));
        QTest::mouseClick(button(page, "pbReload"), Qt::LeftButton);
        QCOMPARE(box(page)->settings(), eth0());
        QCOMPARE(table(page)->rowHeight(0), 60);
    }

    void theButtonsActWhenTheyAreLetGo()
    {
        EthernetWidget page(new QuickConfigurator({s("eth0")}, path()), nullptr);
        show(page);
        const QSignalSpy resets(table(page)->model(), &QAbstractItemModel::modelReset);
        QTest::mousePress(button(page, "pbReload"), Qt::LeftButton);
        QCOMPARE(resets.count(), 0);
        leave(button(page, "pbReload")); // lets go of it too
        QCOMPARE(resets.count(), 1);

        int asked = 0;
        whenAsked([&asked](QMessageBox *box) {
            ++asked;
            box->reject();
        });
        QTest::mousePress(button(page, "pbApply"), Qt::LeftButton);
        QCOMPARE(asked, 0);
        leave(button(page, "pbApply"));
        QCOMPARE(asked, 1);
    }

    void theQuestionHasOneButton()
    {
        const FakeSudo sudo;
        EthernetWidget page(new QuickConfigurator({s("eth0")}, path()), nullptr);
        show(page);
        bool isAsked = false;
        whenAsked([&isAsked](QMessageBox *box) {
            isAsked = true;
            QCOMPARE(box->windowTitle(), s("Network settings applying"));
            QCOMPARE(box->text(), s("The network settings will reconfigures. continue?"));
            QCOMPARE(box->icon(), QMessageBox::Question);
            QCOMPARE(box->standardButtons(), QMessageBox::Yes);
            QCOMPARE(box->findChildren<QPushButton *>().size(), 1);
            QTest::keyClick(box->button(QMessageBox::Yes), Qt::Key_Return);
            QVERIFY2(box->isVisible(), "Return alone does not agree");
            QTest::keyClick(box, Qt::Key_Escape);
        });
        QTest::mouseClick(button(page, "pbApply"), Qt::LeftButton);
        QVERIFY(isAsked);
        QVERIFY(sudo.calls().isEmpty());
    }

    void declining_data()
    {
        QTest::addColumn<int>("way");
        QTest::newRow("Escape") << 0;
        QTest::newRow("closed") << 1;
        QTest::newRow("rejected") << 2;
    }

    void declining()
    {
        QFETCH(int, way);
        const FakeSudo sudo;
        EthernetWidget page(new QuickConfigurator({s("eth0")}, path()), nullptr);
        show(page);
        log(page)->setPlainText(s("of the time before"));
        QString shownMeanwhile;
        whenAsked([&](QMessageBox *box) {
            shownMeanwhile = log(page)->toPlainText();
            if (way == 0)
                QTest::keyClick(box, Qt::Key_Escape);
            else if (way == 1)
                box->close();
            else
                box->reject();
        });
        QTest::mouseClick(button(page, "pbApply"), Qt::LeftButton);
        QCOMPARE(shownMeanwhile, QString());
        QCOMPARE(log(page)->toPlainText(), QString());
        QVERIFY(button(page, "pbApply")->isEnabled());
        QVERIFY(button(page, "pbReload")->isEnabled());
        QVERIFY(sudo.calls().isEmpty());
    }

    void aPageDeletedWhileItAsksIsGone()
    {
        const FakeSudo sudo;
        auto *const page = new EthernetWidget(new QuickConfigurator({s("eth0")}, path()), nullptr);
        const QPointer<EthernetWidget> guard(page);
        whenAsked([page](QMessageBox *) { delete page; });
        page->apply();
        QVERIFY(!guard);
        QVERIFY(sudo.calls().isEmpty());
    }

    // The whole way by hand: an address that cannot be is written as it was typed, the commands'
    // output is shown and the buttons come back five seconds after the last of it.
    void applies()
    {
        const FakeSudo sudo("case \"$1\" in\n"
                            "cp) cp \"$2\" \"${0%/*}/installed\";;\n"
                            "service) echo '<b>300.1.1.1</b> is no address' >&2; exit 1;;\nesac");
        auto *const configurator = new QuickConfigurator({s("eth0")}, path());
        configurator->pause = std::chrono::milliseconds(400);
        EthernetWidget page(configurator, nullptr);
        show(page);
        edit(*box(page), "leIP")->selectAll();
        QTest::keyClicks(edit(*box(page), "leIP"), s("300.1.1.1"));
        whenAsked(sayYes);
        QTest::mouseClick(button(page, "pbApply"), Qt::LeftButton);
        QVERIFY(!button(page, "pbApply")->isEnabled());
        QVERIFY(!button(page, "pbReload")->isEnabled());
        QVERIFY2(table(page)->isEnabled() && box(page)->isEnabled(), "stay usable meanwhile");

        QTRY_COMPARE(log(page)->toPlainText(), s("<b>300.1.1.1</b> is no address\n"));
        QElapsedTimer sinceOutput;
        sinceOutput.start();
        QCOMPARE(sudo.calls().size(), 3);
        QFile installed(sudo.filePath(s("installed")));
        QVERIFY(installed.open(QIODevice::ReadOnly));
        QVERIFY(installed.readAll().endsWith(
            "iface eth0 inet static\n\taddress 300.1.1.1\n\tnetmask 255.0.0.0\n"
            "\tgateway 10.0.0.2\n\tdns-nameservers 8.8.8.8 8.8.4.4\n"));

        QTRY_VERIFY_WITH_TIMEOUT(button(page, "pbApply")->isEnabled(), 7000);
        QVERIFY2(sinceOutput.elapsed() > 4700, "counted from the output, not from Yes");
        QVERIFY(button(page, "pbReload")->isEnabled());

        button(page, "pbApply")->setEnabled(false);
        QTRY_VERIFY_WITH_TIMEOUT(button(page, "pbApply")->isEnabled(), 7000); // again and again
    }

    void buttonsAreOutAsSoonAsYesIsSaid()
    {
        const FakeSudo sudo;
        auto *const configurator = new QuickConfigurator({}, path());
        EthernetWidget page(configurator, nullptr);
        show(page);
        QVector<bool> enabled;
        configurator->atPause = [&] {
            enabled << button(page, "pbApply")->isEnabled()
                    << button(page, "pbReload")->isEnabled();
        };
        whenAsked(sayYes);
        QTest::mouseClick(button(page, "pbApply"), Qt::LeftButton);
        QCOMPARE(enabled, (QVector<bool>{false, false}));
        waitForEnd(page, sudo);
    }

    // Nothing is run and nothing said, but the page comes back.
    void theButtonsComeBackAlsoWhenNothingCanBeRun_data()
    {
        QTest::addColumn<QByteArray>("variable");
        QTest::newRow("no sudo") << QByteArray("PATH");
        QTest::newRow("a temporary directory that cannot be written") << QByteArray("TMPDIR");
    }

    void theButtonsComeBackAlsoWhenNothingCanBeRun()
    {
        QFETCH(QByteArray, variable);
        const QByteArray value = qgetenv(variable.constData());
        qputenv(variable.constData(), "/proc");
        EthernetWidget page(new QuickConfigurator({s("eth0")}, path()), nullptr);
        show(page);
        if (variable == "PATH")
            QTest::ignoreMessage(
                QtWarningMsg, QRegularExpression(s("^QProcess::FailedToStart \".+\"$")));
        whenAsked(sayYes);
        QTest::mouseClick(button(page, "pbApply"), Qt::LeftButton);
        qputenv(variable.constData(), value);
        QVERIFY(!button(page, "pbApply")->isEnabled());
        QTRY_VERIFY_WITH_TIMEOUT(button(page, "pbApply")->isEnabled(), 7000);
        QVERIFY(button(page, "pbReload")->isEnabled());
        QCOMPARE(log(page)->toPlainText(), QString());
    }

    void aMegabyteOfOutputIsShown_data()
    {
        QTest::addColumn<QByteArray>("command");
        const QByteArray megabyte = "head -c 1048576 /dev/zero | tr '\\0' x";
        QTest::newRow("in lines") << megabyte + " | fold -w 79";
        QTest::newRow("in short lines") << megabyte + " | fold -w 19";
        QTest::newRow("in words") << megabyte + " | fold -w 7 | tr '\\n' ' '";
        QTest::newRow("in one word") << megabyte;
    }

    void aMegabyteOfOutputIsShown()
    {
        QFETCH(QByteArray, command);
        const FakeSudo sudo("[ \"$1\" = cp ] || exit 0\n" + command + "\necho; echo end");
        EthernetWidget page(new QuickConfigurator({}, path()), nullptr);
        show(page);
        whenAsked(sayYes);
        QElapsedTimer time;
        time.start();
        QTest::mouseClick(button(page, "pbApply"), Qt::LeftButton);
        waitForEnd(page, sudo);
        QTRY_VERIFY_WITH_TIMEOUT(
            log(page)->document()->lastBlock().previous().text() == s("end"), 60000);
        QVERIFY2(time.elapsed() < 30000, qPrintable(QString::number(time.elapsed())));
        QCOMPARE(log(page)->toPlainText().count(QLatin1Char('x')), 1048576);

        // The next log has its words whole again.
        whenAsked([](QMessageBox *box) { box->reject(); });
        page.apply();
        QCOMPARE(log(page)->toPlainText(), QString());
        QCOMPARE(log(page)->wordWrapMode(), QTextOption::WrapAtWordBoundaryOrAnywhere);
    }

    void aFloodOfShortLinesLeavesTheWindowAlive()
    {
        constexpr int lines = 131072; // a quarter of a megabyte
        EthernetWidget page(new QuickConfigurator({}, path()), nullptr);
        show(page);
        qint64 longest = 0; // ns of work without a turn of the event loop
        qint64 turn = workOfThisThread();
        QTimer turns;
        QObject::connect(&turns, &QTimer::timeout, &page, [&] {
            const qint64 now = workOfThisThread();
            longest = qMax(longest, now - turn);
            turn = now;
        });
        turns.start(0);
        page.showLog(s("x\n").repeated(lines));
        QTRY_COMPARE_WITH_TIMEOUT(log(page)->document()->blockCount(), lines + 1, 100000);
        QVERIFY2(longest < 100'000'000, qPrintable(QString::number(longest)));
        QCOMPARE(log(page)->document()->characterCount(), 2 * lines + 1);
        const QScrollBar *const bar = log(page)->verticalScrollBar();
        QVERIFY(bar->maximum() - bar->value() < bar->pageStep());
    }

    void theLogIsPlainText()
    {
        EthernetWidget page(new QuickConfigurator({}, path()), nullptr);
        page.showLog(s("<i>one"));
        page.showLog(s(" two\nthree"));
        QCOMPARE(log(page)->toPlainText(), s("<i>one two\nthree"));
    }

    void anotherLanguage()
    {
        EthernetWidget page(new QuickConfigurator({s("eth0")}, path()), nullptr);
        MarkingTranslator translator;
        QCoreApplication::installTranslator(&translator);
        QTRY_COMPARE(page.windowTitle(), s("~Form"));
        QCOMPARE(button(page, "pbReload")->text(), s("~Reload\ninterfaces"));
        QCOMPARE(button(page, "pbApply")->text(), s("~Apply"));
        QCOMPARE(page.findChild<QLabel *>(s("label"))->text(), s("~Select interface"));
        QCOMPARE(box(page)->title(), s("~GroupBox"));
        QCOMPARE(combo(*box(page))->count(), 2);
        QCOMPARE(combo(*box(page))->itemText(1), s("~STATIC"));
        QCOMPARE(combo(*box(page))->currentIndex(), 0); // filled anew
        QCOMPARE(
            edit(*box(page), "leDNS")->placeholderText(), s("~space separated DNS IP addresses"));
        QCoreApplication::removeTranslator(&translator);
        QTRY_COMPARE(page.windowTitle(), s("Form"));
        QCOMPARE(edit(*box(page), "leIP")->text(), s("..."));
        QCOMPARE(combo(*box(page))->itemText(0), s("DHCP"));
        QCOMPARE(combo(*box(page))->count(), 2);
    }

    void fitsTheScreenAndAFinger_data()
    {
        QTest::addColumn<int>("interfaces");
        QTest::newRow("no interface") << 0;
        QTest::newRow("one interface") << 1;
        QTest::newRow("eight interfaces") << 8;
    }

    void fitsTheScreenAndAFinger()
    {
        QFETCH(int, interfaces);
        QStringList names;
        for (int i = 0; i < interfaces; ++i)
            names += s("enx%1").arg(QString(12, QLatin1Char("0123456789abcdef"[15 - i])));
        EthernetWidget page(new QuickConfigurator(names, path()), nullptr);
        // The dialog's own buttons stand below the page.
        QVERIFY2(page.minimumSizeHint().height() <= 520,
            qPrintable(QString::number(page.minimumSizeHint().height())));
        QVERIFY(page.minimumSizeHint().width() <= 790);
        page.resize(794, 531); // what the dialog leaves
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        QCOMPARE(page.size(), QSize(794, 531));
        QList<QWidget *> touched = {button(page, "pbReload"), button(page, "pbApply"),
            combo(*box(page)), edit(*box(page), "leIP"), edit(*box(page), "leNetmask"),
            edit(*box(page), "leGateway"), edit(*box(page), "leDNS")};
        for (const QWidget *widget : qAsConst(touched)) {
            QVERIFY2(
                widget->height() >= 48 && widget->width() >= 48, qPrintable(widget->objectName()));
            QVERIFY2(page.rect().contains(QRect(widget->mapTo(&page, QPoint()), widget->size())),
                qPrintable(widget->objectName()));
            QVERIFY2(widget->height() >= widget->minimumSizeHint().height(),
                qPrintable(widget->objectName()));
        }
        // The longest names there are, those by hardware address, are shown whole beside a scroll
        // bar for a finger.
        constexpr int wideBar = 32;
        const QAbstractItemView *const view = table(page);
        const QScrollBar *const bar = view->verticalScrollBar();
        const int left
            = table(page)->columnWidth(1) - (bar->isVisible() ? wideBar - bar->width() : 0);
        QVERIFY2(view->sizeHintForColumn(1) <= left, qPrintable(QString::number(left)));
        QVERIFY(table(page)->columnWidth(0) >= 48);
        for (int row = 0; row < interfaces; ++row)
            QCOMPARE(table(page)->rowHeight(row), 60);
        const QLineEdit *const servers = edit(*box(page), "leDNS");
        QVERIFY(servers->fontMetrics().horizontalAdvance(servers->placeholderText())
            < servers->width() - 12);
        QVERIFY(log(page)->height() >= 90);
    }

private:
    QString path() const { return m_box.filePath(s("interfaces")); }

    static InterfaceSettings eth0()
    {
        return staticSettings(s("10.0.0.1"), s("255.0.0.0"), s("10.0.0.2"), s("8.8.8.8 8.8.4.4"));
    }

    static QPushButton *button(const QWidget &page, const char *name)
    {
        return page.findChild<QPushButton *>(s(name));
    }
    static QTableView *table(const QWidget &page)
    {
        return page.findChild<QTableView *>(s("tvInterfaces"));
    }
    static QTextBrowser *log(const QWidget &page)
    {
        return page.findChild<QTextBrowser *>(s("tbLog"));
    }
    static EthernetSettingsBox *box(const QWidget &page)
    {
        return page.findChild<EthernetSettingsBox *>(s("gbSettings"));
    }
    static QComboBox *combo(const QWidget &settingsBox)
    {
        return settingsBox.findChild<QComboBox *>(s("cbUseDHCP"));
    }
    static QLineEdit *edit(const QWidget &settingsBox, const char *name)
    {
        return settingsBox.findChild<QLineEdit *>(s(name));
    }

    static void show(QWidget &page)
    {
        page.resize(800, 600);
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
    }

    static QStringList rowNames(const QWidget &page)
    {
        const QAbstractItemModel *const model = table(page)->model();
        QStringList names;
        for (int row = 0; row < model->rowCount(); ++row)
            names += model->index(row, 1).data().toString();
        return names;
    }

    static void leave(QWidget *pressed)
    {
        const QPointF outside(pressed->width() + 50, pressed->height() + 50);
        QMouseEvent move(QEvent::MouseMove, outside, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(pressed, &move);
    }

    static void tap(const QWidget &page, int row, int column)
    {
        const QTableView *const view = table(page);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier,
            view->visualRect(view->model()->index(row, column)).center());
    }

    static void waitForEnd(const QWidget &page, const FakeSudo &sudo)
    {
        const auto *const process = page.findChild<QProcess *>();
        QTRY_VERIFY(!sudo.calls().isEmpty()
            && sudo.calls().last() == s("[service][networking][restart]")
            && process->state() == QProcess::NotRunning);
    }

    QTemporaryDir m_box;
};

QTEST_MAIN(TestEthernetWidget)
#include "tst_ethernetwidget.moc"
