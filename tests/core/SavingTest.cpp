#include "AppTest.h"

namespace quillmark::test {
namespace {

struct SavingTest : AppTest {
    static constexpr auto now = AppState::AllowBackground::no;

    int64_t writesOf(const std::string& part) const
    {
        int64_t count = 0;
        for (const FakeFileSystem::Call& call : disk.calls())
            count += (call.operation == DiskOperation::rename
                         || call.operation == DiskOperation::renameNoReplace)
                && call.path.native().find(part) != std::string::npos;
        return count;
    }
};

TEST_F(SavingTest, OnceAfterThePause)
{
    disk.putFile("/docs/a", "");
    start();
    open("/docs/a");
    disk.clearCalls();
    for (int i = 0; i < 10; ++i) {
        type("x");
        EXPECT_TRUE(app->isDirty.get() && app->activeTab()->isDirty.get());
        scheduler.advance(500ms);
    }
    EXPECT_EQ(writesOf("/docs/.lq-"), 0);
    scheduler.advance(299ms);
    EXPECT_EQ(writesOf("/docs/.lq-"), 0);
    scheduler.advance(1ms);
    EXPECT_EQ(writesOf("/docs/.lq-"), 1);
    EXPECT_EQ(disk.bytes("/docs/a"), "xxxxxxxxxx");
    EXPECT_FALSE(app->isDirty.get() || app->activeTab()->isDirty.get());
    scheduler.advance(60s);
    EXPECT_EQ(writesOf("/docs/.lq-"), 1);
    EXPECT_EQ(disk.names("/docs"), (Strings{"a"}));
}

TEST_F(SavingTest, ASaveKeepsUndoCaretAndGeneration)
{
    start();
    type("one");
    const auto generationBefore = app->loadGeneration.get();
    app->flushSave(now);
    EXPECT_EQ(app->loadGeneration.get(), generationBefore);
    EXPECT_EQ(view.selection().caret, 3);
    view.undo();
    EXPECT_EQ(shown(), "");
    EXPECT_TRUE(app->isDirty.get());
}

TEST_F(SavingTest, LineEndsStayAndEncodingsBecomeUtf8WithOneNotice)
{
    disk.putFile("/docs/win", "\xcf\xf0\r\n\xcf\r\n");
    disk.putFile("/docs/lf", "a\n");
    start();
    open("/docs/win");
    type("x");
    app->flushSave(now);
    EXPECT_EQ(disk.bytes("/docs/win"), "xПр\r\nП\r\n");
    EXPECT_EQ(app->encodingName.get(), TextEncoding::utf8);
    EXPECT_EQ(app->notice.get(), "Файл был в CP1251 — пересохранён в UTF-8");
    app->dismissNotice();
    disk.putFile("/docs/win", "\xcf\xf0\r\n");
    select(0);
    select(1);
    type("y");
    app->flushSave(now);
    EXPECT_FALSE(app->notice.get()) << "once a tab";
    EXPECT_EQ(app->encodingName.get(), TextEncoding::utf8);
    open("/docs/lf");
    type("x\n");
    app->flushSave(now);
    EXPECT_EQ(disk.bytes("/docs/lf"), "x\na\n");
}

TEST_F(SavingTest, LargeTextsAreWrittenInTheBackgroundInOrder)
{
    start();
    pasteLarge();
    scheduler.advance(800ms);
    EXPECT_FALSE(app->isDirty.get());
    EXPECT_EQ(noteText("Untitled.txt"), "");
    EXPECT_EQ(app->store.notes->front().byteSize, 600 * 1024 + 1) << "as it will be written";
    type("second\n");
    scheduler.advance(800ms);
    scheduler.settle();
    EXPECT_EQ(noteText("Untitled.txt")->size(), 600u * 1024 + 8);
    EXPECT_EQ(app->store.notes->front().byteSize, 600 * 1024 + 8);
}

TEST_F(SavingTest, TheWordsStayWhenTheEditorGoes)
{
    start();
    type("words");
    app->setTextView(nullptr);
    EXPECT_EQ(utf8(app->editorText().text()), "words");
    quit();
    EXPECT_EQ(noteText("words.txt"), "words");
}

TEST_F(SavingTest, AFlushBeforeAnotherTabIsLoadedWritesNoText)
{
    disk.putFile("/docs/a", "A");
    start();
    type("note");
    disk.failAlways(DiskOperation::write, EIO, notes);
    const Connection early = app->activeTabID.onChange([&](const auto&) {
        app->textDidChange();
        app->flushSave(now);
    });
    open("/docs/a");
    EXPECT_EQ(disk.bytes("/docs/a"), "A") << "one tab's text in another one's file";
    EXPECT_EQ(shown(), "A");
    EXPECT_EQ(kept(), (Strings{"note"}));
}

} // namespace
} // namespace quillmark::test
