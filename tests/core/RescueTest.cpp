// A disk that refuses: the words stay in the window, or reach the journal and the recovery folder.
#include "AppTest.h"

namespace quillmark::test {
namespace {

struct RescueTest : AppTest {
    static constexpr auto now = AppState::AllowBackground::no;
};

TEST_F(RescueTest, WordsThatNoDiskTakesStayInViewUntilOneDoes)
{
    disk.putFile("/docs/a", "");
    start();
    open("/docs/a");
    type("words");
    disk.failAlways(DiskOperation::createNew, ENOSPC);
    app->flushSave(now);
    const std::string text = "Не удалось сохранить «a»: нет места на диске. Текст пока только в памяти.";
    ASSERT_TRUE(app->unsafeWords.get());
    EXPECT_EQ(app->unsafeWords.get()->text, text);
    for (int round = 0; round < 2; ++round) {
        select(0);
        EXPECT_TRUE(kept().empty());
        EXPECT_TRUE(app->tabs.get()[1]->isDirty.get());
        EXPECT_TRUE(app->unsafeWords.get());
        scheduler.advance(10s);
        scheduler.settle();
        select(1);
        EXPECT_EQ(shown(), "words");
        EXPECT_TRUE(app->isDirty.get());
        EXPECT_FALSE(app->isSaved.get());
    }
    close(1);
    EXPECT_TRUE(app->unsafeWords.get()) << "the words outlive their tab";
    disk.heal();
    scheduler.advance(120s);
    scheduler.settle();
    EXPECT_FALSE(app->unsafeWords.get());
    EXPECT_EQ(disk.bytes("/docs/a"), "words");
    quit();
    EXPECT_TRUE(textsIn(journal).empty());
}

TEST_F(RescueTest, AReadOnlyFileSaysAtOnceThatItCannotBeSaved)
{
    disk.putFile("/docs/a", "A");
    disk.setMode("/docs/a", 0444);
    start();
    open("/docs/a");
    type("x");
    scheduler.advance(800ms);
    ASSERT_TRUE(app->unsafeWords.get());
    disk.setMode("/docs/a", 0644);
    scheduler.advance(2s);
    EXPECT_FALSE(app->unsafeWords.get()) << "it goes by itself";
    EXPECT_EQ(disk.bytes("/docs/a"), "xA");
}

TEST_F(RescueTest, AQueuedTextThatTheDiskRefusesIsWhatTheTabShows)
{
    disk.putFile("/docs/win", "a\r\n");
    start();
    open("/docs/win");
    pasteLarge();
    disk.failAlways(DiskOperation::write, ENOSPC, "/docs");
    scheduler.advance(800ms);
    scheduler.settle();
    EXPECT_FALSE(app->isDirty.get());
    EXPECT_TRUE(log.hasLineStartingWith("Quillmark: background save failed: "));
    select(0);
    select(1);
    EXPECT_EQ(view.text().length(), 600 * 1024 + 3);
    EXPECT_EQ(app->lineEndings.get(), LineEnds::crlf);
    type("more ");
    scheduler.advance(2s);
    scheduler.settle();
    quit();
    ASSERT_EQ(kept().size(), 1u);
    EXPECT_TRUE(kept().front().starts_with("more xxx"));
}

TEST_F(RescueTest, AQueuedTextThatTheDiskRefusesIsKeptWhenItsNoteGoes)
{
    start();
    pasteLarge();
    scheduler.advance(700ms);
    scheduler.settle(); // the journal has it
    disk.failAlways(DiskOperation::createNew, ENOSPC, notes);
    scheduler.advance(100ms);
    scheduler.settle();
    const std::string text = shown();
    app->deleteNote(Note(app->store.notes->front()));
    EXPECT_EQ(kept(), Strings{text});
    disk.heal();
    quit();
    EXPECT_TRUE(textsIn(journal).empty());
}

TEST_F(RescueTest, BytesThatAreNoTextAreKeptBeforeTheyAreReplaced)
{
    const std::string bytes = "binary \x98\x81 bytes";
    disk.putFile("/docs/binary", bytes);
    start();
    open("/docs/binary");
    EXPECT_EQ(app->encodingName.get(), TextEncoding::repairedUtf8);
    type("x");
    app->flushSave(now);
    type("y");
    app->flushSave(now);
    EXPECT_EQ(kept(), (Strings{bytes}));

    disk.putFile("/docs/another", bytes);
    open("/docs/another");
    app->saveAs("/docs/another");
    EXPECT_EQ(kept(), (Strings{bytes, bytes}));
}

TEST_F(RescueTest, BytesThatCannotBeKeptAreNotReplaced)
{
    const std::string large = "\x98\x81" + std::string(600 * 1024, 'b');
    for (const std::string& bytes : {std::string("binary \x98\x81 bytes"), large}) {
        disk.putFile("/docs/binary", bytes);
        start();
        open("/docs/binary");
        scheduler.settle();
        disk.putFile(recovered, "in its place");
        type("x");
        scheduler.advance(800ms);
        scheduler.settle();
        app->flushSave(now);
        app->saveAs("/docs/binary");
        EXPECT_TRUE(app->isDirty.get());
        EXPECT_EQ(disk.bytes("/docs/binary"), bytes);
        disk.erase(recovered);
        app->flushSave(now);
        EXPECT_EQ(kept(), (Strings{bytes}));
        EXPECT_EQ(disk.bytes("/docs/binary")->front(), 'x');
        close(app->tabs->size() - 1);
        stop();
        disk.erase(recovered);
    }
}

TEST_F(RescueTest, NobodyWaitsUntilTheBytesOfALargeFileAreKept)
{
    const std::string bytes = "\x98\x81" + std::string(600 * 1024, 'b');
    for (const auto* file : {"/docs/timed", "/docs/flushed"}) {
        disk.putFile(file, bytes);
        if (!app)
            start();
        open(file);
        scheduler.settle();
        type("x");
        scheduler.advance(800ms);
        EXPECT_TRUE(app->isDirty.get());
        EXPECT_EQ(disk.bytes(file), bytes);
        if (file == std::string_view("/docs/flushed"))
            app->flushSave(now);
        scheduler.settle();
        EXPECT_FALSE(app->isDirty.get());
        EXPECT_TRUE(disk.bytes(file)->starts_with("x"));
    }
    EXPECT_EQ(kept(), (Strings{bytes, bytes}));
}

TEST_F(RescueTest, TerminationLeavesEverythingOnTheDisk)
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

} // namespace
} // namespace quillmark::test
