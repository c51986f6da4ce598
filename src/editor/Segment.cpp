#include "editor/Segment.h"

#include <algorithm>
#include <cassert>

namespace quillmark {

int64_t Insertion::shownUnit(int64_t textUnit) const
{
    if (length == 0 || textUnit < at)
        return textUnit;
    return textUnit == at ? at + caret : textUnit + length;
}

int64_t Insertion::textUnit(int64_t shownUnit) const
{
    return shownUnit <= at ? shownUnit : std::max(at, shownUnit - length);
}

double RowLayout::xOfOffset(int64_t offset) const
{
    const int64_t unit = std::clamp(offset, range.location, range.end()) - shapedStart;
    return shaped->xOfOffset(rowInShaped, insertion.shownUnit(unit));
}

int64_t RowLayout::offsetAtX(double x) const
{
    const int64_t unit = insertion.textUnit(shaped->offsetAtX(rowInShaped, x));
    return std::clamp(shapedStart + unit, range.location, range.end());
}

Span RowLayout::edges() const
{
    return shaped->edges(rowInShaped);
}

RowLayout Segment::row(int index) const
{
    assert(index >= 0 && index < rowCount());
    const Range shown = shaped->row(index);
    const Range units = Range::between(insertion.textUnit(shown.location), insertion.textUnit(shown.end()));
    return {.shaped = shaped,
        .rowInShaped = index,
        .shapedStart = range.location,
        .range = {range.location + units.location, units.length},
        .line = line,
        .startsLine = startsLine && index == 0,
        .endsLine = endsLine && index == rowCount() - 1,
        .insertion = insertion};
}

int Segment::rowOf(int64_t offset, Affinity affinity) const
{
    const int64_t unit = insertion.shownUnit(std::clamp<int64_t>(offset - range.location, 0, range.length));
    int low = 0;
    for (int high = rowCount() - 1; low < high;) {
        const int middle = (low + high + 1) / 2;
        const int64_t start = shaped->row(middle).location;
        if (start < unit || (start == unit && affinity == Affinity::downstream))
            low = middle;
        else
            high = middle - 1;
    }
    return low;
}

} // namespace quillmark
