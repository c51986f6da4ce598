// Scrolling: what stands on the screen stays there while estimates are corrected, text is edited and the
// width changes.
#include "editor/RowMap.h"
#include "editor/SegmentCuts.h"
#include "support/MarkedText.h"
#include "support/Random.h"
#include "support/TestEditor.h"
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

/// The rows on the screen follow one another, cover the height and know their numbers.
void expectSound(PlainTextView& view, double height)
{
    const std::vector<VisibleRow> rows = view.visibleRows();
    ASSERT_FALSE(rows.empty());
    const double rowHeight = view.layoutManager().metrics().height;
    for (size_t i = 1; i < rows.size(); ++i) {
        const RowLayout& before = rows[i - 1].layout;
        EXPECT_EQ(rows[i].top, rows[i - 1].top + rowHeight);
        EXPECT_EQ(number(rows[i].row), number(rows[i - 1].row) + 1);
        EXPECT_EQ(rows[i].layout.range.location, before.range.end() + (before.endsLine ? 1 : 0));
        EXPECT_EQ(number(rows[i].layout.line), number(before.line) + (before.endsLine ? 1 : 0));
    }
    for (const VisibleRow& visible : rows)
        EXPECT_EQ(view.layoutManager().rowAt(visible.layout.range.location), visible.row);
    const bool showsEnd
        = rows.back().layout.range.end() == view.text().length() && rows.back().layout.endsLine;
    const bool showsStart = rows.front().layout.range.location == 0;
    EXPECT_TRUE(rows.front().top <= 0 || showsStart);
    EXPECT_TRUE(rows.back().top + rowHeight >= height || (showsEnd && showsStart) || showsEnd);
    EXPECT_EQ(view.layoutManager().checkInvariants(), "");
}

TEST(Viewport, StopsAtBothEnds)
{
    TestEditor editor;
    editor.view.setVerticalInset(16);
    std::u16string text;
    for (int line = 0; line < 30; ++line)
        text += u"line\n";
    editor.view.setText(Rope(text));
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
    editor.view.scrollTo(0);
    EXPECT_EQ(editor.view.visibleRows().front().top, 16);
}

TEST(Viewport, ShowsShortTextAtTheTop)
{
    TestEditor editor;
    editor.view.setVerticalInset(16);
    install(editor.view, "a|\nb");
    editor.view.scrollBy(100);
    editor.view.scrollTo(100);
    EXPECT_EQ(editor.view.scrollTop(), 0);
    EXPECT_EQ(editor.view.visibleRows().size(), 2u);
    EXPECT_EQ(editor.view.caretPlace().top, 16);
    EXPECT_EQ(editor.view.caretPlace().x, cell);
}

TEST(Viewport, TextBecomingShortComesBackIntoView)
{
    TestEditor editor;
    editor.view.setText(Rope(awkwardLines(100)));
    editor.view.scrollTo(1e9);
    EXPECT_GT(editor.view.scrollTop(), 0);
    editor.view.selectAll();
    editor.view.insertText(u"x");
    EXPECT_EQ(editor.view.scrollTop(), 0);
    EXPECT_EQ(editor.view.visibleRows().size(), 1u);
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
    editor.view.storage().replace({10, 0}, u"new\nlines\n");
    editor.view.storage().replace({0, 5}, u"");
    EXPECT_EQ(textOf(editor.view, editor.view.visibleRows().front()), shown);
    EXPECT_EQ(editor.view.visibleRows().front().top, before.top);
    const int64_t end = editor.view.visibleRows().front().layout.range.location + 2;
    editor.view.storage().replace({0, end}, u"");
    EXPECT_EQ(textOf(editor.view, editor.view.visibleRows().front()), shown.substr(2))
        << "the row itself is cut";
    expectSound(editor.view, 10 * row);
}

TEST(Viewport, AWidthThereAndBackShowsTheSame)
{
    TestEditor editor;
    std::u16string text;
    for (int line = 0; line < 100; ++line)
        text += u"many words in a line that is wrapped to several rows at any of the widths\n";
    editor.view.setText(Rope(text));
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

TEST(Viewport, AnotherFontKeepsTheFirstRow)
{
    TestEditor editor;
    editor.view.setText(Rope(awkwardLines(100)));
    editor.view.scrollTo(700);
    const int64_t first = editor.view.visibleRows().front().layout.range.location;
    editor.shaper.setScale(2);
    editor.view.fontChanged();
    EXPECT_TRUE(editor.view.visibleRows().front().layout.range.contains(first));
    EXPECT_EQ(editor.view.caretPlace().height, 2 * row);
    expectSound(editor.view, 10 * row);
}

TEST(Viewport, FollowsTheCaretWithAsLittleMotionAsPossible)
{
    TestEditor editor;
    std::u16string text;
    for (int line = 0; line < 50; ++line)
        text += u"line\n";
    editor.view.setText(Rope(text));
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

TEST(Viewport, TellsWhenItIsScrolledAndOnlyThen)
{
    TestEditor editor;
    editor.view.setText(Rope(awkwardLines(100)));
    int told = 0;
    const Connection connection(editor.view.scrolled().connect([&] { ++told; }));
    editor.view.move(Motion::characterRight);
    EXPECT_EQ(told, 0);
    editor.view.scrollBy(5);
    EXPECT_EQ(told, 1);
    editor.view.scrollBy(0);
    EXPECT_EQ(told, 1);
    editor.view.insertNewline();
    EXPECT_EQ(told, 2);
}

TEST(Viewport, OfOnePixelStillWorks)
{
    TestEditor editor;
    editor.view.setVerticalInset(16);
    editor.view.setText(Rope(u"ab 漢\nc"));
    editor.view.setVisibleSize(1, 1);
    for (int i = 0; i < 8; ++i) {
        editor.view.move(Motion::rowDown);
        expectSound(editor.view, 1);
        EXPECT_TRUE(editor.view.caretPlace().isVisible);
    }
    editor.view.mousePressed(0, 0, Granularity::word, Extend::no);
    editor.view.mouseDragged(50, 50);
    editor.view.mouseReleased();
    editor.view.move(Motion::pageUp);
    editor.view.setVisibleSize(0, 0);
    EXPECT_TRUE(editor.view.visibleRows().empty());
    EXPECT_EQ(editor.view.offsetAt(5, 5), 0);
    editor.view.scrollBy(100);
    editor.view.insertText(u"x");
    editor.view.setVisibleSize(20 * cell, 10 * row);
    expectSound(editor.view, 10 * row);
}

TEST(Viewport, ReachesBeyondTwoToThe31Pixels)
{
    TestEditor editor;
    constexpr int64_t lineCount = 10'000'000;
    editor.shaper.setScale(15); // rows of 300 pixels: 3,000,000,000 in all
    editor.view.fontChanged();
    editor.view.setVisibleSize(100 * cell, 3000);
    editor.view.setText(Rope(std::u16string(lineCount - 1, u'\n') + u"last"));
    EXPECT_EQ(editor.view.contentHeight(), 3e9);
    editor.view.move(Motion::documentEnd);
    EXPECT_TRUE(editor.view.caretPlace().isVisible);
    EXPECT_EQ(editor.view.scrollTop(), 3e9 - 3000);
    editor.view.scrollBy(-1);
    EXPECT_EQ(editor.view.scrollTop(), 3e9 - 3000 - 1);
    editor.view.scrollTo(2.5e9);
    EXPECT_EQ(editor.view.scrollTop(), 2.5e9);
    EXPECT_EQ(number(editor.view.visibleRows().front().layout.line), 2'500'000'000 / 300);
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

// Settling

TEST(Settling, MakesTheHeightRightAndMovesNothing)
{
    std::u16string text; // rows break anywhere, so that estimates from lengths are right
    for (int line = 0; text.size() < 3'000'000; ++line)
        text += std::u16string(static_cast<size_t>(line % 3 * 17 + line / 10'000), u'w') + u'\n';
    TestEditor walked;
    walked.view.layoutManager().setStretchSizes({.longest = 10'000'000});
    walked.view.setText(Rope(text));

    TestEditor editor;
    editor.view.setText(Rope(text));
    editor.view.scrollTo(editor.view.contentHeight() / 3 + 7);
    const VisibleRow before = editor.view.visibleRows().front();
    EXPECT_NE(editor.view.contentHeight(), walked.view.contentHeight()) << "there is nothing to settle";
    int told = 0;
    const Connection connection(editor.view.scrolled().connect([&] { ++told; }));
    editor.scheduler.advance(std::chrono::milliseconds(99));
    EXPECT_EQ(told, 0) << "a moment without keys and scrolling comes first";
    editor.scheduler.advance(std::chrono::seconds(1));
    EXPECT_GT(told, 1) << "it was not in slices";
    EXPECT_TRUE(editor.view.layoutManager().isSettled());
    EXPECT_EQ(editor.view.contentHeight(), walked.view.contentHeight());
    EXPECT_EQ(editor.view.visibleRows().front().layout.range, before.layout.range);
    EXPECT_EQ(editor.view.visibleRows().front().top, before.top);

    for (TestEditor* each : {&walked, &editor}) // another width begins anew
        each->view.setVisibleSize(13 * cell, 10 * row);
    EXPECT_FALSE(editor.view.layoutManager().isSettled());
    editor.scheduler.advance(std::chrono::seconds(1));
    EXPECT_EQ(editor.view.contentHeight(), walked.view.contentHeight());
    expectSound(editor.view, 10 * row);
}

// Long lines

TEST(LongLine, OfAHundredMegabytesTakesNoLongerThanAShortOne)
{
    TestEditor editor;
    Rope text(u"word словцо, word ");
    while (text.length() < 100'000'000)
        text.append(Rope(text));
    const int64_t length = text.length();
    editor.view.setText(text);
    const auto bounded = [&](const char* what, const std::function<void()>& command) {
        const int64_t before = editor.shaper.shapedUnits();
        command();
        ASSERT_LE(editor.shaper.shapedUnits() - before, 10 * longestWholeLine) << what;
        ASSERT_TRUE(editor.view.visibleRows().size() >= 10) << what;
    };
    PlainTextView& view = editor.view;
    for (const int64_t caret : {int64_t{0}, length / 2, length}) {
        view.select({.anchor = caret, .caret = caret});
        bounded("go", [&] { view.scrollToCaret(); });
        bounded("type", [&] { view.insertText(u"x"); });
        bounded("erase", [&] { view.deleteBackward(); });
        bounded("break", [&] { view.insertNewline(); });
        bounded("join", [&] { view.undo(); });
        for (int motion = 0; motion <= static_cast<int>(Motion::documentEnd); ++motion)
            bounded("move", [&] { view.move(static_cast<Motion>(motion)); });
    }
    bounded("select all", [&] { view.selectAll(); });
    for (int tenth = 0; tenth < 10; ++tenth)
        bounded("scroll", [&] { view.scrollTo(view.contentHeight() * tenth / 10 + 5); });
    bounded("wheel", [&] { view.scrollBy(333); });
    bounded("click", [&] { view.mousePressed(50, 50, Granularity::word, Extend::no); });
    bounded("drag", [&] { view.mouseDragged(50, 500); });
    bounded("resize", [&] { view.setVisibleSize(31 * cell, 12 * row); });
    bounded("font", [&] { view.fontChanged(); });
    view.select({.anchor = length / 4, .caret = length / 2});
    bounded("delete", [&] { view.deleteBackward(); });
    EXPECT_EQ(view.text().length(), length - length / 4);
    expectSound(view, 12 * row);
}

TEST(LongLine, IsShownWholeRowByRow)
{
    TestEditor editor;
    std::u16string text;
    while (text.size() < 100'000)
        text += u"word словцо 漢字 ";
    editor.view.setText(Rope(u"before\n" + text + u"\nafter"));
    std::u16string shown;
    int64_t end = 0;
    for (Row at{}; number(at) < editor.view.layoutManager().rowCount(); at = at + 1) {
        const RowLayout layout = editor.view.layoutManager().layoutOf(at);
        if (layout.range.location < end)
            continue; // the row was an estimate
        ASSERT_EQ(layout.range.location, end);
        end = layout.range.end() + (layout.endsLine ? 1 : 0);
    }
    EXPECT_EQ(end, editor.view.text().length() + 1)
        << "each unit stands in one row, and behind the last is the end";
}

TEST(LongLine, AKeyShapesOneSegment)
{
    TestEditor editor;
    editor.view.setText(Rope(std::u16string(1'000'000, u'x')));
    for (const int64_t offset : {int64_t{1}, int64_t{500'000}, int64_t{999'999}}) {
        editor.view.select({.anchor = offset, .caret = offset});
        editor.view.scrollToCaret();
        const int64_t before = editor.shaper.shapedUnits();
        editor.view.insertText(u"y");
        EXPECT_LE(editor.shaper.shapedUnits() - before, longestWholeLine);
    }
}

TEST(LongLine, IsTheSameAfterRandomEdits)
{
    Random random;
    TestEditor editor;
    std::u16string model;
    while (model.size() < 100'000)
        model += u"word словцо 👍 ";
    editor.view.setText(Rope(model));
    const std::u16string_view pieces[] = {u"x", u" ", u"\n", u"\u0301", u"👩‍👩‍👧", u""};
    for (int step = 0; step < 300; ++step) {
        const int64_t at = random.below(static_cast<int64_t>(model.size()) + 1);
        const int64_t removed = std::min(
            static_cast<int64_t>(model.size()) - at, random.oneIn(20) ? random.below(3000) : random.below(3));
        const std::u16string_view with = pieces[random.below(std::size(pieces))];
        editor.view.replace({at, removed}, with);
        model.replace(static_cast<size_t>(at), static_cast<size_t>(removed), with);
        ASSERT_EQ(editor.view.text().text(), model);
        ASSERT_NO_FATAL_FAILURE(expectSound(editor.view, 10 * row)) << "step " << step;
        if (removed > 0 || !with.empty()) {
            ASSERT_TRUE(editor.view.caretPlace().isVisible) << "step " << step;
        }
    }
}

} // namespace
} // namespace quillmark::test
