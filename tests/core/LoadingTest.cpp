#include "AppTest.h"

namespace quillmark::test {
namespace {

struct LoadingTest : AppTest {};

constexpr int64_t half = 512 * 1024;
constexpr int64_t limit = 20 * 1024 * 1024;

TEST_F(LoadingTest, FromHalfAMegabyteOnInTheBackground)
{
    disk.putFile("/tmp/small", std::string(half - 1, 's'));
    disk.putFile("/tmp/large", std::string(half, 'l'));
    start();
    open("/tmp/small");
    EXPECT_FALSE(app->isLoading.get());
    EXPECT_EQ(view.text().length(), half - 1);

    open("/tmp/large");
    EXPECT_TRUE(app->isLoading.get());
    EXPECT_EQ(shown(), "") << "never the previous tab's text";
    scheduler.settle();
    EXPECT_FALSE(app->isLoading.get());
    EXPECT_EQ(view.text().length(), half);
}

TEST_F(LoadingTest, ALargeFileThatWasLeftNeverShows)
{
    disk.putFile("/tmp/large", std::string(half, 'l'));
    disk.putFile("/tmp/other", "other");
    start();
    open("/tmp/large");
    open("/tmp/other");
    scheduler.settle();
    EXPECT_EQ(shown(), "other");

    select(1);
    scheduler.runBackground(); // read, but not yet published
    select(2);
    select(1);
    EXPECT_TRUE(app->isLoading.get());
    scheduler.settle();
    EXPECT_EQ(view.text().length(), half);
    EXPECT_EQ(disk.bytes("/tmp/other"), "other");
}

TEST_F(LoadingTest, NothingIsWrittenWhileADocumentIsBeingRead)
{
    const std::string bytes(half, 'l');
    disk.putFile("/tmp/large", bytes);
    start();
    open("/tmp/large");
    type("into the empty text that stands in for it");
    EXPECT_FALSE(app->isDirty.get());
    app->flushSave(AppState::AllowBackground::no);
    quit();
    EXPECT_EQ(disk.bytes("/tmp/large"), bytes);
}

TEST_F(LoadingTest, AboveTwentyMegabytesReadOnly)
{
    disk.putFile("/tmp/at", std::string(limit, 'x'));
    disk.putFile("/tmp/above", std::string(limit + 1, 'x'));
    start();
    open("/tmp/at");
    EXPECT_FALSE(app->isReadOnly.get());
    open("/tmp/above");
    EXPECT_TRUE(app->isReadOnly.get());
    select(0);
    EXPECT_FALSE(app->isReadOnly.get());
}

TEST_F(LoadingTest, FactsAndLanguageOfTheFile)
{
    disk.putFile("/tmp/win.txt", "\xcf\xf0\xe8\xe2\xe5\xf2\r\n");
    disk.putFile("/tmp/x.py", "pass");
    disk.putFile("/tmp/script", "#!/usr/bin/env python3\n");
    start();
    open("/tmp/win.txt");
    EXPECT_EQ(shown(), "Привет\n");
    EXPECT_EQ(app->encodingName.get(), "CP1251");
    EXPECT_EQ(app->lineEndings.get(), "CRLF");
    EXPECT_EQ(app->syntaxLanguage.get(), Language::plain);
    open("/tmp/x.py");
    EXPECT_EQ(app->syntaxLanguage.get(), Language::python);
    EXPECT_EQ(app->encodingName.get(), "UTF-8");
    app->activeTab()->languageOverride = Language::plain;
    open("/tmp/script");
    EXPECT_EQ(app->syntaxLanguage.get(), Language::python) << "by its content";
    select(2);
    EXPECT_EQ(app->syntaxLanguage.get(), Language::plain) << "as the user chose";
}

TEST_F(LoadingTest, WhatCannotBeReadIsAnEmptyDocumentThatIsNeverWrittenOver)
{
    disk.putFile("/tmp/locked", "secret");
    disk.setMode("/tmp/locked", 0200);
    disk.putFile("/tmp/broken", "on a bad sector");
    disk.failAlways(DiskOperation::read, EIO, "broken");
    disk.putFolder("/tmp/folder");
    disk.putDevice("/tmp/pipe");
    start();
    for (const char* path : {"/tmp/locked", "/tmp/broken", "/tmp/folder", "/tmp/pipe"}) {
        open(path);
        EXPECT_EQ(shown(), "");
        EXPECT_EQ(app->encodingName.get(), "UTF-8");
        EXPECT_FALSE(app->notice.get());
        EXPECT_FALSE(app->isLoading.get());
        type(path);
        scheduler.advance(2s);
        EXPECT_TRUE(app->isDirty.get());
        EXPECT_TRUE(log.hasLineStartingWith("Quillmark: save failed: "));
    }
    disk.heal();
    app->flushSave(AppState::AllowBackground::no);
    quit();
    EXPECT_EQ(disk.bytes("/tmp/locked"), "secret");
    EXPECT_EQ(disk.bytes("/tmp/broken"), "on a bad sector");
    EXPECT_EQ(disk.infoOf("/tmp/pipe").kind, FileInfo::Kind::other);
    EXPECT_EQ(kept(), (Strings{"/tmp/broken", "/tmp/folder", "/tmp/locked", "/tmp/pipe"}));
}

TEST_F(LoadingTest, AFileThatCouldNotBeReadMayBeMadeAgainOnceItIsGone)
{
    disk.putFile("/tmp/locked", "secret");
    disk.setMode("/tmp/locked", 0200);
    start();
    open("/tmp/locked");
    type("words");
    disk.erase("/tmp/locked");
    app->flushSave(AppState::AllowBackground::no);
    EXPECT_EQ(disk.bytes("/tmp/locked"), "words");
    EXPECT_FALSE(app->isDirty.get());
}

TEST_F(LoadingTest, AMissingFileIsMadeByItsFirstSave)
{
    disk.putFolder("/tmp");
    start();
    open("/tmp/missing.txt");
    open("/tmp/d\xFF.txt");
    EXPECT_EQ(titles(), (Strings{"Untitled", "missing.txt", "d\uFFFD.txt"}));
    type("two");
    select(1);
    type("one");
    scheduler.advance(1s);
    EXPECT_EQ(disk.bytes("/tmp/missing.txt"), "one");
    EXPECT_EQ(disk.bytes("/tmp/d\xFF.txt"), "two");

    open("/nowhere/at/all.txt");
    type("three");
    scheduler.advance(1s);
    EXPECT_TRUE(app->isDirty.get());
    select(0);
    EXPECT_EQ(kept(), (Strings{"three"}));
}

TEST_F(LoadingTest, AFileWhoseSizeLies)
{
    disk.putFile("/tmp/grows", "abc");
    disk.setHook([&](const FakeFileSystem::Call& call) {
        if (call.operation == DiskOperation::read && call.path == "/tmp/grows")
            disk.putFile("/tmp/grows", std::string(half, 'g'));
    });
    start();
    open("/tmp/grows");
    EXPECT_EQ(view.text().length(), half);

    disk.putFile("/tmp/shrinks", std::string(half, 's'));
    disk.setHook([&](const FakeFileSystem::Call& call) {
        if (call.operation == DiskOperation::read && call.path == "/tmp/shrinks")
            disk.putFile("/tmp/shrinks", "s");
    });
    open("/tmp/shrinks");
    scheduler.settle();
    EXPECT_EQ(shown(), "s");
}

TEST_F(LoadingTest, ANoteWithoutARecordIsEmptyAndItsWordsAreKept)
{
    putNote("a.txt", "A");
    start();
    type("words ");
    app->store.notes.set({});
    scheduler.advance(2s);
    EXPECT_TRUE(app->isDirty.get());
    open("/tmp/other");
    EXPECT_EQ(kept(), (Strings{"words A"}));
    select(0);
    EXPECT_EQ(shown(), "");
}

TEST_F(LoadingTest, LargeTextsAreTakenApartInTheBackground)
{
    disk.putFile("/tmp/large", std::string(half, 'l'));
    start();
    open("/tmp/large");
    scheduler.settle();
    select(0);
    EXPECT_GE(scheduler.queuedBackgroundJobs(), 1u);
}

} // namespace
} // namespace quillmark::test
