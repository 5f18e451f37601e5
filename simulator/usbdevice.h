#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <functional>
#include <memory>

class QObject;
class SerialLine;

/// How a USB serial device shows itself to whoever lists ports.
struct UsbIdentity
{
    quint16 vendorId = 0;
    quint16 productId = 0;
    QString vendor; ///< manufacturer text of the device descriptor
    QString product;
    QString serial;
    QString driver = QStringLiteral("option");
    /// What else udev's rules would say of its ports; this one is ModemManager's for every tty.
    QMap<QString, QString> properties{{QStringLiteral("ID_MM_CANDIDATE"), QStringLiteral("1")}};
    QMap<QString, QMap<QString, QString>> portProperties; ///< the same by "00", "01"... of a port
};

/// One modem as what it is plugged into sees it: a USB device with serial ports. Lives in the
/// modems' thread.
class UsbDevice
{
    Q_DISABLE_COPY_MOVE(UsbDevice)

public:
    UsbDevice() = default;
    virtual ~UsbDevice() = default;

    /// The ports it has from the next plugging in on, by the numbers of their ttyUSB*. Not while it
    /// is plugged in, nor while there are lines of earlier ports.
    virtual void setPorts(const QList<int> &portNumbers) = 0;
    /// The modem's end of its port at `index`; belongs to `parent`.
    virtual SerialLine *makeLine(int index, QObject *parent) const = 0;
    /// Comes after the plugging in of its lines.
    virtual bool plug() = 0;
    /// Comes after the unplugging of its lines.
    virtual void unplug() = 0;
};

/// What modems are plugged into: makes the device at USB port `number`, from 1.
using UsbBus = std::function<std::unique_ptr<UsbDevice>(int number, const UsbIdentity &identity)>;
