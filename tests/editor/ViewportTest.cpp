// Scrolling: what stands on the screen stays there while estimates are corrected, text is edited and the
// width changes.
#include "VisibleRows.h"
#include "editor/EditCommands.h"
#include "editor/RowMap.h"
#include "support/MarkedText.h"
#include "support/Repeated.h"
#include "text/Unicode.h"

#include <gtest/gtest.h>

namespace quillmark::test {
namespace {

constexpr double cell = FixedShaper::cellWidth;
constexpr double row = FixedShaper::rowHeight;

/// Lines whose estimates are wrong: words that break early, and wide characters.
std::u16string awkwardLines(int count)
{
    std::u16string text;
    for (int line = 0; line < count; ++line)
        text += line % 3 == 0 ? u"eleven_char eleven_char eleven_char\n"
            : line % 3 == 1   ? u"漢字漢字漢字漢字漢字漢字漢字\n"
                              : u"short\n";
    return text;
}

std::string textOf(PlainTextView& view, const VisibleRow& visible)
{
    return utf8(view.text().text(visible.layout.range));
}

TEST(Viewport, StopsAtBothEnds)
{
    TestEditor editor;
    editor.view.setVerticalInset(16);
    editor.view.setText(Rope(repeated(u"line\n", 30)));
    EXPECT_EQ(editor.view.contentHeight(), 31 * row + 32);
    EXPECT_EQ(editor.view.visibleRows().front().top, 16);
    editor.view.scrollBy(-50);
    EXPECT_EQ(editor.view.scrollTop(), 0);
    editor.view.scrollBy(7);
    EXPECT_EQ(editor.view.visibleRows().front().top, 9);
    editor.view.scrollBy(10'000);
    EXPECT_EQ(editor.view.scrollTop(), 31 * row + 32 - 10 * row);
    EXPECT_EQ(editor.view.visibleRows().back().top, 10 * row - 16 - row);
    editor.view.scrollBy(-1);
    EXPECT_EQ(editor.view.scrollTop(), 31 * row + 32 - 10 * row - 1);
    editor.view.selectAll();
    editor.view.insertText(u"short");
    for (const double far : {0, 100}) {
        editor.view.scrollBy(far);
        EXPECT_EQ(editor.view.scrollTop(), 0);
        EXPECT_EQ(editor.view.visibleRows().size(), 1u);
        EXPECT_EQ(editor.view.caretPlace().top, 16);
    }
}

TEST(Viewport, CorrectedEstimatesDoNotMoveWhatIsVisible)
{
    TestEditor editor;
    editor.view.setText(Rope(awkwardLines(1000)));
    editor.view.scrollTo(editor.view.contentHeight() / 2 + 7);
    const VisibleRow before = editor.view.visibleRows().front();
    const double heightBefore = editor.view.contentHeight();
    for (int64_t offset = 0; offset < before.layout.range.location; offset += 11)
        editor.view.layoutManager().rowAt(offset);
    EXPECT_NE(editor.view.contentHeight(), heightBefore) << "the estimates were right: nothing was tested";
    const VisibleRow after = editor.view.visibleRows().front();
    EXPECT_EQ(after.layout.range, before.layout.range);
    EXPECT_EQ(after.top, before.top);
    expectSound(editor.view, 10 * row);
}

void expectNoJumpScrollingUp(StretchSizes sizes)
{
    TestEditor editor;
    editor.view.layoutManager().setStretchSizes(sizes);
    editor.view.setText(Rope(awkwardLines(200)));
    editor.view.scrollTo(1e9);
    for (int i = 0; i < 2000 && editor.view.scrollTop() > 0; ++i) {
        const VisibleRow before = editor.view.visibleRows().front();
        editor.view.scrollBy(-5);
        for (const VisibleRow& visible : editor.view.visibleRows()) {
            if (visible.layout.range == before.layout.range) {
                ASSERT_LE(std::abs(visible.top - before.top), 5);
            }
        }
        ASSERT_NO_FATAL_FAILURE(expectSound(editor.view, 10 * row));
    }
    EXPECT_EQ(editor.view.visibleRows().front().layout.range.location, 0);
    EXPECT_EQ(editor.view.scrollTop(), 0);
}

TEST(Viewport, ScrollsUpIntoUnmeasuredTextWithoutAJump)
{
    expectNoJumpScrollingUp({});
    expectNoJumpScrollingUp({.walked = 300, .longest = 300});
}

TEST(Viewport, EditsAboveDoNotMoveWhatIsVisible)
{
    TestEditor editor;
    editor.view.setText(Rope(awkwardLines(300)));
    editor.view.scrollTo(2000);
    editor.view.scrollBy(3);
    const VisibleRow before = editor.view.visibleRows().front();
    const std::string shown = textOf(editor.view, before);
    const auto edit = [&](Range range, std::u16string with) {
        editor.view.perform(UndoManager::Kind::other, [&](const Rope& text, const Selection&) {
            auto made = replaceRange(text, range, with);
            const int64_t visible = editor.view.visibleRows()[2].layout.range.location;
            made->selection = Selection::at({visible + made->replacements.front().change()});
            return made;
        });
    };
    edit({10, 0}, u"new\nlines\n");
    edit({0, 5}, u"");
    EXPECT_EQ(textOf(editor.view, editor.view.visibleRows().front()), shown);
    EXPECT_EQ(editor.view.visibleRows().front().top, before.top);
    const int64_t end = editor.view.visibleRows().front().layout.range.location + 2;
    edit({0, end}, u"");
    EXPECT_EQ(textOf(editor.view, editor.view.visibleRows().front()), shown.substr(2))
        << "the row itself is cut";
    expectSound(editor.view, 10 * row);
}

TEST(Viewport, APlaceStandsAThirdFromTheTopWhereItHadToBeScrolledTo)
{
    TestEditor editor(20, 12);
    editor.view.setText(Rope(awkwardLines(300)));
    const Rope& text = editor.view.text();
    const auto topAfter = [&](int64_t line) {
        editor.view.bringIntoView(text.startOf(Line{line}));
        return editor.view.placeOf(text.startOf(Line{line})).top;
    };
    EXPECT_EQ(topAfter(200), 4 * row);
    const double scrolled = editor.view.scrollTop();
    topAfter(201);
    EXPECT_EQ(editor.view.scrollTop(), scrolled) << "it was visible";
    editor.view.scrollBy(-7.5 * row);
    EXPECT_EQ(topAfter(200), 4 * row) << "only half of it was";
    EXPECT_EQ(topAfter(0), 0) << "as far as there is text";
    EXPECT_EQ(topAfter(300), 11 * row);
}

TEST(Viewport, AWidthThereAndBackShowsTheSame)
{
    TestEditor editor;
    editor.view.setText(
        Rope(repeated(u"many words in a line that is wrapped to several rows at any of the widths\n", 100)));
    editor.view.scrollTo(3333);
    const VisibleRow before = editor.view.visibleRows().front();
    for (const double columns : {19, 15, 11, 7, 3, 1, 9, 33, 20}) {
        editor.view.setVisibleSize(columns * cell, 10 * row);
        const Range shown = editor.view.visibleRows().front().layout.range;
        EXPECT_TRUE(shown.contains(before.layout.range.location)) << columns;
    }
    EXPECT_EQ(editor.view.visibleRows().front().layout.range, before.layout.range);
    EXPECT_EQ(editor.view.visibleRows().front().top, before.top);
}

TEST(Viewport, FollowsTheCaretWithAsLittleMotionAsPossible)
{
    TestEditor editor;
    editor.view.setText(Rope(repeated(u"line\n", 50)));
    for (int i = 0; i < 9; ++i)
        editor.view.move(Motion::rowDown);
    EXPECT_EQ(editor.view.scrollTop(), 0);
    editor.view.move(Motion::rowDown);
    EXPECT_EQ(editor.view.scrollTop(), row);
    for (int i = 0; i < 9; ++i)
        editor.view.move(Motion::rowUp);
    EXPECT_EQ(editor.view.scrollTop(), row);
    editor.view.scrollTo(30 * row);
    editor.view.insertText(u"x");
    EXPECT_EQ(editor.view.scrollTop(), row) << "typing brings the caret back";
    editor.view.move(Motion::documentEnd);
    EXPECT_EQ(editor.view.scrollTop(), 41 * row);
    editor.view.move(Motion::documentStart);
    EXPECT_EQ(editor.view.scrollTop(), 0);
    editor.view.select({.anchor = 201, .caret = 201});
    EXPECT_EQ(editor.view.scrollTop(), 0);
    EXPECT_FALSE(editor.view.caretPlace().isVisible);
    EXPECT_EQ(editor.view.caretPlace().top, 40 * row);
    editor.view.scrollToCaret();
    EXPECT_EQ(editor.view.caretPlace().top, 9 * row);
}

TEST(Viewport, HasExactPixelsIn300MillionRows)
{
    TestEditor editor;
    Rope text(u"line\n");
    while (text.lineCount() < 300'000'000)
        text.append(Rope(text));
    const auto rows = static_cast<double>(text.lineCount());
    editor.view.setText(text);
    EXPECT_EQ(editor.view.contentHeight(), rows * row);
    for (const double top : {16'777'217.0, 2'147'483'649.25, rows * row - 10 * row - 1}) {
        editor.view.scrollTo(top);
        EXPECT_EQ(editor.view.scrollTop(), top);
        const auto first = static_cast<int64_t>(top / row);
        EXPECT_EQ(number(editor.view.visibleRows().front().layout.line), first);
        EXPECT_EQ(editor.view.offsetAt(2 * cell, row), (static_cast<int64_t>((top + row) / row)) * 5 + 2);
        editor.view.scrollBy(0.5);
        EXPECT_EQ(editor.view.scrollTop(), top + 0.5);
    }
    editor.view.move(Motion::documentEnd);
    EXPECT_EQ(editor.view.scrollTop(), rows * row - 10 * row);
    EXPECT_EQ(editor.view.caretPlace().top, 9 * row);
    EXPECT_EQ(editor.view.placeOf(0).top, -editor.view.scrollTop());
}

} // namespace
} // namespace quillmark::test
