// SPDX-License-Identifier: GPL-3.0-or-later
#include "DataModuleLoader.h"
#include "AppPaths.h"
#include "LogCapture.h"
#include "QtPrinters.h"
#include "TestModuleScript.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <tuple>

namespace {

namespace S = TestModuleScript;
using Failure = DataModuleLoader::Failure;

const QString ModuleDir = QStringLiteral(SORANO_TEST_MODULE_DIR);
const QString SecondDir = QStringLiteral(SORANO_TEST_SECOND_DIR);

struct DataModuleLoaderTest : ::testing::Test
{
    TempSettings roots;
};

TEST_F(DataModuleLoaderTest, FoldersAreTheVariableThenBesideTheProgramThenTheLibraryFolder)
{
    const QByteArray saved = qgetenv("SORANO_MODULE_PATH");
    const QString separator = QDir::listSeparator();
    qputenv("SORANO_MODULE_PATH", ("/opt/a" + separator + separator + "/opt/b/" + separator).toUtf8());
    const QStringList folders = DataModuleLoader::DefaultFolders();
    qputenv("SORANO_MODULE_PATH", saved);
    const QString program = AppPaths::ProgramFolder();
    EXPECT_EQ(folders,
        QStringList({ "/opt/a", "/opt/b", program + "/modules", QDir::cleanPath(program + "/../lib/sorano/modules") }));
}

TEST_F(DataModuleLoaderTest, CreatesModulesByProgIdWithoutRegardToCaseOrSaysWhyNot)
{
    DataModuleLoader loader({ ModuleDir });
    EXPECT_EQ(
        loader.ProgIDs(), QStringList({ "Sorano.TestModule", "Sorano.TestModule.Nothing", "Sorano.TestModule.Plain" }));
    S::SetScript("LoaderCase", {});
    const DataModuleLoader::Result created = loader.Create("sorano.TESTMODULE", { "LoaderCase", "4" });
    ASSERT_TRUE(created);
    EXPECT_EQ(qobject_cast<DataModuleInterface*>(created.object.get()), created.module);
    EXPECT_EQ(S::Calls("LoaderCase", "Create"), 1);

    const std::tuple<const char*, QVariantMap, Failure, const char*> cases[] = {
        { "No.Such.Module", {}, Failure::UnknownProgId, "No module plug-in provides No.Such.Module" },
        { "Sorano.TestModule.Plain", {}, Failure::NoInterface, "Object Sorano.TestModule.Plain is no data module" },
        { "Sorano.TestModule.Nothing", {}, Failure::NoObject, "created no object for" },
        { "Sorano.TestModule", { { S::Throws, QStringList { "Create" } } }, Failure::FactoryRaised,
            "Creating Sorano.TestModule failed: Create failed" },
    };
    for (const auto& [progId, script, failure, reason] : cases) {
        S::SetScript("LoaderFailure", script);
        const DataModuleLoader::Result failed = loader.Create(progId, { "LoaderFailure", "5" });
        EXPECT_FALSE(failed || failed.object) << progId;
        EXPECT_EQ(failed.failure, failure) << progId;
        EXPECT_TRUE(failed.reason.contains(reason)) << failed.reason.toStdString();
    }
}

TEST_F(DataModuleLoaderTest, EarlierFolderWinsAndFilesThatAreNoPluginsAreLogged)
{
    const QString first = QFileInfo(QStringLiteral(SORANO_TEST_MODULE_FILE)).absoluteFilePath();
    const QString second = QFileInfo(SecondDir + "/" + QFileInfo(first).fileName()).absoluteFilePath();
    const QString junk = QFileInfo(SecondDir + "/libjunk.so").absoluteFilePath();
    ASSERT_TRUE(QFileInfo::exists(first) && QFileInfo::exists(second) && QFileInfo::exists(junk));

    LogCapture log(roots, 2);
    DataModuleLoader loader({ ModuleDir, SecondDir });
    EXPECT_EQ(loader.PluginFile("Sorano.TestModule"), first);
    EXPECT_EQ(log.Count("DataModuleLoader.Scan", "skipped module file",
                  "ProgID Sorano.TestModule of file " + second + " is already provided by " + first + "."),
        1)
        << log.Dump();
    const QString unreadable = "error reading module file - File " + junk + " can't be read as a plug-in: ";
    EXPECT_EQ(log.From("DataModuleLoader.Scan").filter(unreadable).size(), 1) << log.Dump();
    EXPECT_EQ(DataModuleLoader({ SecondDir, ModuleDir }).PluginFile("Sorano.TestModule"), second);
}

TEST_F(DataModuleLoaderTest, OnlyFilesDirectlyInTheFoldersAreSeenAndEachFolderOnce)
{
    QTemporaryDir empty;
    LogCapture log(roots, 1);
    // The parent holds the module folders but no plug-in itself; missing folders are passed over.
    DataModuleLoader parentOnly({ QFileInfo(ModuleDir).absolutePath(), empty.path(), empty.path() + "/missing" });
    EXPECT_TRUE(parentOnly.ProgIDs().isEmpty());

    DataModuleLoader twice({ ModuleDir, ModuleDir + "/", ModuleDir + "/../modules" });
    EXPECT_EQ(twice.ProgIDs().size(), 3);
    EXPECT_EQ(log.Dump().find("already provided"), std::string::npos) << log.Dump();
}

} // namespace
