// SPDX-License-Identifier: GPL-3.0-or-later
// The print dialog's remembered ticks, the reports it hands back and the page setup's stored
// layout, each dialog driven while it is shown.
#include "RegistryKey.h"
#include "Settings.h"
#include "TempSettings.h"
#include "frm_PageSetup.h"
#include "frm_PrintReport.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

namespace {

class StubReport : public ReportInterface
{
public:
    StubReport(const QString& id, const QString& name)
        : ReportInterface(name, 1)
    {
        SetID(id);
    }
    void Execute(Measuring*, ReportDocument*, qint32& status) override { status = 0; }
};

// The user's own value, without the machine's fallback.
QString UserValue(const char* name)
{
    RegistryKey key;
    return key.ReadValue(Hive::CurrentUser, QString::fromLatin1(Settings::KeyReports), QString::fromLatin1(name));
}

// Runs the steps while the dialog is shown, then cancels it if still open.
template<typename Dialog, typename Show>
bool WhileShown(Dialog& dialog, const std::function<void(Dialog&)>& steps, Show show)
{
    QTimer::singleShot(0, &dialog, [&] {
        steps(dialog);
        if (dialog.isVisible())
            dialog.reject();
    });
    return show();
}

template<typename T> T* Child(QWidget& dialog, const char* name)
{
    T* child = dialog.findChild<T*>(QLatin1String(name));
    EXPECT_NE(child, nullptr) << name;
    return child;
}

void Click(QWidget& dialog, const char* button)
{
    auto* widget = Child<QPushButton>(dialog, button);
    ASSERT_TRUE(widget->isEnabled()) << button;
    QTest::mouseClick(widget, Qt::LeftButton);
}

class PrintReportTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        available.Add(std::make_shared<StubReport>("REP_0", "Chart"));
        available.Add(std::make_shared<StubReport>("X_QUANDEL_REP_1", "Quandel"));
        available.Add(std::make_shared<StubReport>("REP_2", "Table"));
    }
    bool Show(const std::function<void(frm_PrintReport&)>& steps, bool singleOnly = false)
    {
        frm_PrintReport dialog;
        dialog.SetHelpHandler([this](int context) { helpContexts.push_back(context); });
        return WhileShown<frm_PrintReport>(
            dialog, steps, [&] { return dialog.ShowMe(singleOnly, available, reports, orientations, allOpen); });
    }
    static QStringList Rows(frm_PrintReport& dialog)
    {
        QStringList rows;
        QListWidget* list = Child<QListWidget>(dialog, "lst_Reports");
        for (int row = 0; row < list->count(); ++row) {
            const QListWidgetItem* item = list->item(row);
            rows << QStringLiteral("%1 %2 %3")
                        .arg(item->text())
                        .arg(item->data(Qt::UserRole).toInt())
                        .arg(item->checkState() == Qt::Checked ? 1 : 0);
        }
        return rows;
    }
    static void Choose(frm_PrintReport& dialog, int row)
    {
        QListWidget* list = Child<QListWidget>(dialog, "lst_Reports");
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(row)).center());
    }
    static void Tick(frm_PrintReport& dialog, int row, bool on)
    {
        Child<QListWidget>(dialog, "lst_Reports")->item(row)->setCheckState(on ? Qt::Checked : Qt::Unchecked);
    }
    static bool Enabled(frm_PrintReport& dialog, const char* button)
    {
        return Child<QPushButton>(dialog, button)->isEnabled();
    }

    TempSettings settings;
    ReportCollection available;
    std::vector<ReportPtr> reports;
    std::vector<qint32> orientations;
    bool allOpen = false;
    std::vector<int> helpContexts;
};

TEST_F(PrintReportTest, OkWantsATickStoresTheTicksInTheOrderOfTheRowsAndCancelStoresNothing)
{
    EXPECT_FALSE(Show(
        [&](frm_PrintReport& dialog) {
            const QStringList rows = Rows(dialog);
            EXPECT_EQ(rows.size(), 5);
            for (const QString& row : rows)
                EXPECT_TRUE(row.endsWith(" 0")) << row.toStdString();
            EXPECT_FALSE(Enabled(dialog, "cmd_OK"));
            EXPECT_FALSE(Child<QGroupBox>(dialog, "fra_Multi")->isVisible());
            Tick(dialog, 4, true);
            EXPECT_TRUE(Enabled(dialog, "cmd_OK"));
            Tick(dialog, 4, false);
            EXPECT_FALSE(Enabled(dialog, "cmd_OK"));
            Tick(dialog, 2, true);
            QTest::keyClick(&dialog, Qt::Key_F1);
            Click(dialog, "cmd_Cancel");
        },
        true));
    EXPECT_EQ(helpContexts, std::vector<int>({ frm_PrintReport::HelpContext }));

    EXPECT_FALSE(Show([&](frm_PrintReport& dialog) {
        Tick(dialog, 0, true);
        dialog.close();
    }));
    EXPECT_EQ(UserValue("Selection"), QString());
    EXPECT_TRUE(reports.empty() && orientations.empty());

    // The ticks follow the stored flags row by row, the user's before the machine's.
    settings.SetMachine(Settings::KeyReports, "Selection", "1;1;1;1;1;");
    settings.SetUser(Settings::KeyReports, "Selection", "0;1;1;0");
    ASSERT_TRUE(Show([&](frm_PrintReport& dialog) {
        EXPECT_EQ(Rows(dialog),
            QStringList({ "Chart (Hochformat) 101 0", "Chart (Querformat) 201 1", "Quandel (Hochformat) 102 1",
                "Table (Hochformat) 103 0", "Table (Querformat) 203 0" }));
        EXPECT_TRUE(Child<QGroupBox>(dialog, "fra_Multi")->isVisible());
        EXPECT_FALSE(Enabled(dialog, "cmd_Up") || Enabled(dialog, "cmd_Down"));

        Choose(dialog, 1);
        EXPECT_TRUE(Child<QRadioButton>(dialog, "opt_Landscape")->isChecked());
        Choose(dialog, 3);
        EXPECT_TRUE(Child<QRadioButton>(dialog, "opt_Portrait")->isChecked());
        Tick(dialog, 3, true);
        for (int i = 0; i < 3; ++i)
            Click(dialog, "cmd_Up");
        EXPECT_FALSE(Enabled(dialog, "cmd_Up"));
        Click(dialog, "cmd_Down");
        Click(dialog, "cmd_Up");
        Choose(dialog, 4);
        EXPECT_FALSE(Enabled(dialog, "cmd_Down"));
        EXPECT_EQ(Rows(dialog),
            QStringList({ "Table (Hochformat) 103 1", "Chart (Hochformat) 101 0", "Chart (Querformat) 201 1",
                "Quandel (Hochformat) 102 1", "Table (Querformat) 203 0" }));
        QTest::mouseClick(Child<QRadioButton>(dialog, "opt_All"), Qt::LeftButton);
        Click(dialog, "cmd_OK");
    }));
    EXPECT_EQ(UserValue("Selection"), "1;0;1;1;0;");
    EXPECT_EQ(reports, std::vector<ReportPtr>({ available.At(2), available.At(0), available.At(1) }));
    EXPECT_EQ(orientations, std::vector<qint32>({ 1, 2, 1 }));
    EXPECT_EQ(available.At(0)->Orientation(), 2);
    EXPECT_TRUE(allOpen);
}

class PageSetupTest : public ::testing::Test
{
protected:
    bool Show(const std::function<void(frm_PageSetup&)>& steps)
    {
        frm_PageSetup dialog;
        return WhileShown<frm_PageSetup>(dialog, steps, [&] { return dialog.ShowMe(); });
    }
    static QStringList Boxes(frm_PageSetup& dialog)
    {
        QStringList texts;
        for (int i = 0; i < 6; ++i)
            texts << Child<QLineEdit>(dialog, QStringLiteral("txt_Border%1").arg(i).toLatin1().constData())->text();
        return texts;
    }

    static constexpr const char* Names[] = { "Left", "Right", "Top", "Bottom", "HeadHeight", "FootHeight", "DrawLine" };
    TempSettings settings;
};

TEST_F(PageSetupTest, CancelStoresNothingAndOkStoresEveryBoxForTheUser)
{
    // Nothing stored shows the defaults.
    EXPECT_FALSE(Show([](frm_PageSetup& dialog) {
        EXPECT_EQ(Boxes(dialog), QStringList({ "25", "10", "15", "10", "15", "10" }));
        EXPECT_TRUE(Child<QCheckBox>(dialog, "chk_DrawLine")->isChecked());
        Child<QLineEdit>(dialog, "txt_Border0")->setText("40");
        Child<QCheckBox>(dialog, "chk_DrawLine")->setChecked(false);
        Click(dialog, "cmd_Cancel");
    }));
    for (const char* name : Names)
        EXPECT_EQ(UserValue(name), QString()) << name;

    settings.SetUser(Settings::KeyReports, "Left", "30");
    settings.SetMachine(Settings::KeyReports, "Right", "12.5");
    settings.SetUser(Settings::KeyReports, "Top", "7mm");
    settings.SetUser(Settings::KeyReports, "DrawLine", "0");
    std::vector<int> helpContexts;
    ASSERT_TRUE(Show([&](frm_PageSetup& dialog) {
        dialog.SetHelpHandler([&](int context) { helpContexts.push_back(context); });
        EXPECT_EQ(Boxes(dialog), QStringList({ "30", "12.5", "7", "10", "15", "10" }));
        EXPECT_FALSE(Child<QCheckBox>(dialog, "chk_DrawLine")->isChecked());
        Child<QLineEdit>(dialog, "txt_Border0")->setText("abc");
        Child<QLineEdit>(dialog, "txt_Border5")->setText("8");
        QTest::keyClick(&dialog, Qt::Key_F1);
        Click(dialog, "cmd_OK");
    }));
    EXPECT_EQ(helpContexts, std::vector<int>({ frm_PageSetup::HelpContext }));
    QStringList stored;
    for (const char* name : Names)
        stored << UserValue(name);
    // No number stores 0; the machine's value is stored for the user.
    EXPECT_EQ(stored, QStringList({ "0", "12.5", "7", "10", "15", "8", "0" }));
}

} // namespace
