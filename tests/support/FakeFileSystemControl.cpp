// The disk in memory as the test sees it: its content and its faults.
#include "support/FakeFileSystemTree.h"

#include <algorithm>
#include <ranges>
#include <stdexcept>

namespace quillmark::test {

void FakeFileSystem::putFile(const Path& path, std::string_view bytes)
{
    const Lock lock(m_mutex);
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
    const Lock lock(m_mutex);
    ensureFolder(clean(path));
}

void FakeFileSystem::putLink(const Path& path, const Path& target)
{
    const Lock lock(m_mutex);
    const NodePointer node = make(FileInfo::Kind::other, 0777);
    node->link = target;
    put(path, node);
}

void FakeFileSystem::putDevice(const Path& path)
{
    const Lock lock(m_mutex);
    put(path, make(FileInfo::Kind::other, 0644));
}

void FakeFileSystem::move(const Path& from, const Path& to)
{
    const Lock lock(m_mutex);
    ensureFolder(clean(to).parent_path());
    if (const Status moved = move(from, to, true); !moved)
        throw std::runtime_error(from.string() + ": " + moved.error().message);
    sync(clean(from));
    sync(clean(to));
}

void FakeFileSystem::erase(const Path& path)
{
    const Lock lock(m_mutex);
    folderOf(clean(path)).value()->entries.erase(clean(path).filename());
    sync(clean(path));
}

std::optional<std::string> FakeFileSystem::bytes(const Path& path) const
{
    const Lock lock(m_mutex);
    const auto node = find(path);
    return node && (*node)->info.kind == FileInfo::Kind::regular ? std::optional((*node)->bytes)
                                                                 : std::nullopt;
}

std::vector<std::string> FakeFileSystem::names(const Path& folder) const
{
    const Lock lock(m_mutex);
    std::vector<std::string> result;
    if (const auto node = find(folder))
        std::ranges::copy((*node)->entries | std::views::keys, std::back_inserter(result));
    return result;
}

FileInfo FakeFileSystem::infoOf(const Path& path) const
{
    const Lock lock(m_mutex);
    return find(path).value()->seen();
}

bool FakeFileSystem::isLink(const Path& path) const
{
    const Lock lock(m_mutex);
    return folderOf(clean(path)).value()->entries.at(clean(path).filename())->link.has_value();
}

void FakeFileSystem::setMode(const Path& path, uint32_t mode)
{
    const Lock lock(m_mutex);
    find(path).value()->info.mode = mode;
}

void FakeFileSystem::setModified(const Path& path, WallTime time)
{
    const Lock lock(m_mutex);
    find(path).value()->info.modified = time;
}

void FakeFileSystem::setAttribute(const Path& path, const std::string& name, const std::string& value)
{
    const Lock lock(m_mutex);
    find(path).value()->attributes[name] = value;
}

std::string FakeFileSystem::attribute(const Path& path, const std::string& name) const
{
    const Lock lock(m_mutex);
    return find(path).value()->attributes[name];
}

// Faults

void FakeFileSystem::add(Fault fault)
{
    const Lock lock(m_mutex);
    fault.call += m_callCount;
    m_faults.push_back(std::move(fault));
}

void FakeFileSystem::heal()
{
    const Lock lock(m_mutex);
    m_faults.clear();
    m_limits = {};
}

int64_t FakeFileSystem::callCount() const
{
    const Lock lock(m_mutex);
    return m_callCount;
}

std::vector<FakeFileSystem::Call> FakeFileSystem::calls() const
{
    const Lock lock(m_mutex);
    return m_calls;
}

void FakeFileSystem::crash(UnsyncedEntries entries)
{
    const Lock lock(m_mutex);
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

Result<FakeFileSystem::Lock> FakeFileSystem::begin(DiskOperation operation, const Path& path)
{
    int code = 0;
    const Call call{operation, path};
    Lock lock(m_mutex);
    ++m_callCount;
    m_calls.push_back(call);
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
    if (const auto hook = m_hook) {
        lock.unlock();
        hook(call);
        lock.lock();
    }
    if (code != 0)
        return systemFailure(code);
    return lock;
}

} // namespace quillmark::test
