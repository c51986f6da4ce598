// The main window: menu bar, sidebar, tab bar, banners, editor and status bar, all showing the one AppState.
#pragma once

#include "core/Commands.h"

#include <QWidget>

class QVBoxLayout;

namespace quillmark {

class EditorArea;
class NoticeBanner;
class SidebarView;
class TabBarView;

class ContentView : public QWidget, public Shell {
    Q_OBJECT

public:
    /// All of them outlive the window.
    ContentView(AppState& app, Scheduler& scheduler, Clipboard& clipboard);
    ~ContentView() override;

    SidebarView& sidebar() { return *m_sidebar; }
    TabBarView& tabBar() { return *m_tabBar; }
    EditorArea& editorArea() { return *m_editorArea; }
    bool wasPainted() const { return m_wasPainted; } ///< at least once

    PlainTextView* focusedTextView() override;
    std::vector<Path> chooseFilesToOpen() override;
    void toggleSidebar() override;
    void quit() override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QWidget* makeDetail(Scheduler& scheduler, Clipboard& clipboard);
    void watch();
    void watchActiveTab();
    void showTitle();
    void showReadOnly(bool isReadOnly);
    void showNotice(const std::optional<std::string>& text);

    AppState& m_app;
    SidebarView* m_sidebar = nullptr;
    TabBarView* m_tabBar = nullptr;
    QVBoxLayout* m_banners = nullptr;
    QWidget* m_readOnlyBanner = nullptr; ///< the banners are made when first needed
    NoticeBanner* m_noticeBanner = nullptr;
    EditorArea* m_editorArea = nullptr;
    bool m_wasPainted = false;
    std::vector<Connection> m_connections;
    Connection m_titleConnection;
};

} // namespace quillmark
