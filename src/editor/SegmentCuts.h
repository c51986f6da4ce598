// Where a long line is cut into segments for shaping, and where characters begin. Pure functions of a text.
#pragma once

#include "text/Rope.h"

#include <vector>

namespace quillmark {

// In units. The distances between them keep single edits from cutting and joining in turn.
inline constexpr int64_t longestWholeLine = 3000; ///< a longer line is cut, and so is a longer segment
inline constexpr int64_t segmentTarget = 2000; ///< a cut line that shrinks to this is whole again
inline constexpr int64_t shortestSegment = 300; ///< a shorter one is joined with its neighbour

/// Whether an offset lies between two user-perceived characters; true at both ends of the text.
bool isCharacterBoundary(const Rope& text, int64_t offset);
int64_t characterBoundaryAtOrBefore(const Rope& text, int64_t offset); ///< `offset` is cut to the text

/// A part of a line that is to be cut. The cuts lie near multiples of the target from the start of the line,
/// between characters and behind a blank where one is near: so a part that begins or ends at a cut has the
/// same cuts as the whole line, and those around a place are found without looking at the others.
struct LinePart {
    int64_t lineStart = 0;
    Range units; ///< in the text, without the line feed

    bool isShort() const { return units.length <= longestWholeLine; } ///< and so it is one segment
};

/// Where the segments of a part end, in order; the last one ends with the part.
std::vector<int64_t> segmentEnds(const Rope& text, const LinePart& part);
/// The nearest cuts, for an offset in the part or at its end; else where the part begins, or ends.
int64_t cutAtOrBefore(const Rope& text, const LinePart& part, int64_t offset);
int64_t cutAtOrBehind(const Rope& text, const LinePart& part, int64_t offset);

} // namespace quillmark
