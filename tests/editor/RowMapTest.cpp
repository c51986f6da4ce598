// The map of rows against a stupid model: whatever was looked at, edited and counted in whatever order, it
// must be what a walk over the whole text makes of it.
#include "editor/RowMap.h"
#include "editor/SegmentCuts.h"
#include "support/Random.h"
#include "support/Repeated.h"

#include <gtest/gtest.h>

namespace quillmark::test {
namespace {

constexpr int64_t columns = 10;
constexpr StretchSizes smallStretches{.walked = 200, .longest = 300};

std::u16string lines(int count, int units)
{
    return repeated(std::u16string(static_cast<size_t>(units), u'x') + u'\n', count);
}

std::u16string longLine(int64_t length)
{
    std::u16string text;
    while (static_cast<int64_t>(text.size()) < length)
        text += u"word словцо 👍 ";
    return text;
}

/// A text and its map, edited together.
struct MappedText {
    explicit MappedText(Rope initial, StretchSizes sizes = {})
        : text(std::move(initial))
    {
        map.setSizes(sizes);
        map.rebuild(text, columns);
    }
    explicit MappedText(std::u16string_view initial, StretchSizes sizes = {})
        : MappedText(Rope(initial), sizes)
    {
    }

    RowMap::Change edit(Range range, std::u16string_view with)
    {
        const Rope old = text;
        text.replace(range, with);
        const auto length = static_cast<int64_t>(with.size());
        return map.applyEdit(
            old, text, {.edited = {range.location, length}, .changeInLength = length - range.length});
    }

    RowMap::Piece pieceAt(Line line, int64_t offset, Affinity affinity = Affinity::downstream)
    {
        return map.pieceAt(text, text.startOf(line) + offset, affinity);
    }

    int count(int64_t near)
    {
        int steps = 0;
        for (; !map.isCounted(); ++steps)
            map.countNear(text, near);
        return steps;
    }

    /// Each line begins at the sum of the rows before it, and each row leads back to its piece.
    void expectConsistent()
    {
        ASSERT_EQ(map.checkInvariants(text), "");
        for (int64_t offset = 0; offset <= text.length(); offset += 50) // looks at what nobody has
            map.pieceAt(text, offset, Affinity::downstream);
        int64_t row = 0;
        for (int64_t offset = 0; offset <= text.length();) {
            const RowMap::Piece piece = map.pieceAt(text, offset, Affinity::downstream);
            const Range line = text.lineRange(piece.line);
            ASSERT_EQ(piece.line, text.lineAt(offset));
            ASSERT_EQ(piece.units.location, offset);
            ASSERT_EQ(piece.startsLine, offset == line.location);
            ASSERT_EQ(piece.endsLine, piece.units.end() == line.end());
            ASSERT_EQ(number(piece.firstRow), row);
            ASSERT_EQ(map.firstRowAt(text, offset), piece.firstRow);
            for (const int64_t rowInPiece : {int64_t{0}, piece.rows - 1}) {
                const RowMap::Place place = map.placeOf(text, Row{row + rowInPiece});
                ASSERT_EQ(place.offset, offset);
                ASSERT_EQ(place.rowInPiece, rowInPiece);
            }
            row += piece.rows;
            offset = piece.units.end() + (piece.endsLine ? 1 : 0);
        }
        ASSERT_EQ(map.rowCount(), row);
        ASSERT_EQ(map.checkInvariants(text), "");
    }

    Rope text;
    RowMap map;
};

TEST(RowMap, KeepsWhatWasMeasuredOutsideAnEdit)
{
    MappedText mapped(lines(10, 5));
    for (const int64_t line : {2, 4, 6})
        mapped.map.setMeasured(mapped.pieceAt(Line{line}, 0), 3);
    mapped.edit({4 * 6 + 1, 0}, u"y\nz");
    EXPECT_EQ(mapped.pieceAt(Line{2}, 0).rows, 3);
    EXPECT_EQ(mapped.pieceAt(Line{4}, 0).rows, 1);
    EXPECT_EQ(mapped.pieceAt(Line{5}, 0).rows, 1);
    EXPECT_EQ(mapped.pieceAt(Line{7}, 0).rows, 3);
    mapped.expectConsistent();
}

// Long lines

TEST(RowMap, CutsLongLinesBetweenCharactersAndBehindBlanks)
{
    const Rope rope(repeated(u"слово 👩‍👩‍👧 ", 1'300));
    int64_t start = 0;
    for (const int64_t end : segmentEnds(rope, {0, {0, rope.length()}})) {
        EXPECT_LE(end - start, longestWholeLine);
        EXPECT_GE(end - start, shortestSegment);
        EXPECT_EQ(rope.at(end - 1), u' ');
        start = end;
    }
    EXPECT_EQ(start, rope.length());
}

TEST(RowMap, CutsTheSameWhereverItLooks)
{
    for (const int64_t length : {3'000, 3'001, 5'000, 5'003, 7'200, 20'000}) {
        const Rope rope(u"line\n" + longLine(length) + u"\nline");
        const LinePart whole{5, rope.lineRange(Line{1})};
        std::vector<int64_t> borders = segmentEnds(rope, whole);
        borders.insert(borders.begin(), whole.units.location);
        for (size_t first = 0; first + 1 < borders.size(); ++first) {
            for (size_t last = first + 1; last < borders.size(); ++last) {
                const LinePart part{5, Range::between(borders[first], borders[last])};
                EXPECT_EQ(segmentEnds(rope, part),
                    std::vector(borders.begin() + static_cast<ptrdiff_t>(first) + 1,
                        borders.begin() + static_cast<ptrdiff_t>(last) + 1))
                    << length;
            }
        }
        for (int64_t offset = whole.units.location + 1; offset <= whole.units.end(); offset += 7) {
            const auto behind = std::lower_bound(borders.begin(), borders.end(), offset);
            ASSERT_EQ(cutAtOrBehind(rope, whole, offset), *behind) << length << " at " << offset;
            const auto before = *behind == offset && behind + 1 != borders.end() ? behind : behind - 1;
            ASSERT_EQ(cutAtOrBefore(rope, whole, offset), *before) << length << " at " << offset;
        }
    }
}

TEST(RowMap, CutsEvenWhereOneCharacterNeverEnds)
{
    const Rope marks(std::u16string(u"e") + std::u16string(20'000, u'\u0301'));
    int64_t start = 0;
    for (const int64_t end : segmentEnds(marks, {0, {0, marks.length()}})) {
        EXPECT_LE(end - start, longestWholeLine);
        start = end;
    }
    EXPECT_EQ(start, marks.length());
    for (const StretchSizes sizes : {StretchSizes{}, smallStretches}) {
        MappedText mapped(marks, sizes);
        mapped.edit({9'000, 0}, u"x");
        mapped.expectConsistent();
    }
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
    const RowMap::Change joined = mapped.edit({300'000, 1}, u"");
    EXPECT_LE(joined.replaced.length, 2 * longestWholeLine);
    EXPECT_FALSE(mapped.map.isCounted()) << "what nobody asked for was not looked at";
    mapped.expectConsistent();
}

// Stretches

/// Short, wrapped and long lines, twelve thousand units.
std::u16string mixedText(Random& random)
{
    std::u16string text;
    while (text.size() < 12'000) {
        if (random.oneIn(40))
            text += longLine(random.below(5'000));
        text += std::u16string(static_cast<size_t>(random.below(4) * random.below(30)), u'w') + u'\n';
    }
    return text;
}

TEST(RowMap, IsAsIfAllHadBeenWalkedOnceCounted)
{
    Random random;
    for (int run = 0; run < 30; ++run) {
        const Rope text(mixedText(random));
        const MappedText walked(text);
        ASSERT_TRUE(walked.map.isCounted());
        MappedText counted(text, smallStretches);
        ASSERT_FALSE(counted.map.isCounted());
        for (int64_t looks = random.below(6); looks > 0; --looks) {
            const int64_t offset = random.below(text.length() + 1);
            counted.map.pieceAt(text, offset, Affinity::downstream);
            for (int64_t steps = random.below(4); steps > 0; --steps)
                counted.map.countNear(text, random.below(text.length() + 1));
        }
        counted.count(random.below(text.length() + 1));
        ASSERT_EQ(counted.map.rowCount(), walked.map.rowCount());
        ASSERT_NO_FATAL_FAILURE(counted.expectConsistent());
        ASSERT_EQ(counted.map.rowCount(), walked.map.rowCount()) << "nothing moves by looking";
    }
}

TEST(RowMap, InfersTheRowsOfALargeTextFromSamples)
{
    Random random;
    std::u16string text;
    while (text.size() < 400'000)
        text += std::u16string(static_cast<size_t>(random.below(60)), u'w') + u'\n';
    MappedText mapped(text);
    const auto inferred = static_cast<double>(mapped.map.rowCount());
    EXPECT_GE(mapped.count(0), 400'000 / 64 / 1024);
    EXPECT_NEAR(inferred / static_cast<double>(mapped.map.rowCount()), 1, 0.05);
}

TEST(RowMap, CountsOutwardsFromAPlace)
{
    MappedText mapped(lines(300, 9) + lines(100, 29) + lines(300, 9), smallStretches);
    const int64_t middle = 3'000 + 1'500;
    const auto changeByLookingAt = [&](int64_t offset) {
        const int64_t rows = mapped.map.rowCount();
        mapped.map.pieceAt(mapped.text, offset, Affinity::downstream);
        return mapped.map.rowCount() - rows;
    };
    EXPECT_NE(changeByLookingAt(middle), 0) << "samples are right everywhere: nothing is tested";
    for (int step = 0; step < 5; ++step) // of 200 units each
        mapped.map.countNear(mapped.text, middle);
    EXPECT_EQ(changeByLookingAt(middle - 300), 0);
    EXPECT_EQ(changeByLookingAt(middle + 300), 0);
    EXPECT_NE(changeByLookingAt(middle - 1'200), 0);
    EXPECT_NE(changeByLookingAt(middle + 1'200), 0);
}

TEST(RowMap, AddsUpAfterRandomEdits)
{
    Random random;
    const std::u16string alphabet = u"ab \n👍é\t\u0301漢";
    const auto randomText = [&](int64_t length) {
        std::u16string text;
        for (int64_t i = 0; i < length; ++i)
            text += random.pick(alphabet);
        return text;
    };
    for (const StretchSizes sizes : {StretchSizes{}, smallStretches, StretchSizes{5'000, 4'000}}) {
        MappedText mapped(randomText(500) + longLine(9'000) + randomText(500), sizes);
        for (int step = 0; step < 1000; ++step) {
            const int64_t length = mapped.text.length();
            const int64_t at = random.below(length + 1);
            const int64_t removed
                = std::min(length - at, random.oneIn(10) ? random.below(6'000) : random.below(3));
            std::u16string with = random.oneIn(2) ? randomText(random.below(4)) : std::u16string();
            if (random.oneIn(20))
                with = random.oneIn(2) ? mixedText(random).substr(0, 5'000) : longLine(random.below(9'000));
            mapped.edit({at, removed}, with);
            if (random.oneIn(20))
                mapped.map.rebuild(mapped.text, columns);
            if (random.oneIn(3))
                mapped.map.countNear(mapped.text, random.below(mapped.text.length() + 1));
            mapped.map.setMeasured(
                mapped.map.pieceAt(mapped.text, random.below(mapped.text.length() + 1), Affinity::upstream),
                1 + random.below(4));
            mapped.map.placeOf(mapped.text, Row{random.below(mapped.map.rowCount())});
            if (step % 20 == 0)
                ASSERT_NO_FATAL_FAILURE(mapped.expectConsistent()) << "step " << step;
            else
                ASSERT_EQ(mapped.map.checkInvariants(mapped.text), "") << "step " << step;
        }
    }
}

} // namespace
} // namespace quillmark::test
