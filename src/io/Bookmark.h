// A file to be found again at the next start, even when it was renamed within its folder meanwhile.
#pragma once

#include "platform/FileSystem.h"

#include <string>
#include <string_view>

namespace quillmark {

struct ResolvedBookmark {
    Path path;
    bool isStale = false; ///< another file or another name than when it was made
};

/// Opaque bytes of the path, with inode and birth time. Fails when there is no such file.
Result<std::string> makeBookmark(FileSystem& disk, const Path& path);

/// The path when something is there; else the entry of the same folder that is the same file. ENOENT when
/// neither is, EINVAL when the bytes are no bookmark.
Result<ResolvedBookmark> resolveBookmark(FileSystem& disk, std::string_view bookmark);

} // namespace quillmark
