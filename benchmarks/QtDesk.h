// The whole program without its start: model and window on the real disk, on Qt's offscreen platform.
#pragma once

#include "QtHeartbeat.h"
#include "QtWindow.h"
#include "app/window/ContentView.h"
#include "io/InotifyWatching.h"
#include "io/PosixFileSystem.h"
#include "support/MemoryDefaults.h"
#include "support/RecordingAppearance.h"
#include "support/RecordingFileManager.h"
#include "support/RecordingLog.h"
#include "support/RecordingTrash.h"
#include "support/TestEnvironment.h"

#include <fstream>

namespace quillmark::bench {

using namespace std::chrono_literals;

/// Makes `home / "Notes"` with as many notes as are wanted.
struct NotesFolder {
    NotesFolder(const Path& folder, int count)
    {
        std::filesystem::create_directory(folder);
        for (int i = 0; i < count; ++i)
            std::ofstream(folder / ("note " + std::to_string(i) + ".txt"))
                << (i % 3 ? "План " : "Meeting ") << i << "\nсписок покупок, письмо и книга\nthe rest\n";
    }
};

struct Desk {
    test::TemporaryFolder home;
    const NotesFolder notes; ///< filled before the model lists it
    PosixFileSystem files;
    QtScheduler scheduler;
    test::RecordingLog log;
    test::MemoryDefaults defaults;
    test::RecordingTrash trash{[](const Path&) {}};
    test::RecordingAppearance appearance;
    test::FakeClipboard clipboard;
    RecoveryStore recovery{files, scheduler, log, home / "recovered"};
    DocumentWriter writer{files, recovery, scheduler};
    InotifyWatching watching{scheduler, files, log};
    AppState app{{.scheduler = scheduler,
        .files = files,
        .log = log,
        .defaults = defaults,
        .trash = trash,
        .appearance = appearance,
        .writer = writer,
        .recovery = recovery,
        .watching = watching,
        .defaultNotesFolder = home / "Notes",
        .journalFolder = home / "journal"}};
    test::RecordingFileManager fileManager;
    ContentView window{app, scheduler, clipboard, fileManager};

    explicit Desk(int noteCount = 0)
        : notes(home / "Notes", noteCount)
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
