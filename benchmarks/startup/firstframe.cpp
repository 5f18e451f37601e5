#include "firstframe.h"

#include <QVarLengthArray>

#include <xcb/damage.h>
#include <xcb/xcb.h>

#include <csignal>
#include <cstdlib>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

constexpr auto kGiveUpAfter = 20s;

template <typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

template <typename T>
Reply<T> reply(T *received)
{
    return {received, &std::free};
}

pid_t start(const QStringList &command)
{
    QList<QByteArray> words;
    QVarLengthArray<char *> argv;
    for (const auto &word : command)
        words.append(word.toLocal8Bit());
    for (auto &word : words)
        argv.append(word.data());
    argv.append(nullptr);

    const pid_t child = fork();
    if (child == 0) {
        execv(argv[0], argv.data());
        _exit(127);
    }
    return child;
}

long end(pid_t child)
{
    kill(child, SIGKILL);
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    return usage.ru_maxrss;
}

} // namespace

void FirstFrame::Disconnect::operator()(xcb_connection_t *connection) const
{
    xcb_disconnect(connection);
}

FirstFrame::FirstFrame(const QSize &size)
    : m_connection(xcb_connect(nullptr, nullptr))
    , m_size(size)
{
    auto *connection = m_connection.get();
    if (xcb_connection_has_error(connection) != 0)
        return;
    const auto *damage = xcb_get_extension_data(connection, &xcb_damage_id);
    if (damage == nullptr || damage->present == 0)
        return;
    m_damageEvents = damage->first_event;
    reply(xcb_damage_query_version_reply(connection,
        xcb_damage_query_version(connection, XCB_DAMAGE_MAJOR_VERSION, XCB_DAMAGE_MINOR_VERSION),
        nullptr));

    const uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    const auto root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    xcb_change_window_attributes(connection, root, XCB_CW_EVENT_MASK, &events);
    xcb_flush(connection);
    m_valid = true;
}

FirstFrame::~FirstFrame() = default;

bool FirstFrame::isValid() const
{
    return m_valid;
}

std::optional<FirstFrame::Run> FirstFrame::measure(
    const QStringList &command, std::chrono::milliseconds afterwards)
{
    const auto started = Clock::now();
    const pid_t child = start(command);
    if (child < 0)
        return std::nullopt;
    const bool painted = waitUntilPainted();
    const auto took = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - started);
    // Not a wait for something: the run's length is what the memory is measured over.
    usleep(static_cast<useconds_t>(std::chrono::microseconds(afterwards).count()));
    const long peak = end(child);
    if (!painted)
        return std::nullopt;
    return Run{took, peak};
}

bool FirstFrame::waitUntilPainted()
{
    auto *connection = m_connection.get();
    const auto deadline = Clock::now() + kGiveUpAfter;
    while (Clock::now() < deadline) {
        const auto event = reply(xcb_poll_for_event(connection));
        if (!event) {
            pollfd readable{xcb_get_file_descriptor(connection), POLLIN, 0};
            poll(&readable, 1, 100);
            continue;
        }
        const uint8_t type = event->response_type & 0x7f;
        if (type == XCB_CREATE_NOTIFY) {
            const auto *created = reinterpret_cast<xcb_create_notify_event_t *>(event.get());
            xcb_damage_create(connection, xcb_generate_id(connection), created->window,
                XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
            xcb_flush(connection);
        } else if (type == m_damageEvents + XCB_DAMAGE_NOTIFY) {
            const auto *drawn = reinterpret_cast<xcb_damage_notify_event_t *>(event.get());
            if (hasSize(drawn->drawable))
                return true;
        }
    }
    return false;
}

bool FirstFrame::hasSize(uint32_t window) const
{
    const auto geometry = reply(xcb_get_geometry_reply(
        m_connection.get(), xcb_get_geometry(m_connection.get(), window), nullptr));
    return geometry && geometry->width == m_size.width() && geometry->height == m_size.height();
}
