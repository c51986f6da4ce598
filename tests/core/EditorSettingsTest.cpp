#include "core/EditorSettings.h"

#include "support/MemoryDefaults.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quillmark {
namespace {

TEST(EditorSettings, AreTheDefaultsWhereNothingOrSomethingOfAnotherTypeIsStored)
{
    test::MemoryDefaults none;
    test::MemoryDefaults damaged;
    damaged.setString("editor.fontSize", "20");
    damaged.setBoolean("editor.fontName", true);
    damaged.setReal("cleanup.quotes", 1);
    for (test::MemoryDefaults* defaults : {&none, &damaged}) {
        const size_t written = defaults->writtenKeys().size();
        const EditorSettings settings(*defaults);
        EXPECT_EQ(*settings.fontName, "");
        EXPECT_EQ(*settings.fontSize, 13);
        EXPECT_EQ(*settings.quickNoteHotKeyID, "ctrl-opt-cmd-n");
        EXPECT_FALSE(*settings.cleanupQuotes || *settings.cleanupDashes);
        EXPECT_FALSE(*settings.cleanupTrimTrailing || *settings.cleanupCollapseBlank);
        EXPECT_EQ(defaults->writtenKeys().size(), written);
    }
}

TEST(EditorSettings, ADamagedFontSizeFallsBack)
{
    for (const auto& [stored, expected] : {std::pair{9.0, 9.0}, {24.0, 24.0}, {8.99, 13.0}, {24.01, 13.0},
             {0.0, 13.0}, {-1.0, 13.0}, {std::nan(""), 13.0}, {INFINITY, 13.0}}) {
        test::MemoryDefaults defaults;
        defaults.setReal("editor.fontSize", stored);
        EXPECT_EQ(*EditorSettings(defaults).fontSize, expected);
    }
}

} // namespace
} // namespace quillmark
