// Searching the notes' files for a text.
#pragma once

#include "base/Scheduler.h"
#include "base/Uuid.h"
#include "platform/FileSystem.h"
#include "text/SearchKey.h"

#include <span>
#include <string>
#include <vector>

namespace quillmark {

inline constexpr int64_t largestSearched = 2'000'000; ///< bytes

/// A note to look into.
struct SearchCandidate {
    Uuid id;
    std::string name; ///< of its file
};

/// The ids of those whose files in the folder `path` contain the query. Files that cannot be read, or turn
/// out larger than `largestSearched`, count as not matching. Looks at `cancel` before each file, and then
/// returns what it has. Any thread.
std::vector<Uuid> searchContents(FileSystem& files, const Path& path, const SearchKey& query,
    std::span<const SearchCandidate> candidates, const CancelToken& cancel);

} // namespace quillmark
