#include "pointer.h"

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <cstdlib>

namespace {

constexpr uint8_t kFirstButton = 1;

template <typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

} // namespace

void Pointer::Disconnect::operator()(xcb_connection_t *connection) const
{
    xcb_disconnect(connection);
}

Pointer::Pointer()
    : m_connection(xcb_connect(nullptr, nullptr))
{
    if (xcb_connection_has_error(m_connection.get()) != 0)
        return;
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data->root;
    const auto *extension = xcb_get_extension_data(m_connection.get(), &xcb_test_id);
    m_hasTest = extension != nullptr && extension->present != 0;
}

Pointer::~Pointer() = default;

bool Pointer::isValid() const
{
    return m_hasTest;
}

void Pointer::click(const QPoint &place)
{
    fake(XCB_MOTION_NOTIFY, 0, place);
    fake(XCB_BUTTON_PRESS, kFirstButton, place);
    fake(XCB_BUTTON_RELEASE, kFirstButton, place);
    // A round trip: the server has handled everything before it.
    const Reply<xcb_get_input_focus_reply_t> done(
        xcb_get_input_focus_reply(
            m_connection.get(), xcb_get_input_focus(m_connection.get()), nullptr),
        &std::free);
}

void Pointer::fake(uint8_t type, uint8_t detail, const QPoint &place)
{
    xcb_test_fake_input(m_connection.get(), type, detail, XCB_CURRENT_TIME, m_root,
        static_cast<int16_t>(place.x()), static_cast<int16_t>(place.y()), 0);
}
