#include "desktop/DisplayText.h"

#include "text/Units.h"

#include <algorithm>

namespace quillmark {

namespace {

constexpr char16_t replacementCharacter = u'\uFFFD';
constexpr char16_t newlinePicture = u'\u2424';
constexpr char16_t deletePicture = u'\u2421';
constexpr char16_t pictureOfNul = u'\u2400';

/// Most texts have nothing to replace; this keeps them to one comparison or two a unit.
constexpr bool isPlain(char16_t unit)
{
    return (unit >= 0x20 && unit < 0x7F) || (unit >= 0xA0 && unit < 0x2028);
}

char16_t shownFor(char16_t unit)
{
    if (unit == u'\t')
        return unit;
    if (unit < 0x20)
        return static_cast<char16_t>(pictureOfNul + unit);
    if (unit == 0x7F)
        return deletePicture;
    if (unit > 0x7F && unit < 0xA0) // the other control characters have no pictures
        return replacementCharacter;
    if (unit == 0x2028 || unit == 0x2029)
        return newlinePicture;
    return unit == 0xFFFC ? replacementCharacter : unit;
}

} // namespace

std::u16string displayText(std::u16string_view text)
{
    std::u16string shown(text);
    for (size_t i = 0; i < shown.size(); ++i) {
        const char16_t unit = shown[i];
        if (isPlain(unit))
            continue;
        if (isHighSurrogate(unit) && i + 1 < shown.size() && isLowSurrogate(shown[i + 1]))
            ++i;
        else
            shown[i] = isSurrogate(unit) ? replacementCharacter : shownFor(unit);
    }
    return shown;
}

bool mayBeBidirectional(std::u16string_view text)
{
    return std::ranges::any_of(text, [](char16_t unit) {
        if (unit < 0x590)
            return false;
        return unit <= 0x8FF // Hebrew, Arabic, Syriac, Thaana, N'Ko and their extensions
            || unit == 0x200E || unit == 0x200F || (unit >= 0x202A && unit <= 0x202E)
            || (unit >= 0x2066 && unit <= 0x2069) || (unit >= 0xFB1D && unit <= 0xFEFC)
            || (unit >= 0xD802 && unit <= 0xD803) || (unit >= 0xD83A && unit <= 0xD83B); // higher planes
    });
}

} // namespace quillmark
