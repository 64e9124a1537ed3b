// SPDX-License-Identifier: GPL-3.0-or-later
// The statistic format rules: list, defaults, storage, and the sample text of a format.
#include "IndizesRules.h"
#include "QtPrinters.h"
#include "RegistryKey.h"
#include "Settings.h"
#include "Statistic.h"
#include "TempSettings.h"

#include <gtest/gtest.h>

namespace {

const QString IndizesKey = "Software\\HARVOLD\\Sorano\\Indizes\\";

// The names of the values a key holds in one root.
QStringList ValueNames(Hive hive, const QString& path)
{
    RegistryKey key;
    QStringList names;
    if (key.OpenKey(hive, KeyRead, path) != RegistryStatus::Ok)
        return names;
    for (QString name = key.GetFirstValue(); !name.isEmpty(); name = key.GetNextValue())
        names << name;
    names.sort();
    return names;
}

IndizesFormat Format(const QString& number, bool useDate = false, const QString& date = QString())
{
    return IndizesFormat { true, number, useDate, date };
}

// The defaults of missing values are what the editor test sees written on OK without an edit.
TEST(IndizesRules, StoredValuesAreReadAsTheyStandAndFlagsByTheirLeadingNumber)
{
    TempSettings roots;
    roots.SetUser(IndizesKey + "Sum", "Show", "0");
    roots.SetUser(IndizesKey + "Sum", "FormatNumber", "#,##0 X");
    roots.SetUser(IndizesKey + "Sum", "UseDate", "0abc");
    roots.SetUser(IndizesKey + "Sum", "FormatDate", "yyyy");
    roots.SetUser(IndizesKey + "Minimum", "Show", "2x");
    roots.SetUser(IndizesKey + "Minimum", "UseDate", "abc");
    // Only the per-user values count: a machine-wide one is no default for the user.
    roots.SetMachine(IndizesKey + "Maximum", "Show", "0");

    EXPECT_EQ(IndizesRules::Read("Sum"), (IndizesFormat { false, "#,##0 X", false, "yyyy" }));
    const IndizesFormat minimum = IndizesRules::Read("Minimum");
    EXPECT_TRUE(minimum.show);
    EXPECT_FALSE(minimum.useDate);
    EXPECT_TRUE(IndizesRules::Read("Maximum").show);
}

TEST(IndizesRules, WriteStoresAllFourValuesPerUserAndReadsBackEqual)
{
    TempSettings roots;
    const IndizesFormat written { false, "0.0 \"k\"X", true, "" };
    IndizesRules::Write("Average", written);
    const QString key = IndizesKey + "Average";
    EXPECT_EQ(ValueNames(Hive::CurrentUser, key), QStringList({ "FormatDate", "FormatNumber", "Show", "UseDate" }));
    EXPECT_TRUE(ValueNames(Hive::LocalMachine, key).isEmpty());
    // The empty date mask reads back as the default one, as a view reads it.
    EXPECT_EQ(IndizesRules::Read("Average"), (IndizesFormat { false, "0.0 \"k\"X", true, "(dd.mm.yyyy hh:nn)" }));
}

TEST(IndizesRules, SampleShowsTheValueInTheMaskWithTheUnitAndTheTimeStamp)
{
    const Formatter german(QLocale(QLocale::German, QLocale::Germany));
    struct Case
    {
        QString key;
        IndizesFormat format;
        QString sample;
    };
    const Case cases[] = {
        { "Maximum", Format("0.00 X", true, "(dd.mm.yyyy hh:nn)"), "1234,57 kW (02.06.2025 14:30)" },
        { "Streuung", Format("0.000 X²"), "1234,568 kW²" },
        { "Sum", Format("#,##0.0 X"), "1.234,6 kW" },
        { "Sum", Format("X 0 X"), "kW 1235 kW" },
        { "Count", Format("0 \"Werte\""), "1235 Werte" },
        // Only the capital letter stands for the unit.
        { "Average", Format("0 x"), "1235 x" },
        { "Minimum", Format("0.0 X", true, "yyyy-mm-dd"), "1234,6 kW 2025-06-02" },
        // Empty masks show as the defaults, which is what the view reads for them.
        { "Minimum", Format("0 X", true, ""), "1235 kW (02.06.2025 14:30)" },
        { "Streuung", Format(""), "1234,57 kW²" },
        { "Count", Format(""), "1235 Werte" },
        // Without the date the date mask does not matter.
        { "Selection", Format("0 X", false, "yyyy"), "1235 kW" },
        // A mask without digit places shows its literals alone.
        { "Maximum", Format("X"), "kW" },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE((c.key + ": " + c.format.formatNumber + " / " + c.format.formatDate).toStdString());
        EXPECT_EQ(IndizesRules::Sample(c.key, c.format, german), c.sample);
    }
}

// Whatever a mask is, good or broken, the sample shows the value as a statistic of a view
// shows it after the mask has been stored.
TEST(IndizesRules, SampleShowsEveryMaskAsAViewShowsTheStoredStatistic)
{
    TempSettings roots;
    const IndizesFormat formats[] = {
        Format("0.00 X", true, "(dd.mm.yyyy hh:nn)"),
        Format("0 \"Werte\"", true, ""),
        Format("0.00 \"kW", false),
        Format("\"X", true, "\"dd"),
        Format("0.0.0,,X%", true, "zz hh:nn:ss \\"),
        Format("X;X;X", true, "General Date"),
        Format("", false),
        Format("E+X", true, "mmmm yyyy"),
    };
    for (const IndizesFormat& format : formats) {
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

} // namespace
