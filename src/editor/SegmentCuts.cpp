#include "editor/SegmentCuts.h"

#include "text/Unicode.h"

#include <algorithm>
#include <cassert>

namespace quillmark {
namespace {

constexpr int64_t blankSearch = 96; ///< how far before the wanted cut a blank is looked for
constexpr int64_t shortestCut = 500; ///< how far from the start of a part a cut is wanted at the least

/// Characters below the first combining mark stand alone, but for CR LF.
bool standsAlone(char16_t before, char16_t after)
{
    constexpr char16_t firstCombiningMark = 0x0300;
    return before < firstCombiningMark && after < firstCombiningMark && !(before == u'\r' && after == u'\n');
}

int64_t cutNear(const Rope& text, int64_t wanted)
{
    assert(wanted >= blankSearch && wanted <= text.length());
    const std::u16string before = text.text({wanted - blankSearch, blankSearch});
    const size_t blank = before.find_last_of(u" \t");
    if (blank != std::u16string::npos) {
        const int64_t behindBlank = wanted - blankSearch + static_cast<int64_t>(blank) + 1;
        if (isCharacterBoundary(text, behindBlank))
            return behindBlank;
    }
    const int64_t boundary = characterBoundaryAtOrBefore(text, wanted);
    if (boundary > wanted - blankSearch)
        return boundary;
    return splitsPair(text, wanted) ? wanted - 1 : wanted; // without one in reach, pairs still stay whole
}

/// The wanted cuts of a part, as places of a grid.
struct Grid {
    explicit Grid(const LinePart& part)
        : origin(part.lineStart)
        , first(atOrBehind(part.units.location + shortestCut))
    {
    }
    int64_t atOrBehind(int64_t offset) const
    {
        return origin + (offset - origin + segmentTarget - 1) / segmentTarget * segmentTarget;
    }

    int64_t origin;
    int64_t first;
};

/// The cut at a place of the grid, or the end of the part when what is behind the cut before is short enough.
int64_t cutAt(const Rope& text, const LinePart& part, const Grid& grid, int64_t wanted)
{
    const int64_t before = wanted - segmentTarget;
    const int64_t start = before < grid.first ? part.units.location : cutNear(text, before);
    return part.units.end() - start <= longestWholeLine ? part.units.end() : cutNear(text, wanted);
}

} // namespace

bool isCharacterBoundary(const Rope& text, int64_t offset)
{
    return characterBoundaryAtOrBefore(text, offset) == offset;
}

int64_t characterBoundaryAtOrBefore(const Rope& text, int64_t offset)
{
    if (offset <= 0)
        return 0;
    if (offset >= text.length())
        return text.length();
    if (standsAlone(text.at(offset - 1), text.at(offset)))
        return offset;
    return previousGrapheme(text, offset + 1);
}

std::vector<int64_t> segmentEnds(const Rope& text, const LinePart& part)
{
    assert(part.lineStart <= part.units.location && part.units.end() <= text.length());
    const Grid grid(part);
    std::vector<int64_t> ends;
    int64_t start = part.units.location;
    for (int64_t wanted = grid.first; part.units.end() - start > longestWholeLine; wanted += segmentTarget) {
        start = cutNear(text, wanted);
        ends.push_back(start);
    }
    ends.push_back(part.units.end());
    return ends;
}

int64_t cutAtOrBefore(const Rope& text, const LinePart& part, int64_t offset)
{
    assert(offset >= part.units.location && offset <= part.units.end());
    const Grid grid(part);
    // A cut lies at its place of the grid or up to `blankSearch` before it.
    for (int64_t wanted = grid.atOrBehind(offset); wanted >= grid.first; wanted -= segmentTarget) {
        const int64_t cut = cutAt(text, part, grid, wanted);
        if (cut <= offset && cut < part.units.end())
            return cut;
    }
    return part.units.location;
}

int64_t cutAtOrBehind(const Rope& text, const LinePart& part, int64_t offset)
{
    assert(offset >= part.units.location && offset <= part.units.end());
    const Grid grid(part);
    for (int64_t wanted = std::max(grid.first, grid.atOrBehind(offset));; wanted += segmentTarget) {
        const int64_t cut = cutAt(text, part, grid, wanted);
        if (cut >= offset)
            return cut;
    }
}

} // namespace quillmark
