// SPDX-License-Identifier: GPL-3.0-or-later
// Saving onto regular files, links, pipes and devices: what is replaced, what stays, what fails.
#include "SafeSave.h"
#include "QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <thread>
#include <unistd.h>

namespace {

// The file type bits of the name itself, links not followed; 0 when it is missing.
int KindOf(const QString& path)
{
    struct stat status
    {
    };
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 ? int(status.st_mode & S_IFMT) : 0;
}

// What one read from a descriptor gives.
QByteArray ReadOnce(int fd)
{
    char buffer[64] = {};
    return QByteArray(buffer, int(std::max<ssize_t>(::read(fd, buffer, sizeof buffer), 0)));
}

QByteArray Read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

void Write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
}

// Saves content in one piece; the error text when anything failed, empty on success.
QString Save(const QString& path, const QByteArray& content)
{
    SafeSave file(path);
    if (!file.open(QIODevice::WriteOnly))
        return QStringLiteral("open: ") + file.errorString();
    if (file.write(content) != content.size()) {
        const QString error = file.errorString();
        file.cancelWriting();
        return QStringLiteral("write: ") + error;
    }
    return file.commit() ? QString() : QStringLiteral("commit: ") + file.errorString();
}

class SafeSaveTest : public ::testing::Test
{
protected:
    QString Path(const QString& name) const { return dir.filePath(name); }
    QStringList Entries(const QString& folder = QString()) const
    {
        return QDir(folder.isEmpty() ? dir.path() : folder)
            .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    }

    QTemporaryDir dir;
};

TEST_F(SafeSaveTest, RegularFileIsReplacedWholeOrNotAtAll)
{
    const QString path = Path("view.sor");
    EXPECT_EQ(Save(path, "first"), QString());
    EXPECT_EQ(Read(path), "first");
    EXPECT_EQ(Save(path, "second"), QString());
    EXPECT_EQ(Read(path), "second");

    {
        SafeSave cancelled(path);
        ASSERT_TRUE(cancelled.open(QIODevice::WriteOnly));
        ASSERT_EQ(cancelled.write("third"), 5);
        cancelled.cancelWriting();
        EXPECT_FALSE(cancelled.commit());
    }
    {
        SafeSave dropped(path); // neither committed nor cancelled
        ASSERT_TRUE(dropped.open(QIODevice::WriteOnly));
        dropped.write("fourth");
    }
    EXPECT_EQ(Read(path), "second");
    EXPECT_EQ(Entries(), QStringList { "view.sor" }) << "no temporary file is left behind";
}

TEST_F(SafeSaveTest, FailedWriteIsReportedAndLeavesTheOldContent)
{
    const QString path = Path("export.csv");
    Write(path, "old");
    // A file size limit makes every write past 4 KB fail, as a full disk would.
    rlimit saved {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &saved), 0);
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = saved;
    small.rlim_cur = 4096;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const QString error = Save(path, QByteArray(1 << 20, 'x'));
    ::setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previousHandler);

    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(Read(path), "old");
    EXPECT_EQ(Entries(), QStringList { "export.csv" });
}

TEST_F(SafeSaveTest, LinksAreFollowedAndStayLinks)
{
    ASSERT_TRUE(QDir(dir.path()).mkpath("data/deep"));
    Write(Path("data/deep/real.csv"), "old");
    // link.csv -> data/hop.csv -> deep/real.csv, both relative.
    ASSERT_EQ(::symlink("deep/real.csv", QFile::encodeName(Path("data/hop.csv")).constData()), 0);
    ASSERT_EQ(::symlink("data/hop.csv", QFile::encodeName(Path("link.csv")).constData()), 0);

    SafeSave chain(Path("link.csv"));
    EXPECT_EQ(chain.targetName(), QString()) << "known only once opened";
    ASSERT_TRUE(chain.open(QIODevice::WriteOnly)) << chain.errorString().toStdString();
    EXPECT_EQ(
        QFileInfo(chain.targetName()).canonicalFilePath(), QFileInfo(Path("data/deep/real.csv")).canonicalFilePath());
    chain.write("new");
    ASSERT_TRUE(chain.commit()) << chain.errorString().toStdString();
    EXPECT_EQ(KindOf(Path("link.csv")), S_IFLNK);
    EXPECT_EQ(KindOf(Path("data/hop.csv")), S_IFLNK);
    EXPECT_EQ(KindOf(Path("data/deep/real.csv")), S_IFREG);
    EXPECT_EQ(Read(Path("data/deep/real.csv")), "new");
    EXPECT_EQ(Entries(Path("data/deep")), QStringList { "real.csv" }) << "replaced in its own folder";

    // A link to a file that does not exist yet makes the file, not a file in place of the link.
    ASSERT_EQ(::symlink("later.csv", QFile::encodeName(Path("dangling.csv")).constData()), 0);
    EXPECT_EQ(Save(Path("dangling.csv"), "made"), QString());
    EXPECT_EQ(KindOf(Path("dangling.csv")), S_IFLNK);
    EXPECT_EQ(Read(Path("later.csv")), "made");

    // Links in a circle fail without touching either.
    ASSERT_EQ(::symlink("b", QFile::encodeName(Path("a")).constData()), 0);
    ASSERT_EQ(::symlink("a", QFile::encodeName(Path("b")).constData()), 0);
    EXPECT_TRUE(Save(Path("a"), "x").startsWith("open: "));
    EXPECT_EQ(KindOf(Path("a")), S_IFLNK);
    EXPECT_EQ(KindOf(Path("b")), S_IFLNK);
}

TEST_F(SafeSaveTest, PipeIsWrittenInPlaceAndOnlyWhileSomebodyReads)
{
    const QString path = Path("pipe");
    const QByteArray name = QFile::encodeName(path);
    ASSERT_EQ(::mkfifo(name.constData(), 0600), 0);

    // Nobody reads: the open fails at once instead of waiting.
    const QString error = Save(path, "lost");
    EXPECT_TRUE(error.startsWith("open: ") && error.contains("pipe")) << error.toStdString();
    EXPECT_EQ(KindOf(path), S_IFIFO);

    // With a reader the bytes go through the pipe, also more than its buffer holds: the save
    // waits for the reader. A writer of the test's own keeps the reader from seeing the end
    // before the save has opened the pipe.
    const int reader = ::open(name.constData(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    const int holder = ::open(name.constData(), O_WRONLY);
    ASSERT_GE(holder, 0);
    ::fcntl(reader, F_SETFL, ::fcntl(reader, F_GETFL) & ~O_NONBLOCK);
    QByteArray received;
    std::thread reading([&] {
        char buffer[65536];
        for (ssize_t got = 0; (got = ::read(reader, buffer, sizeof buffer)) > 0;)
            received.append(buffer, got);
    });
    const QByteArray big(1 << 20, 'x');
    EXPECT_EQ(Save(path, big), QString());
    ::close(holder);
    reading.join();
    EXPECT_TRUE(received == big) << received.size() << " bytes arrived";
    EXPECT_EQ(KindOf(path), S_IFIFO);
    EXPECT_EQ(Entries(), QStringList { "pipe" });
    ::fcntl(reader, F_SETFL, ::fcntl(reader, F_GETFL) | O_NONBLOCK);

    // A link to the pipe, and a name that only the system resolves (an open descriptor of an
    // unnamed pipe, as /dev/stdout is), lead to the pipe.
    ASSERT_EQ(::symlink("pipe", QFile::encodeName(Path("to-pipe")).constData()), 0);
    EXPECT_EQ(Save(Path("to-pipe"), "linked"), QString());
    EXPECT_EQ(KindOf(Path("to-pipe")), S_IFLNK);
    int unnamed[2];
    ASSERT_EQ(::pipe(unnamed), 0);
    EXPECT_EQ(Save(QStringLiteral("/proc/self/fd/%1").arg(unnamed[1]), "unnamed"), QString());
    ::close(unnamed[1]);
    EXPECT_EQ(ReadOnce(reader), "linked");
    EXPECT_EQ(ReadOnce(unnamed[0]), "unnamed");
    ::close(unnamed[0]);

    // A reader that goes away mid-save fails the save instead of ending the program.
    SafeSave orphaned(path);
    ASSERT_TRUE(orphaned.open(QIODevice::WriteOnly));
    ::close(reader);
    EXPECT_EQ(orphaned.write("more"), -1);
    EXPECT_FALSE(orphaned.commit());
    EXPECT_FALSE(orphaned.errorString().isEmpty());
    EXPECT_EQ(KindOf(path), S_IFIFO);
}

TEST_F(SafeSaveTest, FullDeviceFailsWithTheReasonAndStaysADevice)
{
    // As root a full device node of our own; otherwise the system's, which stays anyway.
    QString device = Path("full");
    if (::mknod(QFile::encodeName(device).constData(), S_IFCHR | 0666, makedev(1, 7)) != 0)
        device = QStringLiteral("/dev/full");
    if (KindOf(device) != S_IFCHR)
        GTEST_SKIP() << "no full device here";

    const QString error = Save(device, QByteArray(100000, 'x'));
    EXPECT_TRUE(error.contains(QString::fromLocal8Bit(std::strerror(ENOSPC)))) << error.toStdString();
    EXPECT_EQ(KindOf(device), S_IFCHR);
    EXPECT_TRUE(device == QStringLiteral("/dev/full") || Entries() == QStringList { "full" });
}

TEST_F(SafeSaveTest, UnusableNamesAndModesAreRefused)
{
    ASSERT_TRUE(QDir(dir.path()).mkdir("folder"));
    EXPECT_TRUE(Save(Path("folder"), "x").startsWith("open: "));
    EXPECT_TRUE(Save(Path("missing/file.csv"), "x").startsWith("open: "));
    EXPECT_TRUE(Save(QString(), "x").startsWith("open: "));
    SafeSave readable(Path("r.csv"));
    EXPECT_FALSE(readable.open(QIODevice::ReadWrite));
    EXPECT_FALSE(readable.open(QIODevice::WriteOnly | QIODevice::Append));
    EXPECT_EQ(Entries(), QStringList { "folder" });
}

} // namespace
