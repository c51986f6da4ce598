#include "AppTest.h"
#include "core/SessionData.h"

#include <nlohmann/json.hpp>

namespace quillmark::test {
namespace {

constexpr const char* key = "session.v1";

struct SessionTest : AppTest {
    void store(const std::string& json) { defaults.setData(key, json); }
};

TEST_F(SessionTest, TabsComeBackInTheirOrder)
{
    putNote("Plan.txt", "Plan");
    disk.putFile("/docs/a\xFF.txt", "A");
    disk.putFile("/docs/b.txt", "B");
    start();
    open("/docs/a\xFF.txt");
    open("/docs/b.txt");
    select(1);
    quit();
    disk.move("/docs/b.txt", "/docs/renamed.txt");
    start();
    EXPECT_EQ(titles(), (Strings{"Plan", "a\uFFFD.txt", "renamed.txt"}));
    EXPECT_EQ(activeIndex(), 1u);
    EXPECT_EQ(shown(), "A");
}

TEST_F(SessionTest, NotesAreFoundByTheBytesOfTheirPaths)
{
    putNote("\u0439.txt", "composed");
    putNote("\u0438\u0306.txt", "decomposed");
    putNote("%41.txt", "percent");
    putNote("A.txt", "letter");
    putNote("\xFF.txt", "no text");
    start();
    SessionData all;
    for (const Note& note : *app->store.notes)
        all.tabs.push_back({.notePath = note.url, .bookmark = {}});
    stop();
    defaults.setData(key, encodeSession(all));
    start();
    app->saveSession();
    EXPECT_EQ(app->tabs->size(), 5u);
    EXPECT_EQ(decodeSession(*defaults.data(key)), all);
}

TEST_F(SessionTest, TheRecordFollowsARenamedFile)
{
    start();
    type("Plan");
    scheduler.advance(10s);
    ASSERT_EQ(noteNames(), (Strings{"Plan.txt"}));
    stop(); // killed
    start();
    EXPECT_EQ(titles(), (Strings{"Plan"}));
    EXPECT_EQ(noteNames(), (Strings{"Plan.txt"}));
}

TEST_F(SessionTest, WhatIsGoneIsLeftOut)
{
    putNote("Plan.txt", "Plan");
    disk.putFile("/docs/a.txt", "A");
    disk.putFile("/docs/b.txt", "B");
    start();
    open("/docs/a.txt");
    open("/docs/b.txt");
    open("/docs/never made");
    quit();
    disk.erase("/docs/b.txt");
    disk.erase(note("Plan.txt"));
    start();
    EXPECT_EQ(titles(), (Strings{"a.txt"}));
    EXPECT_EQ(activeIndex(), 0u);
    quit();
    disk.erase("/docs/a.txt");
    start();
    EXPECT_EQ(titles(), (Strings{"Untitled"}));
}

TEST_F(SessionTest, ADamagedRecordDoesNotPreventTheStart)
{
    const std::string deep(100'000, '[');
    const std::string path = R"({"notePath":"/home/u/Documents/Notes/Plan.txt"})";
    for (const std::string& damaged :
        {std::string(), std::string("\0\0\0\0", 4), std::string("\xFF\xFE"), deep, std::string("{}"),
            std::string("[]"), std::string(R"({"tabs":[]})"), std::string(R"({"activeIndex":0})"),
            std::string(R"({"tabs":{},"activeIndex":0})"), std::string(R"({"tabs":[1],"activeIndex":0})"),
            std::string(R"({"tabs":[{"notePath":7}],"activeIndex":0})"),
            R"({"tabs":[)" + path + R"(],"activeIndex":"1"})",
            R"({"tabs":[)" + path + R"(],"activeIndex":0)"}) {
        store(damaged);
        start();
        EXPECT_EQ(app->tabs->size(), 1u) << damaged.substr(0, 80);
        EXPECT_EQ(defaults.data(key), damaged) << "left as it is until the tabs change";
        stop();
    }
}

TEST_F(SessionTest, NothingIsStoredBeforeTheStoredSessionWasRead)
{
    putNote("Plan.txt", "Plan");
    disk.putFile("/docs/a", "A");
    start();
    open("/docs/a");
    quit();
    const auto stored = defaults.data(key);
    disk.setHook([&](const FakeFileSystem::Call&) { EXPECT_EQ(defaults.data(key), stored); });
    start();
    disk.setHook(nullptr);
    EXPECT_EQ(titles(), (Strings{"Plan", "a"}));
    EXPECT_EQ(defaults.data(key), stored);
}

} // namespace
} // namespace quillmark::test
