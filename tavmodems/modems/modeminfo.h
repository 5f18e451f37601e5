#pragma once

#include <QDebug>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <optional>

/**
 * One dial-up connection through one modem: a plain value, compared by all it holds.
 *
 * A text field is one line of the dialer's file or of an AT command, so the setters drop control
 * characters (a pasted line end would become a setting of its own there). Beside its fields a
 * record carries what a newer program wrote into its map and this one does not know, so that
 * editing and saving a record here loses nothing of it.
 */
class ModemInfo
{
public:
    QString connectionName() const { return m_connectionName; }
    void setConnectionName(const QString &name);

    /** Bare device name ("ttyUSB0") or full path. */
    QString portName() const { return m_portName; }
    void setPortName(const QString &name);

    /** Line speed, bits per second. */
    int baudrate() const { return m_baudrate; }
    void setBaudrate(const int &rate) { m_baudrate = rate; }

    QString userName() const { return m_userName; }
    void setUserName(const QString &name);

    QString password() const { return m_password; }
    void setPassword(const QString &password);

    /** The number to dial; the further ones are in phones(). */
    QString phone() const { return m_phone; }
    void setPhone(const QString &phone);

    QStringList phones() const { return m_phones; }
    void setPhones(const QStringList &phones);

    /** Initialisation commands, sent in order. */
    QStringList initLines() const { return m_initLines; }
    void setInitLines(const QStringList &lines);
    void addInitLine(const QString &line);

    /** The AT command that dials, without the number. */
    QString dialCommand() const { return m_dialCommand; }
    void setDialCommand(const QString &command);

    int isdn() const { return m_isdn; }
    void setIsdn(const int &isdn) { m_isdn = isdn; }

    QString modemType() const { return m_modemType; }
    void setModemType(const QString &type);

    bool newPppd() const { return m_newPppd; }
    void setNewPppd(bool on) { m_newPppd = on; }

    /** Start PPP at once, without waiting for a login prompt. */
    bool stupidMode() const { return m_stupidMode; }
    void setStupidMode(bool on) { m_stupidMode = on; }

    /** All fields by name, and whatever unknown keys the record was read with. */
    QVariantMap toMap() const;

    /**
     * The record that toMap() described. A missing key takes the field's default. Nothing, with
     * the reason in *error (may be null), when a value has the wrong type, holds a control
     * character or is absurdly long: such a map was not written by toMap().
     */
    static std::optional<ModemInfo> fromMap(const QVariantMap &map, QString *error = nullptr);

    bool operator==(const ModemInfo &other) const;
    bool operator!=(const ModemInfo &other) const { return !(*this == other); }

private:
    QString m_connectionName;
    QString m_portName;
    int m_baudrate = 57600;
    QString m_userName;
    QString m_password;
    QString m_phone = QStringLiteral("*99#");
    QStringList m_phones;
    QStringList m_initLines;
    QString m_dialCommand = QStringLiteral("ATDT");
    int m_isdn = 0;
    QString m_modemType = QStringLiteral("Analog Modem");
    bool m_newPppd = true;
    bool m_stupidMode = true;
    QVariantMap m_unknown; // keys of a newer format, kept as they came
};

Q_DECLARE_METATYPE(ModemInfo)

/** For logs and test messages; the password is not shown. */
QDebug operator<<(QDebug debug, const ModemInfo &info);
