#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

/** Who made a modem and which model it is, as the modem tells; empty what it does not tell. */
struct AtIdentity
{
    QString maker;
    QString model;

    /** Maker and model, for people: "huawei E1550", "SIMCOM_SIM800" said once. */
    QString name() const;
};

/**
 * The answer to one of AT+CGMI, +CGMM, +CGMR (3GPP TS 27.007 5.1 to 5.3), AT+GMI, +GMM (ITU-T V.250
 * 6.1.4, 6.1.5), named by `command`: the first line, without the name that some modems put in front
 * of it and without quotes.
 */
QString parseIdentityText(const QByteArray &command, const QList<QByteArray> &lines);

/**
 * The answer to ATI (V.250 6.1.3), whose form is the maker's: lines marked "Manufacturer:" and
 * "Model:", or else the maker's line and the model's after it.
 */
AtIdentity parseInformation(const QList<QByteArray> &lines);
