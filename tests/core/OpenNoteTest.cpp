#include "ExternalChangesTest.h"

namespace quillmark::test {
namespace {

constexpr auto noteGone = "Файл заметки удалён снаружи";

struct OpenNote : ExternalChangesTest {
    OpenNote()
    {
        putNote("a.txt", "a");
        putNote("b.txt", "b");
        scheduler.advance(1min);
        putNote("plan.txt", "plan");
        start();
        scheduler.advance(10s);
    }
};

TEST_F(OpenNote, ASyncedVersionIsShownAndUnsavedWordsBecomeANoteOfTheirOwnOnce)
{
    theyWrite(note("plan.txt"), "plan: synced");
    hear();
    EXPECT_EQ(shown(), "plan: synced");
    EXPECT_EQ(app->activeTab()->title.get(), "plan: synced");

    type("my ");
    theyWrite(note("plan.txt"), "plan: synced again");
    type("own ");
    hear();
    EXPECT_EQ(shown(), "plan: synced again");
    EXPECT_EQ(conflictCopies(), Strings{"my own plan: synced"});
    const std::string copy = app->store.notes->front().url.stem();
    EXPECT_EQ(noticeShown(), "Заметка изменена снаружи — ваша версия сохранена как «" + copy + "»");
    hear(1h);
    EXPECT_EQ(conflictCopies().size(), 1u);
    EXPECT_EQ(
        noteText("plan.txt").value_or(noteText("plan synced again.txt").value_or("")), "plan: synced again");
}

TEST_F(OpenNote, AConflictThatNobodyAnnouncedIsHandledAsAnAnnouncedOne)
{
    type("my ");
    theyWrite(note("plan.txt"), "theirs");
    scheduler.advance(800ms);
    EXPECT_EQ(shown(), "theirs");
    EXPECT_EQ(noteText("plan.txt"), "theirs");
    EXPECT_EQ(conflictCopies(), Strings{"my plan"});
    hear(1h);
    EXPECT_EQ(conflictCopies().size(), 1u);
    EXPECT_EQ(kept(), Strings{}) << "nothing was given up";
}

TEST_F(OpenNote, AVersionWithinTheSameSecondAndOfTheSameSizeIsShown)
{
    theyWrite(note("plan.txt"), "new1");
    hear();
    theyWrite(note("plan.txt"), "new2");
    hear();
    EXPECT_EQ(shown(), "new2");
    const WallTime time = disk.stat(note("plan.txt"))->modified;
    theyWrite(note("plan.txt"), "new3"); // by a tool that keeps times
    disk.setModified(note("plan.txt"), time);
    hear();
    EXPECT_EQ(shown(), "new3");
}

TEST_F(OpenNote, BothSidesWroteTheSame)
{
    type("mine ");
    theyWrite(note("plan.txt"), "mine plan");
    hear();
    EXPECT_EQ(conflictCopies(), Strings{});
    EXPECT_EQ(noticeShown(), "");
    EXPECT_FALSE(app->isDirty.get());
}

TEST_F(OpenNote, AVersionThatWasOpenedBeforeItWasAnnouncedNamesItsRecordAndTab)
{
    app->openNote(app->store.notes->at(1).id);
    theyWrite(note("plan.txt"), "another title");
    select(0);
    hear();
    EXPECT_EQ(app->activeTab()->title.get(), "another title");
    EXPECT_EQ(app->store.find(*app->activeNoteID())->title, "another title");
}

TEST_F(OpenNote, AnEmptiedNoteThatGotAnotherVersionDoesNotGoToTheTrash)
{
    clear();
    theyWrite(note("plan.txt"), "news"); // as long as the old one
    close(0);
    scheduler.settle();
    EXPECT_EQ(trashed, 0);
    EXPECT_EQ(noteText("plan.txt").value_or(noteText("news.txt").value_or("")), "news");
}

TEST_F(OpenNote, ADeletedNoteClosesItsTabAndItsWordsAreKept)
{
    app->openNote(app->store.notes->at(1).id);
    app->openNote(app->store.notes->at(2).id);
    select(0);
    type("unsaved ");
    disk.erase(note("plan.txt"));
    disk.erase(note(app->store.notes->at(1).url.filename()));
    hear();
    EXPECT_EQ(app->tabs->size(), 1u) << "the other deleted one went without a word";
    EXPECT_EQ(noticeShown(), noteGone);
    EXPECT_EQ(kept(), Strings{"unsaved plan"});
    hear(1h);
    EXPECT_EQ(noteNames().size(), 1u) << "nothing brings a deleted file back";
}

TEST_F(OpenNote, AFolderThatVanishesAndReturns)
{
    type("unsaved ");
    disk.move(notes, "/elsewhere");
    hear();
    EXPECT_EQ(kept(), Strings{"unsaved plan"});
    EXPECT_EQ(titles(), Strings{"Untitled"});
    disk.erase(notes); // what the fresh note has made
    disk.move("/elsewhere", notes);
    hear();
    EXPECT_EQ(app->store.notes->size(), 4u) << "the three, and the new one, whose file was never made";
}

} // namespace
} // namespace quillmark::test
