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

// A table export: its header line, then each row's cells (the time stamp first).
struct Table
{
    QString header;
    std::vector<QStringList> rows;
};

Table ReadTable(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList lines = QString::fromUtf8(file.readAll()).split("\r\n", Qt::SkipEmptyParts);
    Table table { lines.isEmpty() ? QString() : lines.takeFirst(), {} };
    for (const QString& line : lines)
        table.rows.push_back(line.split(','));
    return table;
}

class ViewDialogsTest : public DemoFixture
{
protected:
    void SetUp() override
    {
        DemoFixture::SetUp();
        CopyMainView("sum.sor");
        // The example with its power channel exchanged for the office building's.
        QFile example(Examples + "/Hauptzaehler.sor");
        ASSERT_TRUE(example.open(QIODevice::ReadOnly));
        QByteArray text = example.readAll();
        ASSERT_EQ(text.count("<channel>1$11#1</channel>"), 1);
        text.replace("<channel>1$11#1</channel>", "<channel>1$14#1</channel>");
        QFile office(out.filePath("office.sor"));
        ASSERT_TRUE(office.open(QIODevice::WriteOnly));
        office.write(text);
    }

    // Runs `work` on the modal dialog `open` brings up, cancels it if left open; the dialog's status.
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
                const auto found = list->findItems("Wirkleistung", Qt::MatchExactly, 0);
                ASSERT_EQ(found.size(), 1);
                list->setCurrentItem(found.front());
                QTreeWidgetItem* office = nullptr;
                for (QTreeWidgetItem* item : ChannelTree::KeyIndex(channels))
                    if (ChannelTree::ChannelTagFromKey(ChannelTree::Key(item)) == "1$14#1")
                        office = item;
                ASSERT_NE(office, nullptr);
                channels->setCurrentItem(office);
                QTest::keyClick(channels, Qt::Key_Space);
                Click<QPushButton>(dialog, "cmd_Join");
                Click<QPushButton>(dialog, "cmd_OK");
            });
        ASSERT_EQ(curves, 1);

        Curve* powerFactor = view->FindCurve("1$11#3");
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
    EXPECT_TRUE(sum.header.startsWith("\"Zeitstempel\",\"Leistungsfaktor\",")) << "the renamed curve heads its column";
    ASSERT_EQ(sum.rows.size(), size_t(7 * 96));
    ASSERT_EQ(hall.rows.size(), sum.rows.size());
    ASSERT_EQ(office.rows.size(), sum.rows.size());
    int gaps = 0;
    int drawing = 0; // rows where the office channel adds something
    for (size_t row = 0; row < sum.rows.size(); ++row) {
        const QString at = sum.rows[row].value(0);
        ASSERT_EQ(hall.rows[row].value(0), at);
        ASSERT_EQ(office.rows[row].value(0), at);
        bool numbers[3] = {};
        const double a = hall.rows[row].value(2).toDouble(&numbers[0]);
        const double b = office.rows[row].value(2).toDouble(&numbers[1]);
        const double total = sum.rows[row].value(2).toDouble(&numbers[2]);
        ASSERT_TRUE(numbers[0] && numbers[1] && numbers[2]) << at.toStdString();
        if (IsGap(a) || IsGap(b)) {
            ++gaps;
            EXPECT_TRUE(IsGap(total)) << "a gap in either channel is a gap in the sum at " << at.toStdString();
            continue;
        }
        EXPECT_NEAR(total, a + b, 1e-9 * std::max(1.0, std::fabs(a + b))) << at.toStdString();
        drawing += b != 0;
    }
    EXPECT_LT(gaps, int(sum.rows.size()) / 2) << "most rows are sums of values";
    EXPECT_GT(drawing, 0);

    // Reopened in a fresh program, the view has its sum, the curve's new name and the title.
    Project project;
    ASSERT_EQ(project.Init(), 0);
    Measuring* view = project.OpenMeasuring(saved, false);
    ASSERT_TRUE(view);
    const Curve* power = view->FindCurve("1$11#1");
    ASSERT_TRUE(power);
    ASSERT_EQ(power->Channels().size(), 2u);
    EXPECT_EQ(power->Channels()[1].key, "1$14#1");
    const Curve* powerFactor = view->FindCurve("1$11#3");
    ASSERT_TRUE(powerFactor);
    EXPECT_EQ(powerFactor->Name(), "Leistungsfaktor");
    EXPECT_EQ(view->Graph().Title, "Halle A und Verwaltung");
}

} // namespace
