#include "io/PosixFileSystem.h"

#include "io/PosixFile.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {
namespace {

constexpr int longestLinkChain = 40; // the kernel's own limit

Status statusOf(int result)
{
    if (result != 0)
        return systemFailure(errno);
    return {};
}

/// Opens a regular file and nothing else, without waiting for whoever writes to a FIFO. `folder` as in
/// openat(2).
Result<Folder::OpenFile> openRegular(int folder, const char* path, int access)
{
    const int flags = access | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    Descriptor descriptor(retried([&] { return ::openat(folder, path, flags); }));
    if (!descriptor.isOpen())
        return systemFailure(errno == ENXIO ? EINVAL : errno); // a FIFO or socket without a reader
    auto file = std::make_unique<PosixFile>(std::move(descriptor));
    const auto info = file->info();
    if (!info)
        return std::unexpected(info.error());
    if (info->kind == FileInfo::Kind::folder)
        return systemFailure(EISDIR);
    if (info->kind != FileInfo::Kind::regular)
        return systemFailure(EINVAL);
    return Folder::OpenFile{.file = std::move(file), .info = *info};
}

Result<std::unique_ptr<File>> openRegular(const Path& path, int access)
{
    auto opened = openRegular(AT_FDCWD, path.c_str(), access);
    if (!opened)
        return std::unexpected(opened.error());
    return std::move(opened->file);
}

std::optional<FileInfo::Kind> kindOf(const dirent& entry)
{
    if (entry.d_type == DT_LNK || entry.d_type == DT_UNKNOWN)
        return std::nullopt;
    if (entry.d_type == DT_REG)
        return FileInfo::Kind::regular;
    return entry.d_type == DT_DIR ? FileInfo::Kind::folder : FileInfo::Kind::other;
}

class PosixFolder final : public Folder {
public:
    explicit PosixFolder(DIR* stream)
        : m_stream(stream, closedir)
        , m_descriptor(dirfd(stream))
    {
    }

    Result<std::vector<Name>> names() override
    {
        const std::lock_guard lock(m_mutex);
        rewinddir(m_stream.get());
        std::vector<Name> names;
        for (errno = 0; const dirent* entry = readdir(m_stream.get()); errno = 0) {
            const std::string_view name = entry->d_name;
            if (name != "." && name != "..")
                names.push_back({std::string(name), kindOf(*entry)});
        }
        if (errno != 0)
            return systemFailure(errno);
        return names;
    }

    Result<FileInfo> stat(const std::string& name) override
    {
        return readInfo(m_descriptor, name.c_str(), AT_STATX_DONT_SYNC);
    }

    Result<OpenFile> openForReading(const std::string& name) override
    {
        return openRegular(m_descriptor, name.c_str(), O_RDONLY);
    }

    /// Of a listing: nothing when there is no such entry any more.
    std::optional<FileInfo> entryInfo(const std::string& name)
    {
        if (const auto info = stat(name))
            return *info;
        else if (info.error().code != ENOENT && info.error().code != ELOOP)
            return FileInfo{}; // it is there, though nothing can be said about it
        const auto link = readInfo(m_descriptor, name.c_str(), AT_STATX_DONT_SYNC | AT_SYMLINK_NOFOLLOW);
        return link ? std::optional(*link) : std::nullopt;
    }

private:
    const std::unique_ptr<DIR, int (*)(DIR*)> m_stream; ///< guarded by the mutex
    const int m_descriptor; ///< the stream's
    std::mutex m_mutex;
};

Result<Path> linkTarget(const Path& link, size_t length)
{
    std::string target(length + 1, '\0');
    const ssize_t count = readlink(link.c_str(), target.data(), target.size());
    if (count < 0)
        return systemFailure(errno);
    if (static_cast<size_t>(count) > length)
        return linkTarget(
            link, 2 * length + 64); // it was changed, or the file system does not know its length
    target.resize(static_cast<size_t>(count));
    return Path(std::move(target));
}

/// For file systems that cannot rename without replacing: a second name, which link() never puts over
/// another, takes the place of the first; where there are no hard links either, a look before the rename must
/// do.
Status renameByLink(const Path& from, const Path& to)
{
    if (::link(from.c_str(), to.c_str()) == 0)
        return statusOf(unlink(from.c_str()));
    if (errno == EEXIST || errno == ENOENT)
        return systemFailure(errno);
    if (faccessat(AT_FDCWD, to.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0)
        return systemFailure(EEXIST);
    return statusOf(::rename(from.c_str(), to.c_str()));
}

} // namespace

Result<std::vector<FolderEntry>> PosixFileSystem::list(const Path& path)
{
    DIR* stream = opendir(path.c_str());
    if (!stream)
        return systemFailure(errno);
    PosixFolder folder(stream);
    auto names = folder.names();
    if (!names)
        return std::unexpected(names.error());
    std::vector<FolderEntry> entries;
    for (Folder::Name& name : *names) {
        if (const auto info = folder.entryInfo(name.bytes))
            entries.push_back({std::move(name.bytes), *info});
    }
    return entries;
}

Result<std::unique_ptr<Folder>> PosixFileSystem::openFolder(const Path& folder)
{
    DIR* stream = opendir(folder.c_str());
    if (!stream)
        return systemFailure(errno);
    return std::make_unique<PosixFolder>(stream);
}

Result<FileInfo> PosixFileSystem::stat(const Path& path)
{
    auto info = readInfo(AT_FDCWD, path.c_str(), 0);
    if (info
        && info
            ->isWritable) // permitted by its bits; a read-only disk or an access control list may forbid it
        info->isWritable = faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
    return info;
}

Result<Path> PosixFileSystem::resolveLinks(const Path& path)
{
    Path reached = path;
    for (int links = 0; links <= longestLinkChain; ++links) {
        struct ::stat info;
        if (lstat(reached.c_str(), &info) != 0) {
            if (errno == ENOENT)
                return reached;
            return systemFailure(errno);
        }
        if (!S_ISLNK(info.st_mode))
            return reached;
        const auto target = linkTarget(reached, static_cast<size_t>(info.st_size));
        if (!target)
            return target;
        reached = reached.parent_path() / *target;
    }
    return systemFailure(ELOOP);
}

Result<std::unique_ptr<File>> PosixFileSystem::openForReading(const Path& path)
{
    return openRegular(path, O_RDONLY);
}

Result<std::unique_ptr<File>> PosixFileSystem::openForWriting(const Path& path)
{
    return openRegular(path, O_RDWR);
}

Result<std::unique_ptr<File>> PosixFileSystem::createNew(const Path& path, uint32_t mode)
{
    const int flags = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC;
    Descriptor descriptor(retried([&] { return ::open(path.c_str(), flags, mode); }));
    if (!descriptor.isOpen())
        return systemFailure(errno);
    return std::make_unique<PosixFile>(std::move(descriptor));
}

Status PosixFileSystem::rename(const Path& from, const Path& to)
{
    return statusOf(::rename(from.c_str(), to.c_str()));
}

Status PosixFileSystem::renameNoReplace(const Path& from, const Path& to)
{
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return {};
    if (errno == EINVAL || errno == ENOSYS || errno == ENOTSUP)
        return renameByLink(from, to);
    return systemFailure(errno);
}

Status PosixFileSystem::remove(const Path& path)
{
    return statusOf(unlink(path.c_str()));
}

Status PosixFileSystem::makeFolders(const Path& folder)
{
    if (mkdir(folder.c_str(), 0777) == 0)
        return {};
    if (errno == ENOENT && folder.has_parent_path() && folder.parent_path() != folder) {
        if (auto status = makeFolders(folder.parent_path()); !status)
            return status;
        if (mkdir(folder.c_str(), 0777) == 0)
            return {};
    }
    const int failure = errno;
    const auto info = stat(folder);
    if (info && info->kind == FileInfo::Kind::folder)
        return {};
    return systemFailure(info ? ENOTDIR : failure);
}

Status PosixFileSystem::makePrivateFolder(const Path& folder)
{
    if (mkdir(folder.c_str(), S_IRWXU) == 0)
        return {};
    struct ::stat present;
    if (errno != EEXIST || lstat(folder.c_str(), &present) != 0)
        return systemFailure(errno);
    if (!S_ISDIR(present.st_mode))
        return systemFailure(ENOTDIR);
    const bool isOurs = present.st_uid == geteuid() && !(present.st_mode & (S_IWGRP | S_IWOTH));
    return isOurs ? Status() : systemFailure(EPERM);
}

Status PosixFileSystem::syncFolder(const Path& folder)
{
    const Path named = folder.empty() ? Path(".") : folder;
    const Descriptor descriptor(
        retried([&] { return ::open(named.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!descriptor.isOpen())
        return errno == EACCES ? Status()
                               : systemFailure(errno); // one may write into a folder but not read it
    if (retried([&] { return fsync(descriptor.number()); }) == 0)
        return {};
    if (errno == EINVAL || errno == ENOTSUP) // some file systems cannot
        return {};
    return systemFailure(errno);
}

} // namespace quillmark
