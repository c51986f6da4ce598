// Writes a picture of the window once it has settled, and ends the program.
#pragma once

#include "core/AppState.h"

namespace quillmark {

class ContentView;

/// The exit code is 0 when the picture was written, else 1, with a line on standard error.
class Screenshot {
public:
    Screenshot(AppState& app, ContentView& window, Scheduler& scheduler, Path file);

private:
    void look();
    bool isSettled() const;
    void write();

    AppState& m_app;
    ContentView& m_window;
    Scheduler& m_scheduler;
    const Path m_file;
    int m_quietLooks = 0;
    Task m_nextLook;
};

} // namespace quillmark
