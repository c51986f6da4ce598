// Where files are: bookmarks and the standard folders.
#include "io/Bookmark.h"
#include "io/StandardPaths.h"
#include "support/FakeFileSystem.h"
#include "support/ManualScheduler.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <map>

namespace quillmark::test {
namespace {

class Bookmarks : public testing::Test {
protected:
    ManualScheduler clock;
    FakeFileSystem disk{clock};
};

TEST_F(Bookmarks, FindAFileThatWasRenamedInItsFolder)
{
    disk.putFile("/d/na\xFF\nme", "x");
    disk.putFile("/d/other", "y");
    const std::string bookmark = makeBookmark(disk, "/d/na\xFF\nme").value();
    auto found = resolveBookmark(disk, bookmark);
    EXPECT_EQ(found->path, "/d/na\xFF\nme");
    EXPECT_FALSE(found->isStale);

    disk.move("/d/na\xFF\nme", "/d/renamed");
    found = resolveBookmark(disk, bookmark);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->path, "/d/renamed");
    EXPECT_TRUE(found->isStale);

    disk.putFile("/d/na\xFF\nme", "another file under the old name");
    EXPECT_EQ(resolveBookmark(disk, bookmark)->path, "/d/na\xFF\nme")
        << "the name counts, as after an atomic save";
    disk.erase("/d/na\xFF\nme");
    disk.move("/d/renamed", "/elsewhere/renamed");
    EXPECT_EQ(resolveBookmark(disk, bookmark).error().code, ENOENT);
    EXPECT_EQ(makeBookmark(disk, "/none").error().code, ENOENT);
}

StandardPaths findIn(std::map<std::string, std::string> variables, std::string_view userDirs = "")
{
    ManualScheduler clock;
    FakeFileSystem disk(clock);
    disk.putFile("/home/u/.config/user-dirs.dirs", userDirs);
    return StandardPaths::find(disk, [&](const char* name) -> std::optional<std::string> {
        const auto variable = variables.find(name);
        return variable != variables.end() ? std::optional(variable->second) : std::nullopt;
    });
}

TEST(StandardPaths, FollowTheEnvironment)
{
    const StandardPaths usual = findIn({{"HOME", "/home/u"}});
    EXPECT_EQ(usual.settings(), "/home/u/.config/quillmark/settings.json");
    EXPECT_EQ(usual.recovered(), "/home/u/.local/state/quillmark/recovered");
    EXPECT_EQ(usual.documents, "/home/u/Documents");
    const StandardPaths set
        = findIn({{"HOME", "/home/u"}, {"XDG_CONFIG_HOME", "/c\xFF"}, {"XDG_STATE_HOME", "relative"}});
    EXPECT_EQ(set.config, "/c\xFF/quillmark");
    EXPECT_EQ(set.state, "/home/u/.local/state/quillmark") << "a relative path counts as absent";
    EXPECT_TRUE(findIn({}).config.is_absolute());
}

TEST(StandardPaths, DocumentsComeFromTheUserDirsFile)
{
    const auto documents = [](std::string_view line) {
        return findIn(
            {{"HOME", "/home/u"}}, "# a comment\nXDG_DESKTOP_DIR=\"$HOME/Desk\"\n" + std::string(line))
            .documents;
    };
    EXPECT_EQ(documents("XDG_DOCUMENTS_DIR=\"$HOME/Документы\"\n"), "/home/u/Документы");
    EXPECT_EQ(documents("  XDG_DOCUMENTS_DIR=\"/data/a \\\"b\\\"/\""), "/data/a \"b\"");
    EXPECT_EQ(documents("XDG_DOCUMENTS_DIR=\"$HOME/\""), "/home/u");
    EXPECT_EQ(documents("XDG_DOCUMENTS_DIR=\"relative\""), "/home/u/Documents");
    EXPECT_EQ(documents("XDG_DOCUMENTS_DIR=\"$HOMEX/a\""), "/home/u/Documents");
    EXPECT_EQ(documents("#XDG_DOCUMENTS_DIR=\"/x\""), "/home/u/Documents");
}

} // namespace
} // namespace quillmark::test
