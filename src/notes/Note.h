#pragma once

#include "base/Uuid.h"
#include "platform/FileSystem.h"

#include <string>

namespace quillmark {

/// One note file of the notes folder, as the sidebar shows it. Lengths are user-perceived characters.
struct Note {
    Uuid id; ///< made afresh at every full listing; never stored
    Path url; ///< the file; changes when the note gets a new name
    std::string title; ///< at most 80 characters, never empty
    std::string preview; ///< at most 80 characters, may be empty
    WallTime modifiedAt = distantPast;
    int64_t byteSize = 0; ///< of the file, 0 when unknown

    bool operator==(const Note&) const = default;
};

} // namespace quillmark
