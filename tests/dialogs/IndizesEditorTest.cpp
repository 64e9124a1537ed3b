// SPDX-License-Identifier: GPL-3.0-or-later
// The statistic format rules, and their editor and dialog driven through the controls.
#include "IndizesEditor.h"
#include "IndizesRules.h"
#include "QtPrinters.h"
#include "RegistryKey.h"
#include "ResStrings.h"
#include "Settings.h"
#include "Statistic.h"
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
#include <tuple>

#include <gtest/gtest.h>

namespace {

using Settings::Id;

const QString IndizesKey = "Software\\HARVOLD\\Sorano\\Indizes\\";
const QString StandardDate = "(dd.mm.yyyy hh:nn)";

IndizesFormat Format(const QString& number, bool useDate = false, const QString& date = QString())
{
    return IndizesFormat { true, number, useDate, date };
}

// Every value of one statistic as stored per user, empty for a missing one.
QStringList Stored(const QString& key)
{
    return { Settings::StoredValue(Id::IndizesShow, key), Settings::StoredValue(Id::IndizesFormatNumber, key),
        Settings::StoredValue(Id::IndizesUseDate, key), Settings::StoredValue(Id::IndizesFormatDate, key) };
}

// Whatever a mask is, good or broken, the sample shows the value as a statistic of a view shows
// it after the mask has been stored: every "X" as the unit, the time stamp after a blank when it
// is used, and an empty mask as the default that the view reads for it.
TEST(IndizesRules, SampleShowsEveryMaskAsAViewShowsTheStoredStatistic)
{
    TempSettings roots;
    for (const IndizesFormat& format : { Format("0.00 X", true, StandardDate), Format("0 \"Werte\"", true, ""),
             Format("0.00 \"kW", false), Format("\"X", true, "\"dd"), Format("0.0.0,,X%", true, "zz hh:nn:ss \\"),
             Format("X;X;X", true, "General Date"), Format("", false), Format("E+X", true, "mmmm yyyy"),
             Format("0 x", true, "yyyy-mm-dd") }) {
        SCOPED_TRACE(format.formatNumber.toStdString() + " / " + format.formatDate.toStdString());
        IndizesRules::Write("Streuung", format);
        Statistic statistic;
        statistic.ReadFromRegistry(Hive::CurrentUser, IndizesKey + "Streuung", "0.00 X²");
        statistic.SetValueTime(IndizesRules::SampleDate());
        const QString sample = IndizesRules::Sample("Streuung", format);
        EXPECT_EQ(sample, statistic.FormatedValue(IndizesRules::SampleUnit(), IndizesRules::SampleValue));
        EXPECT_FALSE(sample.isEmpty());
    }
}

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
    for (qsizetype i = 0; i < text.size(); ++i) {
        QTest::keyClicks(edit, text.mid(i, 1));
        if (afterKey)
            afterKey(text.left(i + 1));
    }
}

// Flags count by their leading number, and only the per-user values count: a machine-wide one
// is no default for the user.
TEST(IndizesEditor, ShowsTheStoredStatisticsAndASampleThatFollowsEveryKeystrokeAndChangedFollowsTheEdits)
{
    TempSettings roots;
    roots.SetMachine(IndizesKey + "Maximum", "Show", "0");
    roots.SetUser(IndizesKey + "Minimum", "Show", "0abc");
    roots.SetUser(IndizesKey + "Average", "FormatNumber", "0.0 X");
    roots.SetUser(IndizesKey + "Average", "UseDate", "abc");
    roots.SetUser(IndizesKey + "Average", "FormatDate", "yyyy");
    IndizesEditor editor;
    editor.Load();
    editor.show();
    Controls c(editor);
    ASSERT_TRUE(c.Complete());
    ASSERT_EQ(c.list->count(), 7);
    for (int row = 0; row < 7; ++row)
        EXPECT_EQ(c.list->item(row)->checkState(), row == 2 ? Qt::Unchecked : Qt::Checked) << row;
    c.list->setCurrentRow(1);
    EXPECT_EQ(c.number->text(), "0.0 X");
    EXPECT_FALSE(c.useDate->isChecked() || c.date->isEnabled());
    EXPECT_EQ(c.date->text(), "yyyy");
    EXPECT_EQ(c.sample->text(), IndizesRules::Sample("Average", { true, "0.0 X", false, "yyyy" }));
    EXPECT_FALSE(editor.Changed());

    c.list->setCurrentRow(3);
    Retype(c.number, "#,##0.000 X²", [&](const QString& typed) {
        EXPECT_EQ(c.sample->text(), IndizesRules::Sample("Streuung", Format(typed, true, StandardDate)))
            << typed.toStdString();
    });
    EXPECT_TRUE(editor.Changed());
    QTest::keyClick(c.useDate, Qt::Key_Space);
    EXPECT_FALSE(c.date->isEnabled());
    EXPECT_EQ(c.sample->text(), IndizesRules::Sample("Streuung", Format("#,##0.000 X²")));
    QTest::keyClick(c.useDate, Qt::Key_Space);
    ASSERT_TRUE(c.date->isEnabled());
    Retype(c.date, "hh:nn", [&](const QString& typed) {
        EXPECT_EQ(c.sample->text(), IndizesRules::Sample("Streuung", Format("#,##0.000 X²", true, typed)))
            << typed.toStdString();
    });
    // A broken mask shows in the sample as it will in the view.
    Retype(c.number, "0 \"X");
    EXPECT_EQ(c.sample->text(), IndizesRules::Sample("Streuung", Format("0 \"X", true, "hh:nn")));

    // Loading again forgets the edits; Changed then follows a mark back to what was loaded.
    editor.Load();
    EXPECT_FALSE(editor.Changed());
    EXPECT_EQ(c.list->currentRow(), 0);
    c.list->setCurrentRow(4);
    QTest::keyClick(c.list, Qt::Key_Space);
    EXPECT_TRUE(editor.Changed());
    QTest::keyClick(c.list, Qt::Key_Space);
    EXPECT_FALSE(editor.Changed());
}

// Works the dialog while it is up, then closes it with the button; ShowMe's result.
bool RunDialog(const std::function<void(Controls&)>& work, const char* button)
{
    frm_Indizes dialog;
    QTimer::singleShot(0, &dialog, [&] {
        Controls c(dialog);
        EXPECT_TRUE(c.Complete());
        if (c.Complete())
            work(c);
        QTest::mouseClick(dialog.findChild<QPushButton*>(button), Qt::LeftButton);
    });
    return dialog.ShowMe();
}

// OK writes all seven statistics, edited or not, and the defaults of values never stored.
TEST(IndizesDialog, CancelWritesNothingAndOkWritesEveryStatisticWithExactlyTheEditedValues)
{
    TempSettings roots;
    roots.SetUser(IndizesKey + "Sum", "FormatDate", "dd.mm.");
    roots.SetUser(IndizesKey + "Selection", "UseDate", "0");
    const auto edit = [](Controls& c) {
        c.list->setCurrentRow(0);
        QTest::keyClick(c.list, Qt::Key_Space);
        c.list->setCurrentRow(4);
        Retype(c.number, "#,##0 X");
        c.list->setCurrentRow(5);
        QTest::keyClick(c.useDate, Qt::Key_Space);
        c.list->setCurrentRow(3);
        Retype(c.date, "");
    };
    const auto stored = [] {
        QList<QStringList> values;
        for (const IndizesEntry& entry : IndizesRules::Entries())
            values << Stored(entry.key);
        return values;
    };
    const QList<QStringList> before = stored();
    EXPECT_FALSE(RunDialog(edit, "cmd_Cancel"));
    EXPECT_EQ(stored(), before);

    EXPECT_TRUE(RunDialog(edit, "cmd_OK"));
    EXPECT_EQ(Stored("Maximum"), QStringList({ "0", "0.00 X", "1", StandardDate }));
    EXPECT_EQ(Stored("Average"), QStringList({ "1", "0.00 X", "1", StandardDate }));
    EXPECT_EQ(Stored("Minimum"), QStringList({ "1", "0.00 X", "1", StandardDate }));
    EXPECT_EQ(Stored("Streuung"), QStringList({ "1", "0.00 X²", "1", "" }));
    EXPECT_EQ(Stored("Sum"), QStringList({ "1", "#,##0 X", "1", "dd.mm." }));
    EXPECT_EQ(Stored("Count"), QStringList({ "1", "0 \"" + GetResString(356) + "\"", "0", StandardDate }));
    EXPECT_EQ(Stored("Selection"), QStringList({ "1", "0.00 X", "0", StandardDate }));
}

} // namespace
