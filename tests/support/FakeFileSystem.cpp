#include "support/FakeFileSystem.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <utility>

namespace quillmark::test
{
namespace
{

constexpr uint32_t mayRead = 0400;
constexpr uint32_t mayWrite = 0200;
constexpr int longestChain = 40;

Path clean(const Path& path)
{
    Path normal = path.lexically_normal();
    if (!normal.has_filename() && normal.has_relative_path())
        normal = normal.parent_path();
    return normal;
}

} // namespace

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

class FakeFileSystem::OpenFile : public File
{
public:
    OpenFile(FakeFileSystem& disk, NodePointer node, Path path, uint32_t permission)
        : m_disk(disk)
        , m_node(std::move(node))
        , m_path(std::move(path))
        , m_permission(permission)
    {
    }

    ~OpenFile() override
    {
        const std::lock_guard lock(m_disk.m_mutex);
        if (m_node->lockHolder == this)
            m_node->lockHolder = nullptr;
    }

    Result<size_t> read(std::span<std::byte> into) override
    {
        if (auto status = m_disk.begin(DiskOperation::read, m_path); !status)
            return std::unexpected(status.error());
        const std::lock_guard lock(m_disk.m_mutex);
        const std::string& bytes = m_node->bytes;
        const size_t count = m_offset < bytes.size() ? std::min(into.size(), bytes.size() - m_offset) : 0;
        std::copy_n(
            reinterpret_cast<const std::byte*>(bytes.data()) + (count ? m_offset : 0), count, into.begin());
        m_offset += count;
        return count;
    }

    Result<size_t> write(std::span<const std::byte> bytes) override
    {
        if (auto status = m_disk.begin(DiskOperation::write, m_path); !status)
            return std::unexpected(status.error());
        const std::lock_guard lock(m_disk.m_mutex);
        if (m_permission != mayWrite)
            return systemFailure(EBADF);
        size_t count = std::min(bytes.size(), m_disk.m_largestWrite.value_or(bytes.size()));
        std::string& text = m_node->bytes;
        if (m_disk.m_capacity) {
            const int64_t space = std::max<int64_t>(0, *m_disk.m_capacity - *m_disk.m_used);
            const size_t reusable = m_offset < text.size() ? text.size() - m_offset : 0;
            count = std::min(count, reusable + static_cast<size_t>(space));
            if (count == 0 && !bytes.empty())
                return systemFailure(ENOSPC);
        }
        const size_t before = text.size();
        text.resize(std::max(before, m_offset + count));
        std::copy_n(reinterpret_cast<const char*>(bytes.data()), count,
            text.begin() + static_cast<std::ptrdiff_t>(m_offset));
        *m_disk.m_used += static_cast<int64_t>(text.size() - before);
        m_offset += count;
        m_node->info.modified = m_disk.m_clock.wallNow();
        return count;
    }

    Result<FileInfo> info() override
    {
        if (auto status = m_disk.begin(DiskOperation::fileInfo, m_path); !status)
            return std::unexpected(status.error());
        const std::lock_guard lock(m_disk.m_mutex);
        return m_node->seen();
    }

    Status truncate(int64_t size) override
    {
        if (auto status = m_disk.begin(DiskOperation::truncate, m_path); !status)
            return status;
        const std::lock_guard lock(m_disk.m_mutex);
        std::string bytes = m_node->bytes;
        bytes.resize(static_cast<size_t>(size));
        m_node->setBytes(std::move(bytes));
        m_node->info.modified = m_disk.m_clock.wallNow();
        return {};
    }

    Status sync() override
    {
        if (auto status = m_disk.begin(DiskOperation::sync, m_path); !status)
            return status;
        const std::lock_guard lock(m_disk.m_mutex);
        m_node->syncedBytes = m_node->bytes;
        return {};
    }

    bool tryLock() override
    {
        if (!m_disk.begin(DiskOperation::lock, m_path))
            return false;
        const std::lock_guard lock(m_disk.m_mutex);
        if (m_node->lockHolder && m_node->lockHolder != this)
            return false;
        m_node->lockHolder = this;
        return true;
    }

    Status copyAttributes(const Path& model) override
    {
        if (auto status = m_disk.begin(DiskOperation::copyAttributes, m_path); !status)
            return status;
        const std::lock_guard lock(m_disk.m_mutex);
        const auto found = m_disk.find(model);
        if (!found)
            return std::unexpected(found.error());
        m_node->info.mode = (*found)->info.mode;
        m_node->info.owner = (*found)->info.owner;
        m_node->attributes = (*found)->attributes;
        return {};
    }

private:
    FakeFileSystem& m_disk;
    NodePointer m_node;
    Path m_path; ///< as it was opened
    uint32_t m_permission;
    size_t m_offset = 0;
};

FakeFileSystem::FakeFileSystem(const Scheduler& clock)
    : m_clock(clock)
{
    m_root = make(FileInfo::Kind::folder, 0755);
}

FakeFileSystem::~FakeFileSystem() = default;

// ---- the disk as others see it

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

// ---- faults

void FakeFileSystem::failCall(int64_t n, int code)
{
    const std::lock_guard lock(m_mutex);
    m_faults.push_back(
        {.operation = {}, .call = m_callCount + n, .code = code, .pathPart = {}, .once = true});
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

void FakeFileSystem::heal()
{
    const std::lock_guard lock(m_mutex);
    m_faults.clear();
    m_capacity.reset();
    m_largestWrite.reset();
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
                return f.call == m_callCount;
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

// ---- the tree; the mutex is held

FakeFileSystem::NodePointer FakeFileSystem::make(FileInfo::Kind kind, uint32_t mode)
{
    auto node = std::make_shared<Node>();
    const WallTime now = m_clock.wallNow();
    node->info
        = {.kind = kind, .modified = now, .born = now, .device = 1, .inode = m_nextInode++, .mode = mode};
    node->used = m_used;
    return node;
}

Result<Path> FakeFileSystem::follow(const Path& path) const
{
    Path pending = clean(path);
    for (int links = 0; links <= longestChain; ++links) {
        Path reached = "/";
        NodePointer node = m_root;
        bool jumped = false;
        for (auto part = ++pending.begin(); part != pending.end() && !jumped; ++part) {
            if (node && node->info.kind != FileInfo::Kind::folder)
                return systemFailure(ENOTDIR);
            if (!node)
                return systemFailure(ENOENT); // a folder on the way is not there
            const auto entry = node->entries.find(part->string());
            node = entry != node->entries.end() ? entry->second : nullptr;
            if (node && node->link) {
                Path rest = reached / *node->link;
                for (auto next = std::next(part); next != pending.end(); ++next)
                    rest /= *next;
                pending = clean(rest);
                jumped = true;
            }
            reached /= *part;
        }
        if (!jumped)
            return reached;
    }
    return systemFailure(ELOOP);
}

FakeFileSystem::NodePointer FakeFileSystem::findLink(const Path& path) const
{
    const auto folder = folderOf(path);
    if (!folder)
        return nullptr;
    const auto entry = (*folder)->entries.find(path.filename().string());
    return entry != (*folder)->entries.end() ? entry->second : nullptr;
}

Result<FakeFileSystem::NodePointer> FakeFileSystem::find(const Path& path) const
{
    const auto target = follow(path);
    if (!target)
        return std::unexpected(target.error());
    NodePointer node = m_root;
    for (auto part = ++target->begin(); part != target->end(); ++part) {
        const auto entry = node->entries.find(part->string());
        if (entry == node->entries.end())
            return systemFailure(ENOENT);
        node = entry->second;
    }
    return node;
}

Result<FakeFileSystem::NodePointer> FakeFileSystem::folderOf(const Path& path) const
{
    const auto folder = find(path.parent_path());
    if (folder && (*folder)->info.kind != FileInfo::Kind::folder)
        return systemFailure(ENOTDIR);
    return folder;
}

FakeFileSystem::NodePointer FakeFileSystem::ensureFolder(const Path& path)
{
    if (const auto found = find(path))
        return *found;
    const NodePointer parent = ensureFolder(path.parent_path());
    NodePointer folder = make(FileInfo::Kind::folder, 0755);
    parent->entries[path.filename().string()] = folder;
    touch(*parent);
    sync(*parent, path.filename().string());
    return folder;
}

void FakeFileSystem::put(const Path& path, NodePointer node)
{
    const Path at = clean(path);
    const NodePointer folder = ensureFolder(at.parent_path());
    folder->entries[at.filename().string()] = std::move(node);
    touch(*folder);
    sync(*folder, at.filename().string());
}

void FakeFileSystem::touch(Node& folder)
{
    folder.info.modified = m_clock.wallNow();
}

void FakeFileSystem::sync(Node& folder, const std::string& name)
{
    const auto entry = folder.entries.find(name);
    if (entry != folder.entries.end())
        folder.syncedEntries[name] = entry->second;
    else
        folder.syncedEntries.erase(name);
}

// ---- FileSystem

Result<std::vector<FolderEntry>> FakeFileSystem::list(const Path& folder)
{
    if (auto status = begin(DiskOperation::list, folder); !status)
        return std::unexpected(status.error());
    const std::lock_guard lock(m_mutex);
    const auto node = find(folder);
    if (!node)
        return std::unexpected(node.error());
    if ((*node)->info.kind != FileInfo::Kind::folder)
        return systemFailure(ENOTDIR);
    if (!((*node)->info.mode & mayRead))
        return systemFailure(EACCES);
    std::vector<FolderEntry> result;
    for (const auto& [name, entry] : (*node)->entries) {
        const auto target = find(folder / name);
        result.push_back({name, (target ? *target : entry)->seen()});
    }
    return result;
}

Result<FileInfo> FakeFileSystem::stat(const Path& path)
{
    if (auto status = begin(DiskOperation::stat, path); !status)
        return std::unexpected(status.error());
    const std::lock_guard lock(m_mutex);
    const auto node = find(path);
    if (!node)
        return std::unexpected(node.error());
    return (*node)->seen();
}

Result<Path> FakeFileSystem::resolveLinks(const Path& path)
{
    if (auto status = begin(DiskOperation::resolveLinks, path); !status)
        return std::unexpected(status.error());
    const std::lock_guard lock(m_mutex);
    return follow(path);
}

Result<std::unique_ptr<File>> FakeFileSystem::open(const Path& path, uint32_t permission)
{
    const std::lock_guard lock(m_mutex);
    const auto node = find(path);
    if (!node)
        return std::unexpected(node.error());
    if ((*node)->info.kind == FileInfo::Kind::folder)
        return systemFailure(EISDIR);
    if ((*node)->info.kind == FileInfo::Kind::other)
        return systemFailure(EINVAL);
    if (!((*node)->info.mode & permission))
        return systemFailure(EACCES);
    return std::make_unique<OpenFile>(*this, *node, path, permission);
}

Result<std::unique_ptr<File>> FakeFileSystem::openForReading(const Path& path)
{
    if (auto status = begin(DiskOperation::openForReading, path); !status)
        return std::unexpected(status.error());
    return open(path, mayRead);
}

Result<std::unique_ptr<File>> FakeFileSystem::openForWriting(const Path& path)
{
    if (auto status = begin(DiskOperation::openForWriting, path); !status)
        return std::unexpected(status.error());
    return open(path, mayWrite);
}

Result<std::unique_ptr<File>> FakeFileSystem::createNew(const Path& path, uint32_t mode)
{
    if (auto status = begin(DiskOperation::createNew, path); !status)
        return std::unexpected(status.error());
    const std::lock_guard lock(m_mutex);
    const Path at = clean(path);
    const auto folder = folderOf(at);
    if (!folder)
        return std::unexpected(folder.error());
    const std::string name = at.filename().string();
    if ((*folder)->entries.contains(name))
        return systemFailure(EEXIST);
    if (!((*folder)->info.mode & mayWrite))
        return systemFailure(EACCES);
    if (name.size() > 255)
        return systemFailure(ENAMETOOLONG);
    NodePointer node = make(FileInfo::Kind::regular, mode & ~022u);
    (*folder)->entries[name] = node;
    touch(**folder);
    return std::make_unique<OpenFile>(*this, node, at, mayWrite);
}

Status FakeFileSystem::move(const Path& from, const Path& to, bool replace)
{
    const Path source = clean(from);
    const Path target = clean(to);
    const auto sourceFolder = folderOf(source);
    const auto targetFolder = folderOf(target);
    if (!sourceFolder || !targetFolder)
        return std::unexpected((!sourceFolder ? sourceFolder : targetFolder).error());
    const auto entry = (*sourceFolder)->entries.find(source.filename().string());
    if (entry == (*sourceFolder)->entries.end())
        return systemFailure(ENOENT);
    if (!((*sourceFolder)->info.mode & mayWrite) || !((*targetFolder)->info.mode & mayWrite))
        return systemFailure(EACCES);
    const std::string name = target.filename().string();
    const auto existing = (*targetFolder)->entries.find(name);
    if (existing != (*targetFolder)->entries.end()) {
        if (!replace)
            return systemFailure(EEXIST);
        if (existing->second == entry->second)
            return {};
        if (existing->second->info.kind == FileInfo::Kind::folder)
            return systemFailure(EISDIR);
    }
    if (name.size() > 255)
        return systemFailure(ENAMETOOLONG);
    const NodePointer node = entry->second;
    (*sourceFolder)->entries.erase(entry);
    (*targetFolder)->entries[name] = node;
    touch(**sourceFolder);
    touch(**targetFolder);
    return {};
}

Status FakeFileSystem::rename(const Path& from, const Path& to)
{
    if (auto status = begin(DiskOperation::rename, from); !status)
        return status;
    const std::lock_guard lock(m_mutex);
    return move(from, to, true);
}

Status FakeFileSystem::renameNoReplace(const Path& from, const Path& to)
{
    if (auto status = begin(DiskOperation::renameNoReplace, from); !status)
        return status;
    const std::lock_guard lock(m_mutex);
    return move(from, to, false);
}

Status FakeFileSystem::remove(const Path& path)
{
    if (auto status = begin(DiskOperation::remove, path); !status)
        return status;
    const std::lock_guard lock(m_mutex);
    const Path at = clean(path);
    const auto folder = folderOf(at);
    if (!folder)
        return std::unexpected(folder.error());
    const auto entry = (*folder)->entries.find(at.filename().string());
    if (entry == (*folder)->entries.end())
        return systemFailure(ENOENT);
    if (entry->second->info.kind == FileInfo::Kind::folder)
        return systemFailure(EISDIR);
    if (!((*folder)->info.mode & mayWrite))
        return systemFailure(EACCES);
    entry->second->info.links = 0;
    (*folder)->entries.erase(entry);
    touch(**folder);
    return {};
}

Status FakeFileSystem::makeFolders(const Path& folder)
{
    if (auto status = begin(DiskOperation::makeFolders, folder); !status)
        return status;
    const std::lock_guard lock(m_mutex);
    Path above = clean(folder);
    auto found = find(above);
    if (found)
        return (*found)->info.kind == FileInfo::Kind::folder ? Status() : systemFailure(ENOTDIR);
    while (!found && found.error().code == ENOENT) {
        above = above.parent_path();
        found = find(above);
    }
    if (!found)
        return std::unexpected(found.error());
    if ((*found)->info.kind != FileInfo::Kind::folder)
        return systemFailure(ENOTDIR);
    if (!((*found)->info.mode & mayWrite))
        return systemFailure(EACCES);
    ensureFolder(clean(folder));
    return {};
}

Status FakeFileSystem::syncFolder(const Path& folder)
{
    if (auto status = begin(DiskOperation::syncFolder, folder); !status)
        return status;
    const std::lock_guard lock(m_mutex);
    const auto node = find(folder);
    if (!node)
        return std::unexpected(node.error());
    (*node)->syncedEntries = (*node)->entries;
    return {};
}

} // namespace quillmark::test
