#include "atdialect.h"

#include "atidentity.h"

#include <QRegularExpression>

#include <algorithm>

const QList<AtDialect> &allDialects()
{
    // Commands are those of the makers' AT manuals; a modem that lacks one answers ERROR, which
    // does no harm.
    static const QList<AtDialect> dialects{
        // USSD: E1550, E173 and their like want a code as packed septets, whatever +CSCS says;
        // those set to plain characters by ^USSDMODE refuse that.
        // ^CURC: periodic reports (^RSSI, ^MODE, ^DSFLOWRPT...). ^U2DIAG: 0 is the modem alone,
        // without the drive that holds a stick's software.
        {QStringLiteral("Huawei"), {QStringLiteral("huawei")}, QString(), {"AT^CURC=0"},
            {UssdForm::PackedHex, UssdForm::Plain}, "AT^ICCID?", {"AT^U2DIAG=0"}, "AT^SETPORT"},
        // +ZCDRUN: 8 stops the drive from showing at the next plugging in.
        {QStringLiteral("ZTE"), {QStringLiteral("zte")}, QStringLiteral("^M[FS][0-9]{2,}"), {},
            {UssdForm::Plain}, "AT+ZGETICCID", {"AT+ZCDRUN=8"}, {}},
        // +CIURC: the "Call Ready" kind.
        {QStringLiteral("SIMCom"), {QStringLiteral("simcom"), QStringLiteral("sim technology")},
            QStringLiteral("^SIM(COM_)?[0-9]{3,}"), {"AT+CIURC=0"}, {UssdForm::Plain}, "AT+CCID",
            {}, {}},
        // +QINDCFG: all kinds at once (LTE modules), +QIURC: those of the older GSM modules.
        {QStringLiteral("Quectel"), {QStringLiteral("quectel")}, QString(),
            {"AT+QINDCFG=\"all\",0", "AT+QIURC=0"}, {UssdForm::Plain}, "AT+QCCID", {}, {}},
        // #QSS: changes of the SIM's state.
        {QStringLiteral("Telit"), {QStringLiteral("telit")}, QString(), {"AT#QSS=0"},
            {UssdForm::Plain}, "AT#CCID", {}, {}},
        // +WIND: all indications of the Wavecom line.
        {QStringLiteral("Sierra"), {QStringLiteral("sierra"), QStringLiteral("wavecom")}, QString(),
            {"AT+WIND=0"}, {UssdForm::Plain}, "AT+ICCID", {}, {}},
        // +UREG: changes of the packet service.
        {QStringLiteral("u-blox"), {QStringLiteral("u-blox"), QStringLiteral("ublox")}, QString(),
            {"AT+UREG=0"}, {UssdForm::Plain}, "AT+CCID", {}, {}},
        // ^SCID: the first of the line knew nothing else, and the later ones still do.
        {QStringLiteral("Cinterion"),
            {QStringLiteral("cinterion"), QStringLiteral("siemens"), QStringLiteral("gemalto"),
                QStringLiteral("thales")},
            QString(), {}, {UssdForm::Plain}, "AT^SCID", {}, {}},
        {QStringLiteral("generic 3GPP"), {}, QString(), {}, {UssdForm::Plain, UssdForm::PackedHex},
            "AT+CCID", {}, {}},
    };
    return dialects;
}

const AtDialect &findDialect(const AtIdentity &identity)
{
    const QString maker = identity.maker.toLower();
    const auto &all = allDialects();
    const auto byMaker = std::find_if(all.begin(), all.end(), [&](const AtDialect &dialect) {
        return std::any_of(dialect.makers.begin(), dialect.makers.end(),
            [&](const QString &beginning) { return maker.startsWith(beginning); });
    });
    if (byMaker != all.end())
        return *byMaker;
    const auto byModel = std::find_if(all.begin(), all.end(), [&](const AtDialect &dialect) {
        return !dialect.models.isEmpty()
            && QRegularExpression(dialect.models).match(identity.model.toUpper()).hasMatch();
    });
    return byModel != all.end() ? *byModel : all.last();
}
