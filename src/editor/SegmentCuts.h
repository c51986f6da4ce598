// Where a long line is cut into segments for shaping, and where characters begin. Pure functions of a text.
#pragma once

#include "text/Rope.h"

#include <vector>

namespace quillmark {

// In units. The distances between them keep single edits from cutting and joining in turn.
inline constexpr int64_t longestWholeLine = 3000; ///< a longer line is cut, and so is a longer segment
inline constexpr int64_t segmentTarget = 2000; ///< a cut line that shrinks to this is whole again
inline constexpr int64_t shortestSegment = 500; ///< a shorter one is joined with its neighbour

/// Whether an offset lies between two user-perceived characters; true at both ends of the text.
bool isCharacterBoundary(const Rope& text, int64_t offset);
int64_t characterBoundaryAtOrBefore(const Rope& text, int64_t offset); ///< `offset` is cut to the text

/// The lengths of the segments of a stretch without line feeds, in order: the stretch itself when it is not
/// too long, otherwise pieces of similar length, cut between characters and behind a blank where one is near.
std::vector<int64_t> segmentLengths(const Rope& text, Range range);

} // namespace quillmark
