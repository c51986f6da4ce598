// Selecting with the mouse, the primary selection, and text that is dragged and dropped.
#include "support/MarkedText.h"
#include "support/TestEditor.h"

#include <gtest/gtest.h>

namespace quillmark::test {
namespace {

constexpr double cell = FixedShaper::cellWidth;
constexpr double row = FixedShaper::rowHeight;
constexpr auto primary = Clipboard::Buffer::primarySelection;

class MouseSelection : public testing::Test {
protected:
    void press(double column, double line, Granularity granularity, Extend extend = Extend::no)
    {
        view.mousePressed(column * cell, (line + 0.5) * row, granularity, extend);
    }
    void drag(double column, double line) { view.mouseDragged(column * cell, (line + 0.5) * row); }

    TestEditor editor;
    PlainTextView& view = editor.view;
};

TEST_F(MouseSelection, ExtendsWithTheGranularityOfThePressBefore)
{
    install(view, "one two three four");
    press(5, 0, Granularity::word);
    view.mouseReleased();
    press(9, 0, Granularity::character, Extend::yes);
    EXPECT_EQ(marked(view), "one «two three» four");
    view.mouseReleased();
    press(1, 0, Granularity::character, Extend::yes);
    EXPECT_EQ(marked(view), "«|one two» three four");
    view.mouseReleased();
    view.move(Motion::characterRight);
    press(10, 0, Granularity::character, Extend::yes);
    EXPECT_EQ(marked(view), "one two« th»ree four") << "a key starts anew";
    view.mouseReleased();
    drag(0, 0);
    EXPECT_EQ(marked(view), "one two« th»ree four") << "no button is down";
}

TEST_F(MouseSelection, WhatIsSelectedIsThePrimarySelection)
{
    install(view, "|one two");
    press(0, 0, Granularity::character);
    drag(3, 0);
    EXPECT_FALSE(editor.clipboard.hasText(primary)) << "not at each movement";
    view.mouseReleased();
    EXPECT_EQ(editor.clipboard.text(primary), u"one");
    view.move(Motion::characterRight, Extend::yes);
    EXPECT_EQ(editor.clipboard.text(primary), u"one ");
    view.move(Motion::documentStart);
    press(5, 0, Granularity::character);
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
