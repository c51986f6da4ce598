#include "io/ReadFile.h"

#include <algorithm>
#include <cerrno>
#include <span>

namespace quillmark {
namespace {

constexpr int64_t pieceSize = 256 * 1024;
constexpr int64_t mostGrowth = 64 * 1024 * 1024; ///< while it is read, beyond twice its size

/// Reads up to `size` more bytes behind the `used` ones, into a buffer that is no larger than it must be.
Result<size_t> readPiece(File& file, std::string& buffer, size_t used, size_t size)
{
    if (buffer.size() < used + size)
        buffer.resize(used + size);
    return file.read(std::as_writable_bytes(std::span(buffer.data() + used, size)));
}

} // namespace

Result<FileBytes> readFile(FileSystem& disk, const Path& path, int64_t limit)
{
    const auto file = disk.openForReading(path);
    if (!file)
        return std::unexpected(file.error());
    const auto info = (*file)->info();
    if (!info)
        return std::unexpected(info.error());

    FileBytes result{.bytes = {}, .info = *info};
    // Room for the size that it claims, whose pages cost nothing before they are read into, and for the one
    // byte that tells whether it has grown.
    const int64_t expected = std::min(limit, info->size + 1);
    result.bytes.resize_and_overwrite(static_cast<size_t>(expected), [](char*, size_t size) { return size; });
    int64_t used = 0;
    while (used < limit) {
        const int64_t room = expected > used ? expected - used : pieceSize;
        const int64_t wanted = std::min({pieceSize, limit - used, room});
        const auto count
            = readPiece(**file, result.bytes, static_cast<size_t>(used), static_cast<size_t>(wanted));
        if (!count)
            return std::unexpected(count.error());
        if (*count == 0)
            break;
        if (used > 2 * info->size + mostGrowth)
            return systemFailure(EFBIG); // some files of the kernel have no end
        used += static_cast<int64_t>(*count);
    }
    result.bytes.resize(static_cast<size_t>(used));
    return result;
}

Result<TextFile> readTextFile(FileSystem& disk, const Path& path)
{
    const auto file = readFile(disk, path);
    if (!file)
        return std::unexpected(file.error());
    return TextFile{.content = TextFileReader::decode(file->bytes), .info = file->info};
}

} // namespace quillmark
