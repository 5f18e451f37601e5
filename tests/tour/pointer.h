#pragma once

#include <QPoint>

#include <memory>

struct xcb_connection_t;

/**
 * A finger on the X display: presses and releases the first button at a place of the screen through
 * the XTEST extension, so that the window under it gets the events that a real touch makes.
 *
 * Speaks to the X server over a connection of its own; use it on one thread.
 */
class Pointer
{
public:
    Pointer();
    ~Pointer();
    Q_DISABLE_COPY_MOVE(Pointer)

    /** False when there is no X display or it lacks XTEST. */
    bool isValid() const;

    /** Presses and releases at @p place (root window pixels); returns when the server has done it.
     */
    void click(const QPoint &place);

private:
    void fake(uint8_t type, uint8_t detail, const QPoint &place);

    struct Disconnect
    {
        void operator()(xcb_connection_t *connection) const;
    };
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    uint32_t m_root = 0;
    bool m_hasTest = false;
};
