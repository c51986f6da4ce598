// Half a word in an input method: no save takes it, and nothing loses it.
#include "AppTest.h"

namespace quillmark::test {
namespace {

struct ComposingTest : AppTest {
    void compose(const std::u16string& text)
    {
        view.compose({.text = text, .caret = 0, .isCaretVisible = true, .clauses = {}});
    }
};

TEST_F(ComposingTest, ASaveLeavesItAlone)
{
    disk.putFile("/docs/file", "");
    start();
    open("/docs/file");
    type("word ");
    compose(u"字");
    scheduler.advance(5s);
    EXPECT_EQ(disk.bytes("/docs/file"), "word ");
    ASSERT_NE(view.composition(), nullptr);
    EXPECT_EQ(view.composition()->text, u"字");
    EXPECT_FALSE(app->isDirty.get()) << "nothing is typed yet";
    view.insertComposed(u"字");
    scheduler.advance(5s);
    EXPECT_EQ(disk.bytes("/docs/file"), "word 字");
}

TEST_F(ComposingTest, LeavingTheDocumentTypesItThere)
{
    putNote("note.txt", "old");
    disk.putFolder("/docs");
    start();
    open("/docs/other");
    compose(u"字");
    select(0);
    EXPECT_EQ(disk.bytes("/docs/other"), "字");
    EXPECT_EQ(shown(), "old");
    EXPECT_FALSE(app->isDirty.get());

    compose(u"語");
    app->newNote();
    EXPECT_EQ(noteText("語old.txt"), "語old");
    compose(u"字");
    close(2); // a note with a word in it is not empty
    EXPECT_EQ(noteText("字.txt"), "字");
    EXPECT_EQ(view.composition(), nullptr);
}

TEST_F(ComposingTest, QuittingAndDeletingKeepIt)
{
    putNote("note.txt", "old ");
    start();
    compose(u"字");
    app->deleteNote(Note(app->store.notes->front()));
    EXPECT_EQ(kept(), (Strings{"字old "}));
    compose(u"last words");
    quit();
    EXPECT_EQ(noteText("last words.txt"), "last words");
}

TEST_F(ComposingTest, AnotherProgramsVersionDoesNotTakeItAway)
{
    putNote("note.txt", "old");
    disk.putFile("/docs/a", "old");
    start();
    compose(u"字");
    disk.putFile(note("note.txt"), "theirs");
    app->store.syncWithDisk();
    EXPECT_EQ(shown(), "theirs");
    EXPECT_EQ(app->store.notes->size(), 2u);
    EXPECT_EQ(app->store.notes->front().title, "字old");

    open("/docs/a");
    compose(u"字");
    disk.erase("/docs/a");
    disk.putFile("/docs/a", "theirs");
    watching.deliver();
    scheduler.advance(400ms);
    EXPECT_EQ(shown(), "字old");
}

} // namespace
} // namespace quillmark::test
