// SPDX-License-Identifier: GPL-3.0-or-later
// Configuration dialog of the ClickHouse module: server URL, database, user, timeout and whether
// the server aggregates, with a connection test and a preview of the channel tree.
#pragma once

#include "ClickHouseDataModule.h"
#include "ServerConfigDialog.h"

class QCheckBox;
class QLineEdit;
class QSpinBox;

class frm_ClickHouseConfig : public ServerConfigDialog
{
    Q_OBJECT
public:
    frm_ClickHouseConfig(const ClickHouseDataModule::Settings& settings, bool english, QWidget* parent = nullptr);
    // The values as the dialog holds them, blanks around texts removed.
    ClickHouseDataModule::Settings Values() const;

protected:
    QString TestConnection() override;
    bool ReadPreview(QStringList& categories, QStringList& channels, QString& answer) override;

private:
    QLineEdit* m_txtDatabase = nullptr;
    QLineEdit* m_txtUser = nullptr;
    QSpinBox* m_spnTimeout = nullptr;
    QCheckBox* m_chkAggregate = nullptr;
};
