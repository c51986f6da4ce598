// Everything that the notes store and the model need of the world: in memory, where each part obeys the test,
// or on the real disk, where only the desktop around it does.
#pragma once

#include "core/AppState.h"
#include "io/DocumentWriter.h"
#include "io/InotifyWatching.h"
#include "io/PosixFileSystem.h"
#include "io/RecoveryStore.h"
#include "notes/NoteStore.h"
#include "support/FakeClipboard.h"
#include "support/FakeFileSystem.h"
#include "support/FakeFileWatching.h"
#include "support/ManualScheduler.h"
#include "support/MemoryDefaults.h"
#include "support/RecordingAppearance.h"
#include "support/RecordingFileManager.h"
#include "support/RecordingLog.h"
#include "support/RecordingTrash.h"
#include "support/TestEnvironment.h"
#include "text/Unicode.h"

#include <algorithm>

namespace quillmark::test {

template <class World> AppServices appServices(World& world, Path notes, Path journal)
{
    return {.scheduler = world.scheduler,
        .files = world.disk,
        .log = world.log,
        .defaults = world.defaults,
        .trash = world.trash,
        .appearance = world.appearance,
        .writer = world.writer,
        .recovery = world.recovery,
        .watching = world.watching,
        .defaultNotesFolder = std::move(notes),
        .journalFolders = {.own = std::move(journal), .fallbacks = {}, .lastResorts = {}}};
}

template <class World> NoteStoreServices noteStoreServices(World& world, WriteQueue& queue, Path folder)
{
    return {.scheduler = world.scheduler,
        .files = world.disk,
        .log = world.log,
        .defaults = world.defaults,
        .trash = world.trash,
        .writeQueue = queue,
        .recovery = world.recovery,
        .known = world.writer.known(),
        .watching = world.watching,
        .defaultFolder = std::move(folder)};
}

struct World {
    static constexpr const char* notes = "/home/u/Documents/Notes";
    static constexpr const char* recovered = "/home/u/state/recovered";
    static constexpr const char* wastebasket = "/home/u/trash";
    static constexpr const char* journal = "/home/u/state/journal";

    ManualScheduler scheduler;
    FakeFileSystem disk{scheduler};
    RecordingLog log;
    MemoryDefaults defaults;
    RecordingAppearance appearance;
    int trashed = 0;
    RecordingTrash trash{scheduler, [this](const Path& file) {
                             const Path place = Path(wastebasket) / std::to_string(++trashed);
                             if (const auto bytes = disk.bytes(file))
                                 disk.putFile(place, *bytes);
                             disk.erase(file);
                             return place;
                         }};
    RecoveryStore recovery{disk, scheduler, log, recovered};
    DocumentWriter writer{disk, recovery, scheduler};
    FakeFileWatching watching{disk};

    World() { disk.putFolder(notes); }

    std::unique_ptr<AppState> makeApp()
    {
        return std::make_unique<AppState>(appServices(*this, notes, journal));
    }

    Path note(const std::string& name) const { return Path(notes) / name; }
    void putNote(const std::string& name, std::string_view bytes) { disk.putFile(note(name), bytes); }

    /// The notes folder as another program sees it, temporary files left out.
    std::vector<std::string> noteNames() const
    {
        auto names = disk.names(notes);
        std::erase_if(names, [](const std::string& name) { return name.starts_with('.'); });
        return names;
    }

    /// The texts in a folder, sorted; without what a failed save could not remove.
    std::vector<std::string> textsIn(const Path& folder) const
    {
        std::vector<std::string> texts;
        for (const std::string& name : disk.names(folder)) {
            if (const auto bytes = disk.bytes(folder / name);
                bytes && !name.ends_with(".lock") && !isTemporaryName(name))
                texts.push_back(*bytes);
        }
        std::ranges::sort(texts);
        return texts;
    }
};

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
