#include "editor/Theme.h"

#include <array>
#include <cstddef>

namespace quillmark {

namespace {

struct Pair {
    uint32_t dark;
    uint32_t light;
};

/// The base colours, in the order of their names.
constexpr std::array<Pair, 15> baseColors{{
    {0x1B1A16, 0xFFFDF9}, // background
    {0xE8E4DA, 0x171512}, // foreground
    {0xE4571F, 0xC2410C}, // accent
    {0x232118, 0xEFEAE1}, // barBackground
    {0x1F1D16, 0xEFEAE1}, // panelBackground
    {0x7A7466, 0x6B655C}, // secondaryText
    {0x2E2B21, 0xE1DACE}, // separator
    {0x93B36B, 0x4B7A35}, // success
    {0x3E3B31, 0x9A9284}, // gutterText
    {0x16150F, 0xFFFDF9}, // deepBackground
    {0xE8A33D, 0xB0500E}, // syntaxOrange
    {0x93B36B, 0x4B7A35}, // syntaxGreen
    {0xC792EA, 0x8E4EA6}, // syntaxPurple
    {0x7FB3D5, 0x2A6F9E}, // syntaxBlue
    {0x7A7466, 0x9A9284}, // syntaxComment
}};
static_assert(size_t(ThemeColor::selection) == baseColors.size());

} // namespace

ThemeValue themeValue(ThemeColor name, ThemeVariant variant)
{
    const auto base = [variant](ThemeColor of) {
        const Pair pair = baseColors[size_t(of)];
        return variant == ThemeVariant::dark ? pair.dark : pair.light;
    };
    switch (name) {
    case ThemeColor::selection:
        return {base(ThemeColor::accent), 0.25};
    case ThemeColor::findMatch:
        return {base(ThemeColor::accent), 0.35};
    case ThemeColor::findCurrent:
        return {base(ThemeColor::accent), 0.6};
    case ThemeColor::accentTint:
        return {base(ThemeColor::accent), 0.1};
    default:
        return {base(name), 1.0};
    }
}

} // namespace quillmark
