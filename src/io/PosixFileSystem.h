// The real disk. Paths are handed to the kernel byte for byte; every descriptor is close-on-exec; nothing but
// regular files is ever opened. Any thread.
#pragma once

#include "platform/FileSystem.h"

namespace quillmark {

class PosixFileSystem : public FileSystem {
public:
    /// `isWritable` of the entries is judged by their permission bits alone.
    Result<std::vector<FolderEntry>> list(const Path& folder) override;
    Result<std::unique_ptr<Folder>> openFolder(const Path& folder) override;
    Result<FileInfo> stat(const Path& path) override;
    Result<Path> resolveLinks(const Path& path) override;
    Result<std::unique_ptr<File>> openForReading(const Path& path) override;
    Result<std::unique_ptr<File>> createNew(const Path& path, uint32_t mode) override;
    Result<std::unique_ptr<File>> openForWriting(const Path& path) override;
    Status rename(const Path& from, const Path& to) override;
    Status renameNoReplace(const Path& from, const Path& to) override;
    Status remove(const Path& path) override;
    Status makeFolders(const Path& folder) override;
    Status makePrivateFolder(const Path& folder) override;
    Status syncFolder(const Path& folder) override;
};

} // namespace quillmark
