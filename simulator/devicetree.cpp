#include "devicetree.h"

#include <umockdev.h> // before Qt makes a keyword of "signals", which GLib has members called

#include "privatefiles.h"

#include <QDir>
#include <cerrno>
#include <cstring>
#include <sys/mount.h>
#include <vector>

namespace {

const QString kRealSys = QStringLiteral("/run/terminal/sysfs");

UMockdevTestbed *testbedOf(const std::unique_ptr<void, void (*)(void *)> &object)
{
    return static_cast<UMockdevTestbed *>(object.get());
}

// Names and values in turn, as the library takes them.
class NullTerminated
{
public:
    explicit NullTerminated(const DeviceTree::Values &values)
    {
        for (const auto &value : values) {
            m_texts.push_back(value.first);
            m_texts.push_back(value.second);
        }
        for (QByteArray &text : m_texts)
            m_pointers.push_back(text.data());
        m_pointers.push_back(nullptr);
    }

    gchar **data() { return m_pointers.data(); }

private:
    std::vector<QByteArray> m_texts;
    std::vector<gchar *> m_pointers;
};

// The name is libudev's device id: by number if it has one, else by subsystem and name.
QString databaseFile(
    const QByteArray &subsystem, const QByteArray &path, const DeviceTree::Values &attributes)
{
    QByteArray id = '+' + subsystem + ':' + path.mid(path.lastIndexOf('/') + 1);
    for (const auto &attribute : attributes) {
        if (attribute.first == "dev")
            id = 'c' + attribute.second;
    }
    return QStringLiteral("/run/udev/data/") + QString::fromLatin1(id);
}

} // namespace

DeviceTree::DeviceTree()
    : m_testbed(umockdev_testbed_new(), g_object_unref)
{
    qunsetenv(
        "UMOCKDEV_DIR"); // for its own library; a program that preloads it has its own testbed
}

bool DeviceTree::mount(QString *error)
{
    gchar *const directory = umockdev_testbed_get_sys_dir(testbedOf(m_testbed));
    const QString tree = QFile::decodeName(directory);
    g_free(directory);
    // The network's part is the real one, of the terminal's own network namespace. Where the
    // machine hides its /sys (a container), it is left out.
    QDir().mkpath(kRealSys);
    if (::mount("sysfs", QFile::encodeName(kRealSys).constData(), "sysfs",
            MS_NOSUID | MS_NODEV | MS_NOEXEC | MS_RDONLY, nullptr)
        == 0)
        QFile::link(kRealSys + QStringLiteral("/class/net"), tree + QStringLiteral("/class/net"));
    // Without the second file clients take udev for absent and do not listen for devices.
    if (PrivateFiles::bind(tree, QStringLiteral("/sys"))
        && PrivateFiles::write(QStringLiteral("/run/udev/control"), {}))
        return true;
    *error = QStringLiteral("mounting a private /sys: %1")
                 .arg(QString::fromLocal8Bit(std::strerror(errno)));
    return false;
}

QByteArray DeviceTree::add(const QByteArray &subsystem, const QByteArray &name,
    const QByteArray &parent, const Values &attributes, const Values &properties)
{
    gchar *const added = umockdev_testbed_add_devicev(testbedOf(m_testbed), subsystem.constData(),
        name.constData(), parent.isEmpty() ? nullptr : parent.constData(),
        NullTerminated(attributes).data(), NullTerminated(properties).data());
    const QByteArray path(added);
    g_free(added);
    const Device device{subsystem, properties, databaseFile(subsystem, path, attributes)};
    // The properties stand in the device's own directory. That udev has done its work on the
    // device, its database must say.
    if (path.isEmpty() || !PrivateFiles::write(device.database, "I:1\n"))
        return {};
    m_devices.insert(path, device);
    for (const auto &property : properties) {
        if (property.first == "DRIVER") // the kernel shows it both ways
            link(path, "driver", "/sys/bus/" + subsystem + "/drivers/" + property.second);
    }
    return announce("add", path, device) ? path : QByteArray();
}

void DeviceTree::link(const QByteArray &path, const QByteArray &name, const QByteArray &target)
{
    QDir().mkpath(QFile::decodeName(target));
    umockdev_testbed_set_attribute_link(
        testbedOf(m_testbed), path.constData(), name.constData(), target.constData());
}

void DeviceTree::remove(const QByteArray &path)
{
    const QList<QByteArray> paths
        = m_devices.keys(); // in order: parents come before their children
    for (auto it = paths.rbegin(); it != paths.rend(); ++it) {
        if (*it != path && !it->startsWith(path + '/'))
            continue;
        const Device device = m_devices.take(*it);
        announce("remove", *it, device);
        QFile::remove(device.database);
        umockdev_testbed_remove_device(testbedOf(m_testbed), it->constData());
    }
}

bool DeviceTree::announce(const QByteArray &action, const QByteArray &path, const Device &device)
{
    const Values where{{"DEVPATH", path.mid(static_cast<int>(std::strlen("/sys")))}};
    return UdevMonitor::announce(action, device.subsystem, where + device.properties);
}
