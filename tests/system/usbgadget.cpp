#include "usbgadget.h"

#include "gadgetline.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QThread>
#include <cstdio>
#include <utility>

namespace {

constexpr qint64 kEnumerationMs = 20000;
constexpr unsigned long kLookAgainMs = 10;

// Attributes of the kernel's file systems are written in one piece.
bool put(const QString &path, const QByteArray &value)
{
    QFile file(path);
    const bool done = file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)
        && file.write(value) == value.size();
    if (!done)
        std::fprintf(stderr, "cannot write \"%s\" to %s: %s\n", value.constData(),
            qUtf8Printable(path), qUtf8Printable(file.errorString()));
    return done;
}

QByteArray hex(quint16 value)
{
    return "0x" + QByteArray::number(value, 16);
}

} // namespace

UsbGadget::UsbGadget(int number, UsbIdentity identity)
    : m_number(number)
    , m_identity(std::move(identity))
    , m_path(QStringLiteral("/sys/kernel/config/usb_gadget/modem%1").arg(number))
{
}

UsbGadget::~UsbGadget()
{
    dissolve();
}

void UsbGadget::setPorts(const QList<int> &portNumbers)
{
    dissolve();
    m_ports = portNumbers;
    bool done = describe();
    for (int i = 0; i < m_ports.size(); ++i)
        done = done && addPort(i);
    if (!done)
        dissolve(); // makeLine() and plug() will not find it
}

bool UsbGadget::describe() const
{
    const QString texts = m_path + QStringLiteral("/strings/0x409/");
    return QDir().mkpath(texts) && QDir().mkpath(m_path + QStringLiteral("/configs/c.1"))
        && put(m_path + QStringLiteral("/idVendor"), hex(m_identity.vendorId))
        && put(m_path + QStringLiteral("/idProduct"), hex(m_identity.productId))
        && put(texts + QStringLiteral("manufacturer"), m_identity.vendor.toUtf8())
        && put(texts + QStringLiteral("product"), m_identity.product.toUtf8())
        && put(texts + QStringLiteral("serialnumber"), m_identity.serial.toUtf8());
}

bool UsbGadget::addPort(int index)
{
    const QString name = QStringLiteral("gser.modem%1port%2").arg(m_number).arg(index);
    const QString function = m_path + QStringLiteral("/functions/") + name;
    if (!QDir().mkpath(function)
        || !QFile::link(function, m_path + QStringLiteral("/configs/c.1/") + name))
        return false;
    QFile inside(function + QStringLiteral("/port_num"));
    if (!inside.open(QIODevice::ReadOnly))
        return false;
    m_insides.append("/dev/ttyGS" + inside.readAll().trimmed());
    return true;
}

// In configfs what was linked last goes first, and a directory goes with its attributes.
void UsbGadget::dissolve()
{
    if (!QFile::exists(m_path))
        return;
    const QDir configuration(m_path + QStringLiteral("/configs/c.1"));
    const QDir functions(m_path + QStringLiteral("/functions"));
    const QStringList names = functions.entryList({QStringLiteral("gser.*")}, QDir::Dirs);
    for (const QString &name : names) {
        QFile::remove(configuration.filePath(name));
        functions.rmdir(name);
    }
    QDir().rmdir(configuration.path());
    QDir().rmdir(m_path + QStringLiteral("/strings/0x409"));
    QDir().rmdir(m_path);
    m_insides.clear();
}

SerialLine *UsbGadget::makeLine(int index, QObject *parent) const
{
    return new GadgetLine(m_insides.value(index), parent);
}

bool UsbGadget::plug()
{
    // The driver knows many modems, but not every one that a profile may describe.
    put(QStringLiteral("/sys/bus/usb-serial/drivers/option1/new_id"),
        QByteArray::number(m_identity.vendorId, 16) + ' '
            + QByteArray::number(m_identity.productId, 16));
    return put(m_path + QStringLiteral("/UDC"), "dummy_udc." + QByteArray::number(m_number - 1))
        && awaitPorts(true);
}

void UsbGadget::unplug()
{
    if (put(m_path + QStringLiteral("/UDC"), "\n"))
        awaitPorts(false);
}

// Until the kernel has made or removed the ports and udev has taken note.
bool UsbGadget::awaitPorts(bool present) const
{
    QElapsedTimer waited;
    waited.start();
    for (int number : m_ports) {
        const QString port = QStringLiteral("/dev/ttyUSB%1").arg(number);
        while (QFile::exists(port) != present) {
            if (waited.hasExpired(kEnumerationMs)) {
                std::fprintf(
                    stderr, "%s has not %s\n", qUtf8Printable(port), present ? "come" : "gone");
                return false;
            }
            QThread::msleep(kLookAgainMs);
        }
    }
    return QProcess::execute(QStringLiteral("udevadm"), {QStringLiteral("settle")}) == 0;
}
