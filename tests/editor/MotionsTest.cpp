// The caret's ways over text and rows. The views are 20 × 10 characters unless said otherwise.
#include "support/MarkedText.h"
#include "support/TestEditor.h"

#include <gtest/gtest.h>

namespace quillmark::test {
namespace {

ViewCommand to(Motion motion, Extend extend = Extend::no)
{
    return [=](PlainTextView& view) { view.move(motion, extend); };
}

ViewCommand twice(Motion motion)
{
    return [=](PlainTextView& view) {
        view.move(motion);
        view.move(motion);
    };
}

TEST(Motions, GoByWholeCharacters)
{
    EXPECT_EDIT(to(Motion::characterRight), "|👩‍👩‍👧a", "👩‍👩‍👧|a");
    EXPECT_EDIT(to(Motion::characterLeft), "a\n|b", "a|\nb");
    EXPECT_EDIT(to(Motion::characterLeft, Extend::yes), "ab|c", "a«|b»c");
    EXPECT_EDIT(to(Motion::characterRight, Extend::yes), "a«|b»c", "ab|c");
    EXPECT_NO_EDIT(to(Motion::characterLeft), "|a");
    EXPECT_NO_EDIT(to(Motion::characterRight), "a|");
}

TEST(Motions, CollapseASelectionToItsEdge)
{
    EXPECT_EDIT(to(Motion::characterLeft), "a«bc»d", "a|bcd");
    EXPECT_EDIT(to(Motion::characterRight), "a«|bc»d", "abc|d");
}

TEST(Motions, GoByWords)
{
    EXPECT_EDIT(to(Motion::wordRight), "|one two", "one| two");
    EXPECT_EDIT(twice(Motion::wordRight), "|one two three", "one two| three");
    EXPECT_EDIT(to(Motion::wordLeft), "one two|", "one |two");
    EXPECT_EDIT(to(Motion::wordLeft, Extend::yes), "слово| x", "«|слово» x");
}

TEST(Motions, GoToTheEndsOfTheDocument)
{
    EXPECT_EDIT(to(Motion::documentEnd), "a|\nb\n", "a\nb\n|");
    EXPECT_EDIT(to(Motion::documentStart, Extend::yes), "a\nb|", "«|a\nb»");
}

TEST(Home, GoesToTheFirstWordAndThenToTheStart)
{
    EXPECT_EDIT(to(Motion::rowStart), "  \tab|c", "  \t|abc");
    EXPECT_EDIT(twice(Motion::rowStart), "  \tab|c", "|  \tabc");
    EXPECT_EDIT(to(Motion::rowStart), "|  abc", "  |abc");
    EXPECT_EDIT(to(Motion::rowStart), " | abc", "  |abc");
    EXPECT_EDIT(to(Motion::rowStart), "    |", "|    ");
}

TEST(HomeAndEnd, KeepToTheRow)
{
    // 20 columns: "aaaa bbbb cccc dddd " and "eeee ffff"
    EXPECT_EDIT(to(Motion::rowStart), "aaaa bbbb cccc dddd eeee ff|ff", "aaaa bbbb cccc dddd |eeee ffff");
    EXPECT_EDIT(to(Motion::rowEnd), "aa|aa bbbb cccc dddd eeee ffff", "aaaa bbbb cccc dddd |eeee ffff");

    TestEditor editor;
    install(editor.view, "aa|aa bbbb cccc dddd eeee ffff");
    editor.view.move(Motion::rowEnd);
    EXPECT_EQ(editor.view.caretPlace().top, 0)
        << "the caret stands at the end of its row, not in the next one";
    editor.view.move(Motion::rowEnd);
    EXPECT_EQ(editor.view.selection().caret, 20) << "End again stays";
    editor.view.move(Motion::rowStart);
    EXPECT_EQ(editor.view.selection().caret, 0);
}

TEST(RowMotions, KeepTheirColumnOverShortRows)
{
    EXPECT_EDIT(to(Motion::rowDown), "abc|d\nx\nabcd", "abcd\nx|\nabcd");
    EXPECT_EDIT(twice(Motion::rowDown), "abc|d\nx\nabcd", "abcd\nx\nabc|d");
    EXPECT_EDIT(twice(Motion::rowUp), "abcd\n\nabc|d", "abc|d\n\nabcd");
    EXPECT_EDIT(to(Motion::rowDown), "ab|c\n漢漢漢", "abc\n漢|漢漢");
    EXPECT_EDIT(to(Motion::rowDown), "|aaaa bbbb cccc dddd eeee", "aaaa bbbb cccc dddd |eeee");
    EXPECT_EDIT(
        [](PlainTextView& view) {
            view.move(Motion::rowDown);
            view.move(Motion::characterLeft);
            view.move(Motion::rowDown);
        },
        "abc|d\nxy\nabcd", "abcd\nxy\na|bcd");
}

TEST(RowMotions, GoToTheEndsOfTheTextFromTheFirstAndTheLastRow)
{
    EXPECT_EDIT(to(Motion::rowUp), "ab|c\nd", "|abc\nd");
    EXPECT_EDIT(to(Motion::rowDown), "a\nb|cd", "a\nbcd|");
    EXPECT_EDIT(to(Motion::rowDown, Extend::yes), "a\nb|cd", "a\nb«cd»");
    TestEditor editor;
    install(editor.view, "abc\nde|f");
    editor.view.move(Motion::rowDown);
    editor.view.move(Motion::rowUp);
    EXPECT_EQ(marked(editor.view), "ab|c\ndef") << "the column is remembered";
}

TEST(PageMotions, KeepTheCaretWhereItStandsOnTheScreen)
{
    TestEditor editor;
    std::u16string text;
    for (int line = 0; line < 100; ++line)
        text += u"line\n";
    editor.view.setText(Rope(text));
    editor.view.select({.anchor = 17, .caret = 17}); // line 3, column 2
    editor.view.move(Motion::pageDown);
    EXPECT_EQ(editor.view.selection().caret, 17 + 9 * 5);
    EXPECT_EQ(editor.view.caretPlace().top, 3 * FixedShaper::rowHeight);
    EXPECT_EQ(editor.view.scrollTop(), 9 * FixedShaper::rowHeight);
    editor.view.move(Motion::pageUp);
    EXPECT_EQ(editor.view.selection().caret, 17);
    EXPECT_EQ(editor.view.scrollTop(), 0);
    for (int page = 0; page < 20; ++page)
        editor.view.move(Motion::pageDown);
    EXPECT_EQ(editor.view.selection().caret, 500);
    EXPECT_EQ(editor.view.scrollTop(), 91 * FixedShaper::rowHeight);
    for (int page = 0; page < 20; ++page)
        editor.view.move(Motion::pageUp);
    EXPECT_EQ(editor.view.selection().caret, 0);
    EXPECT_EQ(editor.view.scrollTop(), 0);
}

TEST(Motions, WorkWithoutAScreen)
{
    ManualScheduler scheduler;
    FixedShaper shaper;
    FakeClipboard clipboard;
    PlainTextView view(scheduler, shaper, clipboard);
    install(view, "a|b\ncd\nef");
    for (const Motion motion :
        {Motion::rowDown, Motion::pageDown, Motion::rowEnd, Motion::rowStart, Motion::pageUp})
        view.move(motion);
    EXPECT_EQ(marked(view), "ab\n|cd\nef") << "a page is one row, and nothing is wrapped";
}

// The mouse

constexpr double cell = FixedShaper::cellWidth;
constexpr double row = FixedShaper::rowHeight;

struct Mouse {
    explicit Mouse(std::string_view text) { install(editor.view, text); }
    std::string press(
        double x, double y, Granularity granularity = Granularity::character, Extend extend = Extend::no)
    {
        editor.view.mousePressed(x * cell, y * row, granularity, extend);
        return marked(editor.view);
    }
    std::string drag(double x, double y)
    {
        editor.view.mouseDragged(x * cell, y * row);
        return marked(editor.view);
    }
    TestEditor editor;
};

TEST(Mouse, SelectsCharacters)
{
    Mouse mouse("|abcd\nefgh");
    EXPECT_EQ(mouse.press(1.4, 0.5), "a|bcd\nefgh");
    EXPECT_EQ(mouse.drag(1.6, 1.5), "a«bcd\nef»gh");
    EXPECT_EQ(mouse.drag(-3, 0.5), "«|a»bcd\nefgh");
    mouse.editor.view.mouseReleased();
    EXPECT_EQ(mouse.editor.clipboard.text(Clipboard::Buffer::primarySelection), u"a");
    EXPECT_EQ(mouse.press(3.4, 1.5, Granularity::character, Extend::yes), "a«bcd\nefg»h");
    EXPECT_EQ(mouse.drag(9, 9), "a«bcd\nefgh»");
    EXPECT_EQ(mouse.press(1, 5), "abcd\nefgh|") << "below the text is its end";
}

TEST(Mouse, SelectsWords)
{
    Mouse mouse("|one two three");
    EXPECT_EQ(mouse.press(6.9, 0.5, Granularity::word), "one «two» three")
        << "the right half of its last letter";
    EXPECT_EQ(mouse.drag(8.2, 0.5), "one «two three»");
    EXPECT_EQ(mouse.drag(5.5, 0.5), "one «two» three");
    EXPECT_EQ(mouse.drag(1.2, 0.5), "«|one two» three");
}

TEST(Mouse, SelectsLines)
{
    Mouse mouse("|one\ntwo\nthree");
    EXPECT_EQ(mouse.press(1, 1.5, Granularity::line), "one\n«two\n»three");
    EXPECT_EQ(mouse.drag(2, 2.5), "one\n«two\nthree»");
    EXPECT_EQ(mouse.drag(2, 0.5), "«|one\ntwo\n»three");
}

TEST(Mouse, ScrollsFasterTheFartherOutsideItIsDragged)
{
    std::string text = "|";
    for (int line = 0; line < 300; ++line)
        text += "line\n";
    Mouse mouse(text);
    mouse.press(0, 0.5);
    mouse.drag(2, 10.5);
    const double slow = mouse.editor.view.scrollTop();
    EXPECT_GT(slow, 0);
    mouse.drag(2, 18);
    EXPECT_GT(mouse.editor.view.scrollTop() - slow, slow);
    EXPECT_TRUE(mouse.editor.view.caretPlace().isVisible);
    for (int i = 0; i < 100; ++i)
        mouse.drag(2, 18);
    EXPECT_EQ(mouse.editor.view.selection().caret, 1500);
    for (int i = 0; i < 200; ++i)
        mouse.drag(2, -8);
    EXPECT_EQ(mouse.editor.view.scrollTop(), 0);
    EXPECT_TRUE(mouse.editor.view.selection().isEmpty()) << "back at the start, where it was pressed";
}

TEST(Mouse, PutsTheCaretAtTheEndOfAWrappedRow)
{
    Mouse mouse("|aaaa bbbb cccc dddd eeee ffff");
    mouse.press(30, 0.5);
    EXPECT_EQ(mouse.editor.view.selection().caret, 20);
    EXPECT_EQ(mouse.editor.view.caretPlace().top, 0);
    EXPECT_EQ(mouse.editor.view.placeOf(20).top, row);
}

} // namespace
} // namespace quillmark::test
