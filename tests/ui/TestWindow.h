// The real window on the real model, with a folder of its own, a hand-cranked clock and a clipboard of the
// test's.
#pragma once

#include "app/window/ContentView.h"
#include "support/ManualScheduler.h"
#include "support/World.h"

#include <QString>
#include <QTest>

#include <string>
#include <string_view>

namespace quillmark::test {

class TestWindow {
public:
    ~TestWindow();

    // Before show().
    void addNote(const std::string& name, std::string_view text); ///< the newest is the last one added
    Path addFile(const std::string& name, std::string_view text); ///< outside the notes folder

    void show(); ///< makes the model and the window
    void settle(); ///< runs everything that needs no time to pass
    void wait(Duration duration);

    AppState& app() { return *m_app; }
    ContentView& view() { return *m_view; }
    ManualScheduler& scheduler() { return m_world.scheduler; }
    const RecordingTrash& trash() const { return m_world.trash; }
    const std::vector<Path>& revealed() const { return m_world.fileManager.revealed; }
    RecoveryStore& recovery() { return m_world.recovery; }
    Path notesFolder() const { return m_world.notes(); }
    static std::string contents(const Path& file);

    void type(const char* keys); ///< ASCII, into whatever has the focus
    void typeText(const QString& text); ///< the same in any script
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    template <class Widget> Widget* find(const QString& accessibleName = {}) ///< the first visible one
    {
        for (Widget* widget : m_view->findChildren<Widget*>())
            if (widget->isVisible()
                && (accessibleName.isEmpty() || widget->accessibleName() == accessibleName))
                return widget;
        return nullptr;
    }
    bool shows(const QString& text); ///< some label that is visible says so
    std::vector<std::string> tabTitles() const;

private:
    static void write(const Path& file, std::string_view text);

    RealWorld<ManualScheduler> m_world;
    std::unique_ptr<AppState> m_app;
    std::unique_ptr<ContentView> m_view;
    int m_noteCount = 0;
};

} // namespace quillmark::test
