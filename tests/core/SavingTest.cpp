#include "AppTest.h"

namespace quillmark::test {
namespace {

struct SavingTest : AppTest {
    static constexpr auto now = AppState::AllowBackground::no;

    int64_t writesOf(const std::string& part) const
    {
        int64_t count = 0;
        for (const FakeFileSystem::Call& call : disk.calls())
            count += (call.operation == DiskOperation::rename
                         || call.operation == DiskOperation::renameNoReplace)
                && call.path.native().find(part) != std::string::npos;
        return count;
    }
};

TEST_F(SavingTest, OnceAfterThePause)
{
    disk.putFile("/tmp/a", "");
    start();
    open("/tmp/a");
    disk.clearCalls();
    for (int i = 0; i < 10; ++i) {
        type("x");
        EXPECT_TRUE(app->isDirty.get() && app->activeTab()->isDirty.get());
        scheduler.advance(500ms);
    }
    EXPECT_EQ(writesOf("/tmp/.lq-"), 0);
    scheduler.advance(299ms);
    EXPECT_EQ(writesOf("/tmp/.lq-"), 0);
    scheduler.advance(1ms);
    EXPECT_EQ(writesOf("/tmp/.lq-"), 1);
    EXPECT_EQ(disk.bytes("/tmp/a"), "xxxxxxxxxx");
    EXPECT_FALSE(app->isDirty.get() || app->activeTab()->isDirty.get());
    scheduler.advance(60s);
    EXPECT_EQ(writesOf("/tmp/.lq-"), 1);
    EXPECT_EQ(disk.names("/tmp"), (Strings{"a"}));
}

TEST_F(SavingTest, ASaveKeepsUndoCaretAndGeneration)
{
    start();
    type("one");
    const auto generationBefore = app->loadGeneration.get();
    app->flushSave(now);
    EXPECT_EQ(app->loadGeneration.get(), generationBefore);
    EXPECT_EQ(view.selection().caret, 3);
    view.undo();
    EXPECT_EQ(shown(), "");
    EXPECT_TRUE(app->isDirty.get());
}

TEST_F(SavingTest, SwitchingTabsWritesFirst)
{
    disk.putFile("/tmp/a", "");
    start();
    type("note");
    open("/tmp/a");
    type("file");
    select(0);
    EXPECT_EQ(noteText("note.txt"), "note");
    EXPECT_EQ(disk.bytes("/tmp/a"), "file");
    EXPECT_EQ(shown(), "note");
}

TEST_F(SavingTest, LineEndsStayAndEncodingsBecomeUtf8WithOneNotice)
{
    disk.putFile("/tmp/win", "\xcf\xf0\r\n\xcf\r\n");
    disk.putFile("/tmp/lf", "a\n");
    start();
    open("/tmp/win");
    type("x");
    app->flushSave(now);
    EXPECT_EQ(disk.bytes("/tmp/win"), "xПр\r\nП\r\n");
    EXPECT_EQ(app->encodingName.get(), "UTF-8");
    EXPECT_EQ(app->notice.get(), "Файл был в CP1251 — пересохранён в UTF-8");
    app->dismissNotice();
    disk.putFile("/tmp/win", "\xcf\xf0\r\n");
    select(0);
    select(1);
    type("y");
    app->flushSave(now);
    EXPECT_FALSE(app->notice.get()) << "once a tab";
    EXPECT_EQ(app->encodingName.get(), "UTF-8");
    open("/tmp/lf");
    type("x\n");
    app->flushSave(now);
    EXPECT_EQ(disk.bytes("/tmp/lf"), "x\na\n");
}

TEST_F(SavingTest, TheNotesRecordAndTitleFollow)
{
    putNote("win.txt", "a\r\n");
    start();
    type("Plan\nfor\n");
    app->flushSave(now);
    EXPECT_EQ(noteText("win.txt"), "Plan\r\nfor\r\na\r\n");
    EXPECT_EQ(app->store.notes->front().byteSize, 14);
    EXPECT_EQ(app->store.notes->front().preview, "for a");
    EXPECT_EQ(titles(), (Strings{"Plan"}));
    scheduler.advance(5s);
    EXPECT_EQ(noteNames(), (Strings{"Plan.txt"}));
    type("more");
    app->flushSave(now);
    EXPECT_EQ(noteNames(), (Strings{"Plan.txt"}));
}

TEST_F(SavingTest, LargeTextsAreWrittenInTheBackgroundInOrder)
{
    start();
    pasteLarge();
    scheduler.advance(800ms);
    EXPECT_FALSE(app->isDirty.get());
    EXPECT_EQ(noteText("Untitled.txt"), "");
    EXPECT_EQ(app->store.notes->front().byteSize, 600 * 1024 + 1) << "as it will be written";
    type("second\n");
    scheduler.advance(800ms);
    scheduler.settle();
    EXPECT_EQ(noteText("Untitled.txt")->size(), 600u * 1024 + 8);
    EXPECT_EQ(app->store.notes->front().byteSize, 600 * 1024 + 8);
}

TEST_F(SavingTest, TheSizeOfAQueuedTextIsThatOfItsBytes)
{
    putNote("win.txt", "a\r\nb\r\n");
    start();
    type(std::string(600 * 1024, 'x') + "йцукен — 👨‍👩‍👧‍👦\n");
    scheduler.advance(800ms);
    const int64_t announced = app->store.notes->front().byteSize;
    scheduler.settle();
    EXPECT_EQ(disk.infoOf(app->store.notes->front().url).size, announced);
}

TEST_F(SavingTest, NoOlderTextOvertakesAnImmediateWrite)
{
    start();
    pasteLarge();
    scheduler.advance(800ms); // queued
    clear();
    type("newest");
    app->flushSave(now);
    EXPECT_EQ(noteText("Untitled.txt"), "newest");
    scheduler.advance(120s);
    scheduler.settle();
    EXPECT_EQ(noteText("newest.txt"), "newest");
    EXPECT_EQ(noteNames(), (Strings{"newest.txt"}));
}

TEST_F(SavingTest, QueuedTextIsThereWhenItsTabComesBack)
{
    start();
    pasteLarge();
    scheduler.advance(800ms);
    open("/tmp/other");
    select(0);
    scheduler.settle();
    EXPECT_EQ(view.text().length(), 600 * 1024 + 1);
}

TEST_F(SavingTest, TypingWhileASlowDiskSaves)
{
    disk.putFolder("/tmp");
    start();
    open("/tmp/large");
    pasteLarge();
    int steps = 0;
    disk.setHook([&](const FakeFileSystem::Call& call) {
        if (call.path.native().find("/tmp/.lq-") != 0 || ++steps > 12)
            return;
        type("y"); // while the disk takes five seconds for each step
        scheduler.advance(5s);
    });
    scheduler.advance(800ms);
    scheduler.runNextBackground();
    EXPECT_GT(view.text().length(), 600 * 1024 + 3);
    disk.heal();
    disk.setHook(nullptr);
    scheduler.settle();
    scheduler.advance(1s);
    scheduler.settle();
    EXPECT_EQ(disk.bytes("/tmp/large"), shown());
    EXPECT_FALSE(app->isDirty.get());
}

TEST_F(SavingTest, ADiskThatFailsAtAnyStepLosesNothing)
{
    const auto steps = {DiskOperation::stat, DiskOperation::resolveLinks, DiskOperation::createNew,
        DiskOperation::write, DiskOperation::sync, DiskOperation::copyAttributes, DiskOperation::rename,
        DiskOperation::syncFolder, DiskOperation::fileInfo};
    int number = 0;
    disk.putFolder("/tmp");
    start();
    for (const DiskOperation step : steps) {
        SCOPED_TRACE(static_cast<int>(step));
        const Path file = "/tmp/" + std::to_string(number++);
        disk.putFile(file, "old");
        open(file);
        type("new ");
        disk.failAlways(step, EIO, "/tmp");
        app->flushSave(now);
        EXPECT_TRUE(app->isDirty.get());
        EXPECT_TRUE(disk.bytes(file) == "old" || disk.bytes(file) == "new old");
        EXPECT_EQ(shown(), "new old");
        EXPECT_FALSE(app->notice.get());

        disk.heal(); // the next flush tries again
        type("and ");
        scheduler.advance(1s);
        EXPECT_EQ(disk.bytes(file), "new and old");

        disk.failAlways(step, EIO, "/tmp"); // and what is given up is kept
        type("last ");
        select(0);
        disk.heal();
        const auto texts = kept();
        EXPECT_TRUE(std::ranges::find(texts, "new and last old") != texts.end());
        select(activeIndex() + 1 < app->tabs->size() ? app->tabs->size() - 1 : 0);
    }
}

TEST_F(SavingTest, AFullDiskKeepsOldBytesAndNewWords)
{
    disk.putFile("/tmp/a", "old");
    start();
    open("/tmp/a");
    type(std::string(2000, 'n'));
    disk.setCapacity(1000);
    app->willResignActive();
    EXPECT_EQ(disk.bytes("/tmp/a"), "old");
    EXPECT_TRUE(app->isDirty.get());
    EXPECT_TRUE(log.hasLineStartingWith("Quillmark: save failed: "));
    disk.heal();
    disk.setLargestWrite(7);
    app->willResignActive();
    EXPECT_EQ(disk.bytes("/tmp/a"), std::string(2000, 'n') + "old");
}

TEST_F(SavingTest, WordsThatNoDiskTakesWaitForOneThatDoes)
{
    disk.putFile("/tmp/a", "");
    start();
    open("/tmp/a");
    type("words");
    disk.failAlways(DiskOperation::createNew, ENOSPC);
    select(0);
    EXPECT_TRUE(kept().empty());
    scheduler.advance(10s);
    scheduler.settle();
    disk.heal();
    scheduler.advance(120s);
    scheduler.settle();
    EXPECT_EQ(textsIn(journal), (Strings{"words"}));
    quit();
    EXPECT_EQ(kept(), (Strings{"words"}));
    EXPECT_TRUE(textsIn(journal).empty());
}

TEST_F(SavingTest, AQueuedTextThatTheDiskRefusesIsWhatTheTabShows)
{
    disk.putFile("/tmp/win", "a\r\n");
    start();
    open("/tmp/win");
    pasteLarge();
    disk.failAlways(DiskOperation::write, ENOSPC, "/tmp");
    scheduler.advance(800ms);
    scheduler.settle();
    EXPECT_FALSE(app->isDirty.get());
    EXPECT_TRUE(log.hasLineStartingWith("Quillmark: background save failed: "));
    select(0);
    select(1);
    EXPECT_EQ(view.text().length(), 600 * 1024 + 3);
    EXPECT_EQ(app->lineEndings.get(), "CRLF");
    type("more ");
    scheduler.advance(2s);
    scheduler.settle();
    quit();
    ASSERT_EQ(kept().size(), 1u);
    EXPECT_TRUE(kept().front().starts_with("more xxx") || kept().front().find("more") != std::string::npos);
}

TEST_F(SavingTest, ARetriedWriteReachesTheDisk)
{
    disk.putFile("/tmp/a", "old");
    start();
    open("/tmp/a");
    pasteLarge();
    disk.failAlways(DiskOperation::rename, EIO, "/tmp");
    scheduler.advance(800ms);
    scheduler.settle();
    EXPECT_EQ(disk.bytes("/tmp/a"), "old");
    scheduler.advance(200ms);
    scheduler.settle();
    EXPECT_EQ(textsIn(journal).size(), 1u) << "the journal stays until the text is on the disk";
    disk.heal();
    scheduler.advance(10s);
    scheduler.settle();
    EXPECT_EQ(disk.bytes("/tmp/a")->size(), 600u * 1024 + 4);
    EXPECT_TRUE(textsIn(journal).empty());
}

TEST_F(SavingTest, TheJournalHoldsWhatIsNotOnTheDisk)
{
    disk.putFile("/tmp/a", "");
    start();
    open("/tmp/a");
    for (int i = 0; i < 30; ++i) { // no pause long enough for a save
        type("x");
        scheduler.advance(100ms);
        scheduler.settle();
    }
    EXPECT_EQ(disk.bytes("/tmp/a"), "");
    ASSERT_EQ(textsIn(journal).size(), 1u);
    EXPECT_GE(textsIn(journal).front().size(), 20u);
    scheduler.advance(1s);
    scheduler.settle();
    EXPECT_EQ(disk.bytes("/tmp/a"), shown());
    EXPECT_TRUE(textsIn(journal).empty());
    quit();
    EXPECT_TRUE(disk.names(journal).empty());
    EXPECT_TRUE(kept().empty());
}

TEST_F(SavingTest, AJournalThatAKilledProcessLeftIsRecovered)
{
    const std::string process = Uuid::random().toString();
    disk.putFile(Path(journal) / (process + ".lock"), "");
    disk.putFile(Path(journal) / (process + "." + Uuid::random().toString() + ".Plan.txt"), "words");
    start();
    EXPECT_EQ(kept(), (Strings{"words"}));
    EXPECT_TRUE(textsIn(journal).empty());
}

TEST_F(SavingTest, BytesThatAreNoTextAreKeptBeforeTheyAreReplaced)
{
    const std::string bytes = "binary \x98\x81 bytes";
    disk.putFile("/tmp/binary", bytes);
    start();
    open("/tmp/binary");
    EXPECT_EQ(app->encodingName.get(), "UTF-8?");
    type("x");
    app->flushSave(now);
    type("y");
    app->flushSave(now);
    EXPECT_EQ(kept(), (Strings{bytes}));
}

TEST_F(SavingTest, TerminationLeavesEverythingOnTheDisk)
{
    start();
    type("Plan\nwords");
    pasteLarge();
    quit();
    EXPECT_EQ(noteNames(), (Strings{"Plan.txt"}));
    EXPECT_EQ(noteText("Plan.txt")->size(), 600u * 1024 + 11);
    EXPECT_TRUE(kept().empty());
    start();
    scheduler.settle();
    EXPECT_TRUE(shown().starts_with("Plan\nwords"));

    disk.failAlways(DiskOperation::write, EIO, notes);
    type("last ");
    app->willTerminate();
    app->willTerminate();
    EXPECT_EQ(kept().size(), 1u) << "kept once";
    type("and least ");
    quit();
    EXPECT_EQ(kept().size(), 2u);
}

TEST_F(SavingTest, TheWordsStayWhenTheEditorGoes)
{
    start();
    type("words");
    app->setTextView(nullptr);
    EXPECT_EQ(utf8(app->editorText().text()), "words");
    quit();
    EXPECT_EQ(noteText("words.txt"), "words");
}

TEST_F(SavingTest, AFlushBeforeAnotherTabIsLoadedWritesNoText)
{
    disk.putFile("/tmp/a", "A");
    start();
    type("note");
    disk.failAlways(DiskOperation::write, EIO, notes);
    const Connection early = app->activeTabID.onChange([&](const auto&) {
        app->textDidChange();
        app->flushSave(now);
    });
    open("/tmp/a");
    EXPECT_EQ(disk.bytes("/tmp/a"), "A") << "one tab's text in another one's file";
    EXPECT_EQ(shown(), "A");
    EXPECT_EQ(kept(), (Strings{"note"}));
}

TEST_F(SavingTest, NoticesLastEightSeconds)
{
    start();
    app->showNotice("one");
    scheduler.advance(5s);
    app->showNotice("two");
    scheduler.advance(7999ms);
    EXPECT_EQ(app->notice.get(), "two");
    scheduler.advance(1ms);
    EXPECT_FALSE(app->notice.get());
    app->showNotice("three");
    app->dismissNotice();
    EXPECT_FALSE(app->notice.get());
}

} // namespace
} // namespace quillmark::test
