// Everything that the notes store and the model need of the world, each part a double that obeys the test.
#pragma once

#include "io/DocumentWriter.h"
#include "io/RecoveryStore.h"
#include "support/FakeFileSystem.h"
#include "support/FakeFileWatching.h"
#include "support/ManualScheduler.h"
#include "support/MemoryDefaults.h"
#include "support/RecordingAppearance.h"
#include "support/RecordingLog.h"
#include "support/RecordingTrash.h"
#include "text/Unicode.h"

#include <algorithm>

namespace quillmark::test {

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

} // namespace quillmark::test
