// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_ClickHouseConfig.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QSpinBox>

namespace {

QString Pick(bool english, const char* german, const char* text)
{
    return QString::fromUtf8(english ? text : german);
}

} // namespace

frm_ClickHouseConfig::frm_ClickHouseConfig(
    const ClickHouseDataModule::Settings& settings, bool english, QWidget* parent)
    : ServerConfigDialog(
        { Pick(english, "ClickHouse-Datenbank", "ClickHouse database"), Pick(english, "Server-URL:", "Server URL:") },
        "txt_Url", settings.url, english, parent)
{
    m_txtDatabase = new QLineEdit(settings.database, this);
    m_txtDatabase->setObjectName("txt_Database");
    AddField(Pick(english, "Datenbank:", "Database:"), m_txtDatabase);
    m_txtUser = new QLineEdit(settings.user, this);
    m_txtUser->setObjectName("txt_User");
    AddField(Pick(english, "Benutzer:", "User:"), m_txtUser);
    m_spnTimeout = new QSpinBox(this);
    m_spnTimeout->setObjectName("spn_Timeout");
    m_spnTimeout->setRange(1, 3600);
    m_spnTimeout->setSuffix(" s");
    m_spnTimeout->setValue(settings.timeoutSeconds);
    AddField(Pick(english, "Zeitlimit:", "Timeout:"), m_spnTimeout);
    m_chkAggregate
        = new QCheckBox(Pick(english, "Werte auf dem Server verdichten", "Aggregate values on the server"), this);
    m_chkAggregate->setObjectName("chk_Aggregate");
    m_chkAggregate->setChecked(settings.aggregate);
    AddField(QString(), m_chkAggregate);
}

ClickHouseDataModule::Settings frm_ClickHouseConfig::Values() const
{
    ClickHouseDataModule::Settings settings;
    settings.url = Path();
    settings.database = m_txtDatabase->text().trimmed();
    settings.user = m_txtUser->text().trimmed();
    settings.timeoutSeconds = m_spnTimeout->value();
    settings.aggregate = m_chkAggregate->isChecked();
    return settings;
}

QString frm_ClickHouseConfig::TestConnection()
{
    QString answer;
    if (ClickHouseDataModule::ServerVersion(Values(), answer))
        return Pick(English(), "Verbunden: ClickHouse ", "Connected: ClickHouse ") + answer;
    return Pick(English(), "Keine Verbindung: ", "No connection: ") + answer;
}

bool frm_ClickHouseConfig::ReadPreview(QStringList& categories, QStringList& channels, QString& answer)
{
    // A module of its own with the entered values, so that the registration's stays untouched.
    ClickHouseDataModule module(DataModuleRegistration { QStringLiteral("preview"), QStringLiteral("0") });
    module.UseSettings(Values());
    qint32 status = 0;
    if (module.GetChannelStructure(categories, channels, status) == 1)
        return true;
    answer = Pick(English(), "Keine Vorschau: ", "No preview: ") + module.LastFailure();
    return false;
}
