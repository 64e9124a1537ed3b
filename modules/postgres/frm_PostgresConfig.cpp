// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_PostgresConfig.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QSpinBox>

frm_PostgresConfig::frm_PostgresConfig(const PostgresDataModule::Settings& settings, bool english, QWidget* parent)
    : ServerConfigDialog({ english ? tr("PostgreSQL logger database") : tr("PostgreSQL-Logger-Datenbank"),
                             english ? tr("Connection string (e.g. host=server dbname=loggers user=name, or "
                                          "service=name; passwords from ~/.pgpass):")
                                     : tr("Verbindungszeichenfolge (z. B. host=server dbname=loggers user=name oder "
                                          "service=name; Passwörter aus ~/.pgpass):") },
        "txt_Connection", settings.connection, english, parent)
{
    setObjectName("frm_PostgresConfig");
    m_txtSchema = new QLineEdit(settings.schema, this);
    m_txtSchema->setObjectName("txt_Schema");
    m_spnTimeout = new QSpinBox(this);
    m_spnTimeout->setObjectName("spn_Timeout");
    m_spnTimeout->setRange(1, 3600);
    m_spnTimeout->setSuffix(" s");
    m_spnTimeout->setValue(settings.timeoutSeconds);
    m_chkAggregate
        = new QCheckBox(english ? tr("Aggregate values on the server") : tr("Werte auf dem Server verdichten"), this);
    m_chkAggregate->setObjectName("chk_Aggregate");
    m_chkAggregate->setChecked(settings.aggregate);
    AddField(english ? tr("Schema:") : tr("Schema:"), m_txtSchema);
    AddField(english ? tr("Timeout:") : tr("Zeitlimit:"), m_spnTimeout);
    AddField(QString(), m_chkAggregate);
}

PostgresDataModule::Settings frm_PostgresConfig::Values() const
{
    PostgresDataModule::Settings settings;
    settings.connection = Path();
    settings.schema
        = m_txtSchema->text().trimmed().isEmpty() ? QStringLiteral("public") : m_txtSchema->text().trimmed();
    settings.timeoutSeconds = m_spnTimeout->value();
    settings.aggregate = m_chkAggregate->isChecked();
    return settings;
}

QString frm_PostgresConfig::TestConnection()
{
    return PostgresDataModule::ServerVersion(Values());
}

bool frm_PostgresConfig::ReadPreview(QStringList& categories, QStringList& channels, QString& answer)
{
    // A module of its own reads the structure with the entered values.
    PostgresDataModule module(DataModuleRegistration { QStringLiteral("Preview"), QStringLiteral("0") });
    module.UseSettings(Values());
    qint32 status = 0;
    if (module.GetChannelStructure(categories, channels, status) == 1)
        return true;
    ChannelCollection none;
    module.GetData(QString(), none, 0.0, 0.0, status);
    answer = none.Text(0).section(';', 2);
    return false;
}
