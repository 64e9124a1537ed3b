// SPDX-License-Identifier: GPL-3.0-or-later
#include "PostgresModuleFactory.h"

#include "PostgresDataModule.h"

QObject* PostgresModuleFactory::CreateModule(const QString& progId, const DataModuleRegistration& registration)
{
    // ProgIDs are compared as the registry compares class names: without regard to case.
    if (progId.compare(QLatin1String(PostgresDataModule::ProgID), Qt::CaseInsensitive) != 0)
        return nullptr;
    return new PostgresDataModule(registration);
}
