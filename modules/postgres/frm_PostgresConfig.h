// SPDX-License-Identifier: GPL-3.0-or-later
// Configuration dialog of the PostgreSQL module: connection string, schema, timeout and whether
// the server aggregates, with a connection test and a preview of the channel tree.
#pragma once

#include "PostgresDataModule.h"
#include "ServerConfigDialog.h"

class QCheckBox;
class QLineEdit;
class QSpinBox;

class frm_PostgresConfig : public ServerConfigDialog
{
    Q_OBJECT
public:
    frm_PostgresConfig(const PostgresDataModule::Settings& settings, bool english, QWidget* parent = nullptr);
    // The values as the dialog holds them.
    PostgresDataModule::Settings Values() const;

private:
    QString TestConnection() override;
    bool ReadPreview(QStringList& categories, QStringList& channels, QString& answer) override;

    QLineEdit* m_txtSchema = nullptr;
    QSpinBox* m_spnTimeout = nullptr;
    QCheckBox* m_chkAggregate = nullptr;
};
