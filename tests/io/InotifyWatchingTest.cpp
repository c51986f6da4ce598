#include "io/InotifyWatching.h"

#include "io/AtomicFile.h"
#include "io/PosixFileSystem.h"
#include "support/ManualScheduler.h"
#include "support/RecordingLog.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <fstream>

#include <sys/resource.h>

namespace quillmark::test {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

class Watching : public testing::Test {
protected:
    void write(const Path& path, const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }
    auto count(int& counter)
    {
        return [&counter] { ++counter; };
    }
    /// How often a watcher was told of what was done; the kernel has it ready at once.
    int told(int& counter)
    {
        scheduler.settle();
        return std::exchange(counter, 0);
    }

    TemporaryFolder root;
    ManualScheduler scheduler;
    PosixFileSystem disk;
    RecordingLog log;
    int heard = 0;
};

TEST_F(Watching, AFileIsHeardOfThroughWritesReplacementsAndAbsence)
{
    InotifyWatching watching(scheduler, disk, log);
    const Path file = root / "файл.txt";
    write(file, "one");
    const auto watcher = watching.watchFile(file, count(heard));
    EXPECT_EQ(told(heard), 0);

    write(file, "two");
    EXPECT_EQ(told(heard), 1) << "a batch of notices is one";
    for (int i = 0; i < 3; ++i) { // our own way of saving, and every sync tool's
        ASSERT_TRUE(replaceFile(disk, file, contentOf("three")));
        EXPECT_EQ(told(heard), 1) << i;
    }
    fs::remove(file);
    EXPECT_EQ(told(heard), 1);
    write(file, "back");
    EXPECT_EQ(told(heard), 1);
    fs::rename(file, root / "elsewhere.txt");
    EXPECT_EQ(told(heard), 1);
    write(root / "other.txt", "a neighbour");
    write(root / "elsewhere.txt", "what it was once");
    EXPECT_EQ(told(heard), 0);
}

TEST_F(Watching, AFileBehindALinkIsHeardOfInBothPlaces)
{
    InotifyWatching watching(scheduler, disk, log);
    fs::create_directories(root / "a");
    fs::create_directories(root / "b");
    write(root / "a/real", "one");
    write(root / "b/other", "two");
    fs::create_symlink(root / "a/real", root / "link");
    const auto watcher = watching.watchFile(root / "link", count(heard));

    write(root / "a/real", "more");
    EXPECT_EQ(told(heard), 1);
    fs::remove(root / "link");
    fs::create_symlink(root / "b/other", root / "link");
    EXPECT_EQ(told(heard), 1);
    write(root / "b/other", "more");
    EXPECT_EQ(told(heard), 1) << "it leads elsewhere now";
    write(root / "a/real", "nobody's");
    EXPECT_EQ(told(heard), 0);
}

TEST_F(Watching, AFolderTellsOfEntriesNotOfTheirContent)
{
    InotifyWatching watching(scheduler, disk, log);
    fs::create_directories(root / "notes");
    write(root / "notes/one.txt", "one");
    const auto watcher = watching.watchFolder(root / "notes", count(heard));
    int file = 0;
    const auto fileWatcher = watching.watchFile(root / "notes/one.txt", count(file));

    write(root / "notes/one.txt", "in place");
    EXPECT_EQ(told(heard), 0);
    EXPECT_EQ(told(file), 1) << "two watchers of one folder hear what each wants";
    write(root / "notes/two.txt", "");
    EXPECT_EQ(told(heard), 1);
    fs::rename(root / "notes/two.txt", root / "notes/three.txt");
    EXPECT_EQ(told(heard), 1);
    fs::remove(root / "notes/three.txt");
    EXPECT_EQ(told(heard), 1);
}

TEST_F(Watching, AFolderThatGoesAndComesBackIsWatchedAgain)
{
    InotifyWatching watching(scheduler, disk, log);
    fs::create_directories(root / "up/notes");
    const auto watcher = watching.watchFolder(root / "up/notes", count(heard));
    fs::rename(root / "up/notes", root / "up/away");
    EXPECT_GE(told(heard), 1);
    fs::rename(root / "up/away", root / "up/notes");
    EXPECT_GE(told(heard), 1);
    write(root / "up/notes/new.txt", "");
    EXPECT_GE(told(heard), 1);

    fs::remove_all(root / "up"); // the folder above it too: only looking helps
    EXPECT_GE(told(heard), 1);
    fs::create_directories(root / "up/notes");
    told(heard);
    scheduler.advance(InotifyWatching::lookInterval);
    EXPECT_GE(told(heard), 1);
    write(root / "up/notes/newer.txt", "");
    EXPECT_GE(told(heard), 1);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(Watching, ADestroyedWatcherIsSilentAlsoWhenAnotherDestroysIt)
{
    InotifyWatching watching(scheduler, disk, log);
    std::unique_ptr<FSWatcher> second;
    const auto first = watching.watchFolder(root.path(), [&] {
        ++heard;
        second.reset();
    });
    second = watching.watchFolder(root.path(), [&] { FAIL() << "destroyed before"; });
    write(root / "x", "");
    EXPECT_EQ(told(heard), 1);
    write(root / "y", "");
    EXPECT_EQ(told(heard), 1) << "the kernel's watch, which both had, is still there";
}

TEST_F(Watching, LostNoticesCountAsAChangeOfEverything)
{
    InotifyWatching watching(scheduler, disk, log);
    fs::create_directories(root / "quiet");
    fs::create_directories(root / "loud");
    int quiet = 0;
    const auto quietWatcher = watching.watchFolder(root / "quiet", count(quiet));
    const auto loudWatcher = watching.watchFolder(root / "loud", count(heard));
    write(root / "loud/a", "");
    int limit = 0;
    std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> limit;
    if (limit <= 0 || limit > 200'000)
        GTEST_SKIP() << "the queue is too long to fill: " << limit;
    for (int i = 0; i <= limit / 2; ++i) { // each makes two notices, and neighbours differ
        fs::rename(root / "loud/a", root / "loud/b");
        fs::rename(root / "loud/b", root / "loud/a");
    }
    EXPECT_GE(told(quiet), 1);
    EXPECT_GE(told(heard), 1);
}

/// No more descriptors: no inotify.
class WithoutInotify : public Watching {
protected:
    WithoutInotify()
    {
        getrlimit(RLIMIT_NOFILE, &m_before);
        rlimit none = m_before;
        none.rlim_cur = 3;
        setrlimit(RLIMIT_NOFILE, &none);
        watching = std::make_unique<InotifyWatching>(scheduler, disk, log);
        setrlimit(RLIMIT_NOFILE, &m_before);
    }

    rlimit m_before{};
    std::unique_ptr<InotifyWatching> watching;
};

TEST_F(WithoutInotify, FilesAreLookedAtAndTheLogSaysSoOnce)
{
    write(root / "file", "one");
    int folder = 0;
    const auto fileWatcher = watching->watchFile(root / "file", count(heard));
    const auto folderWatcher = watching->watchFolder(root.path(), count(folder));
    EXPECT_EQ(log.lines().size(), 1u);
    scheduler.advance(10s);
    EXPECT_EQ(told(heard), 0);

    write(root / "file", "longer");
    scheduler.advance(InotifyWatching::lookInterval);
    EXPECT_EQ(told(heard), 1);
    EXPECT_EQ(told(folder), 0);
    fs::rename(root / "file", root / "renamed");
    scheduler.advance(InotifyWatching::lookInterval);
    EXPECT_EQ(told(heard), 1);
    EXPECT_EQ(told(folder), 1);
    EXPECT_EQ(log.lines().size(), 1u);
}

} // namespace
} // namespace quillmark::test
