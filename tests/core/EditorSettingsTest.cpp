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

TEST(EditorSettings, EachFieldIsWrittenAtOnceUnderItsKeyAndComesBack)
{
    test::MemoryDefaults defaults;
    {
        EditorSettings settings(defaults);
        settings.fontName.set("JetBrains Mono");
        settings.fontSize.set(18);
        settings.quickNoteHotKeyID.set("ctrl-opt-cmd-m");
        settings.cleanupQuotes.set(true);
        settings.cleanupDashes.set(true);
        settings.cleanupTrimTrailing.set(true);
        settings.cleanupCollapseBlank.set(true);
        settings.cleanupDashes.set(false);
    }
    EXPECT_EQ(defaults.writtenKeys(),
        (std::vector<std::string>{"editor.fontName", "editor.fontSize", "quickNote.hotKey", "cleanup.quotes",
            "cleanup.dashes", "cleanup.trimTrailing", "cleanup.collapseBlank", "cleanup.dashes"}));
    const EditorSettings again(defaults);
    EXPECT_EQ(*again.fontName, "JetBrains Mono");
    EXPECT_EQ(*again.fontSize, 18);
    EXPECT_EQ(*again.quickNoteHotKeyID, "ctrl-opt-cmd-m");
    EXPECT_TRUE(*again.cleanupQuotes && *again.cleanupTrimTrailing && *again.cleanupCollapseBlank);
    EXPECT_FALSE(*again.cleanupDashes);
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
