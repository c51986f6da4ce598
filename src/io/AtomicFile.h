// A file appears under its name complete, synced and at once, or not at all: it is written to a hidden,
// locked temporary file in the same folder, which is then renamed. Any thread.
#pragma once

#include "io/ContentHash.h"
#include "platform/FileSystem.h"

#include <functional>
#include <string_view>

namespace quillmark {

struct WrittenFile {
    FileInfo info; ///< of the file that now has the name
    int64_t bytes = 0;
    ContentHash hash{};
};

/// Takes bytes; stops whoever brings them by an error.
using Sink = std::function<Status(std::string_view)>;
/// Hands all of its bytes to a sink, piece by piece. May be called again after a failure.
using FileContent = std::function<Status(const Sink&)>;

/// Writes all bytes; a disk that takes fewer without saying why is a full one (ENOSPC).
Status writeAll(File& file, std::string_view bytes);
FileContent contentOf(std::string_view bytes); ///< the bytes must outlive the call that takes the content
FileContent contentOfFile(FileSystem& disk, const Path& path);
Result<ContentHash> hashOf(const FileContent& content);

/// Asked with the new file complete and synced, right before it gets its name: an error stops that.
using MayPublish = std::function<Status(const WrittenFile&)>;

inline constexpr int refusedByFolder = -2; ///< Error::code: this user may put no file in the old one's place

/// The content replaces the regular file `target`, whose mode, attributes and owner it is given as far as
/// they can be. Not for links. After an error the old file is untouched, unless only the last step, syncing
/// the folder, failed.
Result<WrittenFile> replaceFile(
    FileSystem& disk, const Path& target, const FileContent& content, const MayPublish& mayPublish = nullptr);

/// The content becomes a new file; EEXIST when the name is taken.
Result<WrittenFile> createFile(FileSystem& disk, const Path& target, uint32_t mode,
    const FileContent& content, const MayPublish& mayPublish = nullptr);

/// The content becomes that of an existing file, in place: after an error the file may be half written.
Result<WrittenFile> overwriteFile(FileSystem& disk, const Path& target, const FileContent& content);

/// Opens a new file and locks it. `makePath` gives another path at each call; a path is given up when
/// somebody else locks or removes the file before we do, taking it for a leftover.
Result<std::unique_ptr<File>> createLocked(
    FileSystem& disk, const std::function<Path()>& makePath, uint32_t mode);

/// Removes the temporary files that a process left when it was killed: those that nobody holds locked.
void removeStaleTemporaries(FileSystem& disk, const Path& folder);
/// The same for a caller that has listed the folder anyway.
void removeStaleTemporaries(FileSystem& disk, const Path& folder, const std::vector<FolderEntry>& entries);
bool isTemporaryName(std::string_view name);

} // namespace quillmark
