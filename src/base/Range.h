// Positions in a text. Offsets and lengths are UTF-16 code units; lines and rows have types of their own,
// so that the three never mix.
#pragma once

#include <algorithm>
#include <cstdint>

namespace quillmark {

/// A stretch of a text: `length` code units from `location` on.
struct Range {
    int64_t location = 0;
    int64_t length = 0;

    int64_t end() const { return location + length; }
    bool isEmpty() const { return length == 0; }
    bool contains(int64_t offset) const { return offset >= location && offset < end(); }
    bool operator==(const Range&) const = default;

    static Range between(int64_t a, int64_t b) { return {std::min(a, b), a < b ? b - a : a - b}; }
};

/// The part that two ranges share; empty, at the larger location, when they share nothing.
inline Range intersection(Range a, Range b)
{
    const int64_t start = std::max(a.location, b.location);
    return {start, std::max<int64_t>(0, std::min(a.end(), b.end()) - start)};
}

enum class Line : int64_t {}; ///< a line of the text, 0 first
enum class Row : int64_t {}; ///< a line on the screen after wrapping, 0 first

constexpr int64_t number(Line line)
{
    return static_cast<int64_t>(line);
}
constexpr int64_t number(Row row)
{
    return static_cast<int64_t>(row);
}
constexpr Line operator+(Line line, int64_t n)
{
    return Line{number(line) + n};
}
constexpr Row operator+(Row row, int64_t n)
{
    return Row{number(row) + n};
}

} // namespace quillmark
