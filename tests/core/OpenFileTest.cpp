#include "ExternalChangesTest.h"

namespace quillmark::test {
namespace {

constexpr auto gone = "Файл удалён или перемещён — текст в памяти, сохранится при следующей правке";
constexpr auto changed = "Файл изменён снаружи — ваша версия будет сохранена поверх";

struct OpenFile : ExternalChangesTest {
    OpenFile()
    {
        disk.putFile("/d/a", "old");
        start();
        open("/d/a");
        scheduler.advance(2s);
    }
};

TEST_F(OpenFile, OurOwnSaveIsNoChangeHoweverSlowTheDisk)
{
    const int64_t generation = app->loadGeneration.get();
    type("mine ");
    scheduler.advance(800ms);
    hear();
    hear(10s);
    pasteLarge();
    disk.setHook([&](const FakeFileSystem::Call& call) {
        if (call.path.native().starts_with("/d"))
            scheduler.advance(5s);
        watching.deliver();
    });
    scheduler.advance(800ms);
    scheduler.settle();
    hear(10s);
    EXPECT_EQ(disk.bytes("/d/a"), shown());
    EXPECT_EQ(app->loadGeneration.get(), generation);
    EXPECT_EQ(noticeShown(), "");
    EXPECT_EQ(kept(), Strings{});
}

TEST_F(OpenFile, ANewVersionIsShownUnlessItIsTheSame)
{
    theyWrite("/d/a", "new");
    hear(399ms);
    EXPECT_EQ(shown(), "old");
    hear(1ms);
    EXPECT_EQ(shown(), "new");
    const int64_t generation = app->loadGeneration.get();
    theyWrite("/d/a", "new"); // touched, or written by a tool that writes whatever it has
    hear();
    EXPECT_EQ(app->loadGeneration.get(), generation);
    EXPECT_EQ(noticeShown(), "");
}

TEST_F(OpenFile, ALargeFileIsComparedInTheBackground)
{
    const std::string large(600 * 1024, 'x');
    theyWrite("/d/a", large);
    hear();
    ASSERT_EQ(shown(), large);
    const int64_t generation = app->loadGeneration.get();
    theyWrite("/d/a", large);
    hear();
    EXPECT_EQ(app->loadGeneration.get(), generation);
    theyWrite("/d/a", std::string(600 * 1024, 'y'));
    watching.deliver();
    scheduler.advance(400ms);
    EXPECT_EQ(app->loadGeneration.get(), generation) << "nobody waits for the comparison";
    scheduler.settle();
    EXPECT_EQ(shown().front(), 'y');
}

TEST_F(OpenFile, WhatNobodyAnnouncedIsFoundWhenTheUserComesBack)
{
    disk.putFile("/d/a", "theirs, and longer");
    putNote("theirs.txt", "new");
    app->didBecomeActive();
    scheduler.advance(400ms);
    EXPECT_EQ(shown(), "theirs, and longer");
    EXPECT_EQ(app->store.notes->front().title, "new");
}

TEST_F(OpenFile, UnsavedWordsWinAndTheOtherVersionIsKept)
{
    theyWrite("/d/a", "theirs");
    type("mine ");
    hear();
    EXPECT_EQ(noticeShown(), changed);
    EXPECT_EQ(shown(), "mine old");
    scheduler.advance(800ms);
    EXPECT_EQ(disk.bytes("/d/a"), "mine old");
    EXPECT_EQ(kept(), Strings{"theirs"});
    hear(10s);
    EXPECT_EQ(shown(), "mine old");
}

TEST_F(OpenFile, AChangeInTheShadowOfOurSaveIsSeenWhenTheShadowIsOver)
{
    type("mine ");
    scheduler.advance(800ms);
    disk.putFile("/d/a", "theirs");
    hear();
    EXPECT_EQ(shown(), "mine old");
    hear(1200ms);
    EXPECT_EQ(shown(), "theirs");
}

TEST_F(OpenFile, AFileThatNeverExistedIsAnEmptyDocumentUntilSomebodyTypes)
{
    open("/d/new");
    app->didBecomeActive();
    hear(10s);
    EXPECT_EQ(noticeShown(), "");
    EXPECT_FALSE(app->isDirty.get());
    select(0);
    EXPECT_FALSE(disk.exists("/d/new"));
}

TEST_F(OpenFile, ADiskThatDropsOutChangesNothingOnTheScreen)
{
    const auto dropOut = [&](const std::function<void()>& away, const std::function<void()>& back) {
        const std::string before = shown();
        away();
        app->didBecomeActive();
        hear(30s);
        EXPECT_EQ(shown(), before);
        EXPECT_FALSE(app->isDirty.get());
        EXPECT_EQ(noticeShown(), "");
        back();
        hear(30s);
        EXPECT_EQ(shown(), before + "+");
    };
    const auto theyAdd = [&] { theyWrite("/d/a", shown() + "+"); };
    dropOut([&] { disk.failAlways(DiskOperation::stat, ENOTCONN, "/d"); },
        [&] {
            disk.heal();
            theyAdd();
        });
    dropOut(
        [&] {
            theyAdd();
            disk.failAlways(DiskOperation::read, EIO, "/d/a");
        },
        [&] { disk.heal(); });
    dropOut([&] { disk.move("/d", "/elsewhere"); },
        [&] {
            disk.move("/elsewhere", "/d");
            theyAdd();
        });
}

TEST_F(OpenFile, ALogThatIsStartedAnewIsNotPutBack)
{
    const std::string large(20 * 1024 * 1024 + 1, 'l');
    theyWrite("/d/a", large);
    hear();
    ASSERT_TRUE(app->isReadOnly.get());
    app->setLineEndings(LineEnds::crlf);
    disk.move("/d/a", "/d/a.1");
    hear();
    EXPECT_FALSE(app->isDirty.get());
    theyWrite("/d/a", "anew");
    hear();
    quit();
    EXPECT_EQ(disk.bytes("/d/a"), "anew");
}

TEST_F(OpenFile, ADeletedFileLeavesTheTextAndIsMadeAgain)
{
    scheduler.advance(2s);
    disk.erase("/d/a");
    hear();
    EXPECT_EQ(noticeShown(), gone);
    EXPECT_EQ(shown(), "old");
    EXPECT_TRUE(app->activeTab()->isDirty.get());
    hear(1h);
    EXPECT_FALSE(disk.bytes("/d/a")) << "not before the next edit";
    type("more ");
    scheduler.advance(800ms);
    EXPECT_EQ(disk.bytes("/d/a"), "more old");

    theyWrite("/d/a", "back");
    hear(2s);
    EXPECT_EQ(shown(), "back") << "still watched";
}

TEST_F(OpenFile, ACheckAfterATabSwitchConcernsTheTabThatIsShown)
{
    disk.putFile("/d/b", "B");
    theyWrite("/d/a", "theirs");
    watching.deliver();
    open("/d/b");
    const int64_t generation = app->loadGeneration.get();
    hear();
    EXPECT_EQ(shown(), "B");
    EXPECT_EQ(app->loadGeneration.get(), generation);
}

} // namespace
} // namespace quillmark::test
