#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/** A mobile network by its codes (ITU-T E.212). */
struct MobileNetwork
{
    int mcc = 0;
    int mnc = 0;

    bool operator==(const MobileNetwork &other) const
    {
        return mcc == other.mcc && mnc == other.mnc;
    }
};

/** The answer to AT+COPS? (3GPP TS 27.007 7.3). */
struct AtOperator
{
    enum class Mode {
        Automatic = 0,
        Manual = 1,
        Deregister = 2,
        FormatOnly = 3,
        ManualAutomatic = 4
    };

    Mode mode = Mode::Automatic;
    QString name; ///< in the long or the short form; empty when the modem tells the codes, or none
    std::optional<MobileNetwork> network; ///< none when the modem tells the name, or none
    std::optional<int> technology; ///< AcT: 0 GSM, 2 UTRAN, 7 E-UTRAN...
};

/** None when there is no such answer, or it makes no sense. */
std::optional<AtOperator> parseOperator(const QList<QByteArray> &lines);

/** "25001" or "310410"; none when it is anything else than five or six digits. */
std::optional<MobileNetwork> parseNetwork(const QByteArray &digits);

/**
 * The home network in a SIM's IMSI. How long its network code is only the SIM knows (EF_AD, 3GPP
 * TS 31.102 4.2.18); here it is three digits in the countries that use three, else two.
 */
std::optional<MobileNetwork> networkOfImsi(const QByteArray &imsi);
