// The main window: menu bar, sidebar, tab bar, banners, editor and status bar, all showing the one AppState.
#pragma once

#include "core/Commands.h"
#include "platform/FileManager.h"

#include <QPointer>
#include <QWidget>

namespace quillmark {

class EditorArea;
class GoToLineView;
class MainMenu;
class RecoveredWindow;
class SidebarView;
class StatusBarView;
class TabBarView;
class WindowKeys;

class ContentView : public QWidget, public Shell {
    Q_OBJECT

public:
    /// All of them outlive the window.
    ContentView(AppState& app, Scheduler& scheduler, Clipboard& clipboard, FileManager& fileManager);
    ~ContentView() override;

    SidebarView& sidebar() { return *m_sidebar; }
    TabBarView& tabBar() { return *m_tabBar; }
    EditorArea& editorArea() { return *m_editorArea; }
    GoToLineView* goToLineView() { return m_goToLine; } ///< null while it is not shown
    bool wasPainted() const { return m_wasPainted; } ///< at least once

    /// Gives the keyboard to the next part of the window that can have it, or to the one before.
    void passKeyboard(bool forward) { focusNextPrevChild(forward); }

    PlainTextView* focusedTextView() override;
    bool canEditField(EditAction action) override;
    void editField(EditAction action) override;
    std::vector<Path> chooseFilesToOpen() override;
    std::optional<Path> chooseFileToSave(const AppState::SaveSuggestion& suggestion) override;
    void reveal(const Path& file) override;
    void toggleSidebar() override;
    void searchNotes() override;
    void showRecovered() override;
    void enterGoToLine() override;
    void quit() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    QWidget* makeDetail(Scheduler& scheduler, Clipboard& clipboard);
    void watch();
    void watchActiveTab();
    void orderParts();
    QWidget* keyboardHolder() const;
    void focusMoved(QWidget* to);
    void showTitle();
    void showGoToLine(bool isShown);

    AppState& m_app;
    FileManager& m_fileManager;
    MainMenu* m_menu = nullptr;
    WindowKeys* m_keys = nullptr;
    QPointer<QWidget> m_lastFocused; ///< without the menu bar
    SidebarView* m_sidebar = nullptr;
    TabBarView* m_tabBar = nullptr;
    StatusBarView* m_statusBar = nullptr;
    EditorArea* m_editorArea = nullptr;
    GoToLineView* m_goToLine = nullptr;
    RecoveredWindow* m_recovered = nullptr; ///< made when first needed
    bool m_wasPainted = false;
    std::vector<Connection> m_connections;
    Connection m_titleConnection;
};

} // namespace quillmark
