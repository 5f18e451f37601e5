#pragma once

#include <QSize>
#include <QStringList>

#include <chrono>
#include <memory>
#include <optional>

struct xcb_connection_t;

/**
 * Starts programs on the X display and sees, from outside, when the first frame of their window has
 * been painted: the DAMAGE extension reports the first drawing into a window of the given size.
 */
class FirstFrame
{
public:
    struct Run
    {
        std::chrono::microseconds untilPainted; ///< from just before fork
        long peakKib; ///< maximum resident set of the whole run
    };

    /** @param size of the window to wait for, in pixels. */
    explicit FirstFrame(const QSize &size);
    ~FirstFrame();
    Q_DISABLE_COPY_MOVE(FirstFrame)

    /** False when there is no X display or it lacks DAMAGE. */
    bool isValid() const;

    /**
     * Runs @p command, lets it go on for @p afterwards once its window is painted, then ends it.
     * Nothing when no such window was painted within 20 s.
     */
    std::optional<Run> measure(const QStringList &command, std::chrono::milliseconds afterwards);

private:
    bool waitUntilPainted();
    bool hasSize(uint32_t window) const;

    struct Disconnect
    {
        void operator()(xcb_connection_t *connection) const;
    };
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    QSize m_size;
    uint8_t m_damageEvents = 0;
    bool m_valid = false;
};
