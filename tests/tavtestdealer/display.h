#pragma once

#include <QPoint>
#include <QProcess>
#include <QString>

/// A display without a screen, with its keyboard and its mouse. There is no window manager: keys go
/// where the pointer is.
class Display
{
public:
    Display()
    {
        m_server.setProcessChannelMode(QProcess::SeparateChannels);
        m_server.start(QStringLiteral("Xvfb"),
            {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                QStringLiteral("0"), QStringLiteral("1024x768x24"), QStringLiteral("-nolisten"),
                QStringLiteral("tcp"), QStringLiteral("-noreset")});
        QByteArray number;
        while (!number.endsWith('\n')) {
            if (!m_server.waitForReadyRead(kLong))
                qFatal("Xvfb does not start: %s", qPrintable(m_server.errorString()));
            number += m_server.readAllStandardOutput();
        }
        name = QString::fromLatin1(':' + number.trimmed());
    }
    ~Display() { end(); }
    Display(const Display &) = delete;
    Display &operator=(const Display &) = delete;

    /// Breaks the connections of its programs.
    void end()
    {
        m_server.terminate();
        m_server.waitForFinished(kLong);
    }

    /// A program's environment on this display.
    QProcessEnvironment environment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DISPLAY"), name);
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        return environment;
    }

    bool shows(const QString &title) const { return !window(title).isEmpty(); }

    void press(const QString &title, const QString &key) const
    {
        pointAt(title, QPoint(10, 10), {QStringLiteral("key"), key});
    }
    /// place: of the window, in pixels.
    void click(const QString &title, const QPoint &place) const
    {
        pointAt(title, place, {QStringLiteral("click"), QStringLiteral("1")});
    }

    QString name;

private:
    static constexpr int kLong = 30000; // ms

    QByteArray xdotool(const QStringList &arguments) const
    {
        QProcess tool;
        tool.setProcessEnvironment(environment());
        tool.start(QStringLiteral("xdotool"), arguments);
        if (!tool.waitForFinished(kLong))
            qFatal("xdotool: %s", qPrintable(tool.errorString()));
        return tool.readAllStandardOutput().trimmed();
    }

    QByteArray window(const QString &title) const
    {
        return xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                           QStringLiteral("--name"), QStringLiteral("^%1$").arg(title)})
            .split('\n')
            .last();
    }

    void pointAt(const QString &title, const QPoint &place, const QStringList &action) const
    {
        xdotool(QStringList{QStringLiteral("mousemove"), QStringLiteral("--window"),
                    QString::fromLatin1(window(title)), QString::number(place.x()),
                    QString::number(place.y())}
            + action);
    }

    QProcess m_server;
};
