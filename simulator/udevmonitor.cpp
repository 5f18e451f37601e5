#include "udevmonitor.h"

#include <QtEndian>
#include <cstring>
#include <linux/netlink.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr quint32 kUdevGroup = 2; // group 1 carries the kernel's own messages
constexpr quint32 kMagic = 0xfeedcafe;

struct Header
{
    char prefix[8];
    quint32 magic; // this and the hashes in network order
    quint32 headerSize;
    quint32 propertiesOffset;
    quint32 propertiesSize;
    quint32 subsystemHash;
    quint32 deviceTypeHash;
    quint32 tagBloomHigh;
    quint32 tagBloomLow;
};

// MurmurHash2 with seed 0: by it the kernel-side filters of the clients know the subsystem.
quint32 hashOf(const QByteArray &text)
{
    constexpr quint32 kMultiplier = 0x5bd1e995;
    auto hash = static_cast<quint32>(text.size());
    int at = 0;
    for (; text.size() - at >= 4; at += 4) {
        quint32 word = 0;
        std::memcpy(&word, text.constData() + at, sizeof word);
        word *= kMultiplier;
        word ^= word >> 24;
        hash = (hash * kMultiplier) ^ (word * kMultiplier);
    }
    if (at < text.size()) {
        for (int i = text.size() - 1; i >= at; --i)
            hash ^= static_cast<quint32>(static_cast<uchar>(text.at(i))) << (8 * (i - at));
        hash *= kMultiplier;
    }
    hash ^= hash >> 13;
    hash *= kMultiplier;
    return hash ^ (hash >> 15);
}

} // namespace

bool UdevMonitor::announce(
    const QByteArray &action, const QByteArray &subsystem, const Properties &properties)
{
    static quint64 sequence = 0;
    QByteArray body;
    const auto add = [&body](const QByteArray &key, const QByteArray &value) {
        body += key + '=' + value;
        body += '\0';
    };
    add("ACTION", action);
    add("SUBSYSTEM", subsystem);
    add("SEQNUM", QByteArray::number(++sequence));
    QByteArray deviceType;
    for (const auto &property : properties) {
        add(property.first, property.second);
        if (property.first == "DEVTYPE")
            deviceType = property.second;
    }

    Header header{};
    std::memcpy(header.prefix, "libudev", sizeof header.prefix);
    header.magic = qToBigEndian(kMagic);
    header.headerSize = sizeof header;
    header.propertiesOffset = sizeof header;
    header.propertiesSize = static_cast<quint32>(body.size());
    header.subsystemHash = qToBigEndian(hashOf(subsystem));
    if (!deviceType.isEmpty())
        header.deviceTypeHash = qToBigEndian(hashOf(deviceType));

    const int socket = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_KOBJECT_UEVENT);
    if (socket < 0)
        return false;
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = kUdevGroup;
    iovec parts[] = {{&header, sizeof header}, {body.data(), static_cast<size_t>(body.size())}};
    msghdr message{};
    message.msg_name = &address;
    message.msg_namelen = sizeof address;
    message.msg_iov = parts;
    message.msg_iovlen = 2;
    // Nobody listening is no error.
    const bool sent = sendmsg(socket, &message, 0) >= 0 || errno == ECONNREFUSED;
    close(socket);
    return sent;
}
