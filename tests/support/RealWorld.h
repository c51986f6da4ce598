// A world on the real disk, in a folder of its own; only the desktop around it obeys the test.
#pragma once

#include "io/DocumentWriter.h"
#include "io/InotifyWatching.h"
#include "io/PosixFileSystem.h"
#include "io/RecoveryStore.h"
#include "support/FakeClipboard.h"
#include "support/MemoryDefaults.h"
#include "support/RecordingAppearance.h"
#include "support/RecordingFileManager.h"
#include "support/RecordingLog.h"
#include "support/RecordingTrash.h"
#include "support/TestEnvironment.h"

namespace quillmark::test {

template <class Scheduler> struct RealWorld {
    RealWorld() { std::filesystem::create_directory(notes()); }

    TemporaryFolder home;
    Scheduler scheduler;
    PosixFileSystem disk;
    RecordingLog log;
    MemoryDefaults defaults;
    RecordingTrash trash{scheduler, [this](const Path& file) {
                             const Path place = home / ("trashed " + file.filename().native());
                             std::filesystem::rename(file, place);
                             return place;
                         }};
    RecordingAppearance appearance;
    RecordingFileManager fileManager;
    FakeClipboard clipboard;
    InotifyWatching watching{scheduler, disk, log};
    RecoveryStore recovery{disk, scheduler, log, home / "recovered"};
    DocumentWriter writer{disk, recovery, scheduler};

    Path notes() const { return home / "Notes"; }
    Path journal() const { return home / "journal"; }
};

} // namespace quillmark::test
