#include "core/Commands.h"

#include <algorithm>
#include <array>
#include <cassert>

namespace quillmark {
namespace {

bool canEdit(const PlainTextView& view, EditAction action)
{
    const bool hasSelection = !view.selection().isEmpty();
    switch (action) {
    case EditAction::undo:
        return view.isEditable() && view.canUndo();
    case EditAction::redo:
        return view.isEditable() && view.canRedo();
    case EditAction::cut:
    case EditAction::remove:
        return view.isEditable() && hasSelection;
    case EditAction::copy:
        return hasSelection;
    case EditAction::paste:
        return view.isEditable();
    case EditAction::selectAll:
        return true;
    }
    return false;
}

void edit(PlainTextView& view, EditAction action)
{
    switch (action) {
    case EditAction::undo:
        return view.undo();
    case EditAction::redo:
        return view.redo();
    case EditAction::cut:
        return view.cut();
    case EditAction::copy:
        return view.copy();
    case EditAction::paste:
        return view.paste();
    case EditAction::remove:
        return view.deleteSelection();
    case EditAction::selectAll:
        return view.selectAll();
    }
}

template <EditAction action> bool canEdit(const AppState&, Shell& shell)
{
    const PlainTextView* const view = shell.focusedTextView();
    return view ? canEdit(*view, action) : shell.canEditField(action);
}

template <EditAction action> void edit(AppState&, Shell& shell)
{
    if (PlainTextView* const view = shell.focusedTextView())
        edit(*view, action);
    else
        shell.editField(action);
}

template <int offset> void selectNeighbour(AppState& app, Shell&)
{
    app.selectAdjacentTab(offset);
}

bool hasActiveTab(const AppState& app, Shell&)
{
    return app.activeTab() != nullptr;
}

bool hasDocument(const AppState& app, Shell&)
{
    return app.activeTab() && !app.isLoading.get();
}

bool hasSeveralTabs(const AppState& app, Shell&)
{
    return app.tabs->size() > 1;
}

void newNote(AppState& app, Shell&)
{
    app.newNote();
}

void openFiles(AppState& app, Shell& shell)
{
    const std::vector<Path> chosen = shell.chooseFilesToOpen();
    if (!chosen.empty())
        app.rememberPanelFolder(chosen.front());
    for (const Path& file : chosen)
        app.openFile(file);
}

void save(AppState& app, Shell&)
{
    app.flushSave(AppState::AllowBackground::no);
}

void saveAs(AppState& app, Shell& shell)
{
    const auto tab = app.activeTab();
    app.flushSave(AppState::AllowBackground::no);
    const auto suggestion = app.saveSuggestion();
    if (!suggestion)
        return;
    const auto path = shell.chooseFileToSave(*suggestion);
    if (path && app.activeTab() == tab) // the document may have gone while the panel was open
        app.saveAs(*path);
}

void revealNotesFolder(AppState& app, Shell& shell)
{
    shell.reveal(app.store.folderURL.get());
}

void showRecovered(AppState&, Shell& shell)
{
    shell.showRecovered();
}

void goToLine(AppState& app, Shell& shell)
{
    app.setGoToLineVisible(true);
    shell.enterGoToLine();
}

void useLF(AppState& app, Shell&)
{
    app.setLineEndings(LineEnds::lf);
}

void useCRLF(AppState& app, Shell&)
{
    app.setLineEndings(LineEnds::crlf);
}

bool isLF(const AppState& app)
{
    return app.lineEndings.get() == LineEnds::lf;
}

bool isCRLF(const AppState& app)
{
    return app.lineEndings.get() == LineEnds::crlf;
}

bool isWritable(const AppState& app, Shell&)
{
    return !app.isReadOnly.get() && !app.isLoading.get();
}

void closeTab(AppState& app, Shell&)
{
    if (const auto tab = app.activeTab())
        app.closeTab(tab->id);
}

void toggleSidebar(AppState&, Shell& shell)
{
    shell.toggleSidebar();
}

void searchNotes(AppState&, Shell& shell)
{
    shell.searchNotes();
}

void quit(AppState&, Shell& shell)
{
    shell.quit();
}

const std::array table = {
    Command{.id = "file.newNote",
        .menu = Menu::file,
        .group = 0,
        .menuTitle = "Новая заметка",
        .keySigns = "⌘N",
        .linuxKeys = {"Ctrl+N"},
        .icon = "square.and.pencil",
        .run = newNote},
    Command{.id = "file.newTab",
        .menu = Menu::file,
        .group = 0,
        .menuTitle = "Новая вкладка",
        .keySigns = "⌘T",
        .linuxKeys = {"Ctrl+T"},
        .icon = "plus",
        .run = newNote},
    Command{.id = "file.open",
        .menu = Menu::file,
        .group = 1,
        .menuTitle = "Открыть…",
        .keySigns = "⌘O",
        .linuxKeys = {"Ctrl+O"},
        .icon = "folder",
        .run = openFiles},
    Command{.id = "file.revealNotesFolder",
        .menu = Menu::file,
        .group = 1,
        .menuTitle = "Открыть папку заметок",
        .keySigns = "",
        .linuxKeys = {},
        .icon = "folder",
        .run = revealNotesFolder},
    Command{.id = "file.recovered",
        .menu = Menu::file,
        .group = 1,
        .menuTitle = "Восстановленные тексты…",
        .keySigns = "",
        .linuxKeys = {},
        .icon = "list.bullet",
        .run = showRecovered},
    Command{.id = "file.save",
        .menu = Menu::file,
        .group = 2,
        .menuTitle = "Сохранить",
        .keySigns = "⌘S",
        .linuxKeys = {"Ctrl+S"},
        .icon = "",
        .run = save},
    Command{.id = "file.saveAs",
        .menu = Menu::file,
        .group = 2,
        .menuTitle = "Сохранить как…",
        .keySigns = "⇧⌘S",
        .linuxKeys = {"Ctrl+Shift+S"},
        .icon = "",
        .isEnabled = hasDocument,
        .run = saveAs},
    Command{.id = "file.closeTab",
        .menu = Menu::file,
        .group = 2,
        .menuTitle = "Закрыть вкладку",
        .keySigns = "⌘W",
        .linuxKeys = {"Ctrl+W", "Ctrl+F4"},
        .icon = "xmark",
        .isEnabled = hasActiveTab,
        .run = closeTab},
    Command{.id = "app.quit",
        .menu = Menu::file,
        .group = 3,
        .menuTitle = "Завершить Quillmark",
        .keySigns = "⌘Q",
        .linuxKeys = {"Ctrl+Q"},
        .icon = "",
        .run = quit},

    Command{.id = "edit.undo",
        .menu = Menu::edit,
        .group = 0,
        .menuTitle = "Отменить",
        .keySigns = "⌘Z",
        .linuxKeys = {"Ctrl+Z", "Alt+Backspace", "Undo"},
        .icon = "",
        .isEnabled = canEdit<EditAction::undo>,
        .run = edit<EditAction::undo>},
    Command{.id = "edit.redo",
        .menu = Menu::edit,
        .group = 0,
        .menuTitle = "Повторить",
        .keySigns = "⇧⌘Z",
        .linuxKeys = {"Ctrl+Shift+Z", "Ctrl+Y", "Redo"},
        .icon = "",
        .isEnabled = canEdit<EditAction::redo>,
        .run = edit<EditAction::redo>},
    Command{.id = "edit.cut",
        .menu = Menu::edit,
        .group = 1,
        .menuTitle = "Вырезать",
        .keySigns = "⌘X",
        .linuxKeys = {"Ctrl+X", "Shift+Del", "Cut"},
        .icon = "",
        .isEnabled = canEdit<EditAction::cut>,
        .run = edit<EditAction::cut>},
    Command{.id = "edit.copy",
        .menu = Menu::edit,
        .group = 1,
        .menuTitle = "Копировать",
        .keySigns = "⌘C",
        .linuxKeys = {"Ctrl+C", "Ctrl+Ins", "Copy"},
        .icon = "",
        .isEnabled = canEdit<EditAction::copy>,
        .run = edit<EditAction::copy>},
    Command{.id = "edit.paste",
        .menu = Menu::edit,
        .group = 1,
        .menuTitle = "Вставить",
        .keySigns = "⌘V",
        .linuxKeys = {"Ctrl+V", "Shift+Ins", "Paste"},
        .icon = "",
        .isEnabled = canEdit<EditAction::paste>,
        .run = edit<EditAction::paste>},
    Command{.id = "edit.delete",
        .menu = Menu::edit,
        .group = 1,
        .menuTitle = "Удалить",
        .keySigns = "",
        .linuxKeys = {},
        .icon = "",
        .isEnabled = canEdit<EditAction::remove>,
        .run = edit<EditAction::remove>},
    Command{.id = "edit.selectAll",
        .menu = Menu::edit,
        .group = 1,
        .menuTitle = "Выбрать все",
        .keySigns = "⌘A",
        .linuxKeys = {"Ctrl+A"},
        .icon = "",
        .isEnabled = canEdit<EditAction::selectAll>,
        .run = edit<EditAction::selectAll>},
    Command{.id = "edit.goToLine",
        .menu = Menu::edit,
        .group = 2,
        .submenu = "Поиск",
        .menuTitle = "Перейти к строке…",
        .keySigns = "⌘L",
        .linuxKeys = {"Ctrl+L"},
        .icon = "arrow.right.to.line",
        .run = goToLine},
    Command{.id = "edit.searchNotes",
        .menu = Menu::edit,
        .group = 2,
        .submenu = "Поиск",
        .menuTitle = "Искать в заметках",
        .keySigns = "⇧⌘F",
        .linuxKeys = {"Ctrl+Shift+F"},
        .icon = "magnifyingglass",
        .run = searchNotes},

    Command{.id = "view.toggleSidebar",
        .menu = Menu::view,
        .group = 0,
        .menuTitle = "Свернуть сайдбар",
        .keySigns = "⌘0",
        .linuxKeys = {"Ctrl+0"},
        .icon = "sidebar.left",
        .run = toggleSidebar},
    Command{.id = "view.nextTab",
        .menu = Menu::view,
        .group = 1,
        .menuTitle = "Следующая вкладка",
        .keySigns = "⇧⌘]",
        .linuxKeys = {"Ctrl+Shift+]", "Ctrl+Tab", "Ctrl+PgDown"},
        .icon = "",
        .isEnabled = hasSeveralTabs,
        .run = selectNeighbour<+1>},
    Command{.id = "view.previousTab",
        .menu = Menu::view,
        .group = 1,
        .menuTitle = "Предыдущая вкладка",
        .keySigns = "⇧⌘[",
        .linuxKeys = {"Ctrl+Shift+[", "Ctrl+Shift+Tab", "Ctrl+PgUp"},
        .icon = "",
        .isEnabled = hasSeveralTabs,
        .run = selectNeighbour<-1>},
    Command{.id = "view.lf",
        .menu = Menu::view,
        .group = 2,
        .submenu = "Переносы строк",
        .menuTitle = "LF (Unix/Mac)",
        .keySigns = "",
        .linuxKeys = {},
        .icon = "",
        .isEnabled = isWritable,
        .isChecked = isLF,
        .run = useLF},
    Command{.id = "view.crlf",
        .menu = Menu::view,
        .group = 2,
        .submenu = "Переносы строк",
        .menuTitle = "CRLF (Windows)",
        .keySigns = "",
        .linuxKeys = {},
        .icon = "",
        .isEnabled = isWritable,
        .isChecked = isCRLF,
        .run = useCRLF},
};

} // namespace

std::span<const Command> commands()
{
    return table;
}

const Command& command(std::string_view id)
{
    const auto found = std::ranges::find(table, id, &Command::id);
    assert(found != table.end());
    return *found;
}

} // namespace quillmark
