#include "support/FakeFileSystemTree.h"

#include <algorithm>
#include <cerrno>

namespace quillmark::test {
namespace {

constexpr int longestChain = 40;
constexpr size_t longestName = 255;

} // namespace

FakeFileSystem::FakeFileSystem(const Scheduler& clock)
    : m_clock(clock)
    , m_root(make(FileInfo::Kind::folder, 0755))
{
}

FakeFileSystem::~FakeFileSystem() = default;

// The tree

FakeFileSystem::NodePointer FakeFileSystem::make(FileInfo::Kind kind, uint32_t mode)
{
    const WallTime now = m_clock.wallNow();
    return std::make_shared<Node>(Node{.info
        = {.kind = kind, .modified = now, .born = now, .device = 1, .inode = m_nextInode++, .mode = mode},
        .used = m_used});
}

Result<FakeFileSystem::Place> FakeFileSystem::follow(const Path& path, int links) const
{
    if (links > longestChain)
        return systemFailure(ELOOP);
    const Path at = clean(path);
    Place place{"/", m_root};
    for (auto part = ++at.begin(); part != at.end(); ++part) {
        if (!place.node)
            return systemFailure(ENOENT);
        if (place.node->info.kind != FileInfo::Kind::folder)
            return systemFailure(ENOTDIR);
        const auto entry = place.node->entries.find(*part);
        const NodePointer node = entry != place.node->entries.end() ? entry->second : nullptr;
        if (node && node->link) {
            Path rest = place.path / *node->link;
            while (++part != at.end())
                rest /= *part;
            return follow(rest, links + 1);
        }
        place = {place.path / *part, node};
    }
    return place;
}

Result<FakeFileSystem::NodePointer> FakeFileSystem::find(const Path& path) const
{
    const auto place = follow(path);
    if (!place)
        return std::unexpected(place.error());
    if (!place->node)
        return systemFailure(ENOENT);
    return place->node;
}

Result<FakeFileSystem::NodePointer> FakeFileSystem::folderOf(const Path& path) const
{
    const auto folder = find(path.parent_path());
    if (folder && (*folder)->info.kind != FileInfo::Kind::folder)
        return systemFailure(ENOTDIR);
    return folder;
}

Result<FakeFileSystem::NodePointer> FakeFileSystem::writableFolderOf(const Path& path) const
{
    const auto folder = folderOf(path);
    if (folder && !((*folder)->info.mode & mayWrite))
        return systemFailure(EACCES);
    return folder;
}

FakeFileSystem::NodePointer FakeFileSystem::ensureFolder(const Path& path)
{
    if (const auto found = find(path))
        return *found;
    const NodePointer folder = make(FileInfo::Kind::folder, 0755);
    put(path, folder);
    return folder;
}

void FakeFileSystem::put(const Path& path, NodePointer node)
{
    const Path at = clean(path);
    ensureFolder(at.parent_path())->entries[at.filename()] = std::move(node);
    sync(at);
}

void FakeFileSystem::sync(const Path& entry)
{
    Node& folder = **folderOf(entry);
    folder.info.modified = m_clock.wallNow();
    if (const auto found = folder.entries.find(entry.filename()); found != folder.entries.end())
        folder.syncedEntries[entry.filename()] = found->second;
    else
        folder.syncedEntries.erase(entry.filename());
}

// The interface

Result<std::vector<FolderEntry>> FakeFileSystem::list(const Path& folder)
{
    const auto turn = begin(DiskOperation::list, folder);
    if (!turn)
        return std::unexpected(turn.error());
    const auto node = find(folder);
    if (!node)
        return std::unexpected(node.error());
    if ((*node)->info.kind != FileInfo::Kind::folder)
        return systemFailure(ENOTDIR);
    if (!((*node)->info.mode & mayRead))
        return systemFailure(EACCES);
    std::vector<FolderEntry> result;
    for (const auto& [name, entry] : (*node)->entries)
        result.push_back({name, find(folder / name).value_or(entry)->seen()});
    return result;
}

Result<FileInfo> FakeFileSystem::stat(const Path& path)
{
    const auto turn = begin(DiskOperation::stat, path);
    if (!turn)
        return std::unexpected(turn.error());
    const auto node = find(path);
    if (!node)
        return std::unexpected(node.error());
    return (*node)->seen();
}

Result<Path> FakeFileSystem::resolveLinks(const Path& path)
{
    const auto turn = begin(DiskOperation::resolveLinks, path);
    if (!turn)
        return std::unexpected(turn.error());
    const auto place = follow(path);
    if (!place)
        return std::unexpected(place.error());
    return place->path;
}

Result<std::unique_ptr<File>> FakeFileSystem::open(
    DiskOperation operation, const Path& path, uint32_t permission)
{
    const auto turn = begin(operation, path);
    if (!turn)
        return std::unexpected(turn.error());
    const auto node = find(path);
    if (!node)
        return std::unexpected(node.error());
    if ((*node)->info.kind != FileInfo::Kind::regular)
        return systemFailure((*node)->info.kind == FileInfo::Kind::folder ? EISDIR : EINVAL);
    if (!((*node)->info.mode & permission))
        return systemFailure(EACCES);
    return openFile(*node, path, permission);
}

Result<std::unique_ptr<File>> FakeFileSystem::openForReading(const Path& path)
{
    return open(DiskOperation::openForReading, path, mayRead);
}

Result<std::unique_ptr<File>> FakeFileSystem::openForWriting(const Path& path)
{
    return open(DiskOperation::openForWriting, path, mayWrite);
}

Result<std::unique_ptr<File>> FakeFileSystem::createNew(const Path& path, uint32_t mode)
{
    const auto turn = begin(DiskOperation::createNew, path);
    if (!turn)
        return std::unexpected(turn.error());
    const Path at = clean(path);
    const auto folder = writableFolderOf(at);
    if (!folder)
        return std::unexpected(folder.error());
    if (at.filename().native().size() > longestName)
        return systemFailure(ENAMETOOLONG);
    const auto [entry, isNew] = (*folder)->entries.try_emplace(at.filename());
    if (!isNew)
        return systemFailure(EEXIST);
    entry->second = make(FileInfo::Kind::regular, mode & ~022u);
    (*folder)->info.modified = m_clock.wallNow();
    return openFile(entry->second, at, mayWrite);
}

Status FakeFileSystem::move(const Path& from, const Path& to, bool replace)
{
    const Path source = clean(from);
    const Path target = clean(to);
    const auto sourceFolder = writableFolderOf(source);
    const auto targetFolder = writableFolderOf(target);
    if (!sourceFolder || !targetFolder)
        return std::unexpected((!sourceFolder ? sourceFolder : targetFolder).error());
    const auto entry = (*sourceFolder)->entries.find(source.filename());
    if (entry == (*sourceFolder)->entries.end())
        return systemFailure(ENOENT);
    if (target.filename().native().size() > longestName)
        return systemFailure(ENAMETOOLONG);
    const NodePointer node = entry->second;
    NodePointer& place = (*targetFolder)->entries[target.filename()];
    if (place && !replace)
        return systemFailure(EEXIST);
    if (place == node)
        return {};
    if (place && place->info.kind == FileInfo::Kind::folder)
        return systemFailure(EISDIR);
    if (place)
        place->info.links = 0;
    place = node;
    (*sourceFolder)->entries.erase(entry);
    (*sourceFolder)->info.modified = (*targetFolder)->info.modified = m_clock.wallNow();
    return {};
}

Status FakeFileSystem::rename(const Path& from, const Path& to)
{
    const auto turn = begin(DiskOperation::rename, from);
    return turn ? move(from, to, true) : std::unexpected(turn.error());
}

Status FakeFileSystem::renameNoReplace(const Path& from, const Path& to)
{
    const auto turn = begin(DiskOperation::renameNoReplace, from);
    return turn ? move(from, to, false) : std::unexpected(turn.error());
}

Status FakeFileSystem::remove(const Path& path)
{
    const auto turn = begin(DiskOperation::remove, path);
    if (!turn)
        return std::unexpected(turn.error());
    const Path at = clean(path);
    const auto folder = writableFolderOf(at);
    if (!folder)
        return std::unexpected(folder.error());
    const auto entry = (*folder)->entries.find(at.filename());
    if (entry == (*folder)->entries.end())
        return systemFailure(ENOENT);
    if (entry->second->info.kind == FileInfo::Kind::folder)
        return systemFailure(EISDIR);
    entry->second->info.links = 0;
    (*folder)->entries.erase(entry);
    (*folder)->info.modified = m_clock.wallNow();
    return {};
}

Status FakeFileSystem::makeFolders(const Path& folder)
{
    const auto turn = begin(DiskOperation::makeFolders, folder);
    if (!turn)
        return std::unexpected(turn.error());
    Path above = clean(folder);
    auto found = find(above);
    const bool isThere = found.has_value();
    while (!found && found.error().code == ENOENT)
        found = find(above = above.parent_path());
    if (!found)
        return std::unexpected(found.error());
    if ((*found)->info.kind != FileInfo::Kind::folder)
        return systemFailure(ENOTDIR);
    if (!isThere && !((*found)->info.mode & mayWrite))
        return systemFailure(EACCES);
    ensureFolder(clean(folder));
    return {};
}

Status FakeFileSystem::syncFolder(const Path& folder)
{
    const auto turn = begin(DiskOperation::syncFolder, folder);
    if (!turn)
        return std::unexpected(turn.error());
    const auto node = find(folder);
    if (!node)
        return std::unexpected(node.error());
    (*node)->syncedEntries = (*node)->entries;
    return {};
}

} // namespace quillmark::test
