#pragma once

#include <QString>

/** What is known of one mobile operator: a plain value, filled by the operator lookup. */
class OperatorData
{
public:
    QString name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }

    /** PPP user name and password of the Internet access point. */
    QString userName() const { return m_userName; }
    void setUserName(const QString &name) { m_userName = name; }
    QString password() const { return m_password; }
    void setPassword(const QString &password) { m_password = password; }

    /** The command that sets the Internet access point (AT+CGDCONT=...). */
    QString modemInitLine() const { return m_modemInitLine; }
    void setModemInitLine(const QString &line) { m_modemInitLine = line; }

    /** USSD code that asks for the balance. */
    QString balancePhone() const { return m_balancePhone; }
    void setBalancePhone(const QString &phone) { m_balancePhone = phone; }

    /** Where the SIM's own number is asked: a USSD code, or a number to send an SMS to and, behind
     * a blank, what to write there. */
    QString selfNumberPhone() const { return m_selfNumberPhone; }
    void setSelfNumberPhone(const QString &phone) { m_selfNumberPhone = phone; }

    /** Whether the SIM's own number comes by SMS. */
    bool selfNumberFromSms() const { return m_selfNumberFromSms; }
    void setSelfNumberFromSms(bool fromSms) { m_selfNumberFromSms = fromSms; }

    bool operator==(const OperatorData &other) const;
    bool operator!=(const OperatorData &other) const { return !(*this == other); }

private:
    QString m_name;
    QString m_userName;
    QString m_password;
    QString m_modemInitLine;
    QString m_balancePhone;
    QString m_selfNumberPhone;
    bool m_selfNumberFromSms = false;
};
