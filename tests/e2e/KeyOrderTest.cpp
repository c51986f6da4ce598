// Keys and clicks that a program reads all at once, after it could not for a while, act in their order: also
// behind a screen reader's bridge, which takes keys on a round trip of their own.
#include "SessionBus.h"

#include <gtest/gtest.h>

#include <csignal>
#include <optional>
#include <thread>

namespace quillmark::test {
namespace {

using namespace std::chrono_literals;

class KeyOrder : public testing::TestWithParam<bool> {
protected:
    KeyOrder()
    {
        write(a, "a");
        write(b, "b");
    }

    static XServer& screen()
    {
        static XServer server;
        return server;
    }
    void start()
    {
        if (GetParam()) {
            bus.emplace(desk.home() / "run", screen());
            bus->becomeScreenReader();
            desk.setEnvironment("DBUS_SESSION_BUS_ADDRESS", bus->address());
            desk.setEnvironment("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
        }
        desk.start({a, b});
        if (GetParam())
            waitForBridge();
    }
    void waitForBridge()
    {
        screen().type("q");
        expectTexts("a", "qb"); // by now it knows who listens
        screen().type("w");
        EXPECT_TRUE(bus->waitFor("TextChanged", "'w'")) << desk.log();
        screen().key("ctrl+a");
        screen().type("b");
        screen().key("Home");
        expectTexts("a", "b");
    }
    template <class Input> void whileStopped(Input input)
    {
        ASSERT_EQ(kill(desk.process(), SIGSTOP), 0);
        input();
        std::this_thread::sleep_for(100ms); // all of it is at the program's door
        ASSERT_EQ(kill(desk.process(), SIGCONT), 0);
    }
    void expectTexts(const std::string& inA, const std::string& inB)
    {
        EXPECT_TRUE(eventually([&] { return contents(a) == inA && contents(b) == inB; })) << contents(
            a) << " and " << contents(b) << "\n" << desk.log();
    }

    Desk desk{&screen()};
    const std::filesystem::path a = desk.home() / "a.txt";
    const std::filesystem::path b = desk.home() / "b.txt";
    std::optional<SessionBus> bus;
};

TEST_P(KeyOrder, LettersGoToTheTabOfTheirTime)
{
    start();
    whileStopped([&] {
        for (const char* key : {"x", "ctrl+shift+Tab", "y", "ctrl+Next", "z"})
            screen().key(key);
    });
    expectTexts("ya", "zxb");
}

TEST_P(KeyOrder, ClicksWaitForTheLettersBefore)
{
    start();
    const XServer::Area window = screen().focusedArea();
    whileStopped([&] {
        screen().type("xy");
        std::this_thread::sleep_for(20ms); // nobody clicks in the millisecond of a key
        screen().click(window.x + window.width / 2, window.y + window.height / 2); // the end of the text
        std::this_thread::sleep_for(20ms);
        screen().type("z");
    });
    expectTexts("a", "xybz");
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutBridge, KeyOrder, testing::Bool(),
    [](const auto& bridge) { return bridge.param ? "Bridge" : "NoBridge"; });

} // namespace
} // namespace quillmark::test
