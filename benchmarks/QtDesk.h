// The whole program without its start: model and window on the real disk, on Qt's offscreen platform.
#pragma once

#include "QtHeartbeat.h"
#include "QtWindow.h"
#include "app/window/ContentView.h"
#include "support/World.h"

#include <fstream>

namespace quillmark::bench {

using namespace std::chrono_literals;

/// A world whose folder has as many notes as are wanted before the model lists it.
struct NotesWorld : test::RealWorld<QtScheduler> {
    explicit NotesWorld(int count)
    {
        for (int i = 0; i < count; ++i)
            std::ofstream(notes() / ("note " + std::to_string(i) + ".txt"))
                << (i % 3 ? "План " : "Meeting ") << i << "\nсписок покупок, письмо и книга\nthe rest\n";
    }
};

struct Desk : NotesWorld {
    AppState app{test::appServices(*this, notes(), journal())};
    ContentView window{app, scheduler, clipboard, fileManager};

    explicit Desk(int noteCount = 0)
        : NotesWorld(noteCount)
    {
        window.resize(1600, 1000);
        window.show();
        window.activateWindow();
        runFor(100ms);
    }
    PlainTextView& text() { return *app.textView(); }

    /// Does it, and waits until it is done and what follows from it too.
    template <class Act> double hold(Act act)
    {
        const Heartbeat heartbeat;
        runFor(5ms);
        act();
        runUntil([&] { return !app.isLoading.get(); });
        runFor(300ms);
        return heartbeat.longestHold();
    }
    double hold(void (PlainTextView::*command)())
    {
        return hold([&] { (text().*command)(); });
    }
};

} // namespace quillmark::bench
