#pragma once

#include "usbdevice.h"

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
    bool resets = false; ///< the modem restarts afterwards
    QStringList later; ///< unsolicited lines that follow
    int laterMs = 100;

    static ModemAnswer read(JsonReader &reader, const QString &key);
};

/// A line that a modem sends by itself again and again, from power-up until it is told to stop.
struct PeriodicLine
{
    QString text;
    int periodMs = 0;
    QString stoppedBy; ///< command that ends it; empty for none
    QString startedBy;
};

/// How a modem writes the texts of USSD requests or answers.
enum class UssdCoding {
    Charset, ///< in the character set of AT+CSCS; what that cannot hold in UCS2, as hexadecimal
    Packed, ///< packed septets in hexadecimal; what those cannot hold in UCS2
    Ucs2, ///< always UCS2 in hexadecimal
};

/// A command that chooses the ports that the device shows when it is plugged in again.
struct PortComposition
{
    QString command; ///< "AT^U2DIAG"; takes "?" and "="
    QString separator = QStringLiteral(": "); ///< between name and value in what "?" gives
    QString initial;
    QMap<QString, QStringList> ports; ///< by value
    QMap<QString, QString> roles; ///< what the parts of the list after ';' in a value stand for

    /// Roles of the ports that a value leaves; empty for a value that is none.
    QStringList portsOf(const QString &value) const;
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
    QList<PortComposition> compositions;
    QString connectText = QStringLiteral("CONNECT");
    int accessTechnology = 0; ///< 3GPP TS 27.007 <AcT>
    QString location; ///< what follows <stat> in +CREG and the like set to 2
    QString noLocation; ///< the same while not registered
    QString ownNumber; ///< +CNUM
    QString noOwnNumber; ///< +CNUM of a card that does not hold it; empty = no line
    QStringList charsets; ///< of AT+CSCS, that after power-up first
    QStringList smsStores; ///< of AT+CPMS, that after power-up first
    int firstSmsIndex = 1;
    UssdCoding ussdRequest = UssdCoding::Charset;
    UssdCoding ussdAnswer = UssdCoding::Charset;
    QString ussdPrefix = QStringLiteral("+CUSD: 0,");
    bool ussdCodingScheme = true; ///< answers end with it
    bool ussdBeforeOk = false;
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
