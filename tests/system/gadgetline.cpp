#include "gadgetline.h"

#include <QSocketNotifier>
#include <cerrno>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace {

// Of a call there may be this much on its way; a modem with nobody on its port keeps no more.
constexpr int kMostUnsent = 1 << 16;

} // namespace

GadgetLine::GadgetLine(QByteArray device, QObject *parent)
    : SerialLine(parent)
    , m_device(std::move(device))
{
}

GadgetLine::~GadgetLine()
{
    unplug();
}

bool GadgetLine::plug()
{
    if (isPlugged())
        return true;
    if (!m_lock.lock(QString::fromLatin1(m_device)))
        return false;
    m_file = open(m_device.constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    termios settings{};
    if (m_file < 0 || tcgetattr(m_file, &settings) != 0)
        return false;
    cfmakeraw(&settings);
    if (tcsetattr(m_file, TCSANOW, &settings) != 0)
        return false;
    m_reader = new QSocketNotifier(m_file, QSocketNotifier::Read, this);
    connect(m_reader, &QSocketNotifier::activated, this, &GadgetLine::readBytes);
    m_writer = new QSocketNotifier(m_file, QSocketNotifier::Write, this);
    m_writer->setEnabled(false);
    connect(m_writer, &QSocketNotifier::activated, this, &GadgetLine::writeRest);
    return true;
}

void GadgetLine::unplug()
{
    if (!isPlugged())
        return;
    for (QSocketNotifier **notifier : {&m_reader, &m_writer}) {
        if (*notifier != nullptr) {
            (*notifier)->setEnabled(false);
            (*notifier)->deleteLater(); // it may be its own signal that brought us here
            *notifier = nullptr;
        }
    }
    // Closing waits for what is still to be sent, and there may be nobody to take it.
    tcflush(m_file, TCIOFLUSH);
    close(std::exchange(m_file, -1));
    m_lock.unlock();
    m_unsent.clear();
    emit hungUp();
}

void GadgetLine::readBytes()
{
    char bytes[4096];
    const ssize_t count = read(m_file, bytes, sizeof bytes);
    if (count > 0)
        emit received(QByteArray(bytes, static_cast<int>(count)));
    else if (count == 0 || (errno != EAGAIN && errno != EINTR))
        m_reader->setEnabled(false); // hung up from outside; unplug() follows
}

void GadgetLine::send(const QByteArray &bytes)
{
    if (!isPlugged() || m_unsent.size() + bytes.size() > kMostUnsent)
        return;
    m_unsent += bytes;
    writeRest();
}

void GadgetLine::writeRest()
{
    while (!m_unsent.isEmpty()) {
        const ssize_t count
            = write(m_file, m_unsent.constData(), static_cast<size_t>(m_unsent.size()));
        if (count <= 0)
            break;
        m_unsent.remove(0, static_cast<int>(count));
    }
    m_writer->setEnabled(!m_unsent.isEmpty());
}
