#include "searches.h"

#include "kernelview.h"
#include "window.h"

#include <QDir>
#include <QMessageBox>
#include <QSerialPortInfo>
#include <QTextBrowser>

using window::find;
using window::messageBox;

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

// A modem with a disk and a diagnostic port besides, and one behind a serial bridge.
void Searches::ask()
{
    const QStringList gsm1{QStringLiteral("MCC: 250"), QStringLiteral("MNC: 1"),
        QStringLiteral("LAC: 1F40"), QStringLiteral("CID: A1B2C3"), QStringLiteral("Operator: MTS"),
        QStringLiteral("Balance: 150.5"), QStringLiteral("Signal level: -71 dB")};
    opens();
    click(QStringLiteral("pbAskPage"));
    asks(QStringLiteral("gsm1"), gsm1);
    asks(QStringLiteral("gsm2"),
        {QStringLiteral("MCC: 250"), QStringLiteral("MNC: 2"), QStringLiteral("LAC: 2E11"),
            QStringLiteral("CID: 0D4F"), QStringLiteral("Operator: Megafon"),
            QStringLiteral("Balance: 73.1"), QStringLiteral("Signal level: -85 dB")});

    click(QStringLiteral("pbSearchPage"));
    selects(QStringLiteral("gsm2"));
    mustShow(QStringLiteral("the one behind the bridge cannot be made a modem alone"),
        [] { return !isEnabled("pbModemOnly"); });
    picture(QStringLiteral("bridge"));
    selects(QStringLiteral("gsm1"));
    mustShow(QStringLiteral("the other one can"), [] { return isEnabled("pbModemOnly"); });
    click(QStringLiteral("pbModemOnly"));
    mustShow(
        QStringLiteral("the modem was switched and is to be plugged in again"),
        [] {
            return messageBox() != nullptr
                && messageBox()->text().contains(QLatin1String("Replug modem"));
        },
        kSlow);
    picture(QStringLiteral("switched"));
    clickInBox(QStringLiteral("OK"));
    mustShow(QStringLiteral("the kernel has its three ports as before"),
        [] { return kernelview::usbPorts(QStringLiteral("HUAWEI Technology")) == 3; });
    terminal(QStringLiteral("unplug"), {QStringLiteral("gsm1")});
    mustShow(
        QStringLiteral("the kernel has lost it"),
        [] { return kernelview::usbPorts(QStringLiteral("HUAWEI Technology")) == 0; }, kSlow);
    terminal(QStringLiteral("plug"), {QStringLiteral("gsm1")});
    mustShow(
        QStringLiteral("the kernel has it again, with two ports"),
        [] { return kernelview::usbPorts(QStringLiteral("HUAWEI Technology")) == 2; }, kSlow);
    click(QStringLiteral("tbSearch"));
    mustShow(QStringLiteral("the search runs"), [] { return !isEnabled("tbSearch"); });
    mustShow(
        QStringLiteral("both are found"),
        [] {
            return isEnabled("tbSearch")
                && listed()
                == QStringList(
                    {QStringLiteral("E173-ttyUSB0"), QStringLiteral("SIMCOM_SIM800-ttyUSB3")});
        },
        kRound);
    picture(QStringLiteral("found"));
    click(QStringLiteral("pbAskPage"));
    asks(QStringLiteral("E173-ttyUSB0"), gsm1);
    closes();
}

void Searches::asks(const QString &connection, const QStringList &told)
{
    choose(QStringLiteral("cbModem"), connection);
    click(QStringLiteral("pbAsk"));
    mustShow(QStringLiteral("%1 is asked").arg(connection), [] { return !isEnabled("pbAsk"); });
    mustShow(
        QStringLiteral("%1 tells %2").arg(connection, told.join(QStringLiteral(", "))),
        [&] {
            return find<QTextBrowser>(QStringLiteral("tbModemData"))
                       ->toPlainText()
                       .split(QLatin1Char('\n'))
                == QStringList(connection) + told;
        },
        kRound);
    mustShow(
        QStringLiteral("the page can ask again"), [] { return isEnabled("pbAsk"); }, kSlow);
    services({QStringLiteral("stop"), QStringLiteral("restart")});
    picture(QStringLiteral("asked"));
}
