// SPDX-License-Identifier: GPL-3.0-or-later
// Root object of the ClickHouse module plug-in: creates one module object per registration.
#pragma once

#include "DataModuleInterface.h"

#include <QObject>

class ClickHouseModuleFactory : public QObject, public DataModuleFactory
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID SoranoDataModuleFactory_iid FILE "clickhouse.json")
    Q_INTERFACES(DataModuleFactory)

public:
    QObject* CreateModule(const QString& progId, const DataModuleRegistration& registration) override;
};
