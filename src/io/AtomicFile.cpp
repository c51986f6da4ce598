#include "io/AtomicFile.h"

#include "base/Uuid.h"

#include <cerrno>

namespace quillmark {
namespace {

constexpr std::string_view temporaryPrefix = ".lq-";
constexpr std::string_view temporarySuffix = ".tmp";
constexpr uint32_t privateMode = 0600; ///< until the file has the mode of the one that it replaces
constexpr int attempts = 8;
constexpr size_t copyPiece = 256 * 1024; ///< bytes

struct Temporary {
    std::unique_ptr<File> file;
    Path path;
};

Result<Temporary> createTemporary(FileSystem& disk, const Path& folder, uint32_t mode)
{
    Temporary temporary;
    auto file = createLocked(
        disk,
        [&] {
            temporary.path = folder
                / (std::string(temporaryPrefix) + Uuid::random().toString() + std::string(temporarySuffix));
            return temporary.path;
        },
        mode);
    if (!file)
        return std::unexpected(file.error());
    temporary.file = std::move(*file);
    return temporary;
}

/// Fills the file and returns once its bytes, all of them, are on the disk.
Result<WrittenFile> fill(File& file, const FileContent& content, const std::function<Status(File&)>& prepare)
{
    const auto bytes = content(file);
    if (!bytes)
        return std::unexpected(bytes.error());
    if (auto status = prepare(file); !status)
        return std::unexpected(status.error());
    if (auto status = file.sync(); !status)
        return std::unexpected(status.error());
    const auto info = file.info();
    if (!info)
        return std::unexpected(info.error());
    if (info->size != *bytes)
        return systemFailure(ENOSPC);
    return WrittenFile{.info = *info, .bytes = *bytes};
}

/// Writes a file under a temporary name and gives it its own by `rename`; where that fails, nothing is left.
Result<WrittenFile> publish(FileSystem& disk, const Path& folder, uint32_t mode, const FileContent& content,
    const std::function<Status(File&)>& prepare, const std::function<Status(const Path&)>& rename)
{
    const auto temporary = createTemporary(disk, folder, mode);
    if (!temporary)
        return std::unexpected(temporary.error());
    auto written = fill(*temporary->file, content, prepare);
    if (written) {
        if (auto status = rename(temporary->path); !status)
            written = std::unexpected(status.error());
    }
    if (!written) {
        static_cast<void>(disk.remove(temporary->path));
        return written;
    }
    if (auto status = disk.syncFolder(folder); !status)
        return std::unexpected(status.error());
    return written;
}

} // namespace

Status writeAll(File& file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const auto count = file.write(std::as_bytes(std::span(bytes)));
        if (!count)
            return std::unexpected(count.error());
        if (*count == 0)
            return systemFailure(ENOSPC);
        bytes.remove_prefix(*count);
    }
    return {};
}

FileContent contentOf(std::string_view bytes)
{
    return [bytes](File& file) -> Result<int64_t> {
        if (auto status = writeAll(file, bytes); !status)
            return std::unexpected(status.error());
        return static_cast<int64_t>(bytes.size());
    };
}

FileContent contentOfFile(FileSystem& disk, const Path& path)
{
    return [&disk, path](File& file) -> Result<int64_t> {
        const auto source = disk.openForReading(path);
        if (!source)
            return std::unexpected(source.error());
        std::vector<char> buffer(copyPiece);
        int64_t total = 0;
        for (;;) {
            const auto count = (*source)->read(std::as_writable_bytes(std::span(buffer)));
            if (!count)
                return std::unexpected(count.error());
            if (*count == 0)
                return total;
            if (auto status = writeAll(file, {buffer.data(), *count}); !status)
                return std::unexpected(status.error());
            total += static_cast<int64_t>(*count);
        }
    };
}

Result<WrittenFile> replaceFile(FileSystem& disk, const Path& target, const FileContent& content)
{
    const auto copyAttributes = [&](File& temporary) { return temporary.copyAttributes(target); };
    const auto rename = [&](const Path& temporary) { return disk.rename(temporary, target); };
    return publish(disk, target.parent_path(), privateMode, content, copyAttributes, rename);
}

Result<WrittenFile> createFile(
    FileSystem& disk, const Path& target, uint32_t mode, const FileContent& content)
{
    const auto rename = [&](const Path& temporary) { return disk.renameNoReplace(temporary, target); };
    return publish(disk, target.parent_path(), mode, content, [](File&) { return Status(); }, rename);
}

Result<WrittenFile> overwriteFile(FileSystem& disk, const Path& target, const FileContent& content)
{
    const auto file = disk.openForWriting(target);
    if (!file)
        return std::unexpected(file.error());
    const FileContent cutContent = [&](File& open) -> Result<int64_t> {
        const auto bytes = content(open);
        if (!bytes)
            return bytes;
        if (auto status = open.truncate(*bytes); !status)
            return std::unexpected(status.error());
        return bytes;
    };
    return fill(**file, cutContent, [](File&) { return Status(); });
}

Result<std::unique_ptr<File>> createLocked(
    FileSystem& disk, const std::function<Path()>& makePath, uint32_t mode)
{
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const Path path = makePath();
        auto file = disk.createNew(path, mode);
        if (!file)
            return file;
        const bool isLocked = (*file)->tryLock();
        const auto info = (*file)->info();
        if (isLocked && info && info->links > 0)
            return file;
        static_cast<void>(disk.remove(path));
        if (!info)
            return std::unexpected(info.error());
    }
    return systemFailure(ENOLCK);
}

bool isTemporaryName(std::string_view name)
{
    return name.starts_with(temporaryPrefix) && name.ends_with(temporarySuffix);
}

void removeStaleTemporaries(FileSystem& disk, const Path& folder, const std::vector<FolderEntry>& entries)
{
    for (const FolderEntry& entry : entries) {
        if (!isTemporaryName(entry.name) || entry.info.kind != FileInfo::Kind::regular)
            continue;
        const Path path = folder / entry.name;
        auto file = disk.openForWriting(path);
        if (!file)
            file = disk.openForReading(path); // it may have been given the mode of its target already
        if (file && (*file)->tryLock())
            static_cast<void>(disk.remove(path));
    }
}

void removeStaleTemporaries(FileSystem& disk, const Path& folder)
{
    if (const auto entries = disk.list(folder))
        removeStaleTemporaries(disk, folder, *entries);
}

} // namespace quillmark
