// The real program as a screen reader meets it: through AT-SPI alone. Only the keys come from elsewhere.
#include "ScreenReader.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quillmark::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr Duration patience = 20s;
constexpr uint32_t wordBoundary = 1;
constexpr uint32_t lineBoundary = 5;
constexpr size_t longestAnswer = 65'536;

XServer& screen()
{
    static XServer server;
    return server;
}

class ScreenReaderTest : public testing::Test {
protected:
    void start(std::vector<std::string> arguments)
    {
        desk.setEnvironment("DBUS_SESSION_BUS_ADDRESS", reader.sessionBus());
        desk.setEnvironment("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
        reader.listen();
        desk.start(std::move(arguments));
        const auto found = reader.waitFor(Role::text);
        ASSERT_TRUE(found) << desk.log();
        editor = *found;
        ASSERT_TRUE(eventually([&] { return reader.has(editor, State::focused); }, patience));
    }
    bool textBecomes(const std::string& expected)
    {
        return eventually([&] { return reader.text(editor, 0, -1) == expected; }, patience);
    }
    bool fileBecomes(const fs::path& file, const std::string& expected)
    {
        return eventually([&] { return contents(file) == expected; }, patience);
    }

    Desk desk{&screen()};
    ScreenReader reader{desk.home() / "run", screen()};
    Accessible editor;
};

TEST_F(ScreenReaderTest, ReadsAndWritesTheText)
{
    const fs::path file = desk.home() / "list.txt";
    write(file, "Купить хлеб.\nПозвонить домой.\n");
    start({file});
    EXPECT_EQ(reader.name(editor), "Текст");
    EXPECT_TRUE(reader.has(editor, State::multiLine));
    EXPECT_TRUE(reader.has(editor, State::editable));
    EXPECT_FALSE(reader.has(editor, State::readOnly));

    ASSERT_TRUE(textBecomes("Купить хлеб.\nПозвонить домой.\n"));
    EXPECT_EQ(reader.characterCount(editor), 30);
    EXPECT_EQ(reader.caret(editor), 0);
    EXPECT_EQ(reader.textAt(editor, 15, lineBoundary).text, "Позвонить домой.\n");
    const ScreenReader::Answer word = reader.textAt(editor, 8, wordBoundary);
    EXPECT_EQ(word.text, "хлеб");
    EXPECT_EQ(std::pair(word.start, word.end), std::pair(7, 11));

    reader.insert(editor, 11, " и соль", 7);
    reader.remove(editor, 20, -1);
    EXPECT_TRUE(fileBecomes(file, "Купить хлеб и соль.\n")) << contents(file);
    reader.setCaret(editor, 6);
    EXPECT_EQ(reader.caret(editor), 6);
    screen().key("ctrl+z");
    EXPECT_TRUE(fileBecomes(file, "Купить хлеб и соль.\nПозвонить домой.\n")) << contents(file);
}

TEST_F(ScreenReaderTest, HearsWhatKeysDo)
{
    const fs::path file = desk.home() / "list.txt";
    write(file, "");
    start({file});
    screen().type("ab");
    for (const auto& [letter, place] : {std::pair("a", 0), std::pair("b", 1)}) {
        const auto isLetter = [&](const AccessibleEvent& event) {
            return event.source == editor && event.text == letter && event.first == place
                && event.second == 1;
        };
        EXPECT_TRUE(reader.waitForEvent("TextChanged:insert", isLetter)) << letter;
        EXPECT_TRUE(reader.waitForEvent(
            "TextCaretMoved", [&](const AccessibleEvent& event) { return event.first == place + 1; }));
    }

    screen().key("shift+Left");
    EXPECT_TRUE(reader.waitForEvent(
        "TextSelectionChanged", [&](const AccessibleEvent& event) { return event.source == editor; }));
    EXPECT_EQ(reader.selection(editor), std::pair(1, 2));
    EXPECT_EQ(reader.caret(editor), 1);

    screen().key("BackSpace");
    EXPECT_TRUE(reader.waitForEvent(
        "TextChanged:delete", [](const AccessibleEvent& event) { return event.text == "b"; }));
    EXPECT_EQ(reader.selection(editor), std::nullopt);
    EXPECT_TRUE(textBecomes("a"));
}

TEST_F(ScreenReaderTest, GetsBoundedAnswersOfALargeFileAndCannotWriteIt)
{
    const fs::path file = desk.home() / "large.txt";
    std::string lines;
    for (int i = 0; lines.size() <= 20'971'520; ++i)
        lines += "line " + std::to_string(i) + "\n";
    write(file, lines);
    start({file});
    const int length = static_cast<int>(lines.size());
    ASSERT_TRUE(eventually([&] { return reader.characterCount(editor) == length; }, patience));
    EXPECT_TRUE(reader.has(editor, State::readOnly));
    EXPECT_FALSE(reader.has(editor, State::editable));

    EXPECT_EQ(reader.text(editor, 0, -1), lines.substr(0, longestAnswer));
    const int middle = static_cast<int>(lines.find("line 1000000\n"));
    EXPECT_EQ(reader.textAt(editor, middle + 7, lineBoundary).text, "line 1000000\n");
    EXPECT_EQ(reader.text(editor, middle, middle + 12), "line 1000000");

    reader.insert(editor, 0, "x", 1);
    reader.remove(editor, 0, 4);
    EXPECT_EQ(reader.text(editor, 0, 6), "line 0");
    EXPECT_EQ(desk.quit(), 0);
    EXPECT_TRUE(contents(file) == lines);
}

TEST_F(ScreenReaderTest, FindsTheWindowsPartsByRoleAndName)
{
    write(desk.notes() / "Покупки.txt", "Покупки\nхлеб");
    const fs::path file = desk.home() / "list.md";
    write(file, "text");
    start({file});
    const std::vector<ScreenReader::Node> nodes = reader.tree();
    std::string seen;
    for (const auto& node : nodes)
        seen += std::to_string(node.role) + " " + node.name + "\n";
    const auto has = [&](Role role, std::string_view name) {
        return std::ranges::any_of(nodes, [&](const ScreenReader::Node& node) {
            return node.role == static_cast<uint32_t>(role) && node.name == name;
        });
    };
    EXPECT_TRUE(has(Role::frame, "list.md")) << seen;
    EXPECT_TRUE(has(Role::pageTab, "list.md")) << seen;
    EXPECT_TRUE(has(Role::pushButton, "Новая вкладка")) << seen;
    EXPECT_TRUE(has(Role::list, "Заметки")) << seen;
    EXPECT_TRUE(has(Role::listItem, "Покупки")) << seen;
    EXPECT_TRUE(has(Role::statusBar, "Состояние")) << seen;
    EXPECT_TRUE(has(Role::label, "UTF-8")) << seen;
    EXPECT_TRUE(has(Role::label, "Сохранено")) << seen;
    EXPECT_TRUE(std::ranges::none_of(nodes, [](const ScreenReader::Node& node) {
        return node.role == static_cast<uint32_t>(Role::pushButton) && node.name.empty();
    })) << seen;
}

} // namespace
} // namespace quillmark::test
