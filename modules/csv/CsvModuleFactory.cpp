// SPDX-License-Identifier: GPL-3.0-or-later
#include "CsvModuleFactory.h"

#include "CsvDataModule.h"

QObject* CsvModuleFactory::CreateModule(const QString& progId, const DataModuleRegistration& registration)
{
    // ProgIDs are compared as the registry compares class names: without regard to case.
    if (progId.compare(QLatin1String(CsvDataModule::ProgID), Qt::CaseInsensitive) != 0)
        return nullptr;
    return new CsvDataModule(registration);
}
