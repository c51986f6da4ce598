#include "io/PosixFileSystem.h"

#include "io/AtomicFile.h"
#include "io/DocumentWriter.h"
#include "io/ReadFile.h"
#include "support/ManualScheduler.h"
#include "support/RecordingLog.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace quillmark::test {
namespace {

/// Saving on the real disk.
class RealSave : public testing::Test {
protected:
    Result<WrittenFile> save(std::u16string_view text, const Path& path)
    {
        return writer.write(Rope(text), path, LineEnds::lf);
    }
    std::string bytesOf(const Path& path)
    {
        const auto file = readFile(disk, path);
        return file ? file->bytes : file.error().message;
    }
    std::vector<std::string> names() const
    {
        std::vector<std::string> result;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
            result.push_back(entry.path().filename());
        std::ranges::sort(result);
        return result;
    }
    static void put(const Path& path, std::string_view bytes) { std::ofstream(path) << bytes; }

    TemporaryFolder folder;
    TemporaryFolder state;
    PosixFileSystem disk;
    ManualScheduler scheduler;
    RecordingLog log;
    RecoveryStore recovery{disk, scheduler, log, state / "recovered"};
    DocumentWriter writer{disk, recovery, scheduler};
};

TEST_F(RealSave, WritesANewFileAndReplacesItAndReportsWhatIsThere)
{
    const Path path = folder / "note \xFF.txt";
    const auto first = save(u"первый", path);
    ASSERT_TRUE(first) << first.error().message;
    EXPECT_EQ(bytesOf(path), "первый");
    EXPECT_EQ(first->info, disk.stat(path).value());
    const mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(first->info.mode, 0666u & ~mask);

    const auto second = save(u"second", path);
    ASSERT_TRUE(second);
    EXPECT_EQ(second->bytes, 6);
    EXPECT_EQ(second->info, disk.stat(path).value());
    EXPECT_EQ(bytesOf(path), "second");
    EXPECT_EQ(names().size(), 1u);
}

TEST_F(RealSave, FollowsLinksAndLeavesThemLinks)
{
    std::filesystem::create_directory(folder / "other");
    put(folder / "other/target", "old");
    std::filesystem::create_symlink("other/target", folder / "second");
    std::filesystem::create_symlink(folder / "second", folder / "first");
    ASSERT_TRUE(save(u"new", folder / "first"));
    EXPECT_EQ(bytesOf(folder / "other/target"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "first"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "second"));

    std::filesystem::create_symlink("other/missing", folder / "dangling");
    ASSERT_TRUE(save(u"made", folder / "dangling"));
    EXPECT_EQ(bytesOf(folder / "other/missing"), "made");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "dangling"));

    std::filesystem::create_symlink("loop", folder / "loop");
    EXPECT_EQ(save(u"x", folder / "loop").error().code, ELOOP);
    EXPECT_EQ(disk.list(folder.path())->size(), 5u) << "a link in a loop is listed";
}

TEST_F(RealSave, KeepsModeOwnerAndAttributes)
{
    const Path path = folder / "script";
    put(path, "old");
    ASSERT_EQ(chmod(path.c_str(), 02751), 0);
    if (geteuid() == 0) {
        ASSERT_EQ(chown(path.c_str(), 1234, 2345), 0);
        ASSERT_EQ(chmod(path.c_str(), 02751), 0);
    }
    const bool hasAttributes = setxattr(path.c_str(), "user.tag", "red", 3, 0) == 0;
    ASSERT_TRUE(save(u"new", path));
    struct ::stat info;
    ASSERT_EQ(::stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777u, 02751u);
    if (geteuid() == 0) {
        EXPECT_EQ(info.st_uid, 1234u);
        EXPECT_EQ(info.st_gid, 2345u);
    }
    if (hasAttributes) {
        char value[8] = {};
        EXPECT_EQ(getxattr(path.c_str(), "user.tag", value, sizeof value), 3);
        EXPECT_STREQ(value, "red");
    }
}

TEST_F(RealSave, RefusesWhatIsNotARegularWritableFile)
{
    put(folder / "readonly", "old");
    chmod((folder / "readonly").c_str(), 0444);
    EXPECT_EQ(save(u"new", folder / "readonly").error().code, EACCES);
    EXPECT_EQ(bytesOf(folder / "readonly"), "old");

    ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0666), 0);
    EXPECT_EQ(disk.openForReading(folder / "fifo").error().code, EINVAL);
    EXPECT_EQ(disk.openForWriting(folder / "fifo").error().code, EINVAL);
    EXPECT_EQ(readTextFile(disk, "/dev/zero").error().code, EINVAL);
    EXPECT_EQ(save(u"new", folder / "fifo").error().code, EINVAL);
    EXPECT_EQ(save(u"new", folder.path()).error().code, EISDIR);
    EXPECT_EQ(save(u"new", folder / "none/file").error().code, ENOENT);
    EXPECT_EQ(names(), (std::vector<std::string>{"fifo", "readonly"}));
}

TEST_F(RealSave, ALimitOnFileSizesLeavesTheOldFile)
{
    const Path path = folder / "file";
    put(path, "old");
    const pid_t child = fork();
    if (child == 0) {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{100'000, 100'000};
        setrlimit(RLIMIT_FSIZE, &limit);
        const auto written = save(std::u16string(300'000, u'x'), path);
        _exit(!written && written.error().code == EFBIG ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(bytesOf(path), "old");
    EXPECT_EQ(names(), std::vector<std::string>{"file"});
}

TEST_F(RealSave, LeftoversOfADeadProcessGoThoseOfALiveOneStay)
{
    put(folder / ".lq-0C4A5C5D-0000-4000-8000-000000000001.tmp", "half");
    const Path live = folder / ".lq-0C4A5C5D-0000-4000-8000-000000000002.tmp";
    const auto file = disk.createNew(live, 0600).value();
    ASSERT_TRUE(file->tryLock());
    put(folder / ".lq-mine.txt", "not a temporary file");
    ASSERT_TRUE(save(u"x", folder / "a"));
    scheduler.settle();
    EXPECT_EQ(names(), (std::vector<std::string>{live.filename(), ".lq-mine.txt", "a"}));
}

} // namespace
} // namespace quillmark::test
