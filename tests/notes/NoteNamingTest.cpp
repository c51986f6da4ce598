// What a save makes of a note: its record, its place in the list, the name of its file.
#include "NoteStoreTest.h"

namespace quillmark::test {
namespace {

using NoteNaming = NoteStoreTest;

TEST_F(NoteNaming, ASaveRefreshesTheRecordAndMovesItToTheTop)
{
    putNote("old.txt", "old");
    scheduler.advance(1s);
    putNote("new.txt", "new");
    open();
    scheduler.advance(1s);
    save(noteCalled("old.txt"), "Title\nsecond");
    EXPECT_EQ(listed(), (Names{"old.txt", "new.txt"}));
    EXPECT_EQ(only().title, "Title");
    EXPECT_EQ(only().preview, "second");
    EXPECT_EQ(only().byteSize, disk.infoOf(only().url).size);
    EXPECT_EQ(only().modifiedAt, scheduler.wallNow());

    scheduler.setWall(scheduler.wallNow() - 24h * 365);
    save(noteCalled("new.txt"), "the clock was set back");
    EXPECT_EQ(listed(), (Names{"old.txt", "new.txt"}));
}

TEST_F(NoteNaming, RenamesOnceFiveSecondsAfterTheLastSave)
{
    const Note note = open().createNote();
    EXPECT_EQ(noteNames(), (Names{"Untitled.txt"}));
    for (int i = 0; i < 5; ++i) {
        save(note, "Plan\n" + std::to_string(i));
        scheduler.advance(900ms);
    }
    scheduler.advance(4s);
    EXPECT_EQ(noteNames(), (Names{"Untitled.txt"}));
    scheduler.advance(200ms);
    EXPECT_EQ(noteNames(), (Names{"Plan.txt"}));
    EXPECT_EQ(only().url, World::note("Plan.txt"));
    EXPECT_EQ(only().id, note.id);
}

TEST_F(NoteNaming, RenamesAroundTakenNames)
{
    putNote("Plan.txt", "somebody else's");
    const Note note = open().createNote();
    save(note, "Plan");
    store->renameFileIfNeeded(note.id);
    EXPECT_EQ(noteNames(), (Names{"Plan 2.txt", "Plan.txt"}));
    EXPECT_EQ(disk.bytes(World::note("Plan.txt")), "somebody else's");

    disk.erase(World::note("Plan.txt"));
    store->renameFileIfNeeded(note.id);
    EXPECT_EQ(noteNames(), (Names{"Plan 2.txt"})) << "a numbered name is right";

    save(store->notes->front(), "Plan 2");
    store->renameFileIfNeeded(note.id);
    EXPECT_EQ(noteNames(), (Names{"Plan 2.txt"}));
}

TEST_F(NoteNaming, ANameTakenBetweenLookAndMoveIsNotOverwritten)
{
    const Note note = open().createNote();
    save(note, "Plan");
    disk.setHook([&](const FakeFileSystem::Call& call) {
        if (call.operation == DiskOperation::renameNoReplace && !disk.bytes(World::note("Plan.txt")))
            putNote("Plan.txt", "quicker");
    });
    store->renameFileIfNeeded(note.id);
    EXPECT_EQ(disk.bytes(World::note("Plan.txt")), "quicker");
    EXPECT_EQ(disk.bytes(World::note("Plan 2.txt")), "Plan");
    EXPECT_EQ(only().url, World::note("Plan 2.txt"));
}

TEST_F(NoteNaming, QueuedTextsReachTheFileBeforeItGetsAnotherName)
{
    const Note note = open().createNote();
    queue.enqueue({.target = note.url, .text = Rope(u"Plan")});
    store->noteDidSave(note.id, Rope(u"Plan"), 4);
    store->renameFileIfNeeded(note.id);
    scheduler.settle();
    EXPECT_EQ(noteNames(), (Names{"Plan.txt"}));
    EXPECT_EQ(disk.bytes(World::note("Plan.txt")), "Plan");

    queue.enqueue({.target = only().url, .text = Rope(u"Other")});
    store->noteDidSave(note.id, Rope(u"Other"), 5);
    disk.failAlways(DiskOperation::write, ENOSPC);
    store->renameFileIfNeeded(note.id);
    EXPECT_EQ(only().url, World::note("Plan.txt")) << "the queued text would make the old name again";
    disk.heal();
    scheduler.advance(60s);
    scheduler.settle();
    EXPECT_EQ(disk.bytes(World::note("Plan.txt")), "Other");
}

} // namespace
} // namespace quillmark::test
