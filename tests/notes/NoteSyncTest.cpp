#include "NoteStoreTest.h"

namespace quillmark::test {
namespace {

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

} // namespace
} // namespace quillmark::test
