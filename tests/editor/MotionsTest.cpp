// The caret's ways over text and rows. The views are 20 × 10 characters unless said otherwise.
#include "support/MarkedText.h"
#include "support/Repeated.h"
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

TEST(Motions, GoByCharactersAndWordsAndToTheEnds)
{
    EXPECT_EDIT(to(Motion::characterRight), "|👩‍👩‍👧a", "👩‍👩‍👧|a");
    EXPECT_EDIT(to(Motion::characterLeft), "a\n|b", "a|\nb");
    EXPECT_EDIT(to(Motion::characterLeft, Extend::yes), "ab|c", "a«|b»c");
    EXPECT_EDIT(to(Motion::characterRight, Extend::yes), "a«|b»c", "ab|c");
    EXPECT_NO_EDIT(to(Motion::characterLeft), "|a");
    EXPECT_NO_EDIT(to(Motion::characterRight), "a|");
    EXPECT_EDIT(to(Motion::characterLeft), "a«bc»d", "a|bcd");
    EXPECT_EDIT(to(Motion::characterRight), "a«|bc»d", "abc|d");

    EXPECT_EDIT(to(Motion::wordRight), "|one two", "one| two");
    EXPECT_EDIT(twice(Motion::wordRight), "|one two three", "one two| three");
    EXPECT_EDIT(to(Motion::wordLeft), "one two|", "one |two");
    EXPECT_EDIT(to(Motion::wordLeft, Extend::yes), "слово| x", "«|слово» x");

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
    editor.view.setText(Rope(repeated(u"line\n", 100)));
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

} // namespace
} // namespace quillmark::test
