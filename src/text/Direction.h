// Which way a line of text runs: as its first strong character does (UAX #9, rules P2 and P3). Any thread.
#pragma once

#include "text/Rope.h"

#include <string_view>

namespace quillmark {

enum class Direction { leftToRight, rightToLeft };

/// Units of a line that are looked at. A line without a strong character among them runs from left to right.
inline constexpr int64_t directionReach = 2'048;

Direction directionOf(std::u16string_view line);
Direction directionOf(const Rope& text, Range line); ///< `line` without its line feed

} // namespace quillmark
