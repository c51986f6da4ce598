// Whole files as bytes and as text. A file that grows or shrinks while it is read gives what was there.
#pragma once

#include "io/TextFileReader.h"
#include "platform/FileSystem.h"

#include <cstdint>
#include <limits>
#include <string>

namespace quillmark {

struct FileBytes {
    std::string bytes;
    FileInfo info; ///< as it was when the file had been opened; its size may differ from bytes.size()
};

struct TextFile {
    TextFileReader::Result content;
    FileInfo info; ///< as in FileBytes
};

/// The first `limit` bytes of a regular file, all of them by default. EISDIR for a folder, EINVAL for a
/// device or FIFO, which is never waited for. Any thread; may block on a slow disk.
Result<FileBytes> readFile(
    FileSystem& disk, const Path& path, int64_t limit = std::numeric_limits<int64_t>::max());

/// A whole file decoded. Holds no more than its bytes and the text at a time. Any thread.
Result<TextFile> readTextFile(FileSystem& disk, const Path& path);

} // namespace quillmark
