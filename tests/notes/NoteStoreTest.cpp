#include "notes/NoteStore.h"

#include "io/Bookmark.h"
#include "support/World.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace quillmark::test {
namespace {

using namespace std::chrono_literals;

struct NoteStoreTest : testing::Test, World {
    WriteQueue queue{scheduler, writer, log, [](const WriteQueue::Outcome&) {}};
    std::unique_ptr<NoteStore> store;

    NoteStore& open()
    {
        store.reset();
        store = std::make_unique<NoteStore>(NoteStoreServices{.scheduler = scheduler,
            .files = disk,
            .log = log,
            .defaults = defaults,
            .trash = trash,
            .writeQueue = queue,
            .recovery = recovery,
            .known = writer.known(),
            .watching = watching,
            .defaultFolder = notes});
        return *store;
    }

    const Note& only() const { return store->notes->front(); }

    Note noteCalled(const std::string& name) const
    {
        const auto found = std::ranges::find(*store->notes, note(name), &Note::url);
        return found != store->notes->end() ? *found : Note();
    }

    std::vector<std::string> listed() const
    {
        std::vector<std::string> names;
        for (const Note& note : *store->notes)
            names.push_back(note.url.filename());
        return names;
    }

    /// Writes a text into the note's file as the model does.
    void save(const Note& note, const std::string& text)
    {
        const auto written = queue.writeNow({.target = note.url, .text = Rope::fromUtf8(text)});
        ASSERT_TRUE(written);
        store->noteDidSave(note.id, Rope::fromUtf8(text), written->bytes);
    }
};

using Names = std::vector<std::string>;

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
    disk.putDevice(note("pipe.txt"));
    disk.putLink(note("dangling.txt"), "/nowhere");
    open();
    EXPECT_EQ(listed(), (Names{"B.TXT", "a.txt"}));
    EXPECT_EQ(store->notes->back().title, "Alpha");
    EXPECT_EQ(store->notes->back().preview, "rest");
    EXPECT_EQ(store->notes->back().byteSize, 10);
}

TEST_F(NoteStoreTest, ReadsOnlyTheBeginningAndNoHalfCharacter)
{
    std::string cyrillic = "x";
    for (int i = 0; i < 300; ++i)
        cyrillic += "ж";
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

TEST_F(NoteStoreTest, RemovesWhatAKilledSaveLeft)
{
    putNote(".lq-6C0C0A6E-4B7B-4C5C-9F5B-0E6C3F0A1B2C.tmp", "half a te");
    putNote("a.txt", "A");
    open();
    EXPECT_EQ(disk.names(notes), (Names{"a.txt"}));
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

TEST_F(NoteStoreTest, RefusesAFolderThatCannotBeUsed)
{
    putNote("a.txt", "A");
    open();
    const auto before = store->notes.get();
    EXPECT_FALSE(store->setNotesFolder("/nowhere"));
    EXPECT_FALSE(store->setNotesFolder(note("a.txt")));
    EXPECT_EQ(store->notes.get(), before);
    EXPECT_EQ(store->folderURL.get(), notes);
    EXPECT_FALSE(defaults.has("notesFolderBookmark"));

    defaults.setData("notesFolderBookmark", "\xFFgarbage");
    EXPECT_EQ(open().folderURL.get(), notes);
}

// ---- Saving and renaming

TEST_F(NoteStoreTest, ASaveRefreshesTheRecordAndMovesItToTheTop)
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

TEST_F(NoteStoreTest, RenamesOnceFiveSecondsAfterTheLastSave)
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

TEST_F(NoteStoreTest, RenamesAroundTakenNames)
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

TEST_F(NoteStoreTest, ANameTakenBetweenLookAndMoveIsNotOverwritten)
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

TEST_F(NoteStoreTest, AFailedRenameKeepsFileAndRecordAndIsTriedAgainAtTheNextSave)
{
    const Note note = open().createNote();
    save(note, "Plan");
    disk.failAlways(DiskOperation::renameNoReplace, EIO);
    scheduler.advance(5s);
    EXPECT_EQ(noteNames(), (Names{"Untitled.txt"}));
    EXPECT_EQ(only().url, World::note("Untitled.txt"));
    EXPECT_TRUE(log.hasLineStartingWith("Ledgerly: rename failed: "));

    disk.heal();
    save(only(), "Plan");
    scheduler.advance(5s);
    EXPECT_EQ(noteNames(), (Names{"Plan.txt"}));
}

TEST_F(NoteStoreTest, QueuedTextsReachTheFileBeforeItGetsAnotherName)
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

TEST_F(NoteStoreTest, ANameThatAQueuedTextIsOnItsWayToIsTaken)
{
    open();
    queue.enqueue({.target = note("Untitled.txt"), .text = Rope(u"words")});
    EXPECT_EQ(store->createNote().url, note("Untitled 2.txt"));
    scheduler.settle();
    EXPECT_EQ(disk.bytes(note("Untitled.txt")), "words");
}

TEST_F(NoteStoreTest, AForeignNameOfInvalidBytesIsAFile)
{
    putNote("b\xFF\xFE.txt", "words");
    open();
    ASSERT_EQ(store->notes->size(), 1u);
    store->renameFileIfNeeded(only().id);
    EXPECT_EQ(noteNames(), (Names{"words.txt"}));
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

TEST_F(NoteStoreTest, ADuplicateThatCannotBeWrittenLeavesNothing)
{
    putNote("Plan.txt", "Plan");
    open();
    const auto before = store->notes.get();
    for (const DiskOperation step :
        {DiskOperation::openForReading, DiskOperation::read, DiskOperation::createNew, DiskOperation::write,
            DiskOperation::sync, DiskOperation::renameNoReplace}) {
        disk.failAlways(step, EIO);
        EXPECT_FALSE(store->duplicateNote(before.front()));
        disk.heal();
        EXPECT_EQ(disk.names(notes), (Names{"Plan.txt"})) << static_cast<int>(step);
    }
    EXPECT_EQ(store->notes.get(), before);
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

// ---- Other programs

struct NoteSyncTest : NoteStoreTest {
    int calls = 0;
    Names changed;
    Names removed;

    void follow()
    {
        open().onExternalChanges = [this](const auto& changedIDs, const auto& removedIDs) {
            ++calls;
            for (const Uuid& id : changedIDs)
                changed.push_back(store->find(id)->url.filename());
            removed.insert(removed.end(), removedIDs.size(), "one");
        };
        scheduler.advance(1min);
    }
    void hear()
    {
        watching.deliver();
        scheduler.advance(400ms);
    }
};

TEST_F(NoteSyncTest, WhatIsAddedChangedRenamedAndRemoved)
{
    putNote("a.txt", "a");
    putNote("b.txt", "b");
    putNote("c.txt", "c");
    follow();
    const Uuid a = noteCalled("a.txt").id;
    const Uuid c = noteCalled("c.txt").id;

    putNote("new.TXT", "new\nwith a preview");
    putNote(".hidden.txt", "");
    disk.putFolder(note("folder.txt"));
    hear();
    EXPECT_EQ(listed().front(), "new.TXT");
    EXPECT_EQ(only().preview, "with a preview");
    EXPECT_EQ(listed().size(), 4u);
    EXPECT_EQ(calls, 0) << "new files concern nobody";

    putNote("a.txt", "A longer one");
    disk.move(note("b.txt"), note("b2.txt"));
    hear();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(changed, Names{"a.txt"});
    EXPECT_EQ(removed.size(), 1u);
    EXPECT_EQ(noteCalled("a.txt").id, a);
    EXPECT_EQ(noteCalled("a.txt").title, "A longer one");
    EXPECT_EQ(noteCalled("b2.txt").title, "b");
    EXPECT_EQ(noteCalled("c.txt").id, c);
}

TEST_F(NoteSyncTest, ABurstIsOneLookAndASaveOfOursReportsNothing)
{
    putNote("a.txt", "a");
    follow();
    disk.clearCalls();
    for (int i = 0; i < 10; ++i) {
        putNote(std::to_string(i) + ".txt", "x");
        watching.deliver();
        scheduler.advance(30ms);
    }
    scheduler.advance(400ms);
    EXPECT_EQ(std::ranges::count(disk.calls(), DiskOperation::list, &FakeFileSystem::Call::operation), 1);

    disk.setHook([this](const FakeFileSystem::Call& call) { // a disk so slow that the times lie apart
        if (call.operation == DiskOperation::syncFolder)
            scheduler.advance(5s);
    });
    save(noteCalled("a.txt"), "a\nmore");
    disk.setHook(nullptr);
    putNote("b.txt", "");
    hear();
    EXPECT_EQ(calls, 0);
    save(noteCalled("a.txt"), "a\nagain");
    putNote("a.txt", "a\nAGAIN"); // as large, within the second: no listing can tell
    putNote("c.txt", "");
    hear();
    EXPECT_EQ(calls, 0);
    scheduler.advance(2s);
    putNote("a.txt", "a\nAgain");
    putNote("d.txt", "");
    hear();
    EXPECT_EQ(changed, Names{"a.txt"});
}

TEST_F(NoteSyncTest, ManyThousandAppearAndVanish)
{
    putNote("a.txt", "a");
    follow();
    for (int i = 0; i < 3000; ++i)
        putNote("Заметка " + std::to_string(i) + ".txt", "x");
    hear();
    EXPECT_EQ(store->notes->size(), 3001u);
    disk.erase(notes);
    disk.putFile(notes, "a file in the folder's place");
    hear();
    EXPECT_TRUE(store->notes->empty());
    EXPECT_EQ(removed.size(), 3001u);
    disk.erase(notes);
    disk.putFolder(notes);
    putNote("a.txt", "a");
    hear();
    EXPECT_EQ(listed(), Names{"a.txt"});
}

TEST_F(NoteSyncTest, NamesThatDifferInCaseOrNormalisationAreDifferentFiles)
{
    follow();
    putNote("План.txt", "1");
    putNote("план.txt", "2");
    putNote("й.txt", "composed");
    putNote("и\u0306.txt", "decomposed");
    hear();
    EXPECT_EQ(store->notes->size(), 4u);
    const auto before = store->notes.get();
    disk.erase(note("План.txt"));
    hear();
    EXPECT_EQ(store->notes->size(), 3u);
    EXPECT_EQ(noteCalled("план.txt").title, "2");
}

TEST_F(NoteSyncTest, TheOldFolderIsSilentAfterAnotherWasChosen)
{
    disk.putFolder("/other");
    follow();
    putNote("late.txt", "");
    watching.deliver();
    EXPECT_TRUE(store->setNotesFolder("/other"));
    putNote("later.txt", "");
    hear();
    EXPECT_TRUE(store->notes->empty());
}

// ---- Search

struct NoteSearchTest : NoteStoreTest {
    Names shown() const
    {
        Names names;
        for (const Note* note : store->filteredNotes())
            names.push_back(note->url.stem());
        std::ranges::sort(names);
        return names;
    }
    void search(std::string_view query) { store->updateSearchQuery(query); }
    void waitForFiles()
    {
        scheduler.advance(200ms);
        scheduler.settle();
    }
    /// Too far behind for a preview.
    static std::string deep(const std::string& text) { return "note\n" + std::string(600, '.') + text; }
};

TEST_F(NoteSearchTest, TitlesAndPreviewsAtOnceFilesAMomentLater)
{
    putNote("1.txt", "Список ПОКУПОК");
    putNote("2.txt", "Дела\nпро покупки");
    putNote("3.txt", deep("Покупка"));
    putNote("4.txt", deep("\xCF\xEE\xEA\xF3\xEF\xEA\xE0")); // the same in Windows-1251
    putNote("5.txt", "покупатель без файла");
    putNote("6.txt", "other");
    putNote("7.txt", std::string(2'000'000, '.') + "покупка");
    open();
    disk.failAlways(DiskOperation::openForReading, EACCES, "5.txt");
    search("  покуп ");
    EXPECT_EQ(shown(), (Names{"1", "2", "5"}));
    EXPECT_EQ(*store->searchQuery, "  покуп ");
    scheduler.advance(199ms);
    scheduler.settle();
    EXPECT_EQ(shown().size(), 3u);
    scheduler.advance(1ms);
    scheduler.settle();
    EXPECT_EQ(shown(), (Names{"1", "2", "3", "4", "5"}));
    search("");
    EXPECT_EQ(shown().size(), 7u);
    EXPECT_TRUE(store->contentMatchIDs->empty());
}

TEST_F(NoteSearchTest, OnlyTheLastQueryReadsFilesAndShowsWhatItFound)
{
    for (int i = 0; i < 20; ++i)
        putNote(std::to_string(i) + ".txt", deep(i % 2 ? "alpha" : "beta"));
    open();
    disk.clearCalls();
    for (const char* query : {"a", "al", "alp", "alph", " \t "}) {
        search(query);
        scheduler.advance(150ms);
    }
    waitForFiles();
    EXPECT_TRUE(disk.calls().empty());
    EXPECT_EQ(shown().size(), 20u);

    search("alpha");
    scheduler.advance(200ms);
    disk.setHook([&](const FakeFileSystem::Call& call) {
        if (call.path.filename() == "0.txt" && call.operation == DiskOperation::read)
            search("beta"); // a key in the middle of it
    });
    scheduler.runBackground();
    disk.setHook(nullptr);
    scheduler.settle();
    EXPECT_TRUE(shown().empty()) << "nothing of the old query";
    waitForFiles();
    EXPECT_EQ(shown().size(), 10u);
}

TEST_F(NoteSearchTest, AFolderThatChangesMeanwhile)
{
    putNote("1.txt", deep("needle"));
    putNote("2.txt", deep("needle"));
    open();
    search("needle");
    scheduler.advance(200ms);
    disk.erase(note("2.txt"));
    putNote("3.txt", "needle in a title");
    watching.deliver();
    scheduler.advance(400ms);
    scheduler.settle();
    EXPECT_EQ(shown(), (Names{"1", "3"}));
    disk.putFolder("/other");
    EXPECT_TRUE(store->setNotesFolder("/other"));
    EXPECT_EQ(*store->searchQuery, "");
    EXPECT_TRUE(store->contentMatchIDs->empty());
}

} // namespace
} // namespace quillmark::test
