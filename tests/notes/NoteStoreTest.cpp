#include "NoteStoreTest.h"

namespace quillmark::test {
namespace {

// ---- Listing

TEST_F(NoteStoreTest, ListsTextFilesNewestFirst)
{
    putNote("a.txt", "Alpha\nrest");
    scheduler.advance(1s);
    putNote("B.TXT", "Beta");
    scheduler.advance(1s);
    for (const char* name : {"c.md", ".hidden.txt", "d.txt.bak", "txt"})
        putNote(name, "x");
    disk.putFolder(note("folder.txt"));
    open();
    EXPECT_EQ(listed(), (Names{"B.TXT", "a.txt"}));
    EXPECT_EQ(store->notes->back().title, "Alpha");
    EXPECT_EQ(store->notes->back().preview, "rest");
    EXPECT_EQ(store->notes->back().byteSize, 10);
}

TEST_F(NoteStoreTest, ReadsOnlyTheBeginningAndNoHalfCharacter)
{
    const std::string cyrillic = "x" + repeated("ж", 300);
    putNote("long.txt", cyrillic);
    putNote("cp1251.txt", "\xcf\xf0\xe8\xe2\xe5\xf2");
    putNote("unreadable.txt", "secret");
    disk.setMode(note("unreadable.txt"), 0);
    open();
    EXPECT_EQ(noteCalled("long.txt").title, cyrillic.substr(0, 1 + 79 * 2));
    EXPECT_EQ(noteCalled("cp1251.txt").title, "Привет");
    EXPECT_EQ(noteCalled("unreadable.txt").title, "Untitled");
    EXPECT_EQ(noteCalled("unreadable.txt").byteSize, 6);
}

TEST_F(NoteStoreTest, AFolderThatCannotBeReadOrMadeIsEmpty)
{
    putNote("a.txt", "A");
    disk.setMode(notes, 0);
    EXPECT_TRUE(open().notes->empty());

    disk.erase(notes);
    EXPECT_TRUE(open().notes->empty());
    EXPECT_TRUE(disk.infoOf(notes).kind == FileInfo::Kind::folder) << "made again";

    disk.erase(notes);
    disk.putFile(notes, "a file where the folder was");
    EXPECT_TRUE(open().notes->empty());
    EXPECT_EQ(store->createNote().title, "Untitled");
}

// ---- The folder

TEST_F(NoteStoreTest, RemembersTheFolderThatWasChosen)
{
    disk.putFile("/mnt/Sync/s.txt", "S");
    putNote("a.txt", "A");
    open();
    ASSERT_TRUE(store->setNotesFolder("/mnt/Sync"));
    EXPECT_EQ(listed(), (Names{"s.txt"}));
    EXPECT_EQ(open().folderURL.get(), "/mnt/Sync");

    disk.move("/mnt/Sync", "/mnt/Renamed");
    EXPECT_EQ(open().folderURL.get(), "/mnt/Renamed") << "found again by what it is";
    EXPECT_EQ(open().folderURL.get(), "/mnt/Renamed");

    const auto stored = defaults.data("notesFolderBookmark");
    disk.erase("/mnt/Renamed");
    EXPECT_EQ(open().folderURL.get(), notes);
    EXPECT_EQ(defaults.data("notesFolderBookmark"), stored) << "it may be back at the next start";

    store->resetNotesFolder();
    EXPECT_FALSE(defaults.has("notesFolderBookmark"));
    EXPECT_EQ(listed(), (Names{"a.txt"}));
}

// ---- New notes, copies, the Trash

TEST_F(NoteStoreTest, ANewNoteNeverReplacesAFile)
{
    open();
    disk.setHook([&](const FakeFileSystem::Call& call) {
        if (call.operation == DiskOperation::createNew && !disk.bytes(World::note("Untitled.txt")))
            putNote("Untitled.txt", "quicker");
    });
    const Note note = store->createNote();
    EXPECT_EQ(note.url, World::note("Untitled 2.txt"));
    EXPECT_EQ(disk.bytes(World::note("Untitled.txt")), "quicker");
    EXPECT_EQ(only(), note);
}

TEST_F(NoteStoreTest, ANewNoteComesEvenWhenTheDiskRefusesItsFile)
{
    open();
    disk.failAlways(DiskOperation::createNew, EROFS);
    const Note note = store->createNote();
    EXPECT_EQ(note.url, World::note("Untitled.txt"));
    EXPECT_EQ(store->notes->size(), 1u);
    EXPECT_TRUE(noteNames().empty());

    EXPECT_EQ(store->createNote().url, World::note("Untitled 2.txt"))
        << "the first has its name until it is made";
    disk.heal();
    EXPECT_EQ(store->createNote().url, World::note("Untitled 3.txt"));
    store->saveNoteText(Rope(u"words"), note.id);
    EXPECT_EQ(disk.bytes(World::note("Untitled.txt")), "words");
}

TEST_F(NoteStoreTest, DuplicatesStandInFront)
{
    putNote("Plan.txt", "Plan\nb");
    open();
    scheduler.advance(1s);
    const Note plan = only();
    const auto first = store->duplicateNote(plan);
    const auto second = store->duplicateNote(plan);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(listed(), (Names{"Plan copy 2.txt", "Plan copy.txt", "Plan.txt"}));
    EXPECT_EQ(disk.bytes(second->url), "Plan\nb");
    EXPECT_NE(first->id, plan.id);
    EXPECT_EQ(first->title, "Plan");
    EXPECT_EQ(first->modifiedAt, scheduler.wallNow());
}

TEST_F(NoteStoreTest, TrashingDropsTheRecordAndItsRename)
{
    const Note note = open().createNote();
    save(note, "Plan");
    store->trashNote(note);
    EXPECT_EQ(trash.recycled(), (std::vector<Path>{World::note("Untitled.txt")}));
    EXPECT_TRUE(store->notes->empty());
    disk.clearCalls();
    scheduler.advance(10s);
    EXPECT_TRUE(disk.calls().empty());
}

TEST_F(NoteStoreTest, ATrashedNoteComesBackUnderAFreeName)
{
    putNote("Plan.txt", "old words");
    const Note plan = open().notes->front();
    bool isInTrash = false;
    store->trashNote(plan, [&](const Status& recycled) { isInTrash = recycled.has_value(); });
    scheduler.settle();
    EXPECT_TRUE(isInTrash);

    putNote("Plan.txt", "theirs");
    store->syncWithDisk();
    std::vector<Uuid> changed;
    store->onExternalChanges = [&](const auto& ids, const auto&) { changed = ids; };
    std::optional<Note> back;
    const auto take
        = [&](const Result<Note>& restored) { back = restored ? std::optional(*restored) : std::nullopt; };
    store->restoreTrashedNote(plan, take);
    scheduler.settle();
    ASSERT_TRUE(back);
    EXPECT_EQ(only(), *back);
    EXPECT_EQ(back->title, "old words");
    EXPECT_EQ(disk.bytes(note("Plan 2.txt")), "old words");
    EXPECT_EQ(disk.bytes(note("Plan.txt")), "theirs");
    store->syncWithDisk();
    EXPECT_EQ(std::ranges::count(changed, back->id), 0) << "nobody else has changed it";
    store->restoreTrashedNote(plan, take);
    scheduler.settle();
    EXPECT_FALSE(back) << "the Trash had it once";
}

TEST_F(NoteStoreTest, AQueuedTextGoesToTheTrashWithItsNote)
{
    const Note note = open().createNote();
    queue.enqueue({.target = note.url, .text = Rope(u"words")});
    store->trashNote(note);
    scheduler.advance(60s);
    scheduler.settle();
    EXPECT_TRUE(noteNames().empty()) << "a write that comes later would bring the note back";

    const Note stubborn = store->createNote();
    queue.enqueue({.target = stubborn.url, .text = Rope(u"stubborn")});
    disk.failAlways(DiskOperation::write, EIO, notes);
    store->trashNote(stubborn);
    disk.heal();
    scheduler.advance(60s);
    scheduler.settle();
    EXPECT_TRUE(noteNames().empty());
    EXPECT_EQ(textsIn(recovered), (Names{"stubborn"}));
}

TEST_F(NoteStoreTest, ConflictCopiesAreNotesOfTheirOwn)
{
    putNote("Plan.txt", "theirs");
    open();
    const auto first = store->writeConflictCopy(Rope(u"mine\nrest"), only().url);
    const auto second = store->writeConflictCopy(Rope(u"mine too"), note("Plan.txt"));
    ASSERT_TRUE(first && second);
    EXPECT_EQ(disk.bytes(*first), "mine\nrest");
    EXPECT_TRUE(first->filename().native().starts_with("Plan (conflict 2024-01-15 "));
    EXPECT_EQ(second->stem().native(), first->stem().native() + " 2");
    EXPECT_EQ(store->notes->size(), 3u);
    EXPECT_EQ(only().title, "mine too");
    EXPECT_EQ(only().byteSize, 8);
    EXPECT_EQ(disk.bytes(note("Plan.txt")), "theirs");

    disk.putFile("/left/Plan.txt", "theirs");
    const auto beside = store->writeConflictCopy(Rope(u"mine"), "/left/Plan.txt");
    ASSERT_TRUE(beside);
    EXPECT_EQ(beside->parent_path(), Path("/left")) << "of a folder that was chosen before";
    EXPECT_EQ(store->notes->size(), 3u);
}

TEST_F(NoteStoreTest, WordsThatCannotBeWrittenAreKept)
{
    putNote("Plan.txt", "theirs");
    open();
    disk.failAlways(DiskOperation::createNew, ENOSPC, notes);
    EXPECT_FALSE(store->writeConflictCopy(Rope(u"mine"), only().url));
    store->saveNoteText(Rope(u"quick"), only().id);
    EXPECT_TRUE(log.hasLineStartingWith("Ledgerly: save failed: "));
    EXPECT_EQ(textsIn(recovered), (Names{"quick"}));
    EXPECT_EQ(only().title, "theirs");

    disk.heal();
    store->saveNoteText(Rope(u"quick\nnote"), only().id);
    EXPECT_EQ(disk.bytes(only().url), "quick\nnote");
    EXPECT_EQ(only().title, "quick");
    store->saveNoteText(Rope(u"nobody's"), Uuid::random());
}

} // namespace
} // namespace quillmark::test
