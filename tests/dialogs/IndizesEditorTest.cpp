// SPDX-License-Identifier: GPL-3.0-or-later
// The statistic format editor and its dialog, driven through their controls.
#include "IndizesEditor.h"
#include "IndizesRules.h"
#include "QtPrinters.h"
#include "RegistryKey.h"
#include "ResStrings.h"
#include "Settings.h"
#include "TempSettings.h"
#include "frm_Indizes.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <functional>

#include <gtest/gtest.h>

namespace {

using Settings::Id;

const QString IndizesKey = "Software\\HARVOLD\\Sorano\\Indizes\\";

// The editor's controls, found by their names.
struct Controls
{
    explicit Controls(QWidget& parent)
        : list(parent.findChild<QListWidget*>("lst_Indizes"))
        , number(parent.findChild<QLineEdit*>("txt_FormatNumber"))
        , useDate(parent.findChild<QCheckBox*>("chk_Date"))
        , date(parent.findChild<QLineEdit*>("txt_FormatDate"))
        , sample(parent.findChild<QLabel*>("lbl_Sample"))
    { }
    bool Complete() const { return list && number && useDate && date && sample; }

    QListWidget* list;
    QLineEdit* number;
    QCheckBox* useDate;
    QLineEdit* date;
    QLabel* sample;
};

// Empties a text field with the keyboard and types the text key by key.
void Retype(QLineEdit* edit, const QString& text, const std::function<void(const QString&)>& afterKey = {})
{
    edit->setFocus();
    QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(edit, Qt::Key_Delete);
    QString typed;
    for (const QChar c : text) {
        QTest::keyClicks(edit, QString(c));
        typed += c;
        if (afterKey)
            afterKey(typed);
    }
}

// Every value of one statistic as stored per user, empty for a missing one.
QStringList Stored(const QString& key)
{
    return { Settings::StoredValue(Id::IndizesShow, key), Settings::StoredValue(Id::IndizesFormatNumber, key),
        Settings::StoredValue(Id::IndizesUseDate, key), Settings::StoredValue(Id::IndizesFormatDate, key) };
}

class IndizesEditorTest : public ::testing::Test
{
protected:
    TempSettings roots;
};

TEST_F(IndizesEditorTest, ListsTheStatisticsWithTheirStoredCheckMarksAndShowsTheSelectedOne)
{
    roots.SetUser(IndizesKey + "Minimum", "Show", "0");
    roots.SetUser(IndizesKey + "Average", "FormatNumber", "0.0 X");
    roots.SetUser(IndizesKey + "Average", "UseDate", "0");
    roots.SetUser(IndizesKey + "Average", "FormatDate", "yyyy");
    IndizesEditor editor;
    editor.Load();
    Controls c(editor);
    ASSERT_TRUE(c.Complete());
    ASSERT_EQ(c.list->count(), 7);
    for (int row = 0; row < 7; ++row)
        EXPECT_EQ(c.list->item(row)->checkState(), row == 2 ? Qt::Unchecked : Qt::Checked) << row;

    EXPECT_EQ(c.list->currentRow(), 0);
    EXPECT_EQ(c.number->text(), "0.00 X");
    EXPECT_TRUE(c.useDate->isChecked() && c.date->isEnabled());

    c.list->setCurrentRow(1);
    EXPECT_EQ(c.number->text(), "0.0 X");
    EXPECT_FALSE(c.useDate->isChecked() || c.date->isEnabled());
    EXPECT_EQ(c.date->text(), "yyyy");
    EXPECT_EQ(c.sample->text(), IndizesRules::Sample("Average", { true, "0.0 X", false, "yyyy" }));
    EXPECT_FALSE(editor.Changed());
}

TEST_F(IndizesEditorTest, SampleFollowsEveryKeystrokeAndTheDateCheckBoxAndChangedFollowsTheEdits)
{
    IndizesEditor editor;
    editor.Load();
    editor.show();
    Controls c(editor);
    ASSERT_TRUE(c.Complete());
    c.list->setCurrentRow(3);

    Retype(c.number, "#,##0.000 X²", [&](const QString& typed) {
        EXPECT_EQ(c.sample->text(), IndizesRules::Sample("Streuung", { true, typed, true, "(dd.mm.yyyy hh:nn)" }))
            << typed.toStdString();
    });
    EXPECT_TRUE(editor.Changed());

    QTest::keyClick(c.useDate, Qt::Key_Space);
    EXPECT_FALSE(c.date->isEnabled());
    EXPECT_EQ(c.sample->text(), IndizesRules::Sample("Streuung", { true, "#,##0.000 X²", false, "" }));
    QTest::keyClick(c.useDate, Qt::Key_Space);
    ASSERT_TRUE(c.date->isEnabled());

    Retype(c.date, "hh:nn", [&](const QString& typed) {
        EXPECT_EQ(c.sample->text(), IndizesRules::Sample("Streuung", { true, "#,##0.000 X²", true, typed }))
            << typed.toStdString();
    });
    // A broken mask shows in the sample as it will in the view.
    Retype(c.number, "0 \"X");
    EXPECT_EQ(c.sample->text(), IndizesRules::Sample("Streuung", { true, "0 \"X", true, "hh:nn" }));

    // Loading again forgets the edits; Changed then follows marks and texts back to what was loaded.
    editor.Load();
    EXPECT_FALSE(editor.Changed());
    EXPECT_EQ(c.list->currentRow(), 0);
    c.list->setCurrentRow(4);
    QTest::keyClick(c.list, Qt::Key_Space);
    EXPECT_TRUE(editor.Changed());
    QTest::keyClick(c.list, Qt::Key_Space);
    EXPECT_FALSE(editor.Changed());

    Retype(c.number, "0.00 X ");
    EXPECT_TRUE(editor.Changed());
    QTest::keyClick(c.number, Qt::Key_Backspace);
    EXPECT_FALSE(editor.Changed());
}

// Works the dialog while it is up; closes it with Cancel should the work not close it.
bool RunDialog(frm_Indizes& dialog, const std::function<void(Controls&, QPushButton*, QPushButton*)>& work)
{
    QTimer::singleShot(0, &dialog, [&] {
        Controls c(dialog);
        auto* ok = dialog.findChild<QPushButton*>("cmd_OK");
        auto* cancel = dialog.findChild<QPushButton*>("cmd_Cancel");
        EXPECT_TRUE(c.Complete() && ok && cancel);
        if (c.Complete() && ok && cancel)
            work(c, ok, cancel);
        if (dialog.isVisible())
            dialog.reject();
    });
    return dialog.ShowMe();
}

TEST_F(IndizesEditorTest, OkWritesEveryStatisticWithExactlyTheEditedValues)
{
    roots.SetUser(IndizesKey + "Sum", "FormatDate", "dd.mm.");
    roots.SetUser(IndizesKey + "Selection", "UseDate", "0");
    frm_Indizes dialog;
    const bool accepted = RunDialog(dialog, [](Controls& c, QPushButton* ok, QPushButton*) {
        c.list->setCurrentRow(0);
        QTest::keyClick(c.list, Qt::Key_Space);
        c.list->setCurrentRow(4);
        Retype(c.number, "#,##0 X");
        c.list->setCurrentRow(5);
        QTest::keyClick(c.useDate, Qt::Key_Space);
        c.list->setCurrentRow(3);
        Retype(c.date, "");
        QTest::mouseClick(ok, Qt::LeftButton);
    });
    EXPECT_TRUE(accepted);

    const QString standardDate = "(dd.mm.yyyy hh:nn)";
    EXPECT_EQ(Stored("Maximum"), QStringList({ "0", "0.00 X", "1", standardDate }));
    EXPECT_EQ(Stored("Average"), QStringList({ "1", "0.00 X", "1", standardDate }));
    EXPECT_EQ(Stored("Minimum"), QStringList({ "1", "0.00 X", "1", standardDate }));
    EXPECT_EQ(Stored("Streuung"), QStringList({ "1", "0.00 X²", "1", "" }));
    EXPECT_EQ(Stored("Sum"), QStringList({ "1", "#,##0 X", "1", "dd.mm." }));
    EXPECT_EQ(Stored("Count"), QStringList({ "1", "0 \"" + GetResString(356) + "\"", "0", standardDate }));
    EXPECT_EQ(Stored("Selection"), QStringList({ "1", "0.00 X", "0", standardDate }));
}

TEST_F(IndizesEditorTest, OkWithoutAnEditStillWritesTheDefaultsAndCancelWritesNothing)
{
    roots.SetUser(IndizesKey + "Count", "Show", "0");
    {
        frm_Indizes dialog;
        const bool accepted = RunDialog(dialog, [](Controls& c, QPushButton*, QPushButton* cancel) {
            c.list->setCurrentRow(5);
            QTest::keyClick(c.list, Qt::Key_Space);
            Retype(c.number, "0");
            QTest::mouseClick(cancel, Qt::LeftButton);
        });
        EXPECT_FALSE(accepted);
        for (const IndizesEntry& entry : IndizesRules::Entries()) {
            const QString key = QString::fromLatin1(entry.key);
            const QStringList expected
                = key == "Count" ? QStringList({ "0", "", "", "" }) : QStringList({ "", "", "", "" });
            EXPECT_EQ(Stored(key), expected) << entry.key;
        }
    }
    frm_Indizes dialog;
    EXPECT_TRUE(
        RunDialog(dialog, [](Controls&, QPushButton* ok, QPushButton*) { QTest::mouseClick(ok, Qt::LeftButton); }));
    EXPECT_EQ(Stored("Count"), QStringList({ "0", "0 \"" + GetResString(356) + "\"", "1", "(dd.mm.yyyy hh:nn)" }));
    EXPECT_EQ(Stored("Maximum"), QStringList({ "1", "0.00 X", "1", "(dd.mm.yyyy hh:nn)" }));
}

} // namespace
