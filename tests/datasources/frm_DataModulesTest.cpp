// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_DataModules.h"
#include "QtPrinters.h"
#include "TempSettings.h"
#include "TestModuleScript.h"

#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <functional>

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

    // Runs ShowMe; while the dialog is up, `whileShown` acts on it and should close it. Returns
    // whether the dialog was shown at all.
    bool RunShowMe(frm_DataModules& dialog, const std::function<void()>& whileShown)
    {
        bool shown = false;
        QTimer probe;
        probe.setInterval(10);
        QObject::connect(&probe, &QTimer::timeout, [&] {
            if (!dialog.isVisible() || shown)
                return;
            shown = true;
            whileShown();
            if (dialog.isVisible())
                dialog.reject(); // a failed step must not leave the test waiting
        });
        probe.start();
        dialog.ShowMe(modules);
        return shown;
    }

    template<typename T> static T* Child(QWidget& dialog, const char* name)
    {
        T* child = dialog.findChild<T*>(name);
        EXPECT_NE(child, nullptr) << name;
        return child;
    }

    TempSettings roots;
    ModuleBoxes modules;
};

TEST_F(DataModulesDialogTest, SelectionDecidesWhetherConfigIsEnabledAndConfiguresTheSelectedModule)
{
    AddModule("First", "1", { { S::HasConfig, true } });
    AddModule("Second", "2", { { S::HasConfig, false } });
    AddModule("Third", "3", { { S::HasConfig, true } });
    frm_DataModules dialog;
    int helpCalls = 0;
    dialog.SetHelpHandler([&helpCalls] { ++helpCalls; });

    EXPECT_TRUE(RunShowMe(dialog, [&] {
        auto* list = Child<QListWidget>(dialog, "lst_DataModules");
        auto* config = Child<QPushButton>(dialog, "cmd_Config");
        ASSERT_TRUE(list && config);
        ASSERT_EQ(list->count(), 3);
        EXPECT_EQ(list->item(0)->text(), "First");
        EXPECT_EQ(list->item(2)->text(), "Third");
        EXPECT_EQ(list->currentRow(), 0);
        for (const auto& [row, enabled] : { std::pair { 0, true }, { 1, false }, { 2, true }, { 1, false } }) {
            list->setCurrentRow(row);
            EXPECT_EQ(config->isEnabled(), enabled) << "row " << row;
        }
        list->setCurrentRow(2);
        QTest::mouseClick(config, Qt::LeftButton);
        QTest::keyClick(list, Qt::Key_F1);
        QTest::mouseClick(Child<QPushButton>(dialog, "cmd_Help"), Qt::LeftButton);
        QTest::mouseClick(Child<QPushButton>(dialog, "cmd_Close"), Qt::LeftButton);
        EXPECT_FALSE(dialog.isVisible());
    }));
    EXPECT_EQ(S::Calls("First", "ShowConfig"), 0);
    EXPECT_EQ(S::Calls("Second", "ShowConfig"), 0);
    EXPECT_EQ(S::Calls("Third", "ShowConfig"), 1);
    EXPECT_EQ(helpCalls, 2);
}

TEST_F(DataModulesDialogTest, FailingModulesNeitherEnableConfigNorEscapeAndASingleOneIsConfiguredAtOnce)
{
    AddModule("Broken", "1", { { S::Throws, QStringList { "HasConfig", "ShowConfig" } } });
    AddModule("Fine", "2", {});
    frm_DataModules dialog;
    EXPECT_TRUE(RunShowMe(dialog, [&] {
        auto* config = Child<QPushButton>(dialog, "cmd_Config");
        ASSERT_NE(config, nullptr);
        EXPECT_FALSE(config->isEnabled());
        Child<QListWidget>(dialog, "lst_DataModules")->setCurrentRow(1);
        EXPECT_TRUE(config->isEnabled());
    }));

    // Alone, a module is asked to configure itself without the list, whatever HasConfig says.
    modules.Remove("2");
    frm_DataModules single;
    EXPECT_FALSE(RunShowMe(single, [] {}));
    EXPECT_EQ(S::Calls("Broken", "ShowConfig"), 1);
}

} // namespace
