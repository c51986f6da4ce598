#include "text/Direction.h"

#include <algorithm>
#include <cassert>
#include <unicode/uchar.h>
#include <unicode/utf16.h>

namespace quillmark {

Direction directionOf(std::u16string_view line)
{
    const std::u16string_view seen = line.substr(0, directionReach);
    int isolates = 0; // open ones; what they hold says nothing about the text around them
    for (size_t i = 0; i < seen.size();) {
        UChar32 c;
        U16_NEXT(seen.data(), i, seen.size(), c);
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
    return Direction::leftToRight;
}

Direction directionOf(const Rope& text, Range line)
{
    assert(line.location >= 0 && line.end() <= text.length());
    return directionOf(text.text({line.location, std::min(line.length, directionReach)}));
}

} // namespace quillmark
