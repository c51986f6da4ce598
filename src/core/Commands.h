// The one command table: menus, tooltips and, later, the palette and the shortcuts window are made of its
// rows.
#pragma once

#include "core/AppState.h"

#include <span>
#include <string_view>

namespace quillmark {

/// What the edit menu does with the text that has the keyboard.
enum class EditAction { undo, redo, cut, copy, paste, remove, selectAll };

/// What a command asks of the windows.
class Shell {
public:
    virtual ~Shell() = default;
    virtual PlainTextView* focusedTextView() = 0; ///< null when the focus is elsewhere
    virtual bool canEditField(EditAction action) = 0; ///< false unless a text field of one line has the focus
    virtual void editField(EditAction action) = 0; ///< nothing where it cannot
    virtual std::vector<Path> chooseFilesToOpen() = 0; ///< modal panel; empty when cancelled
    /// Modal panel that asks before it returns a file that exists; nothing when cancelled.
    virtual std::optional<Path> chooseFileToSave(const AppState::SaveSuggestion& suggestion) = 0;
    virtual void reveal(const Path& file) = 0; ///< shows it selected in the file manager
    virtual void toggleSidebar() = 0;
    virtual void searchNotes() = 0; ///< the keyboard goes to the field for a search among the notes
    virtual void showRecovered() = 0; ///< the window with the texts of the recovery folder
    virtual void enterGoToLine() = 0; ///< the keyboard goes to the field for a line's number, if it is shown
    virtual void quit() = 0;
};

/// The top-level menus, in the order of the menu bar.
enum class Menu { file, edit, view };

struct Command {
    std::string_view id; ///< stable name, "file.newNote"
    Menu menu{};
    int group = 0; ///< a separator stands between rows of different groups
    std::string_view submenu = {}; ///< title of the menu within the menu that it stands in, mostly none
    std::string_view menuTitle; ///< Russian, without mnemonic
    std::string_view keySigns; ///< as the texts of the program show it: "⌘N"; empty when it has none
    std::vector<std::string_view> linuxKeys; ///< portable Qt-style key names, the first is shown: {"Ctrl+N"}
    std::string_view icon; ///< symbol name, may be empty
    bool (*isEnabled)(const AppState&, Shell&) = nullptr; ///< null: always
    bool (*isChecked)(const AppState&) = nullptr; ///< null: nothing to check
    void (*run)(AppState&, Shell&) = nullptr;
};

std::span<const Command> commands();
const Command& command(std::string_view id); ///< the id must exist

} // namespace quillmark
