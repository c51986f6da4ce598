#include "editor/Theme.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

TEST(Theme, EachNameHasItsTwoVariants)
{
    EXPECT_EQ(themeValue(ThemeColor::background, ThemeVariant::dark), (ThemeValue{0x1B1A16, 1}));
    EXPECT_EQ(themeValue(ThemeColor::foreground, ThemeVariant::dark), (ThemeValue{0xE8E4DA, 1}));
    EXPECT_EQ(themeValue(ThemeColor::background, ThemeVariant::light), (ThemeValue{0xFFFDF9, 1}));
    EXPECT_EQ(themeValue(ThemeColor::foreground, ThemeVariant::light), (ThemeValue{0x171512, 1}));
    EXPECT_EQ(themeValue(ThemeColor::syntaxComment, ThemeVariant::light), (ThemeValue{0x9A9284, 1}));
    EXPECT_EQ(themeValue(ThemeColor::selection, ThemeVariant::dark), (ThemeValue{0xE4571F, 0.25}));
    EXPECT_EQ(themeValue(ThemeColor::accentTint, ThemeVariant::light), (ThemeValue{0xC2410C, 0.1}));
}

} // namespace
} // namespace quillmark
