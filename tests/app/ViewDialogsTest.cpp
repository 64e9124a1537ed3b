// SPDX-License-Identifier: GPL-3.0-or-later
// The view dialogs end to end on the demo database: a sum built in the curve dialog exports as
// the sum of its channels, and the sum, a renamed curve and a new title survive saving and reopening.
#include "ChannelTree.h"
#include "DemoFixture.h"
#include "Measuring.h"
#include "frm_CurveProperties.h"
#include "frm_Curves.h"
#include "frm_MeasuringProperties.h"

#include <QPushButton>
#include <QTabWidget>
#include <QTreeWidget>

#include <cmath>

namespace {

// A table export's lines split into cells, the header line first.
std::vector<QStringList> ReadTable(const QString& path)
{
    std::vector<QStringList> rows;
    for (const QString& line : QString::fromUtf8(ReadAll(path)).split("\r\n", Qt::SkipEmptyParts))
        rows.push_back(line.split(','));
    return rows;
}

class ViewDialogsTest : public DemoFixture
{
protected:
    // Runs `work` on the modal dialog `open` brings up, rejects it if left open; the dialog's status.
    template<typename Dialog> qint32 RunModal(const std::function<qint32()>& open, std::function<void(Dialog&)> work)
    {
        Answer({ [work](QWidget* modal) {
            auto* dialog = qobject_cast<Dialog*>(modal);
            ASSERT_TRUE(dialog);
            work(*dialog);
            if (dialog->isVisible())
                dialog->reject();
        } });
        const qint32 status = open();
        EXPECT_TRUE(pending.empty()) << "the dialog came up";
        return status;
    }
    static void Click(QWidget& dialog, const char* name)
    {
        auto* button = dialog.findChild<QPushButton*>(name);
        ASSERT_TRUE(button && button->isEnabled()) << name;
        QTest::mouseClick(button, Qt::LeftButton);
    }
};

TEST_F(ViewDialogsTest, ASumMadeInTheCurveDialogExportsAsTheSumAndComesBackWithTheLookAfterReopening)
{
    CopyMainView("sum.sor");
    const QString saved = out.filePath("sum.sor");
    // The example with its power channel exchanged for the office building's.
    QByteArray text = ReadAll(saved);
    ASSERT_EQ(text.count("<channel>1$11#1</channel>"), 1);
    QFile office(out.filePath("office.sor"));
    ASSERT_TRUE(office.open(QIODevice::WriteOnly));
    office.write(text.replace("<channel>1$11#1</channel>", "<channel>1$14#1</channel>"));
    office.close();
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
                Click(dialog, "cmd_Join");
                Click(dialog, "cmd_OK");
            });
        ASSERT_EQ(curves, 1);

        Curve* powerFactor = view->FindCurve("1$11#3");
        ASSERT_TRUE(powerFactor);
        view->SetCurrentCurve(powerFactor);
        EXPECT_EQ(RunModal<frm_CurveProperties>([&] { return view->EditCurveProperties(); },
                      [](frm_CurveProperties& dialog) {
                          Type(dialog.findChild<QLineEdit*>("txt_Name"), "Leistungsfaktor");
                          Click(dialog, "cmd_OK");
                      }),
            1);
        EXPECT_EQ(powerFactor->Name(), "Leistungsfaktor");
        EXPECT_EQ(RunModal<frm_MeasuringProperties>([&] { return view->EditProperties(); },
                      [](frm_MeasuringProperties& dialog) {
                          dialog.Pages()->setCurrentIndex(1);
                          Type(dialog.TitleEdit(), "Halle A und Verwaltung");
                          QTest::mouseClick(dialog.OkButton(), Qt::LeftButton);
                      }),
            1);
        EXPECT_EQ(view->Graph().Title, "Halle A und Verwaltung");
        ASSERT_EQ(view->SaveFile(QString(), false), 0);
    }

    // Exported headless, the sum column is the sum of the two channels exported alone.
    ExportCsv({ saved }, out.filePath("sum.csv"));
    ExportCsv({ Examples + "/Hauptzaehler.sor" }, out.filePath("hall.csv"));
    ExportCsv({ out.filePath("office.sor") }, out.filePath("office.csv"));
    const std::vector<QStringList> sum = ReadTable(out.filePath("sum.csv"));
    const std::vector<QStringList> hall = ReadTable(out.filePath("hall.csv"));
    const std::vector<QStringList> other = ReadTable(out.filePath("office.csv"));
    ASSERT_EQ(sum.size(), size_t(1 + 7 * 96));
    ASSERT_TRUE(hall.size() == sum.size() && other.size() == sum.size());
    EXPECT_EQ(sum[0].value(1), "\"Leistungsfaktor\"") << "the renamed curve heads its column";
    const auto isGap = [](double value) { return value <= -1e299; };
    int gaps = 0;
    int drawing = 0; // rows where the office channel adds something
    for (size_t row = 1; row < sum.size(); ++row) {
        const QString at = sum[row].value(0);
        ASSERT_TRUE(hall[row].value(0) == at && other[row].value(0) == at) << at.toStdString();
        bool numbers[3] = {};
        const double a = hall[row].value(2).toDouble(&numbers[0]);
        const double b = other[row].value(2).toDouble(&numbers[1]);
        const double total = sum[row].value(2).toDouble(&numbers[2]);
        ASSERT_TRUE(numbers[0] && numbers[1] && numbers[2]) << at.toStdString();
        if (isGap(a) || isGap(b)) {
            ++gaps;
            EXPECT_TRUE(isGap(total)) << "a gap in either channel is a gap in the sum at " << at.toStdString();
            continue;
        }
        EXPECT_NEAR(total, a + b, 1e-9 * std::max(1.0, std::fabs(a + b))) << at.toStdString();
        drawing += b != 0;
    }
    EXPECT_LT(gaps, int(sum.size()) / 2) << "most rows are sums of values";
    EXPECT_GT(drawing, 0);

    // Reopened in a fresh program, the view has its sum, the curve's new name and the title.
    Project project;
    ASSERT_EQ(project.Init(), 0);
    Measuring* view = project.OpenMeasuring(saved, false);
    ASSERT_TRUE(view);
    const Curve* power = view->FindCurve("1$11#1");
    ASSERT_TRUE(power && power->Channels().size() == 2u);
    EXPECT_EQ(power->Channels()[1].key, "1$14#1");
    const Curve* powerFactor = view->FindCurve("1$11#3");
    ASSERT_TRUE(powerFactor);
    EXPECT_EQ(powerFactor->Name(), "Leistungsfaktor");
    EXPECT_EQ(view->Graph().Title, "Halle A und Verwaltung");
}

} // namespace
