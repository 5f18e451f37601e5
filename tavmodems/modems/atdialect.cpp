#include "atdialect.h"

#include "atidentity.h"

#include <QRegularExpression>

#include <algorithm>

const QList<AtDialect> &allDialects()
{
    // Commands are those of the makers' AT manuals; a modem that lacks one answers ERROR, which
    // does no harm.
    static const QList<AtDialect> dialects{
        // ^CURC: periodic reports (^RSSI, ^MODE, ^DSFLOWRPT...).
        {QStringLiteral("Huawei"), {QStringLiteral("huawei")}, QString(), {"AT^CURC=0"},
            UssdForm::PackedHex},
        {QStringLiteral("ZTE"), {QStringLiteral("zte")}, QStringLiteral("^M[FS][0-9]{2,}"), {}},
        // +CIURC: the "Call Ready" kind.
        {QStringLiteral("SIMCom"), {QStringLiteral("simcom"), QStringLiteral("sim technology")},
            QStringLiteral("^SIM(COM_)?[0-9]{3,}"), {"AT+CIURC=0"}},
        // +QINDCFG: all kinds at once (LTE modules), +QIURC: those of the older GSM modules.
        {QStringLiteral("Quectel"), {QStringLiteral("quectel")}, QString(),
            {"AT+QINDCFG=\"all\",0", "AT+QIURC=0"}},
        // #QSS: changes of the SIM's state.
        {QStringLiteral("Telit"), {QStringLiteral("telit")}, QString(), {"AT#QSS=0"}},
        // +WIND: all indications of the Wavecom line.
        {QStringLiteral("Sierra"), {QStringLiteral("sierra"), QStringLiteral("wavecom")}, QString(),
            {"AT+WIND=0"}},
        // +UREG: changes of the packet service.
        {QStringLiteral("u-blox"), {QStringLiteral("u-blox"), QStringLiteral("ublox")}, QString(),
            {"AT+UREG=0"}},
        {QStringLiteral("Cinterion"),
            {QStringLiteral("cinterion"), QStringLiteral("siemens"), QStringLiteral("gemalto"),
                QStringLiteral("thales")},
            QString(), {}},
        {QStringLiteral("generic 3GPP"), {}, QString(), {}},
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
