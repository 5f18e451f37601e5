#pragma once

#include "usbserialdevice.h"

#include <QMap>
#include <QString>
#include <QStringList>

class JsonReader;

/// What a modem answers to one command beyond what every modem answers.
struct ModemAnswer
{
    QStringList lines; ///< information text; {imei}, {imsi} and the like are filled in
    QString result = QStringLiteral("OK"); ///< final result code
    int delayMs = 0; ///< besides the scenario's latency
    bool needsSim = false; ///< an error while there is no usable SIM card
    QStringList later; ///< unsolicited lines that follow
    int laterMs = 100;

    static ModemAnswer read(JsonReader &reader, const QString &key);
};

/// A line that a modem sends by itself again and again.
struct PeriodicLine
{
    QString text;
    int periodMs = 0;
};

/// A family of modems as one JSON file describes it: the table behind AtCommands.
struct ModemProfile
{
    QString name;
    QString source; ///< the public manual the answers come from
    QString manufacturer;
    QString model;
    QString revision;
    QString imei;
    UsbIdentity usb;
    QStringList ports; ///< what each serial port is: "data", "control" or "diagnostic"
    QString connectText = QStringLiteral("CONNECT");
    int accessTechnology = 0; ///< 3GPP TS 27.007 <AcT>
    int firstSmsIndex = 1;
    bool packedUssd = false; ///< USSD texts travel as packed septets in hexadecimal
    bool dialsAnyNumber = false;
    bool resetReplugs = false; ///< AT+CFUN=1,1 makes the device leave the USB bus and come back
    int bootMs = 500; ///< from power to the boot lines
    QStringList bootLines;
    QList<PeriodicLine> periodicLines;
    QMap<QString, ModemAnswer> answers; ///< "AT+CGMM" -> answer; "AT^CURC=*" -> any value

    static bool load(const QString &nameOrPath, ModemProfile *profile, QString *error);
    static bool parse(const QByteArray &json, ModemProfile *profile, QString *error);
    static QStringList names(); ///< of the profiles that come with the program
};
