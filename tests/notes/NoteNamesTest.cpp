#include "notes/NoteNames.h"

#include "io/Utf8.h"
#include "support/Repeated.h"
#include "support/World.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace quillmark::test {
namespace {

constexpr std::string_view family = "👨‍👩‍👧‍👦"; // one character of 25 bytes

TEST(TitleAndPreview, AreTheFirstLineThatIsNotBlankAndWhatFollows)
{
    const auto [title, preview] = titleAndPreview(u"  Shopping\n\nmilk\n  eggs\n");
    EXPECT_EQ(title, "Shopping");
    EXPECT_EQ(preview, "milk   eggs");

    EXPECT_EQ(titleAndPreview(u"\n\u00A0\t\nЗаметка\t\u2003\n").title, "Заметка");
    EXPECT_EQ(titleAndPreview(u"\n \n").title, "Untitled");
    EXPECT_EQ(titleAndPreview(u"\n \n").preview, "");
    EXPECT_EQ(titleAndPreview(u"").title, "Untitled");
    EXPECT_EQ(titleAndPreview(u"one").preview, "");
}

TEST(TitleAndPreview, AreCutByWholeCharacters)
{
    const std::u16string families = utf16(repeated(family, 100));
    const auto [title, preview] = titleAndPreview(families + u"\n" + families);
    EXPECT_EQ(title, repeated(family, 80));
    EXPECT_EQ(preview, repeated(family, 80));
}

TEST(FileBaseName, MakesAFileNameOfAnyTitle)
{
    EXPECT_EQ(fileBaseName("Plan: Q3/Q4"), "Plan- Q3-Q4");
    EXPECT_EQ(fileBaseName("...notes"), "notes");
    EXPECT_EQ(fileBaseName(" a \t\n b\u00A0"), "a b");
    EXPECT_EQ(fileBaseName(std::string("a\0b", 3)), "a-b");
    EXPECT_EQ(fileBaseName(":"), "-");
    EXPECT_EQ(fileBaseName("../.."), "-.."); // no name of a folder, and not hidden
    for (const char* nothing : {"", ".", "..", " . ", " \t"})
        EXPECT_EQ(fileBaseName(nothing), "Untitled") << nothing;
    EXPECT_EQ(fileBaseName(repeated("x", 70)), repeated("x", 60));
    EXPECT_EQ(fileBaseName(repeated("ё", 70)), repeated("ё", 60));
}

TEST(FileBaseName, LeavesRoomForEverySuffixInTheBytesOfAFileName)
{
    const std::string suffix = conflictSuffix(WallTime(std::chrono::days(20'000)));
    for (const std::string& title :
        {repeated(family, 60), repeated("\U0001F600", 60), repeated("й", 200), "й" + repeated(family, 59)}) {
        const std::string name = fileBaseName(title);
        EXPECT_TRUE(isWellFormedUtf8(name));
        EXPECT_TRUE(title.starts_with(name)) << "a character was cut";
        EXPECT_LE((name + " copy" + suffix + " 9999999.txt").size(), 255u);
        EXPECT_EQ(nameWithSuffix(name + " copy", suffix), name + " copy" + suffix)
            << "wanted and actual name differ";
        EXPECT_EQ(fileBaseName(name), name);
    }
    EXPECT_GE(fileBaseName(repeated(family, 60)).size(), 180u) << "cut more than needed";
    EXPECT_EQ(fileBaseName("е" + repeated("\u0301", 200)), "Untitled")
        << "one character that no name can hold";
}

TEST(NameWithSuffix, CutsNamesThatOtherProgramsGave)
{
    EXPECT_EQ(nameWithSuffix("Plan", " copy"), "Plan copy");
    const std::string name = nameWithSuffix(repeated("ф", 125), " copy");
    EXPECT_TRUE(name.ends_with("ф copy"));
    EXPECT_TRUE(isWellFormedUtf8(name));
    EXPECT_LE(name.size(), 243u);
    EXPECT_LE(nameWithSuffix(repeated("\xFF", 251), " copy").size(), 243u);
}

TEST(IsNamedAfter, ToleratesTheNumberThatMadeTheNameFree)
{
    EXPECT_TRUE(isNamedAfter("Plan", "Plan"));
    EXPECT_TRUE(isNamedAfter("Plan 2", "Plan"));
    EXPECT_FALSE(isNamedAfter("Plan", "Plan 2"));
    EXPECT_FALSE(isNamedAfter("Plan2", "Plan"));
    EXPECT_FALSE(isNamedAfter("Plan 2 3", "Plan"));
    EXPECT_FALSE(isNamedAfter("Plan", "plan"));
    EXPECT_TRUE(isNamedAfter("\u0438\u0306", "\u0439")) << "й, composed and decomposed, is one name";
}

TEST(ConflictSuffix, SurvivesAnyClock)
{
    EXPECT_EQ(conflictSuffix(WallTime()).size(), std::string(" (conflict 2026-03-05 14-07)").size());
    EXPECT_FALSE(conflictSuffix(distantPast).empty());
    EXPECT_FALSE(conflictSuffix(WallTime::max()).empty());
}

} // namespace
} // namespace quillmark::test
