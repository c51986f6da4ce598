// Texts of which the editor looks at a part only: of many lines, or of one long line.
#include "VisibleRows.h"

#include "editor/RowMap.h"
#include "editor/SegmentCuts.h"
#include "support/Repeated.h"

namespace quillmark::test {
namespace {

constexpr double cell = FixedShaper::cellWidth;
constexpr double row = FixedShaper::rowHeight;

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
    const Connection connection(editor.view.onScrolled([&] { ++told; }));
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

TEST(LongLine, OfAHundredMegabytesTakesNoLongerThanAShortOne)
{
    TestEditor editor;
    Rope text(u"word словцо, word ");
    while (text.length() < 100'000'000)
        text.append(Rope(text));
    const int64_t length = text.length();
    editor.view.setText(text);
    const auto bounded = [&](const char* what, const std::function<void()>& command, int64_t segments = 10) {
        const int64_t before = editor.shaper.shapedUnits();
        command();
        ASSERT_LE(editor.shaper.shapedUnits() - before, segments * longestWholeLine) << what;
        ASSERT_TRUE(editor.view.visibleRows().size() >= 10) << what;
    };
    PlainTextView& view = editor.view;
    for (const int64_t caret : {int64_t{0}, length / 2, length}) {
        view.select({.anchor = caret, .caret = caret});
        bounded("go", [&] { view.scrollToCaret(); });
        bounded("type", [&] { view.insertText(u"x"); }, 1);
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

} // namespace
} // namespace quillmark::test
