// Selecting with the mouse, the primary selection, and text that is dragged and dropped.
#include "support/MarkedText.h"
#include "support/Repeated.h"
#include "support/TestEditor.h"

#include <gtest/gtest.h>

namespace quillmark::test {
namespace {

constexpr double cell = FixedShaper::cellWidth;
constexpr double row = FixedShaper::rowHeight;
constexpr auto primary = Clipboard::Buffer::primarySelection;

class MouseSelection : public testing::Test {
protected:
    /// The text and its selection afterwards.
    std::string press(double column, double line, Granularity granularity = Granularity::character,
        Extend extend = Extend::no)
    {
        view.mousePressed(column * cell, (line + 0.5) * row, granularity, extend);
        return marked(view);
    }
    std::string drag(double column, double line)
    {
        view.mouseDragged(column * cell, (line + 0.5) * row);
        return marked(view);
    }

    TestEditor editor;
    PlainTextView& view = editor.view;
};

TEST_F(MouseSelection, TakesCharacters)
{
    install(view, "|abcd\nefgh");
    EXPECT_EQ(press(1.4, 0), "a|bcd\nefgh");
    EXPECT_EQ(drag(1.6, 1), "a«bcd\nef»gh");
    EXPECT_EQ(drag(-3, 0), "«|a»bcd\nefgh");
    view.mouseReleased();
    EXPECT_EQ(press(3.4, 1, Granularity::character, Extend::yes), "a«bcd\nefg»h");
    EXPECT_EQ(drag(9, 9), "a«bcd\nefgh»");
    EXPECT_EQ(press(1, 5), "abcd\nefgh|") << "below the text is its end";
}

TEST_F(MouseSelection, TakesWordsAndLines)
{
    install(view, "|one two three");
    EXPECT_EQ(press(6.9, 0, Granularity::word), "one «two» three") << "the right half of its last letter";
    EXPECT_EQ(drag(8.2, 0), "one «two three»");
    EXPECT_EQ(drag(5.5, 0), "one «two» three");
    EXPECT_EQ(drag(1.2, 0), "«|one two» three");
    install(view, "|one\ntwo\nthree");
    EXPECT_EQ(press(1, 1, Granularity::line), "one\n«two\n»three");
    EXPECT_EQ(drag(2, 2), "one\n«two\nthree»");
    EXPECT_EQ(drag(2, 0), "«|one\ntwo\n»three");
}

TEST_F(MouseSelection, ExtendsWithTheGranularityOfThePressBefore)
{
    const auto extendTo = [&](double column) {
        view.mouseReleased();
        return press(column, 0, Granularity::character, Extend::yes);
    };
    install(view, "one two three four");
    press(5, 0, Granularity::word);
    EXPECT_EQ(extendTo(9), "one «two three» four");
    EXPECT_EQ(extendTo(1), "«|one two» three four");
    view.move(Motion::characterRight);
    EXPECT_EQ(extendTo(10), "one two« th»ree four") << "a key starts anew";
    view.mouseReleased();
    EXPECT_EQ(drag(0, 0), "one two« th»ree four") << "no button is down";
}

TEST_F(MouseSelection, ScrollsFasterTheFartherOutsideItIsDragged)
{
    install(view, "|" + repeated("line\n", 300));
    press(0, 0);
    drag(2, 10);
    const double slow = view.scrollTop();
    EXPECT_GT(slow, 0);
    drag(2, 17.5);
    EXPECT_GT(view.scrollTop() - slow, slow);
    EXPECT_TRUE(view.caretPlace().isVisible);
    for (int i = 0; i < 100; ++i)
        drag(2, 17.5);
    EXPECT_EQ(view.selection().caret, 1500);
    for (int i = 0; i < 200; ++i)
        drag(2, -8.5);
    EXPECT_EQ(view.scrollTop(), 0);
    EXPECT_TRUE(view.selection().isEmpty()) << "back at the start, where it was pressed";
}

TEST_F(MouseSelection, PutsTheCaretAtTheEndOfAWrappedRow)
{
    install(view, "|aaaa bbbb cccc dddd eeee ffff");
    press(30, 0);
    EXPECT_EQ(view.selection().caret, 20);
    EXPECT_EQ(view.caretPlace().top, 0);
    EXPECT_EQ(view.placeOf(20).top, row);
}

TEST_F(MouseSelection, WhatIsSelectedIsThePrimarySelection)
{
    install(view, "|one two");
    press(0, 0);
    drag(3, 0);
    EXPECT_FALSE(editor.clipboard.hasText(primary)) << "not at each movement";
    view.mouseReleased();
    EXPECT_EQ(editor.clipboard.text(primary), u"one");
    view.move(Motion::characterRight, Extend::yes);
    EXPECT_EQ(editor.clipboard.text(primary), u"one ");
    view.move(Motion::documentStart);
    press(5, 0);
    view.mouseReleased();
    EXPECT_EQ(editor.clipboard.text(primary), u"one ") << "an empty selection leaves it alone";
    view.selectAll();
    view.insertText(u"gone");
    EXPECT_EQ(editor.clipboard.text(primary), u"one two") << "as it was when it was selected";
}

TEST(Drop, MovesAndCopiesInOneStep)
{
    const auto own = [](Range range, int64_t offset, DropKind kind) {
        return [=](PlainTextView& view) { view.dropOwn(range, offset, kind); };
    };
    EXPECT_EDIT(own({4, 4}, 0, DropKind::move), "one «two »three", "«two »one three");
    EXPECT_EDIT(own({4, 4}, 13, DropKind::move), "one «two »three", "one three«two »");
    EXPECT_EDIT(own({4, 4}, 0, DropKind::copy), "one «two »three", "«two »one two three");
    EXPECT_EDIT(own({4, 4}, 13, DropKind::copy), "one «two »three", "one two three«two »");
    for (const int64_t within : {4, 6, 8}) {
        EXPECT_NO_EDIT(own({4, 4}, within, DropKind::move), "one «two »three");
        EXPECT_NO_EDIT(own({4, 4}, within, DropKind::copy), "one «two »three");
    }
    TestEditor editor;
    install(editor.view, "one «two »three");
    editor.view.dropOwn({4, 4}, 99, DropKind::move);
    editor.view.undo();
    EXPECT_EQ(marked(editor.view), "one «two »three");
    EXPECT_FALSE(editor.view.canUndo());
    editor.view.setEditable(false);
    editor.view.dropOwn({4, 4}, 0, DropKind::move);
    editor.view.drop(u"x", 0);
    EXPECT_EQ(marked(editor.view), "one «two »three");
}

TEST(Drop, PutsTextFromOutsideBetweenCharacters)
{
    const auto drop
        = [](int64_t offset) { return [=](PlainTextView& view) { view.drop(u"a\r\nb", offset); }; };
    EXPECT_EDIT(drop(1), "x👍|", "x«a\nb»👍");
    EXPECT_EDIT(drop(2), "x👍|", "x«a\nb»👍");
    EXPECT_EDIT(drop(99), "«x»👍", "x👍«a\nb»");
}

} // namespace
} // namespace quillmark::test
