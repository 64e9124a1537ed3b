// SPDX-License-Identifier: GPL-3.0-or-later
#include "SubMain.h"
#include "Globals.h"
#include "MatrixScriptEngine.h"
#include "ResStrings.h"
#include "TempSettings.h"
#include "Version.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace {

const QString KeySettings = QStringLiteral("Software\\HARVOLD\\Sorano\\Settings");

class SubMainTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QDir().mkpath(roots.Path() + "/logs");
        roots.SetMachine(KeySettings, "LogPath", roots.Path() + "/logs");
    }
    void TearDown() override
    {
        EndProcess();
        g_lLangOffset = 0;
        g_sWhoAmI.clear();
    }
    QStringList LogLines()
    {
        QFile file(roots.Path() + "/logs/Sorano.log");
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
    }

    TempSettings roots;
};

TEST_F(SubMainTest, FreshLogStartsWithSeparatorAndVersionLineAndTheEngineLivesUntilTheEnd)
{
    StartProcess();
    const QStringList lines = LogLines();
    ASSERT_GE(lines.size(), 2);
    EXPECT_TRUE(QRegularExpression("^\\S.* : --------- - $").match(lines[0]).hasMatch()) << lines[0].toStdString();
    const QString version
        = QString("%1.%2.%3").arg(SoranoVersionMajor).arg(SoranoVersionMinor).arg(SoranoVersionRevision);
    EXPECT_TRUE(lines[1].endsWith(" Sub Main: app start - starting version " + version)) << lines[1].toStdString();
    // Both lines carry the same kind of date and time in front.
    EXPECT_EQ(lines[0].indexOf(" : "), lines[1].indexOf(" Sub Main: "));

    ASSERT_NE(g_cScriptEngine, nullptr);
    g_cScriptEngine->SetScript(QStringLiteral("RESULT = 1 + 1"));
    EXPECT_EQ(g_cScriptEngine->Execute(), 0);
    EndProcess();
    EXPECT_EQ(g_cScriptEngine, nullptr);
    const QStringList all = LogLines();
    ASSERT_EQ(all.size(), 4);
    EXPECT_TRUE(all[3].endsWith(" --------: --------- - ----------------"));
}

// The language offset must be numeric as a whole and come from the machine; the edition tag must match exactly.
TEST_F(SubMainTest, LanguageOffsetAndEditionAreTakenOnlyWhenExact)
{
    const struct
    {
        const char* machine;
        const char* user;
        int offset;
        const char* file;
    } offsets[] = { { "1000", "", 1000, "&File" }, { "1000abc", "", 0, "&Datei" }, { "", "1000", 0, "&Datei" } };
    for (const auto& c : offsets) {
        roots.SetMachine(KeySettings, "LangOffset", c.machine);
        roots.SetUser(KeySettings, "LangOffset", c.user);
        StartProcess();
        EXPECT_EQ(g_lLangOffset, c.offset) << c.machine << "/" << c.user;
        EXPECT_EQ(GetResString(204), c.file) << c.machine << "/" << c.user;
        EndProcess();
    }
    for (const auto& [stored, tag] : std::vector<std::pair<QString, QString>> {
             { "sorano", "sorano" }, { "talven", "talven" }, { "Sorano", "" }, { "talven ", "" } }) {
        roots.SetMachine(KeySettings, "whoami", stored);
        StartProcess();
        EXPECT_EQ(g_sWhoAmI, tag) << stored.toStdString();
        EndProcess();
    }
}

} // namespace
