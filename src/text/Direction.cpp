#include "text/Direction.h"

#include <algorithm>
#include <cassert>
#include <optional>
#include <unicode/uchar.h>
#include <unicode/utf16.h>

namespace quillmark {
namespace {

/// Most lines have a strong character among their first units.
constexpr int64_t firstLook = 64;

std::optional<Direction> firstStrong(std::u16string_view units)
{
    int isolates = 0; // open ones; what they hold says nothing about the text around them
    for (size_t i = 0; i < units.size();) {
        UChar32 c;
        U16_NEXT(units.data(), i, units.size(), c);
        if (U_IS_SURROGATE(c))
            continue; // without its other half it is no letter
        switch (u_charDirection(c)) {
        case U_LEFT_TO_RIGHT:
            if (isolates == 0)
                return Direction::leftToRight;
            break;
        case U_RIGHT_TO_LEFT:
        case U_RIGHT_TO_LEFT_ARABIC:
            if (isolates == 0)
                return Direction::rightToLeft;
            break;
        case U_LEFT_TO_RIGHT_ISOLATE:
        case U_RIGHT_TO_LEFT_ISOLATE:
        case U_FIRST_STRONG_ISOLATE:
            ++isolates;
            break;
        case U_POP_DIRECTIONAL_ISOLATE:
            isolates = std::max(0, isolates - 1);
            break;
        default:
            break;
        }
    }
    return std::nullopt;
}

} // namespace

Direction directionOf(std::u16string_view line)
{
    return firstStrong(line.substr(0, directionReach)).value_or(Direction::leftToRight);
}

Direction directionOf(const Rope& text, Range line)
{
    assert(line.location >= 0 && line.end() <= text.length());
    for (const int64_t reach : {firstLook, directionReach}) {
        if (const auto found = firstStrong(text.text({line.location, std::min(line.length, reach)})))
            return *found;
    }
    return Direction::leftToRight;
}

} // namespace quillmark
