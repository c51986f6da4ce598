// The disk in memory as the test sees it: its content and its faults.
#include "support/FakeFileSystemParts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace quillmark::test {

void FakeFileSystem::putFile(const Path& path, std::string_view bytes)
{
    const std::lock_guard lock(m_mutex);
    NodePointer node = find(path).value_or(nullptr);
    if (!node || node->info.kind != FileInfo::Kind::regular) {
        node = make(FileInfo::Kind::regular, 0644);
        put(path, node);
    }
    node->setBytes(std::string(bytes));
    node->syncedBytes = bytes;
    node->info.modified = m_clock.wallNow();
}

void FakeFileSystem::putFolder(const Path& path)
{
    const std::lock_guard lock(m_mutex);
    ensureFolder(clean(path));
}

void FakeFileSystem::putLink(const Path& path, const Path& target)
{
    const std::lock_guard lock(m_mutex);
    NodePointer node = make(FileInfo::Kind::other, 0777);
    node->link = target;
    put(path, node);
}

void FakeFileSystem::putDevice(const Path& path)
{
    const std::lock_guard lock(m_mutex);
    put(path, make(FileInfo::Kind::other, 0644));
}

void FakeFileSystem::move(const Path& from, const Path& to)
{
    const std::lock_guard lock(m_mutex);
    ensureFolder(clean(to).parent_path());
    ASSERT_TRUE(move(from, to, true)) << from;
    sync(**folderOf(clean(from)), clean(from).filename().string());
    sync(**folderOf(clean(to)), clean(to).filename().string());
}

void FakeFileSystem::erase(const Path& path)
{
    const std::lock_guard lock(m_mutex);
    const auto folder = folderOf(clean(path));
    ASSERT_TRUE(folder) << path;
    (*folder)->entries.erase(clean(path).filename().string());
    touch(**folder);
    sync(**folder, clean(path).filename().string());
}

std::optional<std::string> FakeFileSystem::bytes(const Path& path) const
{
    const std::lock_guard lock(m_mutex);
    const auto node = find(path);
    if (!node || (*node)->info.kind != FileInfo::Kind::regular)
        return std::nullopt;
    return (*node)->bytes;
}

std::vector<std::string> FakeFileSystem::names(const Path& folder) const
{
    const std::lock_guard lock(m_mutex);
    std::vector<std::string> result;
    if (const auto node = find(folder))
        for (const auto& [name, entry] : (*node)->entries)
            result.push_back(name);
    return result;
}

FileInfo FakeFileSystem::infoOf(const Path& path) const
{
    const std::lock_guard lock(m_mutex);
    const auto node = find(path);
    if (!node) {
        ADD_FAILURE() << "no such file: " << path;
        std::abort();
    }
    return (*node)->seen();
}

bool FakeFileSystem::isLink(const Path& path) const
{
    const std::lock_guard lock(m_mutex);
    const NodePointer node = findLink(clean(path));
    return node && node->link;
}

void FakeFileSystem::setMode(const Path& path, uint32_t mode)
{
    const std::lock_guard lock(m_mutex);
    find(path).value()->info.mode = mode;
}

void FakeFileSystem::setModified(const Path& path, WallTime time)
{
    const std::lock_guard lock(m_mutex);
    find(path).value()->info.modified = time;
}

void FakeFileSystem::setAttribute(const Path& path, const std::string& name, const std::string& value)
{
    const std::lock_guard lock(m_mutex);
    find(path).value()->attributes[name] = value;
}

std::optional<std::string> FakeFileSystem::attribute(const Path& path, const std::string& name) const
{
    const std::lock_guard lock(m_mutex);
    const auto& attributes = find(path).value()->attributes;
    const auto found = attributes.find(name);
    return found != attributes.end() ? std::optional(found->second) : std::nullopt;
}

// Faults

void FakeFileSystem::failCall(int64_t n, int code)
{
    const std::lock_guard lock(m_mutex);
    m_faults.push_back(
        {.operation = {}, .call = m_callCount + n, .code = code, .pathPart = {}, .once = true});
}

void FakeFileSystem::failFrom(int64_t n, int code)
{
    const std::lock_guard lock(m_mutex);
    m_faults.push_back({.operation = {}, .call = m_callCount + n, .code = code, .pathPart = {}});
}

void FakeFileSystem::failAlways(DiskOperation operation, int code, std::string pathPart)
{
    const std::lock_guard lock(m_mutex);
    m_faults.push_back({.operation = operation, .code = code, .pathPart = std::move(pathPart)});
}

void FakeFileSystem::failOnce(DiskOperation operation, int code, std::string pathPart)
{
    const std::lock_guard lock(m_mutex);
    m_faults.push_back({.operation = operation, .code = code, .pathPart = std::move(pathPart), .once = true});
}

void FakeFileSystem::setCapacity(int64_t bytes)
{
    const std::lock_guard lock(m_mutex);
    m_capacity = bytes;
}

void FakeFileSystem::setLargestWrite(size_t bytes)
{
    const std::lock_guard lock(m_mutex);
    m_largestWrite = bytes;
}

void FakeFileSystem::setLargestRead(size_t bytes)
{
    const std::lock_guard lock(m_mutex);
    m_largestRead = bytes;
}

void FakeFileSystem::heal()
{
    const std::lock_guard lock(m_mutex);
    m_faults.clear();
    m_capacity.reset();
    m_largestWrite.reset();
    m_largestRead.reset();
}

void FakeFileSystem::setHook(std::function<void(const Call&)> hook)
{
    const std::lock_guard lock(m_mutex);
    m_hook = std::move(hook);
}

int64_t FakeFileSystem::callCount() const
{
    const std::lock_guard lock(m_mutex);
    return m_callCount;
}

std::vector<FakeFileSystem::Call> FakeFileSystem::calls() const
{
    const std::lock_guard lock(m_mutex);
    return m_calls;
}

void FakeFileSystem::clearCalls()
{
    const std::lock_guard lock(m_mutex);
    m_calls.clear();
}

void FakeFileSystem::crash(UnsyncedEntries entries)
{
    const std::lock_guard lock(m_mutex);
    const auto restore = [&](const auto& self, Node& node) -> void {
        node.setBytes(node.syncedBytes);
        node.lockHolder = nullptr;
        if (entries == UnsyncedEntries::lost)
            node.entries = node.syncedEntries;
        else
            node.syncedEntries = node.entries;
        for (const auto& [name, entry] : node.entries)
            self(self, *entry);
    };
    restore(restore, *m_root);
}

Status FakeFileSystem::begin(DiskOperation operation, const Path& path)
{
    std::function<void(const Call&)> hook;
    int code = 0;
    const Call call{operation, path};
    {
        const std::lock_guard lock(m_mutex);
        ++m_callCount;
        m_calls.push_back(call);
        hook = m_hook;
        const auto fault = std::ranges::find_if(m_faults, [&](const Fault& f) {
            if (!f.operation)
                return f.once ? f.call == m_callCount : f.call <= m_callCount;
            return *f.operation == operation && path.native().find(f.pathPart) != std::string::npos;
        });
        if (fault != m_faults.end()) {
            code = fault->code;
            if (fault->once)
                m_faults.erase(fault);
        }
    }
    if (hook)
        hook(call);
    if (code != 0)
        return systemFailure(code);
    return {};
}

} // namespace quillmark::test
