#include "guilog.h"

#include "guilogger.h"
#include "loggermanager.h"

#include <QRegularExpression>

namespace {

QString category()
{
    return QString::fromUtf8(GUILOGGER().categoryName());
}

QString level(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return QStringLiteral("debug ");
    case QtWarningMsg:
        return QStringLiteral("warning ");
    default:
        return QStringLiteral("other ");
    }
}

} // namespace

GuiLog::GuiLog()
{
    m_clock.start();
    LoggerManager::setOutputs(
        category(), [this](QtMsgType type, const QMessageLogContext &, const QString &text) {
            m_messages.append({text, m_clock.elapsed()});
            static const QRegularExpression number(QStringLiteral(" \\d+$"));
            const QString line = level(type) + QString(text).replace(number, QStringLiteral(" #"));
            if (m_lines.isEmpty() || m_lines.last() != line)
                m_lines << line;
        });
}

GuiLog::~GuiLog()
{
    LoggerManager::removeOutput(category());
}

QStringList GuiLog::warnings() const
{
    return m_lines.filter(QRegularExpression(QStringLiteral("^warning ")));
}
