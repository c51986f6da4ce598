// The map of lines and rows against a stupid model: after random edits it must be what a map made from
// scratch is.
#include "editor/RowMap.h"
#include "editor/SegmentCuts.h"
#include "support/Random.h"

#include <gtest/gtest.h>

namespace quillmark::test {
namespace {

constexpr int64_t columns = 10;

std::u16string lines(int count, int units)
{
    std::u16string text;
    for (int line = 0; line < count; ++line)
        text += std::u16string(static_cast<size_t>(units), u'x') + u'\n';
    return text;
}

/// A text and its map, edited together.
struct MappedText {
    explicit MappedText(std::u16string_view initial)
        : text(initial)
    {
        map.rebuild(text, columns);
    }

    RowMap::Change edit(Range range, std::u16string_view with)
    {
        const Rope old = text;
        text.replace(range, with);
        const auto length = static_cast<int64_t>(with.size());
        return map.applyEdit(
            old, text, {.edited = {range.location, length}, .changeInLength = length - range.length});
    }

    RowMap::Piece pieceAt(Line line, int64_t offset, Affinity affinity = Affinity::downstream) const
    {
        return map.pieceAt(line, text.lineRange(line).length, offset, affinity);
    }

    /// Every line begins at the sum of the rows before it, and every row leads back to its piece.
    void expectConsistent() const
    {
        ASSERT_EQ(map.checkInvariants(text), "");
        int64_t row = 0;
        for (int64_t line = 0; line < text.lineCount(); ++line) {
            ASSERT_EQ(number(map.firstRowOf(Line{line})), row) << "line " << line;
            const int64_t length = text.lineRange(Line{line}).length;
            for (int64_t start = 0;;) {
                const RowMap::Piece piece = pieceAt(Line{line}, start);
                ASSERT_EQ(piece.units.location, start);
                ASSERT_EQ(number(piece.firstRow), row);
                ASSERT_EQ(piece.endsLine, piece.units.end() == length);
                if (!piece.isMeasured) {
                    ASSERT_EQ(piece.rows, std::max<int64_t>(1, (piece.units.length + columns - 1) / columns));
                }
                for (const int64_t probe : {row, row + piece.rows - 1}) {
                    const RowMap::Place place = map.placeOf(Row{probe});
                    ASSERT_EQ(number(place.line), line);
                    ASSERT_EQ(place.start, start);
                    ASSERT_EQ(number(place.firstRow), row);
                }
                row += piece.rows;
                start = piece.units.end();
                if (piece.endsLine)
                    break;
            }
        }
        ASSERT_EQ(map.rowCount(), row);
    }

    Rope text;
    RowMap map;
};

TEST(RowMap, EstimatesRowsFromLengths)
{
    MappedText mapped(u"\n0123456789\n0123456789a\n");
    EXPECT_EQ(mapped.map.lineCount(), 4);
    EXPECT_EQ(mapped.map.rowCount(), 5);
    EXPECT_EQ(mapped.map.firstRowOf(Line{3}), Row{4});
    mapped.expectConsistent();
}

TEST(RowMap, KeepsWhatWasMeasuredOutsideAnEdit)
{
    MappedText mapped(lines(10, 5));
    for (const int64_t line : {2, 4, 6})
        mapped.map.setMeasured(mapped.pieceAt(Line{line}, 0), 3);
    mapped.edit({4 * 6 + 1, 0}, u"y\nz");
    EXPECT_EQ(mapped.pieceAt(Line{2}, 0).rows, 3);
    EXPECT_FALSE(mapped.pieceAt(Line{4}, 0).isMeasured);
    EXPECT_FALSE(mapped.pieceAt(Line{5}, 0).isMeasured);
    EXPECT_EQ(mapped.pieceAt(Line{7}, 0).rows, 3);
    mapped.expectConsistent();
}

TEST(RowMap, CutsLongLinesBetweenCharactersAndBehindBlanks)
{
    std::u16string text;
    while (text.size() < 20'000)
        text += u"слово 👩‍👩‍👧 ";
    const Rope rope(text);
    int64_t end = 0;
    const std::vector<int64_t> lengths = segmentLengths(rope, {0, rope.length()});
    for (const int64_t length : lengths) {
        EXPECT_LE(length, longestWholeLine);
        end += length;
        EXPECT_EQ(rope.at(end - 1), u' ');
    }
    EXPECT_EQ(end, rope.length());
    EXPECT_EQ(static_cast<int64_t>(lengths.size()), (rope.length() + segmentTarget - 1) / segmentTarget);
}

TEST(RowMap, CutsEvenWhereOneCharacterNeverEnds)
{
    const Rope marks(std::u16string(u"e") + std::u16string(20'000, u'\u0301'));
    int64_t end = 0;
    for (const int64_t length : segmentLengths(marks, {0, marks.length()})) {
        EXPECT_LE(length, longestWholeLine);
        end += length;
    }
    EXPECT_EQ(end, marks.length());
    MappedText mapped(marks.text());
    mapped.edit({9'000, 0}, u"x");
    mapped.expectConsistent();
}

TEST(RowMap, MakesOnlyTheTouchedSegmentAnew)
{
    MappedText mapped(std::u16string(1'000'000, u'x'));
    for (const int64_t offset : {int64_t{0}, int64_t{500'123}, int64_t{1'000'000}}) {
        const RowMap::Change change = mapped.edit({offset, 0}, u"y");
        EXPECT_LE(change.replaced.length, longestWholeLine);
        EXPECT_TRUE(change.replaced.location <= offset && offset <= change.replaced.end());
    }
    const RowMap::Change broken = mapped.edit({300'000, 0}, u"\n");
    EXPECT_LE(broken.replaced.length, 2 * longestWholeLine);
    mapped.expectConsistent();
}

TEST(RowMap, MovesABorderThatFallsIntoACharacter)
{
    MappedText mapped(std::u16string(10'000, u'x'));
    const int64_t border = mapped.pieceAt(Line{0}, 0).units.end();
    mapped.edit({border + 1, 0}, u"\u0301"); // on the first character of the second segment
    mapped.edit({border, 1}, u""); // which goes: its mark now stands on the last one of the first segment
    for (int64_t offset = 0; offset < mapped.text.length();) {
        const RowMap::Piece piece = mapped.pieceAt(Line{0}, offset);
        EXPECT_TRUE(isCharacterBoundary(mapped.text, piece.units.end())) << piece.units.end();
        offset = piece.units.end();
    }
    mapped.expectConsistent();
}

TEST(RowMap, AddsUpAfterRandomEdits)
{
    Random random;
    const std::u16string alphabet = u"ab \n👍é\t\u0301漢";
    const auto randomText = [&](int64_t length) {
        std::u16string text;
        for (int64_t i = 0; i < length; ++i)
            text += alphabet[static_cast<size_t>(random.below(static_cast<int64_t>(alphabet.size())))];
        return text;
    };
    MappedText mapped(randomText(500) + std::u16string(9'000, u'x') + randomText(500));
    for (int step = 0; step < 1500; ++step) {
        const int64_t length = mapped.text.length();
        const int64_t at = random.below(length + 1);
        const int64_t removed
            = std::min(length - at, random.oneIn(10) ? random.below(6'000) : random.below(3));
        std::u16string with = random.oneIn(2) ? randomText(random.below(4)) : std::u16string();
        if (random.oneIn(30))
            with = std::u16string(static_cast<size_t>(random.below(7'000)), u'w');
        const int64_t rows = mapped.map.rowCount();
        const RowMap::Change change = mapped.edit({at, removed}, with);
        ASSERT_EQ(mapped.map.rowCount() - rows, change.changeInRows);
        const Line line{random.below(mapped.text.lineCount())};
        const int64_t offset = random.below(mapped.text.lineRange(line).length + 1);
        mapped.map.setMeasured(
            mapped.pieceAt(line, offset, Affinity::upstream), static_cast<int>(1 + random.below(4)));
        if (step % 10 == 0)
            ASSERT_NO_FATAL_FAILURE(mapped.expectConsistent()) << "step " << step;
        else
            ASSERT_EQ(mapped.map.checkInvariants(mapped.text), "") << "step " << step;
    }
}

} // namespace
} // namespace quillmark::test
