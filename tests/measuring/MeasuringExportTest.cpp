// SPDX-License-Identifier: GPL-3.0-or-later
// Export of a view: a cancelled file dialog, and pictures and tables onto links and pipes.
#include "MeasuringFixture.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTimer>

#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

using MeasuringExportTest = measuring_fixture::MeasuringFixture;

bool IsPipe(const QString& path)
{
    struct stat status
    {
    };
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 && S_ISFIFO(status.st_mode);
}

TEST_F(MeasuringExportTest, CancelledDialogReturnsMinusOneAndWritesNothing)
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
}

TEST_F(MeasuringExportTest, PicturesAndTablesFollowLinksAndGoThroughPipes)
{
    Open(900);
    ASSERT_TRUE(Add("3$L#1", "|1|"));
    Day();
    QTemporaryDir dir;

    // Through a link the file it names is written; the link stays.
    for (const char* name : { "chart.png", "chart.svg", "chart.pdf", "table.csv" }) {
        const QString link = dir.filePath(QStringLiteral("link-") + name);
        ASSERT_TRUE(QFile::link(name, link));
        EXPECT_EQ(measuring->ExportTo(link), 0) << name;
        EXPECT_TRUE(QFileInfo(link).isSymLink()) << name;
        EXPECT_GT(QFileInfo(dir.filePath(name)).size(), 0) << name;
    }

    // A pipe that nobody reads fails at once and stays a pipe.
    const QString pipe = dir.filePath("pipe.png");
    const QByteArray pipeName = QFile::encodeName(pipe);
    ASSERT_EQ(::mkfifo(pipeName.constData(), 0600), 0);
    EXPECT_NE(measuring->ExportTo(pipe), 0);
    EXPECT_TRUE(IsPipe(pipe));

    // With a reader the whole picture goes through. A writer of the test's own keeps the
    // reader from seeing the end before the export has opened the pipe.
    const int reader = ::open(pipeName.constData(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    const int holder = ::open(pipeName.constData(), O_WRONLY);
    ASSERT_GE(holder, 0);
    ::fcntl(reader, F_SETFL, ::fcntl(reader, F_GETFL) & ~O_NONBLOCK);
    QByteArray received;
    std::thread reading([&] {
        char buffer[65536];
        for (ssize_t got = 0; (got = ::read(reader, buffer, sizeof buffer)) > 0;)
            received.append(buffer, got);
    });
    EXPECT_EQ(measuring->ExportTo(pipe), 0);
    ::close(holder);
    reading.join();
    ::close(reader);
    EXPECT_TRUE(received.startsWith("\x89PNG\r\n\x1a\n")) << received.left(16).toHex().toStdString();
    EXPECT_TRUE(received.endsWith(QByteArray("IEND\xae\x42\x60\x82", 8))) << "the picture arrives whole";
    EXPECT_TRUE(IsPipe(pipe));
}

} // namespace
