#include "support/FakeFileSystemParts.h"

#include <cerrno>
#include <utility>

namespace quillmark::test {
namespace {

constexpr int longestChain = 40;

} // namespace

FakeFileSystem::FakeFileSystem(const Scheduler& clock)
    : m_clock(clock)
{
    m_root = make(FileInfo::Kind::folder, 0755);
}

FakeFileSystem::~FakeFileSystem() = default;

// The tree; the mutex is held

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
        for (auto part = ++pending.begin(); part != pending.end(); ++part) {
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
                break; // `part` belonged to the old path
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

// The interface

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
        existing->second->info.links = 0;
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
