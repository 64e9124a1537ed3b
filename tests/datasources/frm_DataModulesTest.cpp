// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_DataModules.h"
#include "QtPrinters.h"
#include "TempSettings.h"
#include "TestModuleScript.h"

#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <utility>

#include <gtest/gtest.h>

namespace {

namespace S = TestModuleScript;

class DataModulesDialogTest : public ::testing::Test
{
protected:
    void SetUp() override { qputenv("SORANO_MODULE_PATH", SORANO_TEST_MODULE_DIR); }

    void AddModule(const QString& name, const QString& address, const QVariantMap& script)
    {
        S::SetScript(name, script);
        auto box = std::make_shared<ModuleBox>();
        box->SetName(name);
        box->SetObject("Sorano.TestModule");
        box->SetAddress(address);
        ASSERT_EQ(box->BindDMI(), 0);
        ASSERT_TRUE(modules.Add(box));
    }

    TempSettings roots;
    ModuleBoxes modules;
};

// A module whose HasConfig fails counts as one without configuration.
TEST_F(DataModulesDialogTest, SelectionDecidesWhetherConfigIsEnabledAndConfiguresTheSelectedModule)
{
    AddModule("First", "1", { { S::HasConfig, true } });
    AddModule("Broken", "2", { { S::Throws, QStringList { "HasConfig" } } });
    AddModule("Third", "3", { { S::HasConfig, true } });
    frm_DataModules dialog;
    int helpCalls = 0;
    dialog.SetHelpHandler([&helpCalls] { ++helpCalls; });

    // The probe works the dialog while it is up and closes it should a step fail.
    bool shown = false;
    QTimer probe;
    probe.setInterval(10);
    QObject::connect(&probe, &QTimer::timeout, [&] {
        if (!dialog.isVisible() || std::exchange(shown, true))
            return;
        auto* list = dialog.findChild<QListWidget*>("lst_DataModules");
        auto* config = dialog.findChild<QPushButton*>("cmd_Config");
        auto* help = dialog.findChild<QPushButton*>("cmd_Help");
        auto* close = dialog.findChild<QPushButton*>("cmd_Close");
        if (list && config && help && close && list->count() == 3) {
            EXPECT_EQ(list->item(2)->text(), "Third");
            EXPECT_EQ(list->currentRow(), 0);
            for (const auto& [row, enabled] : { std::pair { 0, true }, { 1, false }, { 2, true } }) {
                list->setCurrentRow(row);
                EXPECT_EQ(config->isEnabled(), enabled) << "row " << row;
            }
            QTest::mouseClick(config, Qt::LeftButton);
            QTest::keyClick(list, Qt::Key_F1);
            QTest::mouseClick(help, Qt::LeftButton);
            QTest::mouseClick(close, Qt::LeftButton);
            EXPECT_FALSE(dialog.isVisible());
        }
        dialog.reject();
    });
    probe.start();
    dialog.ShowMe(modules);
    EXPECT_TRUE(shown);
    EXPECT_EQ(S::Calls("First", "ShowConfig") + S::Calls("Broken", "ShowConfig"), 0);
    EXPECT_EQ(S::Calls("Third", "ShowConfig"), 1);
    EXPECT_EQ(helpCalls, 2);
}

} // namespace
