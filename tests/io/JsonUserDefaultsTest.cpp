#include "io/JsonUserDefaults.h"

#include "FakeDisk.h"
#include "io/Escape.h"

#include <cerrno>

#include <nlohmann/json.hpp>

namespace quillmark::test {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

class Settings : public FakeDisk {
protected:
    std::unique_ptr<JsonUserDefaults> open()
    {
        return std::make_unique<JsonUserDefaults>(disk, writer, scheduler, log, file);
    }
    std::vector<std::string> names() const { return disk.names("/config/quillmark"); }

    const Path file = "/config/quillmark/settings.json";
};

TEST_F(Settings, ValuesComeBackWithTheirTypes)
{
    const std::string bytes = "\0\xFF\x80 any"s;
    {
        const auto settings = open();
        EXPECT_FALSE(settings->string("s"));
        settings->setString("s", "Шрифт \"x\"\n");
        settings->setString("bytes", "/home/\xFF/100%");
        settings->setBoolean("b", true);
        settings->setReal("r", 13);
        settings->setData("d", bytes);
        settings->setData("empty", "");
        settings->setString("gone", "x");
        settings->remove("gone");
    }
    const auto settings = open();
    EXPECT_EQ(settings->string("s"), "Шрифт \"x\"\n");
    EXPECT_EQ(settings->string("bytes"), "/home/\xFF/100%");
    EXPECT_EQ(settings->boolean("b"), true);
    EXPECT_EQ(settings->real("r"), 13.0);
    EXPECT_EQ(settings->data("d"), bytes);
    EXPECT_EQ(settings->data("empty"), "");
    EXPECT_FALSE(settings->string("gone"));
    EXPECT_FALSE(settings->string("d")) << "another type reads as absent";
    EXPECT_FALSE(settings->data("s"));
    EXPECT_FALSE(settings->boolean("r"));
    EXPECT_FALSE(settings->real("b"));
}

TEST_F(Settings, ChangesAreWrittenOffTheMainThreadTheNewestOnly)
{
    const auto settings = open();
    disk.clearCalls();
    for (int i = 0; i < 10; ++i)
        settings->setReal("editor.fontSize", i);
    EXPECT_TRUE(disk.calls().empty());
    scheduler.settle();
    EXPECT_EQ(std::ranges::count(disk.calls(), DiskOperation::sync, &FakeFileSystem::Call::operation), 1);
    EXPECT_EQ(open()->real("editor.fontSize"), 9.0);
    disk.clearCalls();
    settings->setReal("editor.fontSize", 9);
    scheduler.settle();
    EXPECT_TRUE(disk.calls().empty()) << "nothing changed";
}

TEST_F(Settings, KeysOfOthersStay)
{
    disk.putFile(file, R"({"theirs": {"deep": [1, null, "x"]}, "mine": 1})");
    open()->setReal("mine", 2);
    const auto values = nlohmann::json::parse(disk.bytes(file).value());
    EXPECT_EQ(values, nlohmann::json::parse(R"({"theirs": {"deep": [1, null, "x"]}, "mine": 2})"));
}

TEST_F(Settings, TwoProgramsKeepWhatTheOtherWrote)
{
    disk.putFile(file, R"({"both": 1, "gone": 1})");
    const auto first = open();
    const auto second = open();
    first->setReal("first", 1);
    first->setReal("both", 2);
    ASSERT_TRUE(first->flush());
    second->remove("gone");
    ASSERT_TRUE(second->flush());
    disk.setHook([&](const FakeFileSystem::Call& call) {
        if (call.operation != DiskOperation::sync)
            return;
        disk.setHook(nullptr);
        second->setReal("second", 3); // while the first one writes
        ASSERT_TRUE(second->flush());
    });
    first->setReal("late", 4);
    ASSERT_TRUE(first->flush());
    const auto values = nlohmann::json::parse(disk.bytes(file).value());
    EXPECT_EQ(values, nlohmann::json::parse(R"({"both": 2, "first": 1, "second": 3, "late": 4})"));
}

TEST_F(Settings, ADamagedFileIsSetAsideAndLogged)
{
    scheduler.setWall(WallTime(0s));
    for (const std::string& damage :
        {"{\"a\": 1"s, "[]"s, ""s, "\xFF\xFE{}"s, "{\"a\": \"\xFF\"}"s, std::string(36'000, '\0'),
            "{\"a\":" + std::string(100'000, '[') + std::string(100'000, ']') + "}"}) {
        disk.erase("/config");
        disk.putFile(file, damage);
        const auto settings = open();
        EXPECT_FALSE(settings->real("a"));
        scheduler.settle();
        EXPECT_EQ(disk.bytes("/config/quillmark/settings.json.damaged-1970-01-01 00.00.00.000"), damage);
        settings->setBoolean("b", true);
    }
    EXPECT_TRUE(log.hasLineStartingWith("Quillmark: settings set aside as "));
    EXPECT_EQ(open()->boolean("b"), true);
}

TEST_F(Settings, AnUnreadableFileIsNotOverwritten)
{
    disk.putFile(file, R"({"precious": 1})");
    disk.failOnce(DiskOperation::read, EIO);
    const auto settings = open();
    scheduler.settle();
    EXPECT_EQ(disk.bytes(file), R"({"precious": 1})") << "not touched without need";
    disk.failAlways(DiskOperation::renameNoReplace, EACCES, "settings.json");
    settings->setReal("new", 2);
    scheduler.settle();
    EXPECT_EQ(disk.bytes(file), R"({"precious": 1})");
    disk.heal();
    scheduler.advance(2s);
    scheduler.settle();
    ASSERT_EQ(names().size(), 2u);
    EXPECT_EQ(disk.bytes(Path("/config/quillmark") / names()[1]), R"({"precious": 1})");
    EXPECT_EQ(open()->real("new"), 2.0);
}

TEST_F(Settings, AFullDiskKeepsTheOldFileAndTheNewValuesArriveLater)
{
    open()->setReal("size", 1);
    const auto settings = open();
    disk.setCapacity(0);
    settings->setReal("size", 2);
    EXPECT_EQ(settings->flush().error().code, ENOSPC);
    EXPECT_EQ(settings->real("size"), 2.0);
    EXPECT_EQ(open()->real("size"), 1.0);
    EXPECT_TRUE(log.hasLineStartingWith("Quillmark: settings not saved: "));
    disk.heal();
    scheduler.settle();
    scheduler.advance(2s);
    scheduler.settle();
    EXPECT_EQ(open()->real("size"), 2.0);
}

TEST(Escape, EveryBytesComeBack)
{
    std::string bytes;
    for (int i = 0; i < 256; ++i) {
        EXPECT_EQ(bytesOfBase64(base64(bytes)), bytes);
        EXPECT_EQ(percentDecoded(percentEncoded(bytes)), bytes);
        bytes += static_cast<char>(i);
    }
    EXPECT_EQ(base64("Ma"), "TWE=");
    EXPECT_EQ(percentEncoded("a%\xFF"), "a%25%FF");
    EXPECT_EQ(percentDecoded("%zz%4"), "%zz%4");
    EXPECT_FALSE(bytesOfBase64("TWE"));
    EXPECT_FALSE(bytesOfBase64("TW*="));
}

} // namespace
} // namespace quillmark::test
