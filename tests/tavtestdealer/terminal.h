#pragma once

#include "maindialog.h"
#include "modemsettings.h"
#include "terminalsim1proxy.h"
#include "testdialwidget.h"

#include <QComboBox>
#include <QDBusConnection>
#include <QElapsedTimer>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTimer>

/// The simulated terminal that a test runs in, as seen from inside.
class Terminal : public OrgOvrelTerminalSim1Interface
{
public:
    Terminal()
        : OrgOvrelTerminalSim1Interface(QStringLiteral("org.ovrel.TerminalSim"),
            QStringLiteral("/org/ovrel/TerminalSim"), QDBusConnection::systemBus())
    {
    }

    /// What happened since a mark, without the times: for the order of events.
    QStringList events(int since = 0)
    {
        QStringList lines = journal().value().mid(since);
        for (QString &line : lines)
            line = line.section(QLatin1Char(' '), 1);
        return lines;
    }
    int mark() { return journal().value().size(); }

    /// All modems and services as they came up.
    void restore()
    {
        const QStringList all = modems().value();
        for (const QString &modem : all) {
            holdPort(modem, false).waitForFinished();
            clearModemFault(modem).waitForFinished();
            plug(modem).waitForFinished();
        }
        serviceFault(QStringLiteral("tavmodems"), QString()).waitForFinished();
    }
};

/// The longest time, in ms, for which the event loop did not come round: a call that blocks counts
/// in full.
class BlockWatch
{
public:
    BlockWatch()
    {
        m_since.start();
        QObject::connect(
            &m_timer, &QTimer::timeout, [this] { m_longest = qMax(m_longest, m_since.restart()); });
        m_timer.start(0);
    }
    qint64 longest() const { return m_longest; }

private:
    QTimer m_timer;
    QElapsedTimer m_since;
    qint64 m_longest = 0;
};

/// The Dial test page, wherever it stands, with its widgets by their names.
class DialPage
{
public:
    explicit DialPage(TestDialWidget *page)
        : started(page, &TestDialWidget::started)
        , finished(page, &TestDialWidget::finished)
        , m_page(page)
    {
    }

    void choose(const QString &connection)
    {
        m_page->findChild<QComboBox *>(QStringLiteral("cbModem"))->setCurrentText(connection);
    }
    void press(const char *name) { QTest::mouseClick(button(name), Qt::LeftButton); }
    QPushButton *button(const char *name) const
    {
        return m_page->findChild<QPushButton *>(QLatin1String(name));
    }
    bool isIdle() const { return button("cbDial")->isEnabled() && !button("pbStop")->isEnabled(); }
    QString log() const { return pane()->toPlainText(); }
    bool logs(const char *text) const { return log().contains(QString::fromUtf8(text)); }
    /// Of the first paragraph that holds the text; invalid when there is none.
    QColor colourOf(const char *text) const
    {
        const QString wanted = QString::fromUtf8(text);
        for (QTextBlock block = pane()->document()->begin(); block.isValid();
             block = block.next()) {
            if (block.text().contains(wanted))
                return block.begin().fragment().charFormat().foreground().color();
        }
        return QColor();
    }
    QProcess *dialer() const { return m_page->findChild<QProcess *>(); }

    QSignalSpy started;
    QSignalSpy finished;

private:
    QTextBrowser *pane() const
    {
        return m_page->findChild<QTextBrowser *>(QStringLiteral("tbLog"));
    }

    TestDialWidget *const m_page;
};
