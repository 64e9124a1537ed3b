// SPDX-License-Identifier: GPL-3.0-or-later
// The report batches and the serial report from the command line, run by the built program on
// the demo database: the pages they make, and their bad input.
#include "BatchStore.h"
#include "DemoFixture.h"

#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace {

qsizetype PdfPageCount(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    static const QRegularExpression page(QStringLiteral(R"(/Type\s*/Page\b(?!s))"));
    return QString::fromLatin1(file.readAll()).count(page);
}

class BatchPrintTest : public DemoFixture
{
protected:
    // A batch "Monat Halle" of two example views, in the batch folder the program uses.
    void MakeBatch()
    {
        BatchStore store(roots.Path() + "/data/HARVOLD/Sorano/batch");
        store.Load();
        const qsizetype index = store.Add("Monat Halle", "Wirkleistung und Rechenzentrum");
        ASSERT_EQ(index, 0);
        for (const char* view : { "Hauptzaehler", "Rechenzentrum-Tag" }) {
            const QString file = store.NewTemplateFile(index, view);
            ASSERT_TRUE(QFile::copy(Examples + '/' + view + ".sor", store.TemplatePath(file)));
            ASSERT_TRUE(store.AddTemplate(index, { file, view, file }));
        }
    }
};

TEST_F(BatchPrintTest, BatchAndSerialReportsPrintTheirPagesForTheChosenLogger)
{
    MakeBatch();
    const QString week { "2025-03-10" };
    struct Case
    {
        QStringList arguments;
        qsizetype pages;
    } cases[] = {
        // Every template once, for the logger of the key.
        { { "--print-batch", "Monat~Halle", "--source", "1$12#1", "--from", week, "--to", "2025-03-17", "--customer",
              "Stadtwerke Nord;Frau Petersen" },
            2 },
        // A page per day of the period, three channels on each.
        { { "--print-serial", "1$12#1,1$12#2,1$12#3", "--from", week, "--to", "2025-03-13" }, 3 },
        // 96 quarter hours of a day at 40 values a page.
        { { "--print-serial", "1$12#1", "--from", week, "--to", "2025-03-11", "--resolution", "15n", "--per-page", "40",
              "--axis", "0:500", "--fixed-line", "250" },
            3 },
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.arguments.join(' ').toStdString());
        const QString pdf = out.filePath("run.pdf");
        QFile::remove(pdf);
        QString error;
        EXPECT_EQ(RunProgram(test.arguments + QStringList { "--print-pdf", pdf }, error), 0) << error.toStdString();
        EXPECT_EQ(PdfPageCount(pdf), test.pages);
    }
}

TEST_F(BatchPrintTest, BadInputEndsWithAMessageAndAnExitCode)
{
    MakeBatch();
    const QString pdf = out.filePath("bad.pdf");
    const QStringList period { "--from", "2025-03-10", "--to", "2025-03-11", "--print-pdf", pdf };
    struct Case
    {
        QStringList arguments;
        int code;
        const char* message;
    } cases[] = {
        { QStringList { "--print-batch", "Jahresbericht", "--source", "1$12#1" } + period, 2,
            "there is no report batch \"Jahresbericht\"; there are \"Monat Halle\"" },
        { QStringList { "--print-batch", "Monat Halle" } + period, 2, "--print-batch needs --source" },
        { QStringList { "--print-batch", "Monat Halle", "--source", "12#1" } + period, 2, "is no channel key" },
        { QStringList { "--print-batch", "Monat Halle", "--source", "1$99#1" } + period, 3,
            "is not offered by its data module" },
        { QStringList { "--print-serial", "1$12#1", "--per-page", "0" } + period, 2, "--per-page: \"0\"" },
        { QStringList { "--print-serial", "1$12#1,1$12#2,1$12#3,1$12#4" } + period, 2, "three channel keys at most" },
        { QStringList { "--print-serial", "1$12#1", "--axis", "5:1" } + period, 2, "--axis: \"5:1\"" },
        { QStringList { "--per-page", "4", "--print-pdf", pdf, Examples + "/Hauptzaehler.sor" }, 2,
            "--per-page, --axis and --fixed-line need --print-serial" },
        { { "--print-serial", "1$12#1", "--from", "2025-03-10", "--print-pdf", pdf }, 2, "needs --from and --to" },
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.arguments.join(' ').toStdString());
        QString error;
        EXPECT_EQ(RunProgram(test.arguments, error), test.code);
        EXPECT_TRUE(error.contains(QLatin1String(test.message))) << error.toStdString();
        EXPECT_FALSE(QFile::exists(pdf));
    }
}

} // namespace
