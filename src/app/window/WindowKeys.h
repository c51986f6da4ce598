// The keys of the main window: those of the command table, of the menu bar and of the context menus. They act
// when their turn comes among everything typed, not when the toolkit would look for shortcuts: letters typed
// before may still wait for a screen reader's answer then.
#pragma once

#include "app/window/InputOrder.h"

class QKeyEvent;

namespace quillmark {

class AppState;
class ContentView;
class MainMenu;

class WindowKeys final : public QObject {
public:
    /// A child of the window, which outlives it.
    WindowKeys(AppState& app, ContentView& window, MainMenu& menu);

    /// From then on hears what the desktop sends to the window. Filters of the window itself stand behind
    /// those of the application, of which a screen reader's bridge is one.
    void listenTo(QWindow& handle);

    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    bool isTaken(const QKeyEvent& key) const;
    bool keyPressed(QKeyEvent& key);
    bool act(const QKeyEvent& key);
    bool isForMenuBar(const QKeyEvent& key) const;
    void focusMoved(QObject* focused);

    AppState& m_app;
    ContentView& m_view;
    MainMenu& m_menu;
    QPointer<QWindow> m_handle;
    QPointer<QObject> m_focused; ///< what input methods type into
    InputOrder m_order;
    bool m_isActing = false; ///< what comes meanwhile from an input method is an answer to it
};

} // namespace quillmark
