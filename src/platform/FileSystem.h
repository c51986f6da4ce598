// The only door to the disk for documents, notes and settings. io/ implements it on POSIX; tests implement it
// as a disk that is full, slow, short-writing or failing at the n-th call. Paths are bytes: a name that is
// not valid UTF-8 is still a file. All operations may be called on any thread, may block, and report errno in
// Error::code.
#pragma once

#include "base/Clock.h"
#include "base/Result.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace quillmark {

using Path = std::filesystem::path;

struct FileInfo {
    enum class Kind { regular, folder, other };

    Kind kind = Kind::other;
    int64_t size = 0; ///< bytes
    WallTime modified = distantPast;
    WallTime born = distantPast; ///< distantPast where the file system does not record it
    uint64_t device = 0;
    uint64_t inode = 0;
    uint32_t mode = 0; ///< permission bits
    uint32_t owner = 0;
    uint64_t links = 1;
    bool isWritable = false; ///< this process may write the file's bytes

    bool operator==(const FileInfo&) const = default;
};

struct FolderEntry {
    std::string name; ///< bytes, without the folder
    FileInfo info; ///< of what a symbolic link leads to
};

/// An open file; closed when destroyed.
class File {
public:
    virtual ~File() = default;
    virtual Result<size_t> read(std::span<std::byte> into) = 0; ///< 0 at the end of the file
    virtual Result<size_t> write(std::span<const std::byte> bytes) = 0; ///< may write less than asked for
    virtual Result<FileInfo> info() = 0;
    virtual Status truncate(int64_t size) = 0;
    virtual Status sync() = 0; ///< returns once the bytes are on the disk
    virtual bool tryLock()
        = 0; ///< advisory, exclusive, gone with the File; false when somebody else holds it
    /// Gives this file, which only its owner may read, the owner, extended attributes and mode of `model`, as
    /// far as permitted: nobody gets more than `model` grants.
    virtual Status copyAttributes(const Path& model) = 0;
};

/// An open folder, whose files are reached without walking its path again: for looking into many of them.
/// Any thread, several at a time.
class Folder {
public:
    struct Name {
        std::string bytes;
        std::optional<FileInfo::Kind> kind; ///< where the folder says it; of a link it does not
    };
    struct OpenFile {
        std::unique_ptr<File> file;
        FileInfo info; ///< as it was when the file had been opened
    };

    virtual ~Folder() = default;
    virtual Result<std::vector<Name>> names() = 0; ///< all but "." and "..", in the folder's order
    /// What a name leads to; `isWritable` is judged by the permission bits alone.
    virtual Result<FileInfo> stat(const std::string& name) = 0;
    virtual Result<OpenFile> openForReading(const std::string& name) = 0; ///< as FileSystem's
};

class FileSystem {
public:
    virtual ~FileSystem() = default;

    /// All entries of a folder but "." and "..", in the order of the file system, each with its FileInfo.
    virtual Result<std::vector<FolderEntry>> list(const Path& folder) = 0;
    virtual Result<std::unique_ptr<Folder>> openFolder(const Path& folder) = 0;
    virtual Result<FileInfo> stat(const Path& path) = 0; ///< follows symbolic links
    virtual Result<Path> resolveLinks(const Path& path) = 0; ///< the file that a chain of links leads to
    virtual Result<std::unique_ptr<File>> openForReading(const Path& path) = 0; ///< never blocks on a FIFO
    virtual Result<std::unique_ptr<File>> createNew(const Path& path, uint32_t mode)
        = 0; ///< EEXIST when there
    virtual Result<std::unique_ptr<File>> openForWriting(const Path& path) = 0; ///< existing bytes stay
    virtual Status rename(const Path& from, const Path& to) = 0; ///< atomically replaces `to`
    virtual Status renameNoReplace(const Path& from, const Path& to) = 0; ///< EEXIST when `to` is there
    virtual Status remove(const Path& path) = 0; ///< a file or a symbolic link
    virtual Status makeFolders(const Path& folder) = 0; ///< with those above it; fine when it is there
    /// Makes a folder that only this user may enter; fine when it is there. For a place that others share:
    /// ENOTDIR when there is something else, a link too, EPERM when others own the folder or may write to it.
    virtual Status makePrivateFolder(const Path& folder) = 0;
    virtual Status syncFolder(const Path& folder) = 0; ///< returns once the entries are on the disk

    bool exists(const Path& path) { return stat(path).has_value(); }
};

} // namespace quillmark
