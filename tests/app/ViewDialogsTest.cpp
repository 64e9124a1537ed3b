// SPDX-License-Identifier: GPL-3.0-or-later
// The view dialogs end to end on the demo database: a sum built in the curve dialog exports as
// the sum of its channels, and the sum, a renamed curve and a new title survive saving and reopening.
#include "ChannelTree.h"
#include "CommandLine.h"
#include "DemoFixture.h"
#include "Measuring.h"
#include "MeasuringExport.h"
#include "Project.h"
#include "frm_CurveProperties.h"
#include "frm_Curves.h"
#include "frm_MeasuringProperties.h"

#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace {

// What the table export writes for a step without a value.
bool IsGap(double value)
{
    return value <= -1e299;
}

struct Table
{
    QStringList header;
    QStringList times;
    std::vector<std::vector<double>> columns; // by column after the time stamp
};

Table ReadTable(const QString& path)
{
    Table table;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return table;
    QStringList lines = QString::fromUtf8(file.readAll()).split("\r\n", Qt::SkipEmptyParts);
    if (lines.isEmpty())
        return table;
    table.header = lines.takeFirst().split(',');
    table.columns.resize(size_t(std::max<qsizetype>(table.header.size() - 1, 0)));
    for (const QString& line : lines) {
        const QStringList cells = line.split(',');
        table.times << cells.value(0);
        for (size_t c = 0; c < table.columns.size(); ++c) {
            bool number = false;
            const double value = cells.value(qsizetype(c) + 1).toDouble(&number);
            table.columns[c].push_back(number ? value : std::nan(""));
        }
    }
    return table;
}

class ViewDialogsTest : public DemoFixture
{
protected:
    void SetUp() override
    {
        DemoFixture::SetUp();
        roots.SetUser(KeySettings, "OnCloseMeasuring", "1"); // close without asking
        ASSERT_TRUE(QFile::copy(Examples + "/Hauptzaehler.sor", out.filePath("sum.sor")));
        // The example with its power channel exchanged for the office building's.
        QFile example(Examples + "/Hauptzaehler.sor");
        ASSERT_TRUE(example.open(QIODevice::ReadOnly));
        QByteArray text = example.readAll();
        ASSERT_EQ(text.count("<channel>1$111</channel>"), 1);
        text.replace("<channel>1$111</channel>", "<channel>1$141</channel>");
        QFile office(out.filePath("office.sor"));
        ASSERT_TRUE(office.open(QIODevice::WriteOnly));
        office.write(text);
    }

    // Opens a dialog modally through `open` and does the work on it while it is up; a dialog
    // the work leaves open is cancelled. The status of the dialog.
    template<typename Dialog>
    qint32 RunModal(const std::function<qint32()>& open, const std::function<void(Dialog&)>& work)
    {
        bool ran = false;
        QTimer::singleShot(0, qApp, [&] {
            auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
            ran = dialog != nullptr;
            if (!dialog)
                return;
            work(*dialog);
            if (dialog->isVisible())
                dialog->reject();
        });
        const qint32 status = open();
        EXPECT_TRUE(ran) << "the dialog came up";
        return status;
    }

    template<typename Button> static void Click(QWidget& dialog, const char* name)
    {
        auto* button = dialog.findChild<Button*>(name);
        ASSERT_NE(button, nullptr) << name;
        ASSERT_TRUE(button->isEnabled()) << name;
        QTest::mouseClick(button, Qt::LeftButton);
    }
    static void Type(QLineEdit* edit, const QString& text)
    {
        ASSERT_NE(edit, nullptr);
        edit->setFocus();
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_Backspace);
        QTest::keyClicks(edit, text);
    }

    void Export(const QString& view, const QString& csv)
    {
        const CommandLine command = ParseCommandLine({ "--export-csv", csv, view });
        ASSERT_TRUE(command.error.isEmpty()) << command.error.toStdString();
        Project project;
        project.LoadDataModules();
        QString error;
        ASSERT_EQ(RunExport(command.job, project, error), ExitCode::Ok) << error.toStdString();
    }
};

TEST_F(ViewDialogsTest, ASumMadeInTheCurveDialogExportsAsTheSumAndComesBackWithTheLookAfterReopening)
{
    const QString saved = out.filePath("sum.sor");
    {
        Project project;
        ASSERT_EQ(project.Init(), 0);
        Measuring* view = project.OpenMeasuring(saved, false);
        ASSERT_TRUE(view);

        const qint32 curves = RunModal<frm_Curves>([&] { return view->ManageCurves(); },
            [](frm_Curves& dialog) {
                auto* list = dialog.findChild<QTreeWidget*>("trv_Curves");
                auto* channels = dialog.findChild<QTreeWidget*>("trv_Channels");
                ASSERT_TRUE(list && channels);
                const auto found = list->findItems("1$111", Qt::MatchExactly, 0);
                ASSERT_EQ(found.size(), 1);
                list->setCurrentItem(found.front());
                QTreeWidgetItem* office = nullptr;
                for (QTreeWidgetItem* item : ChannelTree::KeyIndex(channels))
                    if (ChannelTree::ChannelTagFromKey(ChannelTree::Key(item)) == "1$141")
                        office = item;
                ASSERT_NE(office, nullptr);
                channels->setCurrentItem(office);
                QTest::keyClick(channels, Qt::Key_Space);
                Click<QPushButton>(dialog, "cmd_Join");
                Click<QPushButton>(dialog, "cmd_OK");
            });
        ASSERT_EQ(curves, 1);
        ASSERT_TRUE(view->FindCurve("1$111"));
        ASSERT_EQ(view->FindCurve("1$111")->Channels().size(), 2u);

        Curve* powerFactor = view->FindCurve("1$113");
        ASSERT_TRUE(powerFactor);
        view->SetCurrentCurve(powerFactor);
        const qint32 renamed = RunModal<frm_CurveProperties>([&] { return view->EditCurveProperties(); },
            [](frm_CurveProperties& dialog) {
                Type(dialog.findChild<QLineEdit*>("txt_Name"), "Leistungsfaktor");
                Click<QPushButton>(dialog, "cmd_OK");
            });
        EXPECT_EQ(renamed, 1);
        EXPECT_EQ(powerFactor->Name(), "Leistungsfaktor");

        const qint32 titled = RunModal<frm_MeasuringProperties>([&] { return view->EditProperties(); },
            [](frm_MeasuringProperties& dialog) {
                dialog.Pages()->setCurrentIndex(1);
                Type(dialog.TitleEdit(), "Halle A und Verwaltung");
                QTest::mouseClick(dialog.OkButton(), Qt::LeftButton);
            });
        EXPECT_EQ(titled, 1);
        EXPECT_EQ(view->Graph().Title, "Halle A und Verwaltung");

        ASSERT_EQ(view->SaveFile(QString(), false), 0);
    }

    // Exported headless, the sum column is the sum of the two channels exported alone.
    Export(saved, out.filePath("sum.csv"));
    Export(Examples + "/Hauptzaehler.sor", out.filePath("hall.csv"));
    Export(out.filePath("office.sor"), out.filePath("office.csv"));
    const Table sum = ReadTable(out.filePath("sum.csv"));
    const Table hall = ReadTable(out.filePath("hall.csv"));
    const Table office = ReadTable(out.filePath("office.csv"));
    ASSERT_EQ(sum.columns.size(), 2u);
    ASSERT_EQ(hall.columns.size(), 2u);
    ASSERT_EQ(office.columns.size(), 2u);
    EXPECT_EQ(sum.header.value(1), "\"Leistungsfaktor\"") << "the renamed curve heads its column";
    ASSERT_EQ(sum.times.size(), 7 * 96);
    ASSERT_EQ(hall.times, sum.times);
    ASSERT_EQ(office.times, sum.times);
    int gaps = 0;
    int drawing = 0; // rows where the office channel adds something
    for (size_t row = 0; row < size_t(sum.times.size()); ++row) {
        const double a = hall.columns[1][row];
        const double b = office.columns[1][row];
        const double total = sum.columns[1][row];
        ASSERT_FALSE(std::isnan(a) || std::isnan(b) || std::isnan(total)) << row;
        if (IsGap(a) || IsGap(b)) {
            ++gaps;
            EXPECT_TRUE(IsGap(total)) << "a gap in either channel is a gap in the sum at "
                                      << sum.times[qsizetype(row)].toStdString();
            continue;
        }
        ASSERT_FALSE(IsGap(total)) << sum.times[qsizetype(row)].toStdString();
        EXPECT_NEAR(total, a + b, 1e-9 * std::max(1.0, std::fabs(a + b))) << sum.times[qsizetype(row)].toStdString();
        if (b != 0)
            ++drawing;
    }
    EXPECT_LT(gaps, int(sum.times.size()) / 2) << "most rows are sums of values";
    EXPECT_GT(drawing, 0);

    // Reopened in a fresh program, the view has its sum, the curve's new name and the title.
    Project project;
    ASSERT_EQ(project.Init(), 0);
    Measuring* view = project.OpenMeasuring(saved, false);
    ASSERT_TRUE(view);
    const Curve* power = view->FindCurve("1$111");
    ASSERT_TRUE(power);
    ASSERT_EQ(power->Channels().size(), 2u);
    EXPECT_EQ(power->Channels()[0].key, "1$111");
    EXPECT_EQ(power->Channels()[1].key, "1$141");
    const Curve* powerFactor = view->FindCurve("1$113");
    ASSERT_TRUE(powerFactor);
    EXPECT_EQ(powerFactor->Name(), "Leistungsfaktor");
    EXPECT_EQ(view->Graph().Title, "Halle A und Verwaltung");
}

} // namespace
