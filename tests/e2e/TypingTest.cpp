// Every way in which a keyboard and a mouse type, in the real program: dead keys, Compose, AltGr, layouts,
// the X selection.
#include "EndToEnd.h"

#include <gtest/gtest.h>

#include <thread>

namespace quillmark::test {
namespace {

using namespace std::chrono_literals;

class Typing : public testing::Test {
protected:
    ~Typing() override { screen().output("setxkbmap -layout us -option"); }

    static XServer& screen()
    {
        static XServer server;
        return server;
    }
    void useLayout(const std::string& layout)
    {
        screen().output("setxkbmap " + layout);
        std::this_thread::sleep_for(200ms); // the program hears of it a moment later
    }
    /// One key after the other is read: the toolkit puts composed characters before keys that wait.
    void press(std::initializer_list<const char*> keys)
    {
        for (const char* key : keys) {
            screen().key(key);
            std::this_thread::sleep_for(30ms);
        }
    }
    std::string text() const { return contents(desk.notes() / "Untitled.txt"); }
    void expectText(const std::string& wanted)
    {
        EXPECT_TRUE(eventually([&] { return text() == wanted; })) << text() << "\n" << desk.log();
    }
    void clear()
    {
        screen().key("ctrl+a");
        screen().key("Delete");
        expectText("");
    }

    /// Where what is selected stands on the screen: what looks otherwise once it is not selected any more.
    XServer::Area selectionArea()
    {
        const XServer::Area window = screen().focusedArea();
        const XServer::Area top{
            window.x, window.y, window.width, window.height / 2}; // without the status bar
        screen().key("ctrl+a");
        std::this_thread::sleep_for(300ms);
        const XServer::Picture selected = screen().picture(top);
        screen().key("Right");
        std::this_thread::sleep_for(300ms);
        const XServer::Picture plain = screen().picture(top);
        int left = top.width;
        int right = 0;
        int first = top.height;
        int last = 0;
        for (size_t i = 0; i < plain.size() && i < selected.size(); ++i) {
            if (plain[i] == selected[i])
                continue;
            const int x = static_cast<int>(i) % top.width;
            const int y = static_cast<int>(i) / top.width;
            left = std::min(left, x);
            right = std::max(right, x);
            first = std::min(first, y);
            last = std::max(last, y);
        }
        return {top.x + left, top.y + first, right - left, last - first};
    }
    Desk desk{&screen()};
};

TEST_F(Typing, DeadKeysComposeAndAltGr)
{
    desk.start();
    useLayout("-layout us -variant intl -option compose:menu");
    press({"'", "e", "\"", "u"});
    expectText("\u00E9\u00FC");
    clear();
    press({"'", "space", "'", "x", "'", "'", "z"}); // no x has an accent
    expectText("'x\u00B4z");
    clear();
    press({"altgr+q", "altgr+s", "menu", "o", "/", "menu", "-", "-", "-"});
    expectText("\u00E4\u00DF\u00F8\u2014");
    screen().key("ctrl+z"); // shortcuts are what they were
    expectText("");
}

TEST_F(Typing, TheRussianLayoutTypesAndKeepsTheShortcuts)
{
    desk.start();
    useLayout("-layout ru");
    screen().type("Ghbdtn? vbh");
    expectText("Привет, мир");
    screen().key("ctrl+BackSpace");
    expectText("Привет, ");
    screen().key("ctrl+z");
    screen().key("ctrl+a");
    screen().key("ctrl+x");
    expectText("");
    screen().key("ctrl+v");
    screen().key("ctrl+v");
    expectText("Привет, мирПривет, мир");
    press({"ctrl+n"}); // a key of the menus; there is no Latin layout that it could be found in
    EXPECT_TRUE(eventually([&] { return desk.noteNames().size() == 2; }));
}

TEST_F(Typing, TheMouseSelectsAndPastes)
{
    desk.start();
    screen().type("one two");
    const XServer::Area area = selectionArea();
    ASSERT_GT(area.width, 20);
    const int row = area.y + area.height / 2;
    const int inOne = area.x + area.width / 7;
    const int end = area.x + area.width + 20;
    const auto selectOne = [&] {
        std::this_thread::sleep_for(600ms); // not a triple click
        screen().click(inOne, row);
        screen().click(inOne, row);
        std::this_thread::sleep_for(600ms);
    };
    selectOne();
    screen().click(end, row, 2); // the middle button
    expectText("one twoone");
}

} // namespace
} // namespace quillmark::test
