#include "io/AtomicFile.h"

#include "base/Uuid.h"

#include <cassert>
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

struct Filled {
    int64_t bytes = 0;
    ContentHash hash{};
};

Result<Filled> fill(File& file, const FileContent& content)
{
    Filled filled;
    ContentHasher hasher;
    const Status status = content([&](std::string_view bytes) {
        filled.bytes += static_cast<int64_t>(bytes.size());
        hasher.add(bytes);
        return writeAll(file, bytes);
    });
    if (!status)
        return std::unexpected(status.error());
    filled.hash = hasher.value();
    return filled;
}

/// Returns once the file's bytes, all of them, are on the disk.
Result<WrittenFile> synced(File& file, const Filled& filled)
{
    if (auto status = file.sync(); !status)
        return std::unexpected(status.error());
    const auto info = file.info();
    if (!info)
        return std::unexpected(info.error());
    if (info->size != filled.bytes)
        return systemFailure(ENOSPC);
    return WrittenFile{.info = *info, .bytes = filled.bytes, .hash = filled.hash};
}

/// How a temporary file becomes a file of its own name.
struct Publication {
    uint32_t mode = privateMode;
    std::function<Status(File&)> prepare; ///< may be empty
    MayPublish mayPublish; ///< may be empty
    std::function<Status(const Path& temporary)> rename;
    std::function<Error(Error)> refusal = std::identity(); ///< what the folder's own refusal is reported as
};

Result<WrittenFile> complete(File& file, const FileContent& content, const Publication& publication)
{
    const auto filled = fill(file, content);
    if (!filled)
        return std::unexpected(filled.error());
    if (publication.prepare) {
        if (auto status = publication.prepare(file); !status)
            return std::unexpected(status.error());
    }
    auto written = synced(file, *filled);
    if (written && publication.mayPublish) {
        if (auto status = publication.mayPublish(*written); !status)
            return std::unexpected(status.error());
    }
    return written;
}

/// Writes a file under a temporary name and gives it its own; where that fails, nothing is left.
Result<WrittenFile> publish(
    FileSystem& disk, const Path& folder, const FileContent& content, const Publication& publication)
{
    assert(content && publication.rename);
    const auto temporary = createTemporary(disk, folder, publication.mode);
    if (!temporary)
        return std::unexpected(publication.refusal(temporary.error()));
    auto written = complete(*temporary->file, content, publication);
    if (written) {
        if (auto status = publication.rename(temporary->path); !status)
            written = std::unexpected(publication.refusal(status.error()));
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
        assert(*count <= bytes.size());
        bytes.remove_prefix(*count);
    }
    return {};
}

FileContent contentOf(std::string_view bytes)
{
    return [bytes](const Sink& sink) { return sink(bytes); };
}

FileContent contentOfFile(FileSystem& disk, const Path& path)
{
    return [&disk, path](const Sink& sink) -> Status {
        const auto source = disk.openForReading(path);
        if (!source)
            return std::unexpected(source.error());
        std::vector<char> buffer(copyPiece);
        for (;;) {
            const auto count = (*source)->read(std::as_writable_bytes(std::span(buffer)));
            if (!count)
                return std::unexpected(count.error());
            if (*count == 0)
                return {};
            if (auto status = sink({buffer.data(), *count}); !status)
                return status;
        }
    };
}

Result<ContentHash> hashOf(const FileContent& content)
{
    ContentHasher hasher;
    const Status status = content([&](std::string_view bytes) -> Status {
        hasher.add(bytes);
        return {};
    });
    if (!status)
        return std::unexpected(status.error());
    return hasher.value();
}

Result<WrittenFile> replaceFile(
    FileSystem& disk, const Path& target, const FileContent& content, const MayPublish& mayPublish)
{
    return publish(disk, target.parent_path(), content,
        {.mode = privateMode,
            .prepare = [&](File& temporary) { return temporary.copyAttributes(target); },
            .mayPublish = mayPublish,
            .rename = [&](const Path& temporary) { return disk.rename(temporary, target); },
            .refusal =
                [](Error error) {
                    if (error.code == EACCES || error.code == EPERM)
                        error.code = refusedByFolder;
                    return error;
                }});
}

Result<WrittenFile> createFile(FileSystem& disk, const Path& target, uint32_t mode,
    const FileContent& content, const MayPublish& mayPublish)
{
    return publish(disk, target.parent_path(), content,
        {.mode = mode, .prepare = nullptr, .mayPublish = mayPublish, .rename = [&](const Path& temporary) {
             return disk.renameNoReplace(temporary, target);
         }});
}

Result<WrittenFile> overwriteFile(FileSystem& disk, const Path& target, const FileContent& content)
{
    const auto file = disk.openForWriting(target);
    if (!file)
        return std::unexpected(file.error());
    const auto filled = fill(**file, content);
    if (!filled)
        return std::unexpected(filled.error());
    if (auto status = (*file)->truncate(filled->bytes); !status)
        return std::unexpected(status.error());
    return synced(**file, *filled);
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
