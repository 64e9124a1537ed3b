// SPDX-License-Identifier: GPL-3.0-or-later
// Export of a view: a cancelled file dialog, and pictures and tables onto links and a pipe.
#include "MeasuringFixture.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTimer>

#include <sys/stat.h>

namespace {

using MeasuringExportTest = measuring_fixture::MeasuringFixture;

TEST_F(MeasuringExportTest, CancelledDialogWritesNothingAndFilesFollowLinksAndNeverWaitForAPipe)
{
    Open(900);
    ASSERT_TRUE(Add("3$L#1", "|1|"));
    Day();
    QTemporaryDir dir;
    measuring->SetDefaultPath(dir.path());
    for (const auto mode : { frm_GraphicView::ChartMode, frm_GraphicView::GridMode }) {
        measuring->SetViewMode(mode);
        // The dialog is closed as a user would, as soon as it is up.
        QTimer closer;
        QObject::connect(&closer, &QTimer::timeout, [] {
            if (QWidget* dialog = QApplication::activeModalWidget())
                dialog->close();
        });
        closer.start(10);
        EXPECT_EQ(measuring->ExportFile(), -1) << mode;
        EXPECT_TRUE(QDir(dir.path()).isEmpty()) << mode;
    }

    // Through a link the file it names is written; the link stays.
    for (const char* name : { "chart.png", "chart.svg", "chart.pdf", "table.csv" }) {
        const QString link = dir.filePath(QStringLiteral("link-") + name);
        ASSERT_TRUE(QFile::link(name, link));
        EXPECT_EQ(measuring->ExportTo(link), 0) << name;
        EXPECT_TRUE(QFileInfo(link).isSymLink()) << name;
        EXPECT_GT(QFileInfo(dir.filePath(name)).size(), 0) << name;
    }

    // A pipe that nobody reads fails at once instead of waiting, and stays a pipe.
    const QString pipe = dir.filePath("pipe.png");
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    EXPECT_NE(measuring->ExportTo(pipe), 0);
    const QFileInfo left(pipe);
    EXPECT_TRUE(left.exists() && !left.isFile() && !left.isSymLink());
}

} // namespace
