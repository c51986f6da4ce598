#include "io/Journal.h"

#include "FakeDisk.h"

#include <cerrno>

namespace quillmark::test {
namespace {

using namespace std::chrono_literals;

class JournalOfDirtyText : public FakeDisk {
protected:
    void type(std::u16string_view words)
    {
        text.replace({text.length(), 0}, words);
        journal->textChanged(document);
    }

    /// The journalled texts. Locks are none.
    std::vector<std::string> journalled(const Path& folder = "/state/journal") const
    {
        std::vector<std::string> result;
        for (const std::string& name : disk.names(folder)) {
            if (!name.ends_with(".lock"))
                result.push_back(disk.bytes(folder / name).value());
        }
        return result;
    }

    std::unique_ptr<Journal> makeJournal()
    {
        return std::make_unique<Journal>(disk, scheduler, recovery, log, folders, [this](const Uuid&) {
            ++snapshots;
            return std::optional(Journal::Snapshot{.original = "/d/заметка.txt", .text = text});
        });
    }

    void pass(Duration time)
    {
        scheduler.advance(time);
        scheduler.settle();
    }

    using Texts = std::vector<std::string>;
    const JournalFolders folders{.own = "/state/journal", .fallbacks = {"/run/q"}, .lastResorts = {"/tmp/q"}};
    const Uuid document = Uuid::random();
    Rope text;
    int snapshots = 0;
    std::unique_ptr<Journal> journal = makeJournal();
};

TEST_F(JournalOfDirtyText, IsWrittenSoonAndWithinASecondOfAKeyHoweverManyFollow)
{
    type(u"x");
    pass(200ms);
    EXPECT_EQ(journalled(), Texts{"x"}) << "the first key is in no older journal";
    for (int i = 0; i < 28; ++i) {
        type(u"x");
        pass(100ms);
    }
    EXPECT_EQ(snapshots, 5);
    EXPECT_EQ(journalled(), Texts{std::string(29, 'x')});
    pass(1h);
    EXPECT_EQ(snapshots, 5) << "no key, no write";
}

TEST_F(JournalOfDirtyText, ALargeTextIsWrittenLessOftenSavedMeanwhileOrNot)
{
    disk.setHook([this](const FakeFileSystem::Call& call) {
        if (call.operation == DiskOperation::sync)
            scheduler.advance(500ms); // what writing takes
    });
    text = Rope(std::u16string(1'200'000, u'x'));
    type(u"1");
    pass(200ms);
    EXPECT_EQ(snapshots, 1);
    journal->saved(document, journal->version(document));
    type(u"2");
    pass(4900ms);
    EXPECT_EQ(snapshots, 1);
    pass(100ms);
    EXPECT_EQ(snapshots, 2);
    text = Rope(u"small");
    type(u"3");
    pass(5s);
    type(u"4");
    pass(1s);
    EXPECT_EQ(snapshots, 4) << "a small text again after a second";
}

TEST_F(JournalOfDirtyText, GoesWithACleanSaveUnlessSomethingNewerWasTyped)
{
    type(u"one");
    pass(1s);
    const uint64_t saved = journal->version(document);
    type(u" two");
    journal->saved(document, saved);
    pass(0s);
    EXPECT_EQ(journalled(), Texts{"one"}) << "what was typed since is nowhere else";
    pass(1s);
    EXPECT_EQ(journalled(), Texts{"one two"});
    journal->saved(document, journal->version(document));
    pass(0s);
    EXPECT_EQ(journalled(), Texts{});
    type(u" three");
    journal->saved(document, journal->version(document));
    pass(1h);
    EXPECT_EQ(journalled(), Texts{}) << "saved before the second was over";
    type(u" four");
    journal->saved(document, saved);
    pass(1s);
    EXPECT_EQ(journalled(), Texts{"one two three four"}) << "an old save says nothing about new words";
}

TEST_F(JournalOfDirtyText, ASaveWhileTheJournalIsWrittenStillRemovesIt)
{
    type(u"one");
    scheduler.advance(1s); // the write is queued but has not run
    journal->saved(document, journal->version(document));
    scheduler.settle();
    EXPECT_EQ(journalled(), Texts{});
    journal.reset();
    EXPECT_TRUE(disk.names("/state/journal").empty()) << "not even a lock is left";
}

TEST_F(JournalOfDirtyText, AKilledProcessIsFoundByTheNextStartALiveOneIsNot)
{
    type(u"слова");
    pass(1s);
    const auto other = makeJournal();
    EXPECT_EQ(other->recoverLeftovers(), 0u) << "its writer lives";
    EXPECT_EQ(journal->recoverLeftovers(), 0u);

    disk.crash(FakeFileSystem::UnsyncedEntries::kept);
    EXPECT_EQ(other->recoverLeftovers(), 1u);
    EXPECT_EQ(recovered(), Texts{"слова"});
    EXPECT_TRUE(disk.names("/state/recovered").at(0).ends_with(" заметка.txt"));
    EXPECT_TRUE(disk.names("/state/journal").empty());
    EXPECT_EQ(other->recoverLeftovers(), 0u);
}

TEST_F(JournalOfDirtyText, AFullDiskIsLoggedOnceAndTheTextArrivesLater)
{
    disk.failAlways(DiskOperation::write, ENOSPC); // there is no other folder either
    type(u"one");
    pass(1s);
    type(u" two");
    pass(1s);
    EXPECT_EQ(log.lines(), Texts{"Quillmark: journal not written: Нет места на диске"});
    EXPECT_EQ(journalled(), Texts{});
    disk.heal();
    pass(2s);
    EXPECT_EQ(journalled(), Texts{"one two"}) << "tried again without a key";
    // A leftover that cannot be moved stays for the start after.
    disk.crash(FakeFileSystem::UnsyncedEntries::kept);
    const auto other = makeJournal();
    disk.failAlways(DiskOperation::renameNoReplace, EIO);
    EXPECT_EQ(other->recoverLeftovers(), 0u);
    disk.heal();
    EXPECT_EQ(other->recoverLeftovers(), 1u);
    EXPECT_EQ(recovered(), Texts{"one two"});
}

TEST_F(JournalOfDirtyText, WhereItsFolderRefusesAnotherTakesItAndTheNextStartFindsBoth)
{
    disk.putFolder("/run");
    disk.putFolder("/tmp");
    type(u"one");
    pass(1s);
    disk.failAlways(DiskOperation::write, ENOSPC, "/state");
    type(u" two");
    pass(1s);
    EXPECT_EQ(journalled("/run/q"), Texts{"one two"});
    EXPECT_EQ(journalled(), Texts{}) << "the older text would only confuse";
    EXPECT_EQ(log.lines(), Texts{"Quillmark: journal not written: Нет места на диске; kept in /run/q"});
    disk.heal();
    type(u" three");
    pass(1s);
    EXPECT_EQ(journalled(), Texts{"one two three"});
    EXPECT_EQ(journalled("/run/q"), Texts{});

    disk.failAlways(DiskOperation::write, EROFS, "/state");
    disk.failAlways(DiskOperation::write, ENOSPC, "/run");
    type(u" four");
    pass(1min);
    EXPECT_EQ(journalled("/tmp/q"), Texts{}) << "only the end of the program is in such a need";
    type(u" five");
    journal->finish();
    EXPECT_EQ(journalled("/tmp/q"), Texts{"one two three four five"});

    disk.crash(FakeFileSystem::UnsyncedEntries::kept);
    disk.heal();
    disk.failAlways(DiskOperation::renameNoReplace, EXDEV, "/tmp"); // another disk
    EXPECT_EQ(makeJournal()->recoverLeftovers(), 1u);
    EXPECT_EQ(recovered(), Texts{"one two three four five"});
    EXPECT_TRUE(disk.names("/tmp/q").empty());
}

TEST_F(JournalOfDirtyText, NobodyElsesFolderIsUsedOrEmptied)
{
    disk.putFolder("/run/q");
    disk.setMode("/run/q", 0777);
    const std::string process = Uuid::random().toString();
    disk.putFile(Path("/run/q") / (process + "." + document.toString() + ".Plan.txt"), "theirs");
    EXPECT_EQ(journal->recoverLeftovers(), 0u);
    disk.failAlways(DiskOperation::write, ENOSPC, "/state");
    type(u"mine");
    pass(1s);
    EXPECT_EQ(journalled("/run/q"), Texts{"theirs"});
}

} // namespace
} // namespace quillmark::test
