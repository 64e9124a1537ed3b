// SPDX-License-Identifier: GPL-3.0-or-later
// The options dialog, driven through its controls with keys and clicks.
#include "ResStrings.h"
#include "Settings.h"
#include "TempSettings.h"
#include "frm_Options.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMap>
#include <QSettings>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

#include <functional>

#include <gtest/gtest.h>

namespace {

using Settings::Id;

const QString SettingsKey = "Software\\HARVOLD\\Sorano\\Settings";

// The per-user values under a key path, by their path below it.
QMap<QString, QString> UserValues(const QString& under = QString())
{
    QSettings user(QSettings::IniFormat, QSettings::UserScope, "HARVOLD", "Sorano");
    QMap<QString, QString> values;
    for (const QString& key : user.allKeys()) {
        if (key.startsWith(under))
            values.insert(key.mid(under.size()), user.value(key).toString());
    }
    return values;
}

template<class T> T* Find(QWidget& dialog, const QString& name)
{
    T* child = dialog.findChild<T*>(name);
    EXPECT_NE(child, nullptr) << name.toStdString();
    return child;
}

// Clicks a button near its left edge: check boxes and options take clicks on their mark and text only.
void Click(QWidget& dialog, const QString& name)
{
    if (auto* button = Find<QAbstractButton>(dialog, name))
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
}

// Empties a field with the keyboard and types the text into it.
void Retype(QLineEdit* edit, const QString& text)
{
    edit->setFocus();
    QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(edit, Qt::Key_Backspace);
    QTest::keyClicks(edit, text);
}

// Works the dialog while it is up, then presses the named button; gives ShowMe's answer.
bool RunDialog(frm_Options& dialog, const QString& button, const std::function<void(frm_Options&)>& work = {})
{
    QTimer::singleShot(0, &dialog, [&] {
        if (work)
            work(dialog);
        Click(dialog, button);
        if (dialog.isVisible())
            dialog.reject();
    });
    return dialog.ShowMe();
}

class OptionsTest : public ::testing::Test
{
protected:
    TempSettings roots;
};

TEST_F(OptionsTest, CancelWritesNothingAndOkWithoutAnEditWritesEveryValueAsShown)
{
    roots.SetMachine(SettingsKey, "CompanyName", "Muster GmbH");
    roots.SetUser(SettingsKey, "ZoomArea", "1");
    roots.SetUser(SettingsKey, "OnNewMeasuring", "0");
    roots.SetUser(SettingsKey, "OnCloseMeasuring", "1");
    roots.SetUser(SettingsKey, "NavSmallStep", "15n");
    roots.SetUser(SettingsKey, "NavBigStep", "7s");
    const QMap<QString, QString> before = UserValues();

    frm_Options dialog;
    EXPECT_FALSE(RunDialog(dialog, "cmd_Cancel", [](frm_Options& d) {
        Click(d, "chk_ToolTips");
        Retype(Find<QLineEdit>(d, "txt_SmallCount"), "5");
        Find<QTabWidget>(d, "tabStrip")->setCurrentIndex(3);
        Retype(Find<QLineEdit>(d, "txt_FormatNumber"), "0 X");
    }));
    EXPECT_FALSE(dialog.IndizesChanged());
    EXPECT_EQ(UserValues(), before);

    EXPECT_TRUE(RunDialog(dialog, "cmd_OK", [](frm_Options& d) {
        EXPECT_EQ(Find<QLineEdit>(d, "txt_SmallCount")->text(), "15");
        EXPECT_EQ(Find<QComboBox>(d, "cbo_SmallUnit")->currentText(), GetResString(363));
    }));
    EXPECT_FALSE(dialog.IndizesChanged());
    const QMap<QString, QString> expected { { "ShowStartupWindow", "0" }, { "CompanyName", "Muster GmbH" },
        { "CompanyAddress", "" }, { "ZoomArea", "1" }, { "CursorCrossHairs", "1" }, { "CursorLine", "1" },
        { "CrossHairs", "1" }, { "ToolTips", "1" }, { "OnNewMeasuring", "0" }, { "OnCloseMeasuring", "1" },
        { "ClosePreviewAfterPrint", "1" }, { "NavSmallStep", "15n" }, { "NavMediumStep", "1d" },
        { "NavBigStep", "7s" } };
    EXPECT_EQ(UserValues("Software/HARVOLD/Sorano/Settings/"), expected);
    EXPECT_EQ(UserValues("Software/HARVOLD/Sorano/Indizes/").size(), 7 * 4);
}

TEST_F(OptionsTest, OptionsAndCheckBoxesAreWrittenAsTheirValues)
{
    frm_Options dialog;
    for (const int option : { 0, 1, 2 }) {
        ASSERT_TRUE(RunDialog(dialog, "cmd_OK", [option](frm_Options& d) {
            for (const QString& name : { QString("opt_Load%1").arg(option), QString("opt_Close%1").arg(2 - option),
                     QString("opt_ZoomMode%1").arg(option % 2) })
                Click(d, name);
            if (option == 1) {
                for (const char* name : { "chk_StartupWindow", "chk_CrossHairsCursor", "chk_CursorLine",
                         "chk_CrossHairs", "chk_ToolTips", "chk_ClosePreview" })
                    Click(d, name);
            }
        }));
        EXPECT_EQ(Settings::StoredValue(Id::OnNewMeasuring), QString::number(option));
        EXPECT_EQ(Settings::StoredValue(Id::OnCloseMeasuring), QString::number(2 - option));
        EXPECT_EQ(Settings::StoredValue(Id::ZoomArea), QString::number(option % 2));
    }
    // Flipped once from their defaults, all on but the start-up window.
    for (const Id id :
        { Id::CursorCrossHairs, Id::CursorLine, Id::CrossHairs, Id::ToolTips, Id::ClosePreviewAfterPrint })
        EXPECT_EQ(Settings::StoredValue(id), "0") << Settings::DefinitionOf(id).name;
    EXPECT_EQ(Settings::StoredValue(Id::ShowStartupWindow), "1");
}

TEST_F(OptionsTest, CountFieldsTakeDigitsOnlyTextFieldsSelectAllWhenEnteredAndAStatisticEditIsReported)
{
    roots.SetUser(SettingsKey, "NavMediumStep", "2yyyy");
    frm_Options dialog;
    EXPECT_TRUE(RunDialog(dialog, "cmd_OK", [](frm_Options& d) {
        auto* count = Find<QLineEdit>(d, "txt_MediumCount");
        Retype(count, "1a2 -b.3");
        QTest::keyClick(count, Qt::Key_Backspace);
        EXPECT_EQ(count->text(), "12");
        auto* unit = Find<QComboBox>(d, "cbo_MediumUnit");
        QTest::keyClick(unit, Qt::Key_Up);
        QTest::keyClick(unit, Qt::Key_Up);
        Retype(Find<QLineEdit>(d, "txt_SmallCount"), "");

        // Only an active window gives the focus to what is clicked.
        ASSERT_TRUE(QTest::qWaitForWindowActive(&d));
        auto* address = Find<QLineEdit>(d, "txt_Address0");
        address->setText("Muster GmbH");
        QTest::mouseClick(address, Qt::LeftButton, {}, QPoint(address->width() - 4, address->height() / 2));
        EXPECT_TRUE(QTest::qWaitFor([address] { return address->selectedText() == "Muster GmbH"; }, 1000));

        Find<QTabWidget>(d, "tabStrip")->setCurrentIndex(3);
        Find<QListWidget>(d, "lst_Indizes")->setCurrentRow(1);
        Retype(Find<QLineEdit>(d, "txt_FormatNumber"), "#,##0 X");
    }));
    EXPECT_EQ(Settings::StoredValue(Id::NavMediumStep), "12ww");
    EXPECT_EQ(Settings::StoredValue(Id::NavSmallStep), "h"); // an empty count is kept empty
    EXPECT_TRUE(dialog.IndizesChanged());
    EXPECT_EQ(Settings::StoredValue(Id::IndizesFormatNumber, "Average"), "#,##0 X");
    // The next run starts from what is stored: no edit, no change.
    EXPECT_TRUE(RunDialog(dialog, "cmd_OK"));
    EXPECT_FALSE(dialog.IndizesChanged());
}

} // namespace
