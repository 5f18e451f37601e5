#pragma once

#include "busnames.h"
#include "tavbusqueryhandler.h"

#include <memory>

/// The settings record of an owner as the broker of the bus has it; null where it has none.
inline std::unique_ptr<tavbus::ClientSettings> savedRecord(const QString &owner)
{
    auto settings = std::make_unique<tavbus::ClientSettings>();
    tavbus::TavBusQueryHandler handler(tavbus::BUSNAME_TESTDEALER);
    return handler.open() && handler.loadSettings(owner, *settings) ? std::move(settings) : nullptr;
}

/// The list in that record; empty where there is none.
inline QVariantList savedSettings(const QString &owner)
{
    const auto record = savedRecord(owner);
    return record ? record->settings() : QVariantList();
}
