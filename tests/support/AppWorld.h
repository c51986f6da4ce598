// A world that a model can be started in.
#pragma once

#include "core/AppState.h"
#include "support/World.h"

namespace quillmark::test {

struct AppWorld : World {
    std::unique_ptr<AppState> makeApp()
    {
        return std::make_unique<AppState>(AppServices{.scheduler = scheduler,
            .files = disk,
            .log = log,
            .defaults = defaults,
            .trash = trash,
            .appearance = appearance,
            .writer = writer,
            .recovery = recovery,
            .watching = watching,
            .defaultNotesFolder = notes,
            .journalFolder = journal});
    }
};

} // namespace quillmark::test
