#pragma once

#include <QFile>
#include <QString>

#include <asm/termbits.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

/// The speed that a terminal is set to, in bits per second.
inline unsigned int speedOf(const QString &port)
{
    const int line = ::open(QFile::encodeName(port).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    struct termios2 settings = {};
    ::ioctl(line, TCGETS2, &settings);
    ::close(line);
    return settings.c_ospeed;
}
