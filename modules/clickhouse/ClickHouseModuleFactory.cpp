// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClickHouseModuleFactory.h"

#include "ClickHouseDataModule.h"

QObject* ClickHouseModuleFactory::CreateModule(const QString& progId, const DataModuleRegistration& registration)
{
    // ProgIDs are compared as the registry compares class names: without regard to case.
    if (progId.compare(QLatin1String(ClickHouseDataModule::ProgID), Qt::CaseInsensitive) != 0)
        return nullptr;
    return new ClickHouseDataModule(registration);
}
