#include "logpane.h"

#include "inertdocument.h"
#include "loggermanager.h"

#include <QLoggingCategory>
#include <QMutex>
#include <QRegularExpression>
#include <QTextBrowser>

namespace {

constexpr int kPaintPeriod = 100; // ms

// How long one turn of the event loop may be kept from the window: well below what is felt as a
// stall, since laying out and painting come on top.
constexpr qint64 kTurnLimit = 20'000'000; // ns

QString colourOf(QtMsgType type)
{
    switch (type) {
    case QtWarningMsg:
        return QStringLiteral("blue");
    case QtCriticalMsg:
    case QtFatalMsg:
        return QStringLiteral("red");
    default:
        return QStringLiteral("black");
    }
}

// Messages and names come from the network, and markup in them is taken for markup. But tables
// within tables take a time that doubles with each to lay out, and a single one of very wide cells
// takes as long: a short message could stop the program for good.
bool isHarmless(const QString &line)
{
    constexpr int kMostTags = 500;
    static const QRegularExpression table(
        QStringLiteral("<\\s*(table|tbody|thead|tfoot|tr|td|th)\\b"),
        QRegularExpression::CaseInsensitiveOption);
    return line.count(QLatin1Char('<')) <= kMostTags && !line.contains(table);
}

// Of a pane whose text others have written: it neither opens what that points to nor goes there.
void makeInert(QTextBrowser &pane)
{
    const QTextDocument &former = *pane.document();
    auto *const document = new InertDocument(&pane);
    document->setDefaultFont(former.defaultFont());
    document->setDefaultTextOption(former.defaultTextOption());
    document->setUndoRedoEnabled(false);
    pane.setDocument(document);
    pane.setOpenLinks(false);
}

} // namespace

LogPane::LogPane(QTextBrowser *pane, const QLoggingCategory &category, Lock lock)
    : m_name(QString::fromUtf8(category.categoryName()))
    , m_pane(pane)
    , m_lock(lock)
{
    if (m_pane)
        makeInert(*m_pane);
    QObject::connect(&m_turn, &QTimer::timeout, &m_turn, [this] { goOn(); });
    LoggerManager::setOutputs(
        m_name, [this](QtMsgType type, const QMessageLogContext &, const QString &text) {
            QMutexLocker locker(m_lock ? &m_lock() : nullptr);
            show(type, text);
            locker.unlock();
            if (m_sincePainted.isValid() && m_sincePainted.elapsed() >= kPaintPeriod)
                paint();
        });
}

LogPane::~LogPane()
{
    LoggerManager::removeOutput(m_name);
}

void LogPane::clear()
{
    m_waiting.clear();
    if (m_pane)
        m_pane->clear();
}

void LogPane::paint()
{
    if (!m_pane)
        return;
    {
        const QMutexLocker locker(m_lock ? &m_lock() : nullptr);
        appendWaiting();
    }
    m_pane->viewport()->repaint();
    if (m_sincePainted.isValid())
        m_sincePainted.start();
}

void LogPane::setLive(bool live)
{
    if (live)
        m_sincePainted.start();
    else
        m_sincePainted.invalidate();
}

void LogPane::show(QtMsgType type, const QString &text)
{
    if (!m_pane)
        return;
    const QString colour = colourOf(type);
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        if (m_waiting.empty() && m_spent < kTurnLimit)
            append({colour, line});
        else
            m_waiting.emplace_back(colour, line);
    }
    if (!m_turn.isActive())
        m_turn.start(0);
}

void LogPane::append(const Line &line)
{
    QElapsedTimer clock;
    clock.start();
    // Both at once: a "%2" in a line of the dialer's is text, not a place to fill.
    m_pane->append(
        QStringLiteral("<font color=\"%1\">%2</font>")
            .arg(line.first, isHarmless(line.second) ? line.second : line.second.toHtmlEscaped()));
    m_spent += clock.nsecsElapsed();
}

void LogPane::goOn()
{
    const QMutexLocker locker(m_lock ? &m_lock() : nullptr);
    appendWaiting();
    if (m_waiting.empty() && m_spent == 0)
        m_turn.stop();
}

void LogPane::appendWaiting()
{
    m_spent = 0;
    while (!m_waiting.empty() && m_spent < kTurnLimit) {
        append(m_waiting.front());
        m_waiting.pop_front();
    }
}
