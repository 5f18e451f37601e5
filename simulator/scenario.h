#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

/// One SMS that waits in a modem's memory.
struct ScenarioSms
{
    QString sender; ///< for a report: who the reported message went to
    QString time; ///< ISO 8601 with offset; empty = when the terminal came up
    QString text;
    QList<int> order; ///< in which its parts (from 1) lie in the memory; empty = as they follow
    QString data; ///< octets in hexadecimal instead of a text
    bool report = false; ///< the status report of a message that was delivered
    QString pdu; ///< as it stands in the memory, instead of all else
    bool read = false;
    QString store; ///< "SM", "ME"; empty = the profile's first
};

/// The SIM card of a modem and the account behind it.
struct ScenarioSim
{
    bool present = true;
    QString pin; ///< empty = not asked for
    QString imsi;
    QString iccid;
    QString number; ///< the subscriber's own
    bool numberOnCard = true; ///< AT+CNUM gives it
    QString balance; ///< as {balance} in the texts of the network
    QMap<QString, QString> ussd; ///< code -> the network's answer, or a "+CUSD: ..." or error line
    QMap<QString, QString> smsAnswers; ///< number -> text that comes back when it is written to
    QString smsCentre = QStringLiteral("+79168999100");
    int smsCapacity = 50; ///< of each memory
    QList<ScenarioSms> sms;
    int readyMs = 0; ///< from power to a usable card
};

/// What the network asks of who calls in through PPP.
struct ScenarioLogin
{
    QString protocol = QStringLiteral("chap"); ///< or "pap"
    QString user; ///< empty = anybody may call
    QString password;
};

/// What a modem sees of the network.
struct ScenarioNetwork
{
    bool registered = true;
    bool roaming = false;
    int mcc = 250;
    int mnc = 1;
    QString name = QStringLiteral("MTS RUS");
    QString shortName; ///< at most 8 characters; empty = the beginning of the name
    QString lac = QStringLiteral("1F40");
    QString cid = QStringLiteral("0A1B2C3");
    int rssi = 18; ///< as +CSQ tells it: 0..31, 99 unknown
    int registerMs = 0; ///< from power to registration
    int answerMs = 300; ///< from a USSD request or SMS to the network's answer
    QString apn; ///< the only one that gets a connection; empty = any
    ScenarioLogin login;
};

/// The dial-up record of a modem that the modem service has saved on the bus.
struct ScenarioConnection
{
    QString name; ///< empty = the modem's
    QString user;
    QString password;
    QString phone = QStringLiteral("*99#");
    int baudrate = 57600;
    QStringList initLines;
};

/// One modem of the terminal.
struct ScenarioModem
{
    QString name; ///< what the control interface calls it
    QString profile; ///< file name of a profile, or a path
    QString imei;
    ScenarioSim sim;
    ScenarioNetwork network;
    int latencyMs = 5;
    QMap<QString, int> latency; ///< command prefix -> milliseconds
    int connectMs = 200; ///< from the dial command to CONNECT
    QMap<QString, QStringList> answers; ///< command -> lines that replace the profile's
    QString fault;
    bool plugged = true;
    bool hasConnection = false; ///< a record is saved on the bus
    ScenarioConnection connection;
};

/// One of the terminal's services.
struct ScenarioService
{
    bool present = true;
    QString fault;
    int delayMs = 300; ///< from a command to the new state
    bool holdsPorts = false;
};

/// A whole terminal as one JSON file describes it; docs/simulator.md tells the format.
struct Scenario
{
    QList<ScenarioModem> modems;
    QMap<QString, ScenarioService> services; ///< by bus name
    QMap<QString, QString> pages; ///< "maker", "public" -> "always", "ppp" or "never"
    QStringList ethernet;
    QString interfaces; ///< text of /etc/network/interfaces

    /// Reads a scenario that comes with the program (by name) or a file (by path). Nothing is
    /// guessed: an unknown key or a wrong type is an error that names its place.
    static bool load(const QString &nameOrPath, Scenario *scenario, QString *error);
    static bool parse(const QByteArray &json, Scenario *scenario, QString *error);
};
