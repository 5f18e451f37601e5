#pragma once

#include <initconfig.h>

#include <QStringList>

/** The terminal's configuration with what the modems library needs of it. */
class ModemsEnvs : public InitConfig
{
public:
    using InitConfig::InitConfig;

    /** modems/extraPorts: devices to probe beside those the system lists, separated by commas. */
    QStringList extraPorts() const;

    /** modems/operators: file laid over the operator table; empty when there is none. */
    QString operatorsFile() const;
};
