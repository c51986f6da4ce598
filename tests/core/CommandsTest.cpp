#include "core/Commands.h"
#include "AppTest.h"

#include <set>

namespace quillmark::test {
namespace {

struct CommandsTest : AppTest, Shell {
    PlainTextView* focused = &view;
    std::vector<Path> chosen;
    std::optional<Path> target;
    AppState::SaveSuggestion suggested;
    Path revealed;
    int searches = 0;
    int sidebarToggles = 0;
    int quits = 0;
    std::optional<EditAction> fieldAction; ///< that a field would allow
    int fieldEdits = 0;

    PlainTextView* focusedTextView() override { return focused; }
    std::vector<Path> chooseFilesToOpen() override { return chosen; }
    std::optional<Path> chooseFileToSave(const AppState::SaveSuggestion& suggestion) override
    {
        suggested = suggestion;
        return target;
    }
    void reveal(const Path& file) override { revealed = file; }
    void searchNotes() override { ++searches; }
    void toggleSidebar() override { ++sidebarToggles; }
    void showRecovered() override {}
    void enterGoToLine() override {}
    void quit() override { ++quits; }
    bool canEditField(EditAction action) override { return action == fieldAction; }
    void editField(EditAction) override { ++fieldEdits; }

    bool enabled(std::string_view id)
    {
        const Command& row = command(id);
        return !row.isEnabled || row.isEnabled(*app, *this);
    }
    void run(std::string_view id) { command(id).run(*app, *this); }
};

TEST_F(CommandsTest, NoIdAndNoKeyIsTakenTwice)
{
    std::set<std::string_view> ids;
    std::set<std::string_view> keys;
    for (const Command& row : commands()) {
        EXPECT_TRUE(ids.insert(row.id).second) << row.id;
        EXPECT_TRUE(row.run) << row.id;
        EXPECT_EQ(row.keySigns.empty(), row.linuxKeys.empty()) << row.id;
        for (const std::string_view name : row.linuxKeys)
            EXPECT_TRUE(keys.insert(name).second) << name;
    }
}

TEST_F(CommandsTest, EditingGoesToTheEditorThatHasTheFocus)
{
    start();
    EXPECT_FALSE(enabled("edit.undo"));
    EXPECT_FALSE(enabled("view.nextTab"));
    type("words");
    EXPECT_TRUE(enabled("edit.undo"));
    EXPECT_FALSE(enabled("edit.copy"));
    run("edit.selectAll");
    EXPECT_TRUE(enabled("edit.copy") && enabled("edit.cut") && enabled("edit.delete"));
    run("edit.cut");
    EXPECT_EQ(shown(), "");
    run("edit.undo");
    EXPECT_TRUE(enabled("edit.redo"));
    run("edit.redo");
    run("edit.paste");
    EXPECT_EQ(shown(), "words");
    view.selectAll();
    view.setEditable(false);
    EXPECT_TRUE(enabled("edit.copy"));
    EXPECT_FALSE(
        enabled("edit.cut") || enabled("edit.paste") || enabled("edit.delete") || enabled("edit.undo"));
    focused = nullptr;
    for (const Command& row : commands()) {
        if (row.menu == Menu::edit && row.submenu.empty()) {
            EXPECT_FALSE(enabled(row.id)) << row.id;
            run(row.id);
        }
    }
    EXPECT_EQ(shown(), "words");
    EXPECT_EQ(fieldEdits, 7);
    fieldAction = EditAction::copy;
    EXPECT_TRUE(enabled("edit.copy"));
    EXPECT_FALSE(enabled("edit.cut"));
}

} // namespace
} // namespace quillmark::test
