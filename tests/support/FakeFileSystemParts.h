// What the disk in memory is made of; for its own files only.
#pragma once

#include "support/FakeFileSystem.h"

namespace quillmark::test {

inline constexpr uint32_t mayRead = 0400;
inline constexpr uint32_t mayWrite = 0200;

/// Without "." and ".." and a slash at the end.
inline Path clean(const Path& path)
{
    Path normal = path.lexically_normal();
    if (!normal.has_filename() && normal.has_relative_path())
        normal = normal.parent_path();
    return normal;
}

/// What a name stands for. Guarded by the disk's mutex, but for `used`.
struct FakeFileSystem::Node {
    FileInfo info;
    std::string bytes;
    std::string syncedBytes;
    std::map<std::string, NodePointer> entries;
    std::map<std::string, NodePointer> syncedEntries;
    std::map<std::string, std::string> attributes;
    std::optional<Path> link;
    const void* lockHolder = nullptr;
    std::shared_ptr<std::atomic<int64_t>> used;

    ~Node() { *used -= static_cast<int64_t>(bytes.size()); }

    void setBytes(std::string newBytes)
    {
        *used += static_cast<int64_t>(newBytes.size()) - static_cast<int64_t>(bytes.size());
        bytes = std::move(newBytes);
    }

    FileInfo seen() const
    {
        FileInfo result = info;
        result.size = static_cast<int64_t>(bytes.size());
        result.isWritable = info.mode & mayWrite;
        return result;
    }
};

class FakeFileSystem::OpenFile : public File {
public:
    OpenFile(FakeFileSystem& disk, NodePointer node, Path path, uint32_t permission);
    ~OpenFile() override;

    Result<size_t> read(std::span<std::byte> into) override;
    Result<size_t> write(std::span<const std::byte> bytes) override;
    Result<FileInfo> info() override;
    Status truncate(int64_t size) override;
    Status sync() override;
    bool tryLock() override;
    Status copyAttributes(const Path& model) override;

private:
    FakeFileSystem& m_disk;
    NodePointer m_node;
    Path m_path; ///< as it was opened
    uint32_t m_permission;
    size_t m_offset = 0;
};

} // namespace quillmark::test
