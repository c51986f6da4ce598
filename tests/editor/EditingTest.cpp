// Typing, deletion, undo and the clipboard, as the user sees them.
#include "support/MarkedText.h"
#include "support/TestEditor.h"

#include <gtest/gtest.h>

namespace quillmark::test {
namespace {

ViewCommand type(std::u16string text)
{
    return [text](PlainTextView& view) { view.insertText(text); };
}

TEST(Typing, GoesInAtTheCaretOrReplacesTheSelection)
{
    EXPECT_EDIT(type(u"x"), "|", "x|");
    EXPECT_EDIT(type(u"x"), "a|b", "ax|b");
    EXPECT_EDIT(type(u"x"), "a«bc»d", "ax|d");
    EXPECT_EDIT(type(u"x"), "a«|bc»d", "ax|d");
    EXPECT_EDIT(type(u"один\r\nдва\rтри\n"), "|", "один\nдва\nтри\n|");
    EXPECT_EDIT(&PlainTextView::insertNewline, "  a|b", "  a\n|b");
    EXPECT_EDIT(&PlainTextView::insertTab, "«a»b", "\t|b");
    EXPECT_NO_EDIT(type(u""), "a«b»");
}

TEST(Editing, TellsOfTheTextBeforeTheSelection)
{
    TestEditor editor;
    install(editor.view, "a|b");
    editor.heard.clear();
    editor.view.insertText(u"x");
    EXPECT_EQ(editor.heard, "text selection ");
    editor.heard.clear();
    editor.view.deleteForward();
    EXPECT_EQ(editor.heard, "text selection ") << "the same offset may be in another line";
    editor.heard.clear();
    editor.view.setText(Rope(u"new"));
    EXPECT_EQ(editor.heard, "selection ");
}

TEST(Editing, DoesNothingWhileNotEditable)
{
    const std::string before = "one «two» three";
    TestEditor editor;
    install(editor.view, before);
    editor.view.insertText(u"2");
    editor.view.select({.anchor = 4, .caret = 5});
    install(editor.view, before);
    editor.clipboard.setText(u"clip", Clipboard::Buffer::clipboard);
    editor.view.setEditable(false);
    editor.heard.clear();
    for (const ViewCommand& command : {type(u"x"), ViewCommand(&PlainTextView::insertNewline),
             ViewCommand(&PlainTextView::insertTab), ViewCommand(&PlainTextView::deleteBackward),
             ViewCommand(&PlainTextView::deleteWordForward), ViewCommand(&PlainTextView::undo),
             ViewCommand(&PlainTextView::redo), ViewCommand([](PlainTextView& view) { view.paste(); }),
             ViewCommand(&PlainTextView::cut), ViewCommand(&PlainTextView::deleteSelection),
             ViewCommand([](PlainTextView& view) { view.replace({0, 3}, u"x"); })}) {
        command(editor.view);
        EXPECT_EQ(marked(editor.view), before);
    }
    EXPECT_EQ(editor.heard, "");
    EXPECT_EQ(editor.clipboard.text(Clipboard::Buffer::clipboard), u"clip");
    editor.view.copy();
    EXPECT_EQ(editor.clipboard.text(Clipboard::Buffer::clipboard), u"two") << "reading is allowed";
}

TEST(Undo, TakesTypingBackInOneStepUntilTheCaretMoves)
{
    TestEditor editor;
    for (const char16_t unit : std::u16string(u"abc"))
        editor.view.insertText({&unit, 1});
    editor.view.move(Motion::characterLeft);
    editor.view.insertText(u"x");
    EXPECT_FALSE(editor.view.canRedo());
    editor.view.undo();
    EXPECT_EQ(marked(editor.view), "ab|c");
    EXPECT_TRUE(editor.view.canRedo());
    editor.view.undo();
    EXPECT_EQ(marked(editor.view), "|");
}

TEST(Clipboard, CutsCopiesAndPastes)
{
    TestEditor editor;
    install(editor.view, "one «two» three");
    editor.view.cut();
    EXPECT_EQ(marked(editor.view), "one | three");
    editor.view.copy();
    EXPECT_EQ(editor.clipboard.text(Clipboard::Buffer::clipboard), u"two")
        << "an empty selection copies nothing";
    editor.clipboard.setText(u"a\r\nb\rc\r\r\nd", Clipboard::Buffer::clipboard);
    editor.view.paste();
    EXPECT_EQ(marked(editor.view), "one a\nb\nc\n\nd| three");
    editor.view.undo();
    EXPECT_EQ(marked(editor.view), "one | three");
}

TEST(Clipboard, PastesThePrimarySelectionOnDemandAndNothingFromAnEmptyOne)
{
    TestEditor editor;
    install(editor.view, "«one»");
    editor.view.paste();
    EXPECT_EQ(marked(editor.view), "«one»");
    editor.clipboard.setText(u"two", Clipboard::Buffer::primarySelection);
    editor.view.paste(Clipboard::Buffer::primarySelection);
    EXPECT_EQ(marked(editor.view), "two|");
}

TEST(Select, KeepsToTheTextAndToWholeCharacters)
{
    TestEditor editor;
    editor.view.setText(Rope(u"a👍b"));
    editor.view.select({.anchor = 2, .caret = 99});
    EXPECT_EQ(marked(editor.view), "a«👍b»");
    editor.view.select({.anchor = -5, .caret = -5});
    EXPECT_EQ(marked(editor.view), "|a👍b");
    editor.view.selectAll();
    EXPECT_EQ(marked(editor.view), "«a👍b»");
}

TEST(SetText, LetsALongTextGoInTheBackground)
{
    TestEditor editor;
    editor.view.setText(Rope(std::u16string(100'000, u'x')));
    editor.view.setText(Rope(u"short"));
    EXPECT_GE(editor.scheduler.queuedBackgroundJobs(), 1u);
    editor.scheduler.settle();
    EXPECT_EQ(marked(editor.view), "|short");
}

} // namespace
} // namespace quillmark::test
