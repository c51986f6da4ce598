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

    Result<SavedFile> save(std::string_view text, const Path& path = "/d/a")
    {
        return writer.write(Rope::fromUtf8(text), path, LineEnds::lf);
    }

    /// A file that this run has not met before.
    void putOld()
    {
        disk.putFile("/d/a", before);
        writer.known().forget("/d/a");
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
                writer.known().forget("/d/a");
                if (isThere)
                    putOld();
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
            putOld();
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
    putOld();
    for (const int64_t space : {0, 1, 4096, 270'000, 299'999}) {
        disk.setCapacity(static_cast<int64_t>(before.size()) + space);
        EXPECT_EQ(save(after).error().code, ENOSPC) << space;
        EXPECT_EQ(disk.bytes("/d/a"), before) << space;
        EXPECT_EQ(disk.names("/d"), std::vector<std::string>{"a"}) << space;
    }
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

TEST_F(Save, AFolderThatRefusesNewFilesIsWrittenInPlaceWithTheOldBytesKept)
{
    putOld();
    disk.failOnce(DiskOperation::copyAttributes, EPERM);
    EXPECT_EQ(save("short").error().code, EPERM);
    EXPECT_EQ(disk.bytes("/d/a"), before) << "whoever reads meanwhile would see mixed text";
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
    putOld();
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
        putOld();
        disk.failFrom(step, EIO);
        wasWritten = save(after).has_value();
        disk.crash(FakeFileSystem::UnsyncedEntries::lost);
        const auto bytes = disk.bytes("/d/a");
        const auto kept = recovered();
        EXPECT_TRUE(bytes == before || bytes == after || std::ranges::count(kept, before) > 0) << step;
        disk.heal();
    }
}

/// Another program writes the file that we know.
class SaveBesideOthers : public Save {
protected:
    SaveBesideOthers()
    {
        EXPECT_TRUE(save("ours"));
        scheduler.advance(1s);
    }
    Result<SavedFile> refusing(std::string_view text)
    {
        return writer.write(Rope::fromUtf8(text), "/d/a", LineEnds::lf, OutsideVersion::refuse);
    }
    KnownFiles::State state() { return writer.known().stateOf(disk, "/d/a", disk.infoOf("/d/a")); }
    using Texts = std::vector<std::string>;
};

TEST_F(SaveBesideOthers, TheirVersionIsKeptBeforeItIsReplaced)
{
    disk.putFile("/d/a", "theirs");
    EXPECT_EQ(state(), KnownFiles::State::changed);
    const auto saved = save("ours again");
    ASSERT_TRUE(saved);
    EXPECT_TRUE(saved->hasReplacedOutsideVersion);
    EXPECT_EQ(disk.bytes("/d/a"), "ours again");
    EXPECT_EQ(recovered(), Texts{"theirs"});
    EXPECT_FALSE(save("and again")->hasReplacedOutsideVersion);
}

TEST_F(SaveBesideOthers, ARefusedSaveTouchesNothing)
{
    disk.putFile("/d/a", "OURS"); // of the same size
    EXPECT_EQ(refusing("ours again").error().code, changedOutside);
    EXPECT_EQ(disk.bytes("/d/a"), "OURS");
    EXPECT_EQ(disk.names("/d"), Texts{"a"});
    EXPECT_TRUE(refusing("OURS")) << "what they wrote is what we want";
    EXPECT_TRUE(recovered().empty());
}

TEST_F(SaveBesideOthers, TheSameBytesAreNoChange)
{
    disk.putFile("/d/a", "ours");
    EXPECT_EQ(state(), KnownFiles::State::asKnown);
    EXPECT_TRUE(refusing("more"));
    disk.erase("/d/a");
    disk.putFile("/d/a", "more"); // by renaming, say: another inode
    EXPECT_EQ(state(), KnownFiles::State::asKnown);
    disk.erase("/d/a");
    EXPECT_TRUE(refusing("made again"));
    EXPECT_TRUE(recovered().empty());
}

TEST_F(SaveBesideOthers, AChangeInTheMiddleOfASaveIsSeen)
{
    disk.setHook([this](const FakeFileSystem::Call& call) {
        if (call.operation == DiskOperation::sync) {
            disk.setHook(nullptr);
            disk.putFile("/d/a", "theirs");
        }
    });
    EXPECT_TRUE(save("ours again")->hasReplacedOutsideVersion);
    EXPECT_EQ(recovered(), Texts{"theirs"});
}

TEST_F(SaveBesideOthers, WithoutAPlaceForTheirVersionItStays)
{
    disk.putFile("/d/a", "theirs");
    disk.failAlways(DiskOperation::createNew, ENOSPC, "/state/");
    EXPECT_FALSE(save("ours again"));
    EXPECT_EQ(disk.bytes("/d/a"), "theirs");
    disk.heal();
    disk.failAlways(DiskOperation::rename, EIO, "/d/");
    for (int i = 0; i < 5; ++i)
        EXPECT_FALSE(save("ours again"));
    EXPECT_EQ(recovered(), Texts{"theirs"}) << "kept once";
    disk.heal();
    EXPECT_TRUE(save("ours again"));
}

TEST_F(SaveBesideOthers, OurOwnSaveIsOursFromItsFirstMomentOn)
{
    disk.setHook([this](const FakeFileSystem::Call& call) {
        if (call.operation == DiskOperation::syncFolder && call.path == "/d") {
            EXPECT_EQ(state(), KnownFiles::State::asKnown) << "renamed, but not yet reported as saved";
        }
    });
    EXPECT_TRUE(save("longer than before"));
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
