#include "searches.h"

#include "kernelview.h"
#include "window.h"

#include <QDir>
#include <QListView>
#include <QSerialPortInfo>

using window::find;

namespace {

QStringList listed()
{
    const auto *model = find<QListView>(QStringLiteral("listView"))->model();
    QStringList names;
    for (int row = 0; row < model->rowCount(); ++row)
        names.append(model->index(row, 0).data().toString());
    return names;
}

} // namespace

void Searches::search()
{
    opens();
    mustShow(QStringLiteral("the kernel has two modems, of four ports, among other ports"), [] {
        const auto makers = kernelview::usbManufacturers();
        const auto ports = QDir(QStringLiteral("/sys/class/tty"))
                               .entryList({QStringLiteral("ttyUSB*"), QStringLiteral("ttyS0")},
                                   QDir::Dirs | QDir::NoDotAndDotDot);
        return makers.contains(QLatin1String("HUAWEI Technology"))
            && makers.contains(QLatin1String("Silicon Labs")) && ports.size() == 5;
    });
    mustShow(QStringLiteral("the system tells the ports' manufacturers"), [] {
        return QSerialPortInfo(QStringLiteral("ttyUSB0")).manufacturer()
            == QLatin1String("HUAWEI Technology")
            && QSerialPortInfo(QStringLiteral("ttyUSB3")).manufacturer()
            == QLatin1String("Silicon Labs");
    });
    click(QStringLiteral("pbSearchPage"));
    click(QStringLiteral("tbSearch"));
    mustShow(QStringLiteral("the search runs"), [] { return !isEnabled("tbSearch"); });
    picture(QStringLiteral("searching"));
    mustShow(
        QStringLiteral("each modem is found once, by its data port"),
        [] {
            return isEnabled("tbSearch")
                && listed()
                == QStringList(
                    {QStringLiteral("E173-ttyUSB0"), QStringLiteral("SIMCOM_SIM800-ttyUSB3")});
        },
        kRound);
    services({QStringLiteral("stop"), QStringLiteral("restart")});
    picture(QStringLiteral("found"));
    closes();
}
