#include "io/RecoveryStore.h"

#include "support/Repeated.h"

#include "FakeDisk.h"
#include "io/FileNames.h"

#include <cerrno>

namespace quillmark::test {
namespace {

using namespace std::chrono_literals;

class Recovery : public FakeDisk {};

TEST_F(Recovery, KeepsTextCompleteSyncedPrivateAndNamedAfterTimeAndFile)
{
    scheduler.setWall(WallTime(1'795'000'000'123ms));
    const auto path = recovery.keep(Rope(u"слова\n"), "/home/user/заметка.txt");
    ASSERT_TRUE(path);
    EXPECT_EQ(path->filename(), "2026-11-18 11.06.40.123 заметка.txt");
    EXPECT_EQ(disk.infoOf(*path).mode, 0600u);
    EXPECT_EQ(
        log.lines(), std::vector{"Quillmark: text of /home/user/заметка.txt kept in " + path->string()});
    const auto again = recovery.keepBytes("other \xFF bytes", "заметка.txt");
    EXPECT_EQ(again->filename(), "2026-11-18 11.06.40.123 (2) заметка.txt");
    disk.crash(FakeFileSystem::UnsyncedEntries::kept);
    EXPECT_EQ(disk.bytes(*path), "слова\n");
    EXPECT_EQ(disk.bytes(*again), "other \xFF bytes");
}

TEST_F(Recovery, LongAndOddNamesFit)
{
    const auto path = recovery.keepBytes("x", "/d/" + repeated("ж", 125) + ".txt");
    ASSERT_TRUE(path);
    const std::string kept = path->filename();
    EXPECT_LE(kept.size(), 255u);
    EXPECT_GE(kept.size(), 250u);
    EXPECT_TRUE(kept.ends_with("ж.txt"));
    EXPECT_NE(kept.find(" ж"), std::string::npos) << "no half of a character in front";
    EXPECT_TRUE(recovery.keepBytes("x", "/d/na\xFFme\n")) << "a name that is not UTF-8";
    EXPECT_EQ(log.lines().back().find('\n'), std::string::npos);
    EXPECT_TRUE(recovery.keepBytes("x", ""));
}

TEST_F(Recovery, TheNewest200Stay)
{
    for (int i = 0; i < 205; ++i) {
        scheduler.advance(1s);
        ASSERT_TRUE(recovery.keepBytes(std::to_string(i), "a"));
    }
    const auto texts = recovery.list().value();
    ASSERT_EQ(texts.size(), 200u);
    EXPECT_EQ(disk.bytes(texts.front().path), "204");
    EXPECT_EQ(disk.bytes(texts.back().path), "5");
    scheduler.setWall(WallTime(1s)); // somebody set the clock back
    const auto kept = recovery.keepBytes("now", "a");
    EXPECT_EQ(disk.bytes(*kept), "now");
    EXPECT_EQ(recovery.list()->size(), 200u);
}

TEST_F(Recovery, SaysWhenItCannot)
{
    EXPECT_TRUE(recovery.list()->empty()) << "nothing was ever kept";
    disk.failAlways(DiskOperation::write, ENOSPC);
    EXPECT_EQ(recovery.keepBytes("x", "a").error().code, ENOSPC);
    EXPECT_EQ(log.lines(), std::vector<std::string>{"Quillmark: text of a not kept: Нет места на диске"});
    disk.heal();
    EXPECT_EQ(recovery.keepCopy("/none").error().code, ENOENT);
    EXPECT_TRUE(disk.names("/state/recovered").empty()) << "no half file is left";
}

} // namespace
} // namespace quillmark::test
