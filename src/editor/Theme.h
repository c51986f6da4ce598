// Every colour that the program draws with, by name, each with a dark and a light variant. Which one is drawn
// is decided at each drawing, so that a change of the appearance recolours everything at once.
#pragma once

#include <cstdint>

namespace quillmark {

enum class ThemeVariant { dark, light };

enum class ThemeColor {
    background,
    foreground,
    accent,
    barBackground,
    panelBackground,
    secondaryText,
    separator,
    success,
    gutterText,
    deepBackground,
    syntaxOrange,
    syntaxGreen,
    syntaxPurple,
    syntaxBlue,
    syntaxComment,
    // Made of the accent.
    selection,
    findMatch,
    findCurrent,
    accentTint,
};

struct ThemeValue {
    uint32_t rgb = 0; ///< sRGB, 0xRRGGBB
    double alpha = 1;
    bool operator==(const ThemeValue&) const = default;
};

/// Any thread.
ThemeValue themeValue(ThemeColor name, ThemeVariant variant);

} // namespace quillmark
