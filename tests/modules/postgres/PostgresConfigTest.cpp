// SPDX-License-Identifier: GPL-3.0-or-later
// The PostgreSQL module's settings through its dialog, the connection test and the tree preview,
// and the demo database loaded into the server read back as the SQLite module reads it.
#include "PostgresFixture.h"
#include "RegistryKey.h"
#include "SqliteDataModule.h"
#include "frm_PostgresConfig.h"

#include <QCheckBox>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QTreeWidget>

namespace {

class PostgresConfigTest : public PostgresTest
{
};

TEST_F(PostgresConfigTest, TheDialogStoresTheSettingsAndAChangedSchemaChangesTheChannels)
{
    const QString first = Load("first");
    const QString second = Load("second",
        "INSERT INTO categories VALUES (1, 'Zweiter Standort', '', 0, 'FOLDER', 0);"
        "INSERT INTO channels VALUES (901, 'Zweiter', 'kW', 3, 1, 0, 0)");
    auto module = MakeModule(server->ConnInfo(), first);
    const auto firstChannel = [&] { return Overview(*module).value(0).section(' ', 0, 0); };
    EXPECT_EQ(firstChannel(), "30#1");

    // The schema field and the OK button, as the user would use them.
    QTimer::singleShot(0, [&] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        ASSERT_TRUE(dialog);
        dialog->findChild<QLineEdit*>("txt_Schema")->setText(second);
        dialog->findChild<QCheckBox*>("chk_Aggregate")->setChecked(false);
        dialog->findChild<QPushButton*>("cmd_OK")->click();
    });
    QMetaObject::invokeMethod(module.get(), "ShowConfig");
    EXPECT_EQ(RegistryKey().ReadValue(Hive::CurrentUser, PostgresKey, "Schema"), second);
    EXPECT_EQ(RegistryKey().ReadValue(Hive::CurrentUser, PostgresKey, "Aggregate"), "0");
    EXPECT_EQ(handler.messages, (std::vector<std::pair<QString, QString>> { { "CHANNELS_CHANGED", "4" } }));
    EXPECT_EQ(firstChannel(), "1#901");

    // Cancel changes nothing; the connection field shows the stored string.
    EXPECT_EQ(RunConfig(*module, "txt_Connection", "host=anderswo", "cmd_Cancel"), server->ConnInfo());
    EXPECT_EQ(RegistryKey().ReadValue(Hive::CurrentUser, PostgresKey, "Connection"), server->ConnInfo());
    EXPECT_EQ(handler.messages.size(), 1u);
}

TEST_F(PostgresConfigTest, TheTestButtonShowsTheServersAnswerAndTheTree)
{
    PostgresDataModule::Settings settings;
    settings.connection = server->ConnInfo();
    settings.schema = Load("preview");
    frm_PostgresConfig dialog(settings, false);
    dialog.findChild<QPushButton*>("cmd_Test")->click();
    EXPECT_TRUE(dialog.findChild<QLabel*>("lbl_Answer")->text().startsWith("PostgreSQL"));
    auto* tree = dialog.findChild<QTreeWidget*>("trv_Channels");
    const QList<QTreeWidgetItem*> power = tree->findItems("Leistung", Qt::MatchExactly | Qt::MatchRecursive);
    ASSERT_EQ(power.size(), 1);
    QStringList branch;
    for (const QTreeWidgetItem* item = power.front(); item; item = item->parent())
        branch.prepend(item->text(0));
    EXPECT_EQ(branch, QStringList({ "Werk", "Halle _1", "Logger 7", "Leistung" }));
    EXPECT_EQ(tree->findItems("Phase L1", Qt::MatchExactly | Qt::MatchRecursive).value(0)->parent(), power.front());

    // A schema without logger tables: the server answers, the tree empties and says why.
    dialog.findChild<QLineEdit*>("txt_Schema")->setText("fehlt");
    dialog.findChild<QPushButton*>("cmd_Test")->click();
    EXPECT_EQ(tree->topLevelItemCount(), 0);
    EXPECT_TRUE(dialog.findChild<QLabel*>("lbl_Preview")->text().contains("table categories is missing"));
    // A user the server does not know: its message.
    dialog.findChild<QLineEdit*>("txt_Connection")
        ->setText(QString(settings.connection).replace("user=sorano", "user=niemand"));
    dialog.findChild<QPushButton*>("cmd_Test")->click();
    EXPECT_TRUE(dialog.findChild<QLabel*>("lbl_Answer")->text().contains("niemand"));
}

TEST_F(PostgresConfigTest, TheDemoDatabaseReadsAsFromTheFile)
{
    const QString file = dir.filePath("demo.sqlite");
    QProcess generator;
    generator.start(SORANO_DEMODATA, { "--days", "20", file });
    ASSERT_TRUE(generator.waitForFinished(120'000));
    ASSERT_EQ(generator.exitCode(), 0) << generator.readAllStandardError().toStdString();
    const QString schema = server->FreshNamespace("demo");
    QString error;
    std::vector<int> percents;
    ASSERT_TRUE(PostgresLoad::CopyFromSqlite(file, server->ConnInfo(), schema, error, [&](int percent) {
        percents.push_back(percent);
    })) << error.toStdString();
    EXPECT_EQ(percents.back(), 100);
    EXPECT_TRUE(std::is_sorted(percents.begin(), percents.end()));

    SqliteDataModule sqlite(DataModuleRegistration { "Demo", "4" });
    auto postgres = MakeModule(server->ConnInfo(), schema);
    qint32 status = 0;
    ASSERT_EQ(sqlite.Initialize(file, status), 1);
    const QStringList ids = Overview(sqlite);
    ASSERT_EQ(Overview(*postgres), ids);
    QStringList channels;
    for (const QString& line : ids)
        channels << line.section(' ', 0, 0);
    const ChannelCollection expected = Read(sqlite, channels, 0, 1e6);
    const ChannelCollection got = Read(*postgres, channels, 0, 1e6, &status);
    EXPECT_EQ(status, 1);
    for (qsizetype i = 0; i < channels.size(); ++i)
        EXPECT_EQ(SamplesOf(got, i), SamplesOf(expected, i)) << channels[i].toStdString();
    EXPECT_EQ(got.Text(channels.size()).replace("POSTGRES", "SQLITE"), expected.Text(channels.size()));
}

} // namespace
