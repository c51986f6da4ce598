#include "io/KnownFiles.h"

#include "io/AtomicFile.h"

#include <cassert>

namespace quillmark {
FileStamp::FileStamp(const FileInfo& info, const ContentHash& contentHash)
    : device(info.device)
    , inode(info.inode)
    , size(info.size)
    , modified(info.modified)
    , hash(contentHash)
{
}

bool FileStamp::matches(const FileInfo& info) const
{
    return device == info.device && inode == info.inode && size == info.size && modified == info.modified;
}

void KnownFiles::remember(const Path& path, const FileStamp& stamp)
{
    const std::lock_guard lock(m_mutex);
    m_entries.insert_or_assign(path.native(), Entry{.stamp = stamp, .expected = {}, .different = {}});
}

void KnownFiles::expect(const Path& path, const FileStamp& stamp)
{
    const std::lock_guard lock(m_mutex);
    if (const auto entry = m_entries.find(path.native()); entry != m_entries.end())
        entry->second.expected = stamp;
}

void KnownFiles::rememberMissing(const Path& path)
{
    FileStamp nothing;
    nothing.hash = contentHash("");
    remember(path, nothing);
}

void KnownFiles::forget(const Path& path)
{
    const std::lock_guard lock(m_mutex);
    m_entries.erase(path.native());
}

void KnownFiles::move(const Path& from, const Path& to)
{
    assert(from != to);
    const std::lock_guard lock(m_mutex);
    m_entries.erase(to.native());
    if (auto entry = m_entries.extract(from.native())) {
        entry.key() = to.native();
        m_entries.insert(std::move(entry));
    }
}

std::optional<KnownFiles::Entry> KnownFiles::find(const Path& path) const
{
    const std::lock_guard lock(m_mutex);
    const auto entry = m_entries.find(path.native());
    return entry != m_entries.end() ? std::optional(entry->second) : std::nullopt;
}

std::optional<FileStamp> KnownFiles::stampOf(const Path& path) const
{
    const auto entry = find(path);
    return entry ? std::optional(entry->stamp) : std::nullopt;
}

KnownFiles::State KnownFiles::stateOf(
    FileSystem& disk, const Path& path, const FileInfo& info, int64_t mostBytes)
{
    assert(mostBytes <= largestCompared);
    const auto entry = find(path);
    if (!entry)
        return State::unknown;
    if (entry->stamp.matches(info) || (entry->expected && entry->expected->matches(info)))
        return State::asKnown;
    const bool mayBeEqual = info.kind == FileInfo::Kind::regular && info.size == entry->stamp.size;
    if (!mayBeEqual || info.size > largestCompared || (entry->different && entry->different->matches(info)))
        return State::changed;
    if (info.size > mostBytes)
        return State::undecided;
    const auto hash = hashOf(contentOfFile(disk, path));
    if (!hash)
        return State::undecided;
    const bool isEqual = *hash == entry->stamp.hash;
    const std::lock_guard lock(m_mutex);
    const auto now = m_entries.find(path.native());
    if (now != m_entries.end() && now->second.stamp == entry->stamp) { // else somebody knows better by now
        if (isEqual)
            now->second = {.stamp = FileStamp(info, *hash), .expected = {}, .different = {}};
        else
            now->second.different = FileStamp(info, *hash);
    }
    return isEqual ? State::asKnown : State::changed;
}

} // namespace quillmark
