#include "io/PosixFile.h"

#include <algorithm>
#include <array>
#include <optional>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace quillmark {
namespace {

constexpr auto accessControlList = "system.posix_acl_access";

/// File systems know times that do not fit: these count as the farthest ones whose difference does.
WallTime wallTime(const statx_timestamp& time)
{
    constexpr int64_t farthest = 4'000'000'000; // seconds: until 2096, and as far back
    const int64_t seconds = std::clamp<int64_t>(time.tv_sec, -farthest, farthest);
    return WallTime(std::chrono::seconds(seconds) + std::chrono::nanoseconds(time.tv_nsec));
}

FileInfo::Kind kindOf(uint32_t mode)
{
    if (S_ISREG(mode))
        return FileInfo::Kind::regular;
    return S_ISDIR(mode) ? FileInfo::Kind::folder : FileInfo::Kind::other;
}

bool belongsTo(gid_t group)
{
    if (getegid() == group)
        return true;
    std::array<gid_t, 256> groups{};
    const int count = getgroups(static_cast<int>(groups.size()), groups.data());
    return count > 0 && std::find(groups.begin(), groups.begin() + count, group) != groups.begin() + count;
}

std::optional<std::string> attributeOf(const Path& file, const char* name)
{
    const ssize_t size = getxattr(file.c_str(), name, nullptr, 0);
    std::string value(static_cast<size_t>(std::max<ssize_t>(0, size)), '\0');
    if (size < 0 || getxattr(file.c_str(), name, value.data(), value.size()) != size)
        return std::nullopt;
    return value;
}

/// The extended attributes, access control list included. Those that this user may not set stay behind. False
/// when the file ends up with another list than the model, which would turn its mode's group bits into
/// permissions that nobody gave.
bool copyExtendedAttributes(const Path& model, int descriptor)
{
    std::string names(static_cast<size_t>(std::max<ssize_t>(0, listxattr(model.c_str(), nullptr, 0))), '\0');
    const ssize_t length = listxattr(model.c_str(), names.data(), names.size());
    names.resize(static_cast<size_t>(std::max<ssize_t>(0, length)));
    bool hasList = false;
    bool hasCopiedList = false;
    for (size_t start = 0; start < names.size(); start = names.find('\0', start) + 1) {
        const char* name = names.c_str() + start;
        const auto value = attributeOf(model, name);
        const bool isCopied = value && fsetxattr(descriptor, name, value->data(), value->size(), 0) == 0;
        if (std::string_view(name) == accessControlList) {
            hasList = true;
            hasCopiedList = isCopied;
        }
    }
    if (hasList)
        return hasCopiedList;
    return fremovexattr(descriptor, accessControlList) == 0 // one that the folder gave it
        || errno == ENODATA || errno == ENOTSUP;
}

} // namespace

bool permitsWriting(const FileInfo& info, uint32_t group)
{
    static const uid_t user = geteuid(); // asked once: a listing comes here for every entry
    if (user == 0)
        return info.mode & (S_IWUSR | S_IWGRP | S_IWOTH);
    if (user == info.owner)
        return info.mode & S_IWUSR;
    return info.mode & (belongsTo(group) ? S_IWGRP : S_IWOTH);
}

Result<FileInfo> readInfo(int folder, const char* name, int flags)
{
    struct statx record;
    const unsigned wanted = STATX_BASIC_STATS | STATX_BTIME;
    if (retried([&] { return statx(folder, name, flags, wanted, &record); }) != 0)
        return systemFailure(errno);
    FileInfo info{
        .kind = kindOf(record.stx_mode),
        .size = static_cast<int64_t>(record.stx_size),
        .modified = wallTime(record.stx_mtime),
        .born = record.stx_mask & STATX_BTIME ? wallTime(record.stx_btime) : distantPast,
        .device = makedev(record.stx_dev_major, record.stx_dev_minor),
        .inode = record.stx_ino,
        .mode = record.stx_mode & 07777u,
        .owner = record.stx_uid,
        .links = record.stx_nlink,
    };
    info.isWritable = permitsWriting(info, record.stx_gid);
    return info;
}

Result<size_t> PosixFile::read(std::span<std::byte> into)
{
    const ssize_t count = retried([&] { return ::read(m_descriptor.number(), into.data(), into.size()); });
    if (count < 0)
        return systemFailure(errno);
    return static_cast<size_t>(count);
}

Result<size_t> PosixFile::write(std::span<const std::byte> bytes)
{
    const ssize_t count = retried([&] { return ::write(m_descriptor.number(), bytes.data(), bytes.size()); });
    if (count < 0)
        return systemFailure(errno);
    return static_cast<size_t>(count);
}

Result<FileInfo> PosixFile::info()
{
    return readInfo(m_descriptor.number(), "", AT_EMPTY_PATH);
}

Status PosixFile::truncate(int64_t size)
{
    if (retried([&] { return ftruncate(m_descriptor.number(), size); }) != 0)
        return systemFailure(errno);
    return {};
}

Status PosixFile::sync()
{
    if (retried([&] { return fsync(m_descriptor.number()); }) != 0)
        return systemFailure(errno);
    return {};
}

bool PosixFile::tryLock()
{
    // Where the file system knows no locks, nobody can hold one.
    return retried([&] { return flock(m_descriptor.number(), LOCK_EX | LOCK_NB); }) == 0
        || errno != EWOULDBLOCK;
}

Status PosixFile::copyAttributes(const Path& model)
{
    const int file = m_descriptor.number();
    struct ::stat wanted;
    struct ::stat present;
    if (::stat(model.c_str(), &wanted) != 0 || fstat(file, &present) != 0)
        return systemFailure(errno);
    const bool hasGroup
        = wanted.st_gid == present.st_gid || fchown(file, static_cast<uid_t>(-1), wanted.st_gid) == 0;
    const bool hasOwner
        = wanted.st_uid == present.st_uid || fchown(file, wanted.st_uid, static_cast<gid_t>(-1)) == 0;
    const bool hasList = copyExtendedAttributes(model, file);
    mode_t mode = wanted.st_mode & 07777u;
    if (!hasGroup || !hasList) // nobody of another group may get what the old group was given
        mode = (mode & ~(S_ISGID | 070u)) | ((mode & 07u & mode >> 3) << 3);
    if (!hasOwner)
        mode &= ~static_cast<mode_t>(S_ISUID);
    static_cast<void>(fchmod(file, mode)); // what cannot be set stays as private as the file was made
    return {};
}

} // namespace quillmark
