// SPDX-License-Identifier: GPL-3.0-or-later
// Batch and serial runs over template views opened hidden from files: the logger exchange,
// the period, resolution and address of a batch, cursors on the extremes, the pages of a
// serial report with their windows, the cut of its first and last page, manual axes, and the
// close of the views.
#include "BatchRun.h"
#include "BatchHost.h"
#include "Curve.h"
#include "DataMatrix.h"
#include "MeasuringFixture.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cmath>
#include <memory>
#include <optional>
#include <vector>

namespace {

using measuring_fixture::D;

// Two loggers "11" and "12" on module address 1, each with the channels 1 (kW), 2 (kvar),
// 3 and 4 (kW) named "<kind> <logger>", one sample every 15 minutes through January 2024.
class TwoLoggers : public QObject, public DataModuleInterface
{
    Q_OBJECT
    Q_INTERFACES(DataModuleInterface)

public:
    void SetMessageHandler(MessageHandlerInterface*) override { }
    bool HasConfig() override { return false; }
    void GetFirstDate(const QString&, double& date) override { date = D(2024, 1, 1); }
    void GetLastDate(const QString&, double& date) override { date = D(2024, 2, 1); }
    qint32 SelfCheck(qint32& status) override { return status = 1; }
    qint32 Initialize(const QString&, qint32& status) override { return status = 1; }
    qint32 GetChannelOverview(ChannelCollection& channels, qint32& status) override
    {
        const char* kinds[] = { "Power", "Reactive", "Reserve", "Spare" };
        const char* units[] = { "kW", "kvar", "kW", "kW" };
        for (const QString logger : { "11", "12" })
            for (int c = 0; c < 4; ++c) {
                auto channel = std::make_shared<DataMatrix>();
                const QString id = logger + "#" + QString::number(c + 1);
                channel->SetChannelID(id);
                channel->SetChannelName(QString(kinds[c]) + " " + logger);
                channel->SetUnit(units[c]);
                channel->SetDataType(3);
                channels.Add(channel, id);
            }
        return status = 1;
    }
    qint32 GetChannelStructure(QStringList&, QStringList&, qint32& status) override { return status = 0; }
    qint32 GetData(const QString& list, ChannelCollection& channels, double from, double to, qint32& status) override
    {
        const double step = 900.0 / 86400.0;
        const double start = std::max(from, D(2024, 1, 1));
        const double end = std::min(to, D(2024, 2, 1));
        const qsizetype rows = end > start ? qsizetype(std::floor((end - start) / step + 1e-9)) : 0;
        for (const QString& id : list.split(';', Qt::SkipEmptyParts)) {
            const double phase = id.section('#', 1).toDouble() + (id.startsWith("12") ? 0.5 : 0.0);
            auto block = MatrixBlock::Create(rows, 2);
            for (qsizetype i = 0; i < rows; ++i) {
                block->At(i, 0) = start + double(i) * step;
                block->At(i, 1) = 50.0 + 40.0 * std::sin(block->At(i, 0) * 9.7 + phase) + phase;
            }
            channels.Channel(id)->SetDataBlock(block);
        }
        channels.AddText("GEN;900");
        return status = 1;
    }
    void ShowConfig() override { }
};

// Opens templates as the command line does and records which were handed back, keeping them
// to be looked at.
class TemplateHost : public WindowlessTemplates
{
public:
    using WindowlessTemplates::WindowlessTemplates;
    Measuring* OpenTemplate(const QString& path) override
    {
        Measuring* view = WindowlessTemplates::OpenTemplate(path);
        if (view) {
            view->Window()->resize(1000, 600);
            ++opens;
        }
        return view;
    }
    void CloseTemplate(Measuring& view) override { closed.push_back(&view); }

    std::vector<Measuring*> closed;
    int opens = 0;
};

class SummedProgress : public BatchProgress
{
public:
    void SetStep(float value) override { step = value; }
    void UpdateStatus() override { total += step; }
    float step = 0.0f;
    float total = 0.0f;
};

struct TemplateCurve
{
    QString name; // empty: the curve takes its channel's name
    QStringList channels;
};

class BatchRunTest : public measuring_fixture::MeasuringFixture
{
protected:
    void SetUp() override
    {
        MeasuringFixture::SetUp();
        auto box = std::make_shared<ModuleBox>();
        box->SetName("Loggers");
        box->SetAddress("1");
        box->SetDataModule(std::make_unique<TwoLoggers>());
        ASSERT_EQ(box->GetChannelList(nullptr), 1);
        host.modules.Add(box);
    }
    void TearDown() override
    {
        templates.reset();
        MeasuringFixture::TearDown();
    }
    // A template view file of 15-minute steps over 2 January 2024.
    QString Write(const QString& file, const std::vector<TemplateCurve>& curves)
    {
        QString xml = "<?xml version=\"1.0\"?>\n<sorano-measuring>\n<name>" + file
            + "</name>\n<intervall-unit>n</intervall-unit>\n<intervall-count>15</intervall-count>\n"
              "<viewmode>chart</viewmode>\n<startdate>2024-01-02 00:00:00</startdate>\n"
              "<enddate>2024-01-03 00:00:00</enddate>\n<modules><module>1</module></modules>\n"
              "<customer-address><name>Old</name></customer-address>\n<curves>\n";
        for (const TemplateCurve& curve : curves) {
            xml += "<curve>" + (curve.name.isEmpty() ? QString() : "<name>" + curve.name + "</name>")
                + "<visible>true</visible><channels>";
            for (const QString& channel : curve.channels)
                xml += "<channel>" + channel + "</channel>";
            xml += "</channels></curve>\n";
        }
        xml += "</curves>\n</sorano-measuring>\n";
        const QString path = dir.filePath(file);
        QFile out(path);
        EXPECT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(xml.toUtf8());
        return path;
    }
    QString Serial(int curves)
    {
        std::vector<TemplateCurve> list;
        for (int c = 1; c <= curves; ++c)
            list.push_back({ QString(), { "1$11#" + QString::number(c) } });
        return Write(QString("LGA_%1.mtb").arg(curves), list);
    }
    static BatchRunSettings Settings(QStringList channels, double start, double end)
    {
        BatchRunSettings settings;
        settings.name = "Run";
        settings.channels = std::move(channels);
        settings.start = start;
        settings.end = end;
        settings.intervalUnit = "n";
        settings.intervalCount = 15;
        return settings;
    }

    QTemporaryDir dir;
    std::optional<TemplateHost> templates { std::in_place, host };
};

// The times and values of the curve's result with a value.
std::vector<std::pair<double, double>> Values(const Curve& curve)
{
    std::vector<std::pair<double, double>> values;
    const MatrixBlockPtr block = curve.Result() ? curve.Result()->DataBlock() : nullptr;
    for (qsizetype row = 0; block && row < block->Rows(); ++row)
        if (block->At(row, 1) != block->NoValue())
            values.emplace_back(block->At(row, 0), block->At(row, 1));
    return values;
}

TEST_F(BatchRunTest, BatchBindsEveryTemplateToTheLoggerOfTheRun)
{
    const QString first = Write("first.mtb", { { "", { "1$11#1" } }, { "Feed", { "1$11#2", "1$11#3" } } });
    const QString second = Write("second.mtb", { { "", { "1$11#4" } }, { "Own", { "1$11#1" } } });
    const QString missing = dir.filePath("missing.mtb");
    BatchRunSettings settings = Settings({ "1$12#1" }, D(2024, 1, 10, 6), D(2024, 1, 12));
    settings.intervalUnit = "h";
    settings.intervalCount = 2;
    settings.customer = { "Mill", "Ann", "Road 1", "12345 Town", "Note" };

    for (const bool withMissing : { false, true }) {
        SCOPED_TRACE(withMissing);
        std::vector<BatchTemplate> list { { first, "One" }, { second, "Two" } };
        if (withMissing)
            list.insert(list.begin() + 1, { missing, "Gone" });
        SummedProgress progress;
        const std::vector<Measuring*> views = BatchRun::PrepareBatch(*templates, list, settings, &progress);
        ASSERT_EQ(views.size(), 2u);
        if (!withMissing) {
            EXPECT_NEAR(progress.total, 100.0f, 0.01f);
        }
        EXPECT_EQ(views[0]->Name(), "One");
        EXPECT_EQ(views[1]->Name(), "Two");
        for (Measuring* view : views) {
            EXPECT_DOUBLE_EQ(view->StartDate(), settings.start);
            EXPECT_DOUBLE_EQ(view->EndDate(), settings.end);
            EXPECT_EQ(view->IntervalUnit(), "h");
            EXPECT_EQ(view->IntervalCount(), 2);
            const MeasuringFile::Address& address = view->CustomerAddress();
            EXPECT_EQ(QStringList({ address.Name, address.FirstName, address.Street, address.Place, address.Memo }),
                QStringList(settings.customer.begin(), settings.customer.end()));
            for (const auto& curve : view->Curves())
                for (const CurveChannel& channel : curve->Channels())
                    EXPECT_TRUE(channel.matrix->ChannelID().startsWith("12#"))
                        << channel.matrix->ChannelID().toStdString();
        }
        ASSERT_EQ(views[0]->Curves().size(), 2u);
        EXPECT_EQ(views[0]->Curves()[0]->Name(), "Power 12");
        EXPECT_EQ(views[0]->Curves()[1]->Name(), QString("Feed"));
        EXPECT_EQ(views[0]->Curves()[1]->Channels().size(), 2u);
        ASSERT_EQ(views[1]->Curves().size(), 2u);
        EXPECT_EQ(views[1]->Curves()[0]->Name(), "Spare 12");
        EXPECT_EQ(views[1]->Curves()[1]->Name(), QString("Own"));
    }
    const int before = templates->opens;
    EXPECT_TRUE(
        BatchRun::PrepareBatch(*templates, { { first, "One" } }, Settings({}, D(2024, 1, 10), D(2024, 1, 11)), nullptr)
            .empty());
    EXPECT_EQ(templates->opens, before);
}

TEST_F(BatchRunTest, CursorsMarkTheGreatestAndSmallestValueAndCloseTakesThemOff)
{
    const QString path = Write("two.mtb", { { "", { "1$11#1" } }, { "", { "1$11#2" } } });
    for (const auto& [minimum, maximum] :
        { std::pair(true, true), std::pair(true, false), std::pair(false, true), std::pair(false, false) }) {
        SCOPED_TRACE(testing::Message() << minimum << maximum);
        BatchRunSettings settings = Settings({ "1$12#1" }, D(2024, 1, 10), D(2024, 1, 11));
        settings.minCursor = minimum;
        settings.maxCursor = maximum;
        std::vector<Measuring*> views = BatchRun::PrepareBatch(*templates, { { path, "Two" } }, settings, nullptr);
        ASSERT_EQ(views.size(), 1u);
        // The first greatest and smallest value over the curves in their order.
        struct Extreme
        {
            const Curve* curve = nullptr;
            qsizetype row = -1;
            double value = 0.0;
        } greatest, smallest;
        size_t cursors = 0;
        for (const auto& curve : views[0]->Curves()) {
            cursors += curve->Cursors().size();
            const MatrixBlock& block = *curve->Result()->DataBlock();
            for (qsizetype row = 0; row < block.Rows(); ++row) {
                const double value = block.At(row, 1);
                if (value == block.NoValue())
                    continue;
                if (!greatest.curve || value > greatest.value)
                    greatest = { curve.get(), row, value };
                if (!smallest.curve || value < smallest.value)
                    smallest = { curve.get(), row, value };
            }
        }
        ASSERT_NE(greatest.curve, nullptr);
        EXPECT_EQ(cursors, size_t(minimum) + size_t(maximum));
        for (const auto& [extreme, wanted] : { std::pair(greatest, maximum), std::pair(smallest, minimum) }) {
            const auto& marks = extreme.curve->Cursors();
            const bool marked = std::any_of(
                marks.begin(), marks.end(), [&](const auto& cursor) { return cursor->Index() == extreme.row; });
            EXPECT_EQ(marked, wanted) << extreme.value;
        }
        templates->closed.clear();
        const std::vector<Measuring*> handed = views;
        BatchRun::Close(*templates, views);
        EXPECT_TRUE(views.empty());
        EXPECT_EQ(templates->closed, handed);
        for (const auto& curve : handed[0]->Curves())
            EXPECT_TRUE(curve->Cursors().empty());
    }
}

TEST_F(BatchRunTest, SerialPagesFollowOneAnother)
{
    const QString path = Serial(3);
    const QStringList four { "1$12#1", "1$12#2", "1$12#3", "1$12#4" };
    struct Case
    {
        double start, end;
        bool perDay;
        qint32 valuesPerPage;
        qint32 pages;
    };
    for (const Case& c : { Case { D(2024, 1, 8, 6), D(2024, 1, 8, 18), true, 0, 1 },
             Case { D(2024, 1, 8), D(2024, 1, 15), true, 0, 7 }, Case { D(2024, 1, 8), D(2024, 1, 15, 12), true, 0, 8 },
             Case { D(2024, 1, 8), D(2024, 1, 9), false, 24, 4 }, Case { D(2024, 1, 8), D(2024, 1, 9), false, 25, 4 },
             Case { D(2024, 1, 8), D(2024, 1, 9), false, 96, 1 } }) {
        SCOPED_TRACE(testing::Message() << c.perDay << " " << c.valuesPerPage << " " << c.pages);
        const BatchRunSettings settings = Settings(four, c.start, c.end);
        SerialSettings serial;
        serial.perDay = c.perDay;
        serial.valuesPerPage = c.valuesPerPage;
        EXPECT_EQ(BatchRun::SerialPageCount(settings, serial, "n", 15), c.pages);
        SummedProgress progress;
        const std::vector<Measuring*> views = BatchRun::PrepareSerial(*templates, path, settings, serial, &progress);
        ASSERT_EQ(qint32(views.size()), c.pages);
        EXPECT_NEAR(progress.total, 100.0f, 0.01f);
        const double span = c.perDay ? 1.0 : c.valuesPerPage * 15.0 / 1440.0;
        for (size_t page = 0; page < views.size(); ++page) {
            const double start = page == 0 ? (c.perDay ? std::floor(c.start) : c.start) : views[page - 1]->EndDate();
            EXPECT_NEAR(views[page]->StartDate(), start, 1e-9) << page;
            EXPECT_NEAR(views[page]->EndDate() - views[page]->StartDate(), span, 1e-9) << page;
            ASSERT_EQ(views[page]->Curves().size(), 3u);
            for (int c = 0; c < 3; ++c)
                EXPECT_EQ(views[page]->Curves()[size_t(c)]->Channels().front().matrix->ChannelID(), four[c].mid(2));
        }
    }
}

TEST_F(BatchRunTest, SerialPagesAreCutToThePeriod)
{
    const double start = D(2024, 1, 8, 6);
    const double end = D(2024, 1, 10, 12);
    const std::vector<Measuring*> views = BatchRun::PrepareSerial(
        *templates, Serial(2), Settings({ "1$12#1", "1$12#2" }, start, end), SerialSettings(), nullptr);
    ASSERT_EQ(views.size(), 3u);
    for (size_t page = 0; page < views.size(); ++page)
        for (const auto& curve : views[page]->Curves()) {
            SCOPED_TRACE(testing::Message() << page << " " << curve->Name().toStdString());
            const auto values = Values(*curve);
            ASSERT_FALSE(values.empty());
            const double from = std::max(start, views[page]->StartDate());
            const double to = std::min(end, views[page]->EndDate());
            EXPECT_GE(values.front().first, from - 1e-9);
            EXPECT_LT(values.back().first, to - 1e-9);
            // A value in the first and the last quarter hour of what the page shows.
            EXPECT_LT(values.front().first, from + 15.0 / 1440.0 + 1e-9);
            EXPECT_GE(values.back().first, to - 30.0 / 1440.0 - 1e-9);
        }
}

TEST_F(BatchRunTest, SerialAxesByUnitAndManualBorders)
{
    const QString path = Serial(2);
    struct Case
    {
        QStringList channels;
        bool twoAxes;
        bool manual;
        bool right;
    };
    for (const Case& c :
        { Case { { "1$12#1", "1$12#2" }, false, true, true }, Case { { "1$12#1", "1$12#3" }, false, true, false },
            Case { { "1$12#1", "1$12#3" }, true, true, true }, Case { { "1$12#1", "1$12#2" }, false, false, true } }) {
        SCOPED_TRACE(testing::Message() << c.channels.join(",").toStdString() << " " << c.twoAxes << c.manual);
        SerialSettings serial;
        serial.twoAxes = c.twoAxes;
        serial.manualAxes = c.manual;
        serial.borders = { -10.0, 250.0, 5.0, 400.0 };
        const std::vector<Measuring*> views = BatchRun::PrepareSerial(
            *templates, path, Settings(c.channels, D(2024, 1, 8), D(2024, 1, 9)), serial, nullptr);
        ASSERT_EQ(views.size(), 1u);
        ASSERT_EQ(views[0]->Curves().size(), 2u);
        EXPECT_EQ(views[0]->Curves()[0]->YAxis(), 0);
        EXPECT_EQ(views[0]->Curves()[1]->YAxis(), c.right ? 1 : 0);
        ChartAdapter& chart = *views[0]->Chart();
        EXPECT_EQ(chart.AxisMin(ChartAxis::Y1) == -10.0 && chart.AxisMax(ChartAxis::Y1) == 250.0, c.manual);
        EXPECT_EQ(chart.AxisMin(ChartAxis::Y2) == 5.0 && chart.AxisMax(ChartAxis::Y2) == 400.0, c.manual && c.right);
    }
}

} // namespace

#include "BatchRunTest.moc"
