// What a model and a notes store ask for, from the members of a world: of one in memory or of a real one.
#pragma once

#include "core/AppState.h"
#include "notes/NoteStore.h"

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

} // namespace quillmark::test
