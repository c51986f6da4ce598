#include "AppTest.h"

namespace quillmark::test {
namespace {

struct LoadingTest : AppTest {};

constexpr int64_t half = 512 * 1024;
constexpr int64_t limit = 20 * 1024 * 1024;

TEST_F(LoadingTest, FromHalfAMegabyteOnInTheBackground)
{
    disk.putFile("/docs/small", std::string(half - 1, 's'));
    disk.putFile("/docs/large", std::string(half, 'l'));
    start();
    open("/docs/small");
    EXPECT_FALSE(app->isLoading.get());
    EXPECT_EQ(view.text().length(), half - 1);

    open("/docs/large");
    EXPECT_TRUE(app->isLoading.get());
    EXPECT_EQ(shown(), "") << "never the previous tab's text";
    scheduler.settle();
    EXPECT_FALSE(app->isLoading.get());
    EXPECT_EQ(view.text().length(), half);
}

TEST_F(LoadingTest, ALargeFileThatWasLeftNeverShows)
{
    disk.putFile("/docs/large", std::string(half, 'l'));
    disk.putFile("/docs/other", "other");
    start();
    open("/docs/large");
    open("/docs/other");
    scheduler.settle();
    EXPECT_EQ(shown(), "other");

    select(1);
    scheduler.runBackground(); // read, but not yet published
    select(2);
    select(1);
    EXPECT_TRUE(app->isLoading.get());
    scheduler.settle();
    EXPECT_EQ(view.text().length(), half);
    EXPECT_EQ(disk.bytes("/docs/other"), "other");
}

TEST_F(LoadingTest, AboveTwentyMegabytesReadOnlyAndNobodyReadsOnWhatWasLeft)
{
    disk.putFile("/docs/huge", std::string(limit + 1, 'h'));
    disk.putFile("/docs/large", std::string(limit, 'x'));
    disk.putFile("/docs/other", "other");
    start();
    open("/docs/other");
    open("/docs/large");
    EXPECT_FALSE(app->isReadOnly.get());
    open("/docs/huge");
    EXPECT_TRUE(app->isReadOnly.get());
    int reads = 0;
    disk.setHook([&](const FakeFileSystem::Call& call) {
        if (call.operation == DiskOperation::read && call.path == "/docs/huge" && ++reads == 3)
            select(1);
    });
    scheduler.settle();
    EXPECT_EQ(reads, 3);
    EXPECT_FALSE(app->isReadOnly.get());
    EXPECT_EQ(shown(), "other");
}

TEST_F(LoadingTest, NothingIsWrittenWhileADocumentIsBeingRead)
{
    const std::string bytes(half, 'l');
    disk.putFile("/docs/large", bytes);
    start();
    open("/docs/large");
    type("into the empty text that stands in for it");
    app->setLineEndings(LineEnds::crlf);
    EXPECT_FALSE(app->isDirty.get());
    app->flushSave(AppState::AllowBackground::no);
    quit();
    EXPECT_EQ(disk.bytes("/docs/large"), bytes);
}

TEST_F(LoadingTest, FactsAndLanguageOfTheFile)
{
    disk.putFile("/docs/win.txt", "\xcf\xf0\xe8\xe2\xe5\xf2\r\n");
    disk.putFile("/docs/x.py", "pass");
    disk.putFile("/docs/script", "#!/usr/bin/env python3\n");
    start();
    open("/docs/win.txt");
    EXPECT_EQ(shown(), "Привет\n");
    EXPECT_EQ(app->encodingName.get(), TextEncoding::cp1251);
    EXPECT_EQ(app->lineEndings.get(), LineEnds::crlf);
    EXPECT_EQ(app->syntaxLanguage.get(), Language::plain);
    open("/docs/x.py");
    EXPECT_EQ(app->syntaxLanguage.get(), Language::python);
    EXPECT_EQ(app->encodingName.get(), TextEncoding::utf8);
    app->activeTab()->languageOverride = Language::plain;
    open("/docs/script");
    EXPECT_EQ(app->syntaxLanguage.get(), Language::python) << "by its content";
    select(2);
    EXPECT_EQ(app->syntaxLanguage.get(), Language::plain) << "as the user chose";
}

TEST_F(LoadingTest, WhatCannotBeReadIsAnEmptyDocumentThatIsNeverWrittenOver)
{
    disk.putFile("/docs/locked", "secret");
    disk.setMode("/docs/locked", 0200);
    disk.putFile("/docs/broken", "on a bad sector");
    disk.failAlways(DiskOperation::read, EIO, "broken");
    disk.putFolder("/docs/folder");
    start();
    for (const char* path : {"/docs/locked", "/docs/broken", "/docs/folder"}) {
        open(path);
        EXPECT_EQ(shown(), "");
        EXPECT_EQ(app->encodingName.get(), TextEncoding::utf8);
        const std::string notice = app->notice.get().value_or("");
        EXPECT_TRUE(notice.empty() || notice.ends_with("«Восстановленные тексты…»"))
            << "of the tab that was left";
        EXPECT_FALSE(app->isLoading.get());
        type(path);
        scheduler.advance(2s);
        EXPECT_TRUE(app->isDirty.get());
        EXPECT_TRUE(log.hasLineStartingWith("Quillmark: save failed: "));
    }
    disk.heal();
    app->flushSave(AppState::AllowBackground::no);
    quit();
    EXPECT_EQ(disk.bytes("/docs/locked"), "secret");
    EXPECT_EQ(disk.bytes("/docs/broken"), "on a bad sector");
    EXPECT_EQ(kept(), (Strings{"/docs/broken", "/docs/folder", "/docs/locked"}));

    disk.setMode("/docs/locked", 0200);
    start();
    open("/docs/locked");
    type("words");
    disk.erase("/docs/locked"); // nothing is there any more that could be written over
    app->flushSave(AppState::AllowBackground::no);
    EXPECT_EQ(disk.bytes("/docs/locked"), "words");
}

TEST_F(LoadingTest, AMissingFileIsMadeByItsFirstSave)
{
    disk.putFolder("/docs");
    start();
    open("/docs/missing.txt");
    open("/docs/d\xFF.txt");
    EXPECT_EQ(titles(), (Strings{"Untitled", "missing.txt", "d\uFFFD.txt"}));
    type("two");
    select(1);
    type("one");
    scheduler.advance(1s);
    EXPECT_EQ(disk.bytes("/docs/missing.txt"), "one");
    EXPECT_EQ(disk.bytes("/docs/d\xFF.txt"), "two");

    open("/nowhere/at/all.txt");
    type("three");
    scheduler.advance(1s);
    EXPECT_TRUE(app->isDirty.get());
    select(0);
    EXPECT_EQ(kept(), (Strings{"three"}));
}

TEST_F(LoadingTest, ANoteWithoutARecordIsEmptyAndItsWordsAreKept)
{
    putNote("a.txt", "A");
    start();
    type("words ");
    disk.erase(note("a.txt"));
    app->store.reloadNotes();
    scheduler.advance(2s);
    EXPECT_TRUE(app->isDirty.get());
    open("/docs/other");
    EXPECT_EQ(kept(), (Strings{"words A"}));
    select(0);
    EXPECT_EQ(shown(), "");
}

} // namespace
} // namespace quillmark::test
