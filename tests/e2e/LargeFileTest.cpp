// Files of 10 to 100 MB in the real program: they show, they answer, and what may be typed into them is
// saved.
#include "EndToEnd.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quillmark::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr int64_t caretSized = 400; ///< pixels that blink, or less than a change of the text

/// Lines with few or many letters, so that no two pages look the same.
std::string logOf(size_t size)
{
    std::string text;
    text.reserve(size + 200);
    for (uint64_t line = 0; text.size() < size; ++line) {
        text += "line " + std::to_string(line) + " ";
        text.append(20 + line * line % 71, static_cast<char>('a' + line % 26));
        text += '\n';
    }
    text.resize(size);
    return text;
}

std::string lineOf(size_t size)
{
    std::string text = logOf(size);
    std::ranges::replace(text, '\n', ' ');
    return text;
}

int64_t difference(const XServer::Picture& a, const XServer::Picture& b)
{
    if (a.size() != b.size())
        return std::ssize(a) + std::ssize(b);
    int64_t count = 0;
    for (size_t i = 0; i < a.size(); ++i)
        count += a[i] != b[i];
    return count;
}

class LargeFile : public testing::Test {
protected:
    bool showsText()
    {
        return eventually(
            [&] {
                const auto seen = look();
                return difference(seen, XServer::Picture(seen.size(), seen.empty() ? 0 : seen.front()))
                    > 4'000;
            },
            20s);
    }

    /// The lower part of the window behind the sidebar, where nothing but text is, whatever stands around it.
    XServer::Picture look()
    {
        if (area.width == 0)
            area = screen.focusedArea();
        return screen.picture({.x = area.x + area.width / 3,
            .y = area.y + area.height / 2,
            .width = area.width * 2 / 3 - 40,
            .height = area.height / 2 - 40});
    }
    void wheel(uint8_t button) { screen.click(area.x + area.width / 2, area.y + area.height / 2, button); }

    /// Whether the screen shows something else soon after something was done.
    template <class Act> bool answers(Act act)
    {
        const auto before = look();
        act();
        return eventually([&] { return difference(before, look()) > caretSized; });
    }
    bool answersKey(std::string_view keys)
    {
        return answers([&] { screen.key(keys); });
    }

    bool hidesSidebar()
    {
        const XServer::Area window = screen.focusedArea();
        const auto colour = [&] { return screen.pixel(window.x + 60, window.y + window.height - 60); };
        const uint32_t before = colour();
        screen.key("ctrl+0");
        return eventually([&] { return colour() != before; });
    }

    bool isSaved(std::string_view expected)
    {
        return eventually(
            [&] { return fs::file_size(file) == expected.size() && contents(file) == expected; }, 20s);
    }

    /// Types at the start and at the end, and looks at the file without leaving it.
    void typeAtBothEnds(const std::string& bytes)
    {
        write(file, bytes);
        desk.start({file});
        ASSERT_TRUE(showsText());
        screen.type("start ");
        EXPECT_TRUE(isSaved("start " + bytes));
        EXPECT_TRUE(answersKey("ctrl+End"));
        screen.type("end");
        EXPECT_TRUE(isSaved("start " + bytes + "end"));
        screen.key("ctrl+z");
        EXPECT_EQ(desk.quit(), 0) << desk.log();
        EXPECT_TRUE(contents(file) == "start " + bytes);
        EXPECT_EQ(desk.temporaries(), std::vector<fs::path>{});
    }

    /// Moves through a file that cannot be edited, and tries.
    void readOnly(const std::string& bytes)
    {
        write(file, bytes);
        const auto writtenAt = fs::last_write_time(file);
        desk.start({file});
        EXPECT_TRUE(hidesSidebar()) << "while the file is being read";
        ASSERT_TRUE(showsText());
        const auto top = look();

        EXPECT_TRUE(answersKey("ctrl+End"));
        EXPECT_TRUE(answersKey("Prior"));
        EXPECT_TRUE(answersKey("Prior"));
        EXPECT_TRUE(answers([&] { wheel(5); })) << "wheel down";
        EXPECT_TRUE(answers([&] { wheel(4); })) << "wheel up";
        screen.type("words\n");
        screen.key("BackSpace");
        screen.key("ctrl+Home");
        screen.type("words\n");
        screen.key("ctrl+x");
        screen.key("Delete");
        EXPECT_TRUE(eventually([&] { return difference(top, look()) < caretSized; }));
        EXPECT_TRUE(answersKey("Next"));
        EXPECT_EQ(desk.quit(), 0) << desk.log();
        EXPECT_EQ(fs::last_write_time(file), writtenAt);
        EXPECT_EQ(fs::file_size(file), bytes.size());
    }

    XServer screen;
    Desk desk{&screen};
    const fs::path file = desk.home() / "file.log";
    XServer::Area area;
};

TEST_F(LargeFile, ALineOf10MBIsEditedAtBothEnds)
{
    typeAtBothEnds(lineOf(10'000'000));
}

TEST_F(LargeFile, ALogOf100MBIsReadOnly)
{
    readOnly(logOf(100'000'000));
}

} // namespace
} // namespace quillmark::test
