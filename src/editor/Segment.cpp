#include "editor/Segment.h"

#include <algorithm>

namespace quillmark {

double RowLayout::xOfOffset(int64_t offset) const
{
    return shaped->xOfOffset(rowInShaped, std::clamp(offset, range.location, range.end()) - shapedStart);
}

int64_t RowLayout::offsetAtX(double x) const
{
    return std::clamp(shapedStart + shaped->offsetAtX(rowInShaped, x), range.location, range.end());
}

double RowLayout::width() const
{
    return shaped->width(rowInShaped);
}

RowLayout Segment::row(int index) const
{
    const Range units = shaped->row(index);
    return {.shaped = shaped,
        .rowInShaped = index,
        .shapedStart = range.location,
        .range = {range.location + units.location, units.length},
        .line = line,
        .startsLine = startsLine && index == 0,
        .endsLine = endsLine && index == rowCount() - 1};
}

int Segment::rowOf(int64_t offset, Affinity affinity) const
{
    const int64_t unit = std::clamp<int64_t>(offset - range.location, 0, range.length);
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
