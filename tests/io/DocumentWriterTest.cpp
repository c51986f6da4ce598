#include "io/DocumentWriter.h"

#include "FakeDisk.h"
#include "io/ReadFile.h"

#include <cerrno>

namespace quillmark::test {
namespace {

using namespace std::chrono_literals;

class Save : public FakeDisk {
protected:
    Save() { disk.putFolder("/d"); }

    Result<WrittenFile> save(std::string_view text, const Path& path = "/d/a")
    {
        return writer.write(Rope::fromUtf8(text), path, LineEnds::lf);
    }

    /// The disk after a fault: a whole text under the name, nothing else in the folder once another run has
    /// saved.
    void expectSound(const std::string& what)
    {
        const auto bytes = disk.bytes("/d/a");
        EXPECT_TRUE(bytes == before || bytes == after) << what << ": " << bytes.value_or("gone").size();
        disk.heal();
        DocumentWriter nextRun(disk, recovery, scheduler);
        EXPECT_TRUE(nextRun.write(Rope(u"next"), "/d/a", LineEnds::lf)) << what;
        scheduler.settle();
        EXPECT_EQ(disk.names("/d"), std::vector<std::string>{"a"}) << what;
        EXPECT_EQ(disk.bytes("/d/a"), "next") << what;
    }

    const std::string before = std::string(1000, 'o');
    const std::string after = std::string(300'000, 'n'); ///< more than one write
};

TEST_F(Save, AFaultAtAnyStepLeavesTheOldOrTheNewText)
{
    for (const int code : {EIO, ENOSPC, EACCES}) {
        for (const bool isThere : {true, false}) {
            for (int64_t step = 1;; ++step) {
                const std::string what = std::to_string(code) + " at step " + std::to_string(step);
                disk.erase("/d");
                disk.putFolder("/d");
                if (isThere)
                    disk.putFile("/d/a", before);
                const int64_t start = disk.callCount();
                disk.failCall(step, code);
                const auto written = save(after);
                const bool wasReached = disk.callCount() - start >= step;
                EXPECT_TRUE(!written || disk.bytes("/d/a") == after) << what;
                if (isThere || disk.bytes("/d/a"))
                    expectSound(what);
                EXPECT_LT(recovered().size(), 2u) << what;
                disk.heal();
                if (!wasReached)
                    break;
            }
        }
    }
}

TEST_F(Save, APowerCutAtAnyStepLeavesTheOldOrTheNewText)
{
    for (const auto entries :
        {FakeFileSystem::UnsyncedEntries::lost, FakeFileSystem::UnsyncedEntries::kept}) {
        bool wasWritten = false;
        for (int64_t step = 1; !wasWritten; ++step) {
            disk.putFile("/d/a", before);
            disk.failFrom(step, EIO);
            wasWritten = save(after).has_value();
            disk.crash(entries);
            if (wasWritten) {
                EXPECT_EQ(disk.bytes("/d/a"), after) << "what was reported as saved stays";
            }
            expectSound("power cut at step " + std::to_string(step));
        }
    }
}

TEST_F(Save, AFullDiskKeepsTheOldBytesWhereverItEnds)
{
    disk.putFile("/d/a", before);
    for (const int64_t space : {0, 1, 4096, 270'000, 299'999}) {
        disk.setCapacity(static_cast<int64_t>(before.size()) + space);
        EXPECT_EQ(save(after).error().code, ENOSPC) << space;
        EXPECT_EQ(disk.bytes("/d/a"), before) << space;
        EXPECT_EQ(disk.names("/d"), std::vector<std::string>{"a"}) << space;
    }
    disk.heal();
    disk.setLargestWrite(1000);
    EXPECT_TRUE(save(after)) << "short writes that go on are no fault";
    EXPECT_EQ(disk.bytes("/d/a"), after);
    disk.setLargestWrite(0);
    EXPECT_EQ(save("x").error().code, ENOSPC) << "a disk that takes nothing and says nothing";
}

TEST_F(Save, NobodySeesAnIncompleteFileUnderTheName)
{
    disk.putFile("/d/a", before);
    disk.setHook([&](const FakeFileSystem::Call&) {
        const auto seen = disk.bytes("/d/a");
        EXPECT_TRUE(seen == before || seen == after);
        const auto fresh = disk.bytes("/d/new");
        EXPECT_TRUE(!fresh || fresh == after);
    });
    EXPECT_TRUE(save(after));
    EXPECT_TRUE(save(after, "/d/new"));
}

TEST_F(Save, ANewFileDoesNotReplaceOneThatAppearedMeanwhile)
{
    disk.setHook([&](const FakeFileSystem::Call& call) {
        if (call.operation == DiskOperation::sync)
            disk.putFile("/d/a", "theirs");
    });
    EXPECT_EQ(save("ours").error().code, EEXIST);
    EXPECT_EQ(disk.bytes("/d/a"), "theirs");
    EXPECT_EQ(disk.names("/d"), std::vector<std::string>{"a"});
}

TEST_F(Save, KeepsModeAndAttributesAndReportsTheFile)
{
    disk.putFile("/d/a", before);
    disk.setMode("/d/a", 0755);
    disk.setAttribute("/d/a", "user.tag", "red");
    scheduler.advance(5s);
    const auto written = save("text\n");
    ASSERT_TRUE(written);
    EXPECT_EQ(written->info, disk.infoOf("/d/a"));
    EXPECT_EQ(written->info.modified, scheduler.wallNow());
    EXPECT_EQ(written->bytes, 5);
    EXPECT_EQ(written->info.mode, 0755u);
    EXPECT_EQ(disk.attribute("/d/a", "user.tag"), "red");
    ASSERT_TRUE(writer.write(Rope(u"a\nb"), "/d/a", LineEnds::crlf));
    EXPECT_EQ(disk.bytes("/d/a"), "a\r\nb");
}

TEST_F(Save, AFolderThatRefusesNewFilesIsWrittenInPlaceWithTheOldBytesKept)
{
    disk.putFile("/d/a", before);
    disk.setMode("/d", 0555);
    const uint64_t inode = disk.infoOf("/d/a").inode;
    bool sawCopy = false;
    disk.setHook([&](const FakeFileSystem::Call& call) {
        if (call.operation == DiskOperation::write && call.path == "/d/a")
            sawCopy |= recovered() == std::vector{before};
    });
    ASSERT_TRUE(save("short"));
    EXPECT_TRUE(sawCopy);
    EXPECT_EQ(disk.bytes("/d/a"), "short");
    EXPECT_EQ(disk.infoOf("/d/a").inode, inode);
    EXPECT_TRUE(recovered().empty()) << "the copy goes when the new text is safe";

    disk.setHook(nullptr);
    disk.putFile("/d/a", before);
    disk.failOnce(DiskOperation::sync, EIO, "/d/a");
    EXPECT_EQ(save(after).error().code, EIO);
    EXPECT_EQ(disk.bytes("/d/a"), before) << "put back";
    EXPECT_EQ(recovered(), std::vector{before});

    disk.failAlways(DiskOperation::createNew, ENOSPC, "/state");
    EXPECT_EQ(save(after).error().code, ENOSPC);
    EXPECT_EQ(disk.bytes("/d/a"), before) << "never overwritten without a copy";
}

TEST_F(Save, APowerCutWhileWritingInPlaceLeavesTheOldBytesSomewhere)
{
    disk.setMode("/d", 0555);
    bool wasWritten = false;
    for (int64_t step = 1; !wasWritten; ++step) {
        scheduler.advance(1s);
        disk.putFile("/d/a", before);
        disk.failFrom(step, EIO);
        wasWritten = save(after).has_value();
        disk.crash(FakeFileSystem::UnsyncedEntries::lost);
        const auto bytes = disk.bytes("/d/a");
        const auto kept = recovered();
        EXPECT_TRUE(bytes == before || bytes == after || std::ranges::count(kept, before) > 0) << step;
        disk.heal();
    }
}

TEST_F(Save, LinksAndRefusals)
{
    disk.putFile("/d/a", before);
    disk.putLink("/links/first", "second");
    disk.putLink("/links/second", "../d/a");
    disk.putLink("/links/loop", "loop");
    disk.putDevice("/d/device");
    EXPECT_TRUE(save("new", "/links/first"));
    EXPECT_TRUE(disk.isLink("/links/first"));
    EXPECT_EQ(disk.bytes("/d/a"), "new");
    EXPECT_EQ(save("x", "/links/loop").error().code, ELOOP);
    EXPECT_EQ(save("x", "/d/device").error().code, EINVAL);
    EXPECT_EQ(save("x", "/d").error().code, EISDIR);
    disk.setMode("/d/a", 0444);
    EXPECT_EQ(save("x").error().code, EACCES);
    EXPECT_EQ(disk.bytes("/d/a"), "new");
}

TEST(ReadFile, TakesWhatItGetsOfAFileThatChanges)
{
    ManualScheduler clock;
    FakeFileSystem disk(clock);
    disk.putFile("/a", std::string(600'000, 'a'));
    int reads = 0;
    disk.setHook([&](const FakeFileSystem::Call& call) {
        if (call.operation == DiskOperation::read && ++reads == 2)
            disk.putFile("/a", std::string(1'500'000, 'b'));
    });
    const auto grown = readFile(disk, "/a");
    ASSERT_TRUE(grown);
    EXPECT_EQ(grown->bytes.size(), 1'500'000u);
    EXPECT_EQ(grown->info.size, 600'000);
    EXPECT_TRUE(grown->bytes.ends_with("b"));

    reads = 0;
    disk.setHook([&](const FakeFileSystem::Call& call) {
        if (call.operation == DiskOperation::read && ++reads == 2)
            disk.putFile("/a", "shrunk");
    });
    EXPECT_EQ(readFile(disk, "/a")->bytes.size(), 256u * 1024);
    disk.setHook(nullptr);
    EXPECT_EQ(readFile(disk, "/a", 3)->bytes, "shr");
    EXPECT_EQ(readFile(disk, "/a")->bytes, "shrunk");
    disk.failOnce(DiskOperation::read, EIO);
    EXPECT_EQ(readTextFile(disk, "/a").error().code, EIO);
}

TEST(ReadFile, GivesUpOnAFileWithoutEnd)
{
    ManualScheduler clock;
    FakeFileSystem disk(clock);
    disk.putFile("/endless", "");
    disk.setHook([&](const FakeFileSystem::Call& call) {
        if (call.operation == DiskOperation::read && disk.infoOf("/endless").size == 0)
            disk.putFile("/endless", std::string(65 * 1024 * 1024, 'x'));
    });
    EXPECT_EQ(readFile(disk, "/endless").error().code, EFBIG);
}

} // namespace
} // namespace quillmark::test
