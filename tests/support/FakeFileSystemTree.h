// What the disk in memory is made of; for its own files only.
#pragma once

#include "support/FakeFileSystem.h"

namespace quillmark::test {

inline constexpr uint32_t mayRead = 0400;
inline constexpr uint32_t mayWrite = 0200;

/// Without "." and ".." and a slash at the end.
inline Path clean(const Path& path)
{
    const Path normal = path.lexically_normal();
    return !normal.has_filename() && normal.has_relative_path() ? normal.parent_path() : normal;
}

/// What a name stands for. Guarded by the disk's mutex, but for `used`.
struct FakeFileSystem::Node {
    FileInfo info;
    std::shared_ptr<std::atomic<int64_t>> used;
    std::string bytes = {};
    std::string syncedBytes = {};
    std::map<std::string, NodePointer> entries = {};
    std::map<std::string, NodePointer> syncedEntries = {};
    std::map<std::string, std::string> attributes = {};
    std::optional<Path> link = {};
    const void* lockHolder = nullptr;

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

} // namespace quillmark::test
