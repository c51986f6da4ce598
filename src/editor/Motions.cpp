#include "editor/Motions.h"

#include "editor/SegmentCuts.h"
#include "text/Unicode.h"

#include <algorithm>
#include <utility>

namespace quillmark {
namespace {

RowLayout rowAt(TextPosition position, LayoutManager& layout)
{
    const Segment segment = layout.segmentAt(position.offset, position.affinity);
    return segment.row(segment.rowOf(position.offset, position.affinity));
}

/// Shapers have caret stops within some characters, and may wrap one that is wider than the row.
int64_t betweenCharacters(const RowLayout& row, int64_t offset, const Rope& text)
{
    const int64_t before = characterBoundaryAtOrBefore(text, offset);
    if (before >= row.range.location)
        return before;
    const int64_t behind = nextGrapheme(text, offset);
    return behind <= row.range.end() ? behind : offset;
}

/// As many rows up (negative) or down as there are; stays in the first or last row.
TextPosition rowsAway(TextPosition from, int64_t rows, double goalX, LayoutManager& layout)
{
    Segment segment = layout.segmentAt(from.offset, from.affinity);
    int64_t index = segment.rowOf(from.offset, from.affinity) + rows;
    while (index < 0) {
        auto before = layout.segmentBefore(segment);
        if (!before)
            break;
        segment = std::move(*before);
        index += segment.rowCount();
    }
    while (index >= segment.rowCount()) {
        auto after = layout.segmentAfter(segment);
        if (!after)
            break;
        index -= segment.rowCount();
        segment = std::move(*after);
    }
    const int64_t last = segment.rowCount() - 1;
    return positionInRow(
        segment.row(static_cast<int>(std::clamp<int64_t>(index, 0, last))), goalX, layout.text());
}

TextPosition vertical(TextPosition from, int64_t rows, double goalX, LayoutManager& layout)
{
    const RowLayout row = rowAt(from, layout);
    if (rows < 0 && row.range.location == 0)
        return {0};
    if (rows > 0 && row.endsLine && row.range.end() == layout.text().length())
        return {layout.text().length()};
    return rowsAway(from, rows, goalX, layout);
}

TextPosition rowStart(TextPosition from, LayoutManager& layout)
{
    const RowLayout row = rowAt(from, layout);
    if (!row.startsLine)
        return {row.range.location};
    const std::u16string text = layout.text().text(row.range);
    const auto isBlank = [](char16_t unit) { return isHorizontalSpace(unit); };
    const auto indent = std::find_if_not(text.begin(), text.end(), isBlank) - text.begin();
    const int64_t firstWord = row.range.location + indent;
    if (firstWord == row.range.end() || firstWord == from.offset)
        return {row.range.location};
    return {betweenCharacters(row, firstWord, layout.text())};
}

TextPosition rowEnd(TextPosition from, LayoutManager& layout)
{
    const RowLayout row = rowAt(from, layout);
    return {row.range.end(), row.endsLine ? Affinity::downstream : Affinity::upstream};
}

/// Left and right are meant on the screen: a line that runs from the right goes the other way.
Motion alongLine(Motion motion, Direction direction)
{
    if (direction == Direction::leftToRight)
        return motion;
    switch (motion) {
    case Motion::characterLeft:
        return Motion::characterRight;
    case Motion::characterRight:
        return Motion::characterLeft;
    case Motion::wordLeft:
        return Motion::wordRight;
    case Motion::wordRight:
        return Motion::wordLeft;
    default:
        return motion;
    }
}

} // namespace

TextPosition positionInRow(const RowLayout& row, double x, const Rope& text)
{
    const int64_t offset = betweenCharacters(row, row.offsetAtX(x), text);
    const bool isBehindWrap = offset == row.range.end() && !row.endsLine;
    return {offset, isBehindWrap ? Affinity::upstream : Affinity::downstream};
}

double xOf(TextPosition position, LayoutManager& layout)
{
    return rowAt(position, layout).xOfOffset(position.offset);
}

TextPosition target(Motion motion, const Selection& selection, Extend extend, LayoutManager& layout,
    const MotionContext& context)
{
    const Rope& text = layout.text();
    const TextPosition from = selection.position();
    const bool collapses = extend == Extend::no && !selection.isEmpty();
    // An edit can join what stands on both sides of an end of the selection.
    const auto boundary = [&](int64_t offset) { return characterBoundaryAtOrBefore(text, offset); };
    switch (alongLine(motion, layout.directionAt(from.offset))) {
    case Motion::characterLeft:
        return {collapses ? boundary(selection.range().location) : previousGrapheme(text, from.offset)};
    case Motion::characterRight:
        return {collapses ? boundary(selection.range().end()) : nextGrapheme(text, from.offset)};
    case Motion::wordLeft:
        return {previousWordStart(text, from.offset)};
    case Motion::wordRight:
        return {nextWordEnd(text, from.offset)};
    case Motion::rowUp:
        return vertical(from, -1, context.goalX, layout);
    case Motion::rowDown:
        return vertical(from, 1, context.goalX, layout);
    case Motion::pageUp:
        return vertical(from, -context.rowsPerPage, context.goalX, layout);
    case Motion::pageDown:
        return vertical(from, context.rowsPerPage, context.goalX, layout);
    case Motion::rowStart:
        return rowStart(from, layout);
    case Motion::rowEnd:
        return rowEnd(from, layout);
    case Motion::documentStart:
        return {0};
    case Motion::documentEnd:
        return {text.length()};
    }
    std::unreachable();
}

} // namespace quillmark
