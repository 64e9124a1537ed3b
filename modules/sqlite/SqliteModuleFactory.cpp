// SPDX-License-Identifier: GPL-3.0-or-later
#include "SqliteModuleFactory.h"

#include "SqliteDataModule.h"

QObject* SqliteModuleFactory::CreateModule(const QString& progId, const DataModuleRegistration& registration)
{
    // ProgIDs are compared as the registry compares class names: without regard to case.
    if (progId.compare(QLatin1String(SqliteDataModule::ProgID), Qt::CaseInsensitive) != 0)
        return nullptr;
    return new SqliteDataModule(registration);
}
