// Lines that run from right to left.
#include "VisibleRows.h"
#include "editor/SegmentCuts.h"
#include "support/MarkedText.h"
#include "support/Repeated.h"

#include <gtest/gtest.h>

namespace quillmark::test {
namespace {

constexpr double cell = FixedShaper::cellWidth;
constexpr double row = FixedShaper::rowHeight;
constexpr auto toLeft = Direction::rightToLeft;
constexpr auto toRight = Direction::leftToRight;

TEST(Direction, IsThatOfTheFirstStrongCharacter)
{
    EXPECT_EQ(directionOf(u"«12» — שלום abc"), toLeft);
    EXPECT_EQ(directionOf(u"سلام"), toLeft);
    EXPECT_EQ(directionOf(u"\U00010900 abc"), toLeft) << "beyond the BMP";
    EXPECT_EQ(directionOf(u"слово שלום"), toRight);
    EXPECT_EQ(directionOf(u"12:34 "), toRight);
    EXPECT_EQ(directionOf(u"\u2067שלום\u2069 abc"), toRight) << "what is isolated does not count";
    EXPECT_EQ(directionOf(u"\u2069\u2067abc\u2069 שלום"), toLeft);
    EXPECT_EQ(directionOf(u"\xD802 שלום"), toLeft) << "half a character";
    const std::u16string far = std::u16string(63, u' ') + u"\U00010900 abc"; // where the first look ends
    EXPECT_EQ(directionOf(Rope(far), {0, static_cast<int64_t>(far.size())}), toLeft);
    EXPECT_EQ(directionOf(std::u16string(100'000, u' ') + u"שלום"), toRight) << "too far away";
}

TEST(RightToLeft, StandsAtTheRightEdge)
{
    TestEditor editor;
    PlainTextView& view = editor.view;
    install(view, "|שלום עולם טוב מאוד\nabc");
    EXPECT_EQ(view.caretPlace().x, 20 * cell);
    EXPECT_EQ(view.placeOf(4).x, 16 * cell);
    EXPECT_EQ(view.offsetAt(16.2 * cell, 0), 4);
    EXPECT_EQ(view.offsetAt(0, 0), 18) << "left of the text is its end";
    EXPECT_EQ(view.offsetAt(900, 0), 0);
    EXPECT_EQ(view.visibleRows()[0].layout.edges(), (Span{2 * cell, 20 * cell}));
    EXPECT_EQ(view.visibleRows()[1].layout.edges(), (Span{0, 3 * cell}));

    view.setVisibleSize(10 * cell, 10 * row); // "שלום עולם " and "טוב מאוד"
    EXPECT_EQ(view.placeOf(10).x, 10 * cell);
    EXPECT_EQ(view.placeOf(10).top, row);
    EXPECT_EQ(view.placeOf(10, Affinity::upstream).x, 0);
    view.mousePressed(9.5 * cell, row, Granularity::word, Extend::no);
    EXPECT_EQ(marked(view), "שלום עולם «טוב» מאוד\nabc");
}

TEST(RightToLeft, LeftAndRightAreThoseOfTheScreen)
{
    EXPECT_EDIT([](auto& view) { view.move(Motion::characterLeft); }, "|שלום", "ש|לום");
    EXPECT_EDIT([](auto& view) { view.move(Motion::characterRight); }, "ש|לום", "|שלום");
    EXPECT_EDIT([](auto& view) { view.move(Motion::wordLeft, Extend::yes); }, "|שלום עולם", "«שלום» עולם");
    EXPECT_EDIT([](auto& view) { view.move(Motion::characterLeft); }, "a\n«שלום»", "a\nשלום|");
    EXPECT_EDIT([](auto& view) { view.move(Motion::rowEnd); }, "|שלום עולם", "שלום עולם|");
}

TEST(RightToLeft, TheFirstLetterTurnsAllSegmentsOfALongLine)
{
    TestEditor editor;
    PlainTextView& view = editor.view;
    view.setText(Rope(u"abc\n-" + repeated(u"מילה ", 3'000)));
    const Selection far = Selection::at({14'000});
    view.select(far);
    view.scrollToCaret();
    const auto edit = [&](Range range, std::u16string with) {
        view.perform(UndoManager::Kind::other, [&](const Rope&, const Selection&) {
            Edit made{.replacements = {}, .selection = far};
            made.replacements.push_back({range, std::move(with)});
            return made;
        });
        expectSound(view, 10 * row);
        return view.visibleRows().front().layout.shaped->direction();
    };
    EXPECT_EQ(edit({5, 0}, u"x"), toRight);
    EXPECT_EQ(edit({5, 1}, u"א"), toLeft);
    EXPECT_EQ(edit({3, 1}, u""), toRight) << "now it goes on with another line";
    EXPECT_EQ(edit({3, 0}, u"\n"), toLeft);
    EXPECT_EQ(edit({13'500, 0}, u"\nabc "), toRight);
}

} // namespace
} // namespace quillmark::test
