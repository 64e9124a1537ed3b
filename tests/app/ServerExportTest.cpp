// SPDX-License-Identifier: GPL-3.0-or-later
// The example views on the demo data in a PostgreSQL and a ClickHouse store: every export equals the
// one from the SQLite file, value for value, whether the server aggregates the grid steps or sends
// every sample.
#include "ClickHouseLoad.h"
#include "DemoFixture.h"
#include "PostgresLoad.h"
#include "TestServer.h"

namespace {

class ServerExportTest : public DemoFixture
{
protected:
    static inline const QString ModuleSettingsKey = QStringLiteral("Software\\HARVOLD\\ModuleSettings\\Demo");

    // The demo source "Demo" at address 1, which the example views name, on the server's copy.
    void RegisterPostgres(const TestServer& server, const QString& schema, bool aggregate)
    {
        roots.SetMachine("Software\\HARVOLD\\DataModules", "Demo", "Sorano.PostgreSQL:1");
        roots.SetMachine(ModuleSettingsKey, "Connection", server.ConnInfo());
        roots.SetMachine(ModuleSettingsKey, "Schema", schema);
        roots.SetMachine(ModuleSettingsKey, "Aggregate", aggregate ? "1" : "0");
    }
    void RegisterClickHouse(const TestServer& server, const QString& database, bool aggregate)
    {
        roots.SetMachine("Software\\HARVOLD\\DataModules", "Demo", "Sorano.ClickHouse:1");
        roots.SetMachine(ModuleSettingsKey, "URL", server.Url());
        roots.SetMachine(ModuleSettingsKey, "Database", database);
        roots.SetMachine(ModuleSettingsKey, "Aggregate", aggregate ? "1" : "0");
    }

    // Each example view as saved, and over three months at quarter hours, hours and days.
    struct Export
    {
        QString name;
        QStringList arguments;
    };
    std::vector<Export> Exports() const
    {
        std::vector<Export> exports;
        for (const char* view : { "Hauptzaehler.sor", "Gebaeudevergleich.sor", "Rechenzentrum-Tag.sor" }) {
            const QString path = Examples + '/' + view;
            exports.push_back({ QString(view) + " as saved", { path } });
            for (const char* resolution : { "15n", "1h", "1d" })
                exports.push_back({ QString(view) + ' ' + resolution,
                    { "--from", "2025-09-01", "--to", "2025-11-30", "--resolution", resolution, path } });
        }
        // A window that starts before the data and ends inside a day, at 10 minutes.
        exports.push_back({ "cut window",
            { "--from", "2023-12-31 18:00:00", "--to", "2024-01-02 07:35:00", "--resolution", "10n",
                Examples + "/Rechenzentrum-Tag.sor" } });
        return exports;
    }

    // The CSV texts of every export, under the settings as they stand.
    std::vector<QByteArray> ExportAll(const QString& tag)
    {
        std::vector<QByteArray> tables;
        int n = 0;
        for (const Export& each : Exports()) {
            SCOPED_TRACE((tag + ": " + each.name).toStdString());
            const QString csv = out.filePath(QString("%1-%2.csv").arg(tag).arg(n++));
            ExportCsv(each.arguments, csv);
            tables.push_back(ReadAll(csv));
        }
        return tables;
    }

    // The first line in which the tables differ, for the failure message.
    static std::string FirstDifference(const QByteArray& expected, const QByteArray& actual)
    {
        const QList<QByteArray> a = expected.split('\n'), b = actual.split('\n');
        for (qsizetype i = 0; i < std::max(a.size(), b.size()); ++i) {
            const QByteArray left = a.value(i), right = b.value(i);
            if (left != right)
                return "line " + std::to_string(i + 1) + ": expected \"" + left.toStdString() + "\", got \""
                    + right.toStdString() + "\"";
        }
        return "no difference";
    }

    void ExpectSameTables(
        const std::vector<QByteArray>& expected, const std::vector<QByteArray>& actual, const QString& store)
    {
        const std::vector<Export> exports = Exports();
        ASSERT_EQ(actual.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) {
            // A table of a few rows would compare equal for the wrong reason.
            EXPECT_GT(expected[i].count('\n'), 20) << exports[i].name.toStdString();
            EXPECT_TRUE(expected[i] == actual[i]) << store.toStdString() << ", " << exports[i].name.toStdString()
                                                  << ": " << FirstDifference(expected[i], actual[i]);
        }
    }
};

TEST_F(ServerExportTest, ExampleViewsExportTheSameTablesFromEveryStoreWithAndWithoutServerAggregation)
{
    const std::vector<QByteArray> fromFile = ExportAll("sqlite");

    QString error;
    TestServer* postgres = TestServer::Shared(TestServer::Kind::Postgres, &error);
    ASSERT_TRUE(postgres) << error.toStdString();
    const QString schema = postgres->FreshNamespace("export");
    ASSERT_FALSE(schema.isEmpty());
    ASSERT_TRUE(PostgresLoad::CopyFromSqlite(Demo, postgres->ConnInfo(), schema, error)) << error.toStdString();
    for (const bool aggregate : { true, false }) {
        RegisterPostgres(*postgres, schema, aggregate);
        ExpectSameTables(fromFile, ExportAll(QString("postgres-%1").arg(aggregate)),
            aggregate ? "PostgreSQL aggregating" : "PostgreSQL raw");
    }

    TestServer* clickhouse = TestServer::Shared(TestServer::Kind::ClickHouse, &error);
    ASSERT_TRUE(clickhouse) << error.toStdString();
    const QString database = clickhouse->FreshNamespace("export");
    ASSERT_FALSE(database.isEmpty());
    ASSERT_TRUE(ClickHouseLoad::CopyFromSqlite(Demo, clickhouse->Url(), database, "default", error))
        << error.toStdString();
    for (const bool aggregate : { true, false }) {
        RegisterClickHouse(*clickhouse, database, aggregate);
        ExpectSameTables(fromFile, ExportAll(QString("clickhouse-%1").arg(aggregate)),
            aggregate ? "ClickHouse aggregating" : "ClickHouse raw");
    }
}

} // namespace
