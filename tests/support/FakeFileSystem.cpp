#include "support/FakeFileSystem.h"

#include <algorithm>
#include <cerrno>

namespace quillmark::test {
namespace {

constexpr size_t longestName = 255;
constexpr uint32_t mayRead = 0400;
constexpr uint32_t mayWrite = 0200;

/// Without "." and ".." and a slash at the end.
Path clean(const Path& path)
{
    const Path normal = path.lexically_normal();
    return !normal.has_filename() && normal.has_relative_path() ? normal.parent_path() : normal;
}

/// The entries of a folder, or everything below it.
enum class Depth { entries, everything };
template <class Tree> std::vector<std::string> pathsBelow(const Tree& tree, const Path& folder, Depth depth)
{
    const std::string start = clean(folder) / "";
    std::vector<std::string> found;
    for (auto entry = tree.upper_bound(start); entry != tree.end() && entry->first.starts_with(start);
        ++entry) {
        if (depth == Depth::everything || entry->first.find('/', start.size()) == std::string::npos)
            found.push_back(entry->first);
    }
    return found;
}

} // namespace

/// What a name stands for. Guarded by the disk's mutex.
struct FakeFileSystem::Node {
    FileInfo info;
    std::string bytes = {};
    std::string syncedBytes = {};
    const void* lockHolder = nullptr;

    bool isFolder() const { return info.kind == FileInfo::Kind::folder; }
    FileInfo seen() const
    {
        FileInfo result = info;
        result.size = static_cast<int64_t>(bytes.size());
        result.isWritable = info.mode & mayWrite;
        return result;
    }
};

FakeFileSystem::FakeFileSystem(const Scheduler& clock)
    : m_clock(clock)
{
    m_tree["/"] = m_synced["/"] = make(FileInfo::Kind::folder, 0755);
}

// The tree

FakeFileSystem::NodePointer FakeFileSystem::make(FileInfo::Kind kind, uint32_t mode)
{
    const WallTime now = m_clock.wallNow();
    return std::make_shared<Node>(Node{.info
        = {.kind = kind, .modified = now, .born = now, .device = 1, .inode = m_nextInode++, .mode = mode}});
}

void FakeFileSystem::require(bool condition, int code)
{
    if (!condition)
        throw Refusal{code};
}

FakeFileSystem::NodePointer FakeFileSystem::find(const Path& path) const
{
    const Path at = clean(path);
    const auto entry = m_tree.find(at);
    if (entry == m_tree.end()) {
        require(at.has_relative_path(), ENOENT);
        findFolder(at.parent_path());
        throw Refusal{ENOENT};
    }
    return entry->second;
}

FakeFileSystem::Node& FakeFileSystem::findFolder(const Path& path) const
{
    const NodePointer found = find(path);
    require(found->isFolder(), ENOTDIR);
    return *found;
}

FakeFileSystem::Node& FakeFileSystem::writableFolderOf(const Path& path) const
{
    Node& folder = findFolder(clean(path).parent_path());
    require(folder.info.mode & mayWrite, EACCES);
    require(clean(path).filename().native().size() <= longestName, ENAMETOOLONG);
    return folder;
}

void FakeFileSystem::ensureFolder(const Path& path)
{
    if (!m_tree.contains(clean(path)))
        put(path, make(FileInfo::Kind::folder, 0755));
}

void FakeFileSystem::put(const Path& path, const NodePointer& node)
{
    ensureFolder(clean(path).parent_path());
    m_tree[clean(path)] = m_synced[clean(path)] = node;
    findFolder(clean(path).parent_path()).info.modified = m_clock.wallNow();
}

// As another program sees it

void FakeFileSystem::putFile(const Path& path, std::string_view bytes)
{
    const Lock lock(m_mutex);
    NodePointer node = m_tree.contains(clean(path)) ? find(path) : nullptr;
    if (!node || node->isFolder())
        put(path, node = make(FileInfo::Kind::regular, 0644));
    node->bytes = node->syncedBytes = bytes;
    node->info.modified = m_clock.wallNow();
}

void FakeFileSystem::putFolder(const Path& path)
{
    const Lock lock(m_mutex);
    ensureFolder(path);
}

void FakeFileSystem::move(const Path& from, const Path& to)
{
    std::map<Path, NodePointer> moved;
    guarded([&] {
        moved[clean(to)] = find(from);
        for (const std::string& path : pathsBelow(m_tree, from, Depth::everything))
            moved[clean(to) / Path(path).lexically_relative(clean(from))] = m_tree.at(path);
    });
    erase(from);
    const Lock lock(m_mutex);
    for (const auto& [path, node] : moved)
        put(path, node);
}

void FakeFileSystem::erase(const Path& path)
{
    const Lock lock(m_mutex);
    for (Tree* tree : {&m_tree, &m_synced}) {
        tree->erase(clean(path));
        for (const std::string& below : pathsBelow(*tree, path, Depth::everything))
            tree->erase(below);
    }
    findFolder(clean(path).parent_path()).info.modified = m_clock.wallNow();
}

std::optional<std::string> FakeFileSystem::bytes(const Path& path) const
{
    const Lock lock(m_mutex);
    const auto entry = m_tree.find(clean(path));
    return entry != m_tree.end() && !entry->second->isFolder() ? std::optional(entry->second->bytes)
                                                               : std::nullopt;
}

std::vector<std::string> FakeFileSystem::names(const Path& folder) const
{
    const Lock lock(m_mutex);
    auto result = pathsBelow(m_tree, folder, Depth::entries);
    for (std::string& path : result)
        path = Path(path).filename();
    return result;
}

FileInfo FakeFileSystem::infoOf(const Path& path) const
{
    return guarded([&] { return find(path)->seen(); });
}

void FakeFileSystem::setMode(const Path& path, uint32_t mode)
{
    guarded([&] { find(path)->info.mode = mode; });
}

void FakeFileSystem::setModified(const Path& path, WallTime time)
{
    guarded([&] { find(path)->info.modified = time; });
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
    m_capacity.reset();
    m_largestRead = SIZE_MAX;
}

int64_t FakeFileSystem::callCount() const
{
    return guarded([&] { return m_callCount; });
}

std::vector<FakeFileSystem::Call> FakeFileSystem::calls() const
{
    return guarded([&] { return m_calls; });
}

void FakeFileSystem::crash(UnsyncedEntries entries)
{
    const Lock lock(m_mutex);
    (entries == UnsyncedEntries::lost ? m_tree : m_synced)
        = entries == UnsyncedEntries::lost ? m_synced : m_tree;
    for (const auto& [path, node] : m_tree) {
        node->bytes = node->syncedBytes;
        node->lockHolder = nullptr;
    }
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

// An open file

class FakeFileSystem::OpenFile : public File {
public:
    OpenFile(FakeFileSystem& disk, NodePointer node, Path path, uint32_t permission)
        : m_disk(disk)
        , m_node(std::move(node))
        , m_path(std::move(path)) // as it was opened
        , m_permission(permission)
    {
    }

    ~OpenFile() override
    {
        const Lock lock(m_disk.m_mutex);
        if (m_node->lockHolder == this)
            m_node->lockHolder = nullptr;
    }

    Result<size_t> read(std::span<std::byte> into) override
    {
        return m_disk.perform(DiskOperation::read, m_path, [&] {
            const auto left = std::as_bytes(std::span(m_node->bytes)).subspan(std::min(m_offset, size()));
            const auto bytes = left.first(std::min({into.size(), left.size(), m_disk.m_largestRead}));
            std::ranges::copy(bytes, into.begin());
            m_offset += bytes.size();
            return bytes.size();
        });
    }

    Result<size_t> write(std::span<const std::byte> bytes) override
    {
        return m_disk.perform(DiskOperation::write, m_path, [&] {
            require(m_permission == mayWrite, EBADF);
            const size_t count = std::min(bytes.size(), space());
            require(count > 0 || bytes.empty(), ENOSPC);
            m_node->bytes.resize(std::max(size(), m_offset + count));
            std::copy_n(reinterpret_cast<const char*>(bytes.data()), count, m_node->bytes.data() + m_offset);
            m_offset += count;
            m_node->info.modified = m_disk.m_clock.wallNow();
            return count;
        });
    }

    Result<FileInfo> info() override
    {
        return m_disk.perform(DiskOperation::fileInfo, m_path, [&] { return m_node->seen(); });
    }

    Status truncate(int64_t length) override
    {
        return m_disk.perform(DiskOperation::truncate, m_path, [&] {
            m_node->bytes.resize(static_cast<size_t>(length));
            m_node->info.modified = m_disk.m_clock.wallNow();
        });
    }

    Status sync() override
    {
        return m_disk.perform(DiskOperation::sync, m_path, [&] { m_node->syncedBytes = m_node->bytes; });
    }

    bool tryLock() override
    {
        const auto turn = m_disk.begin(DiskOperation::lock, m_path);
        if (!turn || (m_node->lockHolder && m_node->lockHolder != this))
            return false;
        m_node->lockHolder = this;
        return true;
    }

    Status copyAttributes(const Path& model) override
    {
        return m_disk.perform(DiskOperation::copyAttributes, m_path,
            [&] { m_node->info.mode = m_disk.find(model)->info.mode; });
    }

private:
    size_t size() const { return m_node->bytes.size(); }

    /// How much can be written here until the disk is full.
    size_t space() const
    {
        if (!m_disk.m_capacity)
            return SIZE_MAX;
        int64_t used = 0;
        for (const auto& [path, node] : m_disk.m_tree)
            used += static_cast<int64_t>(node->bytes.size());
        const size_t reusable = size() - std::min(m_offset, size());
        return reusable + static_cast<size_t>(std::max<int64_t>(0, *m_disk.m_capacity - used));
    }

    FakeFileSystem& m_disk;
    const NodePointer m_node;
    const Path m_path;
    const uint32_t m_permission;
    size_t m_offset = 0;
};

// The interface

Result<std::vector<FolderEntry>> FakeFileSystem::list(const Path& folder)
{
    return perform(DiskOperation::list, folder, [&] {
        require(findFolder(folder).info.mode & mayRead, EACCES);
        std::vector<FolderEntry> result;
        for (const std::string& path : pathsBelow(m_tree, folder, Depth::entries))
            result.push_back({Path(path).filename(), m_tree.at(path)->seen()});
        return result;
    });
}

class FakeFileSystem::OpenFolder final : public Folder {
public:
    OpenFolder(FakeFileSystem& disk, Path path)
        : m_disk(disk)
        , m_path(std::move(path))
    {
    }

    Result<std::vector<Name>> names() override
    {
        const auto entries = m_disk.list(m_path);
        if (!entries)
            return std::unexpected(entries.error());
        std::vector<Name> names;
        for (const FolderEntry& entry : *entries)
            names.push_back({entry.name, std::nullopt});
        return names;
    }
    Result<FileInfo> stat(const std::string& name) override { return m_disk.stat(m_path / name); }
    Result<OpenFile> openForReading(const std::string& name) override
    {
        auto file = m_disk.openForReading(m_path / name);
        if (!file)
            return std::unexpected(file.error());
        const auto info = (*file)->info();
        if (!info)
            return std::unexpected(info.error());
        return OpenFile{.file = std::move(*file), .info = *info};
    }

private:
    FakeFileSystem& m_disk;
    const Path m_path;
};

Result<std::unique_ptr<Folder>> FakeFileSystem::openFolder(const Path& folder)
{
    return perform(DiskOperation::stat, folder, [&]() -> std::unique_ptr<Folder> { // its names are the list
        findFolder(folder);
        return std::make_unique<OpenFolder>(*this, folder);
    });
}

Result<FileInfo> FakeFileSystem::stat(const Path& path)
{
    return perform(DiskOperation::stat, path, [&] { return find(path)->seen(); });
}

Result<Path> FakeFileSystem::resolveLinks(const Path& path)
{
    return perform(DiskOperation::resolveLinks, path, [&] {
        findFolder(clean(path).parent_path());
        return clean(path);
    });
}

std::unique_ptr<File> FakeFileSystem::open(const Path& path, uint32_t permission)
{
    NodePointer node = find(path);
    require(!node->isFolder(), EISDIR);
    require(node->info.mode & permission, EACCES);
    return std::make_unique<OpenFile>(*this, std::move(node), path, permission);
}

Result<std::unique_ptr<File>> FakeFileSystem::openForReading(const Path& path)
{
    return perform(DiskOperation::openForReading, path, [&] { return open(path, mayRead); });
}

Result<std::unique_ptr<File>> FakeFileSystem::openForWriting(const Path& path)
{
    return perform(DiskOperation::openForWriting, path, [&] { return open(path, mayWrite); });
}

Result<std::unique_ptr<File>> FakeFileSystem::createNew(const Path& path, uint32_t mode)
{
    return perform(DiskOperation::createNew, path, [&]() -> std::unique_ptr<File> {
        Node& folder = writableFolderOf(path);
        const auto [entry, isNew] = m_tree.try_emplace(clean(path));
        require(isNew, EEXIST);
        entry->second = make(FileInfo::Kind::regular, mode & ~022u);
        folder.info.modified = m_clock.wallNow();
        return std::make_unique<OpenFile>(*this, entry->second, clean(path), mayWrite);
    });
}

void FakeFileSystem::moveEntry(const Path& from, const Path& to, bool replace)
{
    Node& sourceFolder = writableFolderOf(from);
    Node& targetFolder = writableFolderOf(to);
    const NodePointer source = find(from);
    if (const auto there = m_tree.find(clean(to)); there != m_tree.end()) {
        require(replace, EEXIST);
        require(!there->second->isFolder(), EISDIR);
        there->second->info.links = there->second == source ? 1 : 0;
    }
    m_tree.erase(clean(from));
    m_tree[clean(to)] = source;
    sourceFolder.info.modified = targetFolder.info.modified = m_clock.wallNow();
}

Status FakeFileSystem::rename(const Path& from, const Path& to)
{
    return perform(DiskOperation::rename, from, [&] { moveEntry(from, to, true); });
}

Status FakeFileSystem::renameNoReplace(const Path& from, const Path& to)
{
    return perform(DiskOperation::renameNoReplace, from, [&] { moveEntry(from, to, false); });
}

Status FakeFileSystem::remove(const Path& path)
{
    return perform(DiskOperation::remove, path, [&] {
        Node& folder = writableFolderOf(path);
        const NodePointer node = find(path);
        require(!node->isFolder(), EISDIR);
        node->info.links = 0;
        m_tree.erase(clean(path));
        folder.info.modified = m_clock.wallNow();
    });
}

Status FakeFileSystem::makeFolders(const Path& folder)
{
    return perform(DiskOperation::makeFolders, folder, [&] {
        Path nearest = clean(folder);
        while (!m_tree.contains(nearest))
            nearest = nearest.parent_path();
        const Node& above = findFolder(nearest);
        require(nearest == clean(folder) || above.info.mode & mayWrite, EACCES);
        ensureFolder(folder);
    });
}

Status FakeFileSystem::makePrivateFolder(const Path& folder)
{
    return perform(DiskOperation::makeFolders, folder, [&] {
        if (!m_tree.contains(clean(folder))) {
            writableFolderOf(folder);
            put(folder, make(FileInfo::Kind::folder, 0700));
        }
        require(!(findFolder(folder).info.mode & 022u), EPERM);
    });
}

Status FakeFileSystem::syncFolder(const Path& folder)
{
    return perform(DiskOperation::syncFolder, folder, [&] {
        findFolder(folder);
        for (const std::string& path : pathsBelow(m_synced, folder, Depth::entries))
            m_synced.erase(path);
        for (const std::string& path : pathsBelow(m_tree, folder, Depth::entries))
            m_synced[path] = m_tree.at(path);
    });
}

} // namespace quillmark::test
