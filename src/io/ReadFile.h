// Whole files as bytes and as text. A file that grows or shrinks while it is read gives what was there.
#pragma once

#include "base/Scheduler.h"
#include "io/ContentHash.h"
#include "io/TextFileReader.h"
#include "platform/FileSystem.h"

#include <cstdint>
#include <limits>
#include <span>
#include <string>

namespace quillmark {

struct FileBytes {
    std::string bytes;
    FileInfo info; ///< as it was when the file had been opened; its size may differ from bytes.size()
};

struct TextFile {
    TextFileReader::Result content;
    FileInfo info; ///< as in FileBytes
    ContentHash hash{}; ///< of the bytes
};

/// A larger file (20 MiB) opens read-only.
inline constexpr int64_t largestEditableFile = 20 * 1024 * 1024;

/// The first `limit` bytes of a regular file, all of them by default. EISDIR for a folder, EINVAL for a
/// device or FIFO, which is never waited for. Any thread; may block on a slow disk.
Result<FileBytes> readFile(
    FileSystem& disk, const Path& path, int64_t limit = std::numeric_limits<int64_t>::max());

/// The beginning of an open file, as much as there is room for. Returns how many bytes there were.
Result<size_t> readStart(File& file, std::span<char> into);

/// A whole file decoded. One that may be edited is read once, so that its text is all of one moment; a larger
/// one is decoded in pieces and read again when it turns out to be in another encoding. ECANCELED soon after
/// the token is cancelled. Any thread.
Result<TextFile> readTextFile(FileSystem& disk, const Path& path, const CancelToken& token = {});

/// The same in pieces, whatever its size: holds 256 KiB of bytes and the text.
Result<TextFile> readTextFileInPieces(FileSystem& disk, const Path& path, const CancelToken& token = {});

} // namespace quillmark
