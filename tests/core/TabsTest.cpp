#include "AppTest.h"

namespace quillmark::test {
namespace {

struct TabsTest : AppTest {};

TEST_F(TabsTest, TheFirstStartShowsAFreshNoteAndALaterOneTheNewestNote)
{
    start();
    EXPECT_EQ(titles(), (Strings{"Untitled"}));
    EXPECT_EQ(noteNames(), (Strings{"Untitled.txt"}));
    stop();

    defaults.remove("session.v1");
    scheduler.advance(1s);
    putNote("newest.txt", "Newest");
    start();
    EXPECT_EQ(titles(), (Strings{"Newest"}));
    EXPECT_EQ(shown(), "Newest");
}

TEST_F(TabsTest, OneTabForOneSource)
{
    disk.putFile("/docs/a.txt", "A");
    start();
    open("/docs/a.txt");
    app->openNote(app->store.notes->front().id);
    open("/docs/./x/../a.txt");
    const auto generationBefore = app->loadGeneration.get();
    open("/docs//a.txt");
    disk.clearCalls();
    select(1);
    EXPECT_TRUE(disk.calls().empty()) << "neither saved nor read again";
    EXPECT_EQ(app->loadGeneration.get(), generationBefore);
    EXPECT_EQ(titles(), (Strings{"Untitled", "a.txt"}));
    EXPECT_EQ(activeIndex(), 1u);
    app->openNote(Uuid::random());
    app->selectTab(Uuid::random());
    EXPECT_EQ(app->tabs->size(), 2u);
    EXPECT_EQ(app->fileTabs().size(), 1u);
}

TEST_F(TabsTest, ClosingActivatesTheTabThatTookThePlace)
{
    start();
    type("note");
    for (const char* file : {"/docs/a", "/docs/b", "/docs/c"})
        open(file);
    select(1);
    close(1);
    EXPECT_EQ(titles(), (Strings{"note", "b", "c"}));
    EXPECT_EQ(activeIndex(), 1u);
    select(2);
    close(2);
    EXPECT_EQ(activeIndex(), 1u);
    const auto generationBefore = app->loadGeneration.get();
    close(0);
    EXPECT_EQ(titles(), (Strings{"b"}));
    EXPECT_EQ(app->loadGeneration.get(), generationBefore) << "the active tab is untouched";
    EXPECT_EQ(noteText("note.txt"), "note");
}

TEST_F(TabsTest, AnEmptyNoteGoesToTheTrashWithItsTab)
{
    start();
    type(" \n\t\u00A0");
    close(0);
    EXPECT_EQ(trash.recycled().size(), 1u);

    type("kept");
    app->newNote(); // never written to
    select(0);
    close(1);
    EXPECT_EQ(trash.recycled().size(), 2u);
    EXPECT_EQ(app->store.notes->size(), 1u);
    close(0);
    EXPECT_EQ(trash.recycled().size(), 2u);
    EXPECT_EQ(noteText("kept.txt"), "kept");
}

TEST_F(TabsTest, WhatOnlyLooksEmptyStays)
{
    putNote("large.txt", std::string(600 * 1024, 'x'));
    scheduler.advance(1s);
    putNote("locked.txt", "secret");
    disk.setMode(note("locked.txt"), 0);
    scheduler.advance(1s);
    putNote("filled.txt", "");
    start();
    putNote("filled.txt", "by another program");
    close(0); // looks empty since it was loaded
    ASSERT_EQ(app->store.notes->size(), 4u);
    for (const char* name : {"locked.txt", "large.txt"}) {
        const auto found = std::ranges::find(*app->store.notes, note(name), &Note::url);
        ASSERT_NE(found, app->store.notes->end());
        app->openNote(found->id); // the large one is still being read when it is closed
        EXPECT_EQ(shown(), "");
        close(activeIndex());
    }
    EXPECT_TRUE(trash.recycled().empty());
    EXPECT_EQ(noteText("Untitled.txt"), "by another program") << "named as what the user saw of it";
    EXPECT_TRUE(disk.bytes(note("locked.txt")).has_value())
        << "and keeps its name, as nobody knows its title";
}

TEST_F(TabsTest, ADeletedNoteIsNotWrittenAgain)
{
    start();
    type("words");
    scheduler.advance(2s);
    type(" more");
    const Note deleted = app->store.notes->front();
    app->deleteNote(deleted);
    EXPECT_EQ(trash.recycled(), (std::vector<Path>{deleted.url}));
    EXPECT_EQ(titles(), (Strings{"Untitled"}));
    EXPECT_EQ(shown(), "");
    scheduler.advance(60s);
    scheduler.settle();
    EXPECT_EQ(disk.bytes(deleted.url), "") << "the fresh note, which took the free name";
    EXPECT_EQ(kept(), Strings{"words more"}) << "the Trash has the file without the last words";
    EXPECT_TRUE(textsIn(journal).empty());

    type("other");
    app->newNote();
    const Note inactive = app->store.notes->back();
    app->deleteNote(inactive);
    EXPECT_EQ(titles(), (Strings{"Untitled"}));
    EXPECT_EQ(app->tabs->size(), 1u);
}

TEST_F(TabsTest, IdsReadFromTheModelMayChangeUnderACall)
{
    start();
    open("/docs/a");
    app->closeTab(*app->activeTabID.get());
    EXPECT_EQ(titles(), (Strings{"Untitled"}));
    app->deleteNote(app->store.notes->front());
    EXPECT_EQ(titles(), (Strings{"Untitled"}));
}

TEST_F(TabsTest, ToggledViewsAreRemembered)
{
    defaults.setString("appearanceMode", "sepia");
    defaults.setString("showMinimap", "yes");
    start();
    EXPECT_EQ(app->appearanceMode.get(), AppearanceMode::system);
    EXPECT_TRUE(app->showMinimap.get());
    EXPECT_TRUE(appearance.applied().empty());
    app->setAppearanceMode(AppearanceMode::dark);
    app->setShowMinimap(false);
    EXPECT_EQ(defaults.string("appearanceMode"), "dark");
    restart();
    EXPECT_EQ(app->appearanceMode.get(), AppearanceMode::dark);
    EXPECT_FALSE(app->showMinimap.get());
    EXPECT_TRUE(app->showLineNumbers.get());
    EXPECT_EQ(appearance.applied(), (std::vector{AppearanceMode::dark, AppearanceMode::dark}));
}

} // namespace
} // namespace quillmark::test
