#include "io/RecoveryStore.h"

#include "io/Encode.h"
#include "io/FileNames.h"

#include <algorithm>
#include <cassert>
#include <cerrno>

namespace quillmark {
namespace {

constexpr uint32_t ownerOnly = 0600; ///< the original may be private
constexpr int attempts = 1000; ///< names tried within one millisecond

} // namespace

RecoveryStore::RecoveryStore(FileSystem& disk, const Scheduler& clock, Log& log, Path folder)
    : m_disk(disk)
    , m_clock(clock)
    , m_log(log)
    , m_folder(std::move(folder))
{
}

Result<Path> RecoveryStore::keep(const Rope& text, const Path& original)
{
    return keepContent(contentOf(text, LineEnds::lf), original);
}

Result<Path> RecoveryStore::keepBytes(std::string_view bytes, const Path& original)
{
    return keepContent(contentOf(bytes), original);
}

Result<Path> RecoveryStore::keepCopy(const Path& file)
{
    return keepContent(contentOfFile(m_disk, file), file);
}

Result<Path> RecoveryStore::keepContent(const FileContent& content, const Path& original)
{
    return keepAs(original, [&](const Path& free) -> Status {
        const auto written = createFile(m_disk, free, ownerOnly, content);
        if (!written)
            return std::unexpected(written.error());
        return {};
    });
}

Result<Path> RecoveryStore::adopt(const Path& file, const Path& original)
{
    return keepAs(original, [&](const Path& free) -> Status {
        const Status moved = m_disk.renameNoReplace(file, free);
        if (moved)
            return m_disk.syncFolder(m_folder);
        if (moved.error().code != EXDEV)
            return moved;
        const auto copied = createFile(m_disk, free, ownerOnly, contentOfFile(m_disk, file));
        if (!copied)
            return std::unexpected(copied.error());
        static_cast<void>(m_disk.remove(file));
        return {};
    });
}

Result<Path> RecoveryStore::keepAs(const Path& original, const Place& place)
{
    assert(place);
    const std::lock_guard lock(m_mutex);
    const std::string time = timeName(m_clock.wallNow());
    const std::string name = original.filename().empty() ? "Untitled.txt" : original.filename().native();
    Status status = m_disk.makeFolders(m_folder);
    for (int number = 1; status && number <= attempts; ++number) {
        const std::string prefix = time + (number == 1 ? " " : " (" + std::to_string(number) + ") ");
        const Path path = m_folder / (prefix + std::string(nameEnding(name, longestName - prefix.size())));
        const Status placed = place(path);
        if (placed) {
            m_log.line("Quillmark: text of " + printable(original) + " kept in " + printable(path));
            dropOldest(path);
            return path;
        }
        if (placed.error().code != EEXIST)
            status = placed;
    }
    if (status)
        status = systemFailure(EEXIST);
    m_log.line("Quillmark: text of " + printable(original) + " not kept: " + status.error().message);
    return std::unexpected(status.error());
}

void RecoveryStore::dropOldest(const Path& justKept)
{
    auto entries = m_disk.list(m_folder);
    if (!entries)
        return;
    removeStaleTemporaries(m_disk, m_folder, *entries);
    std::erase_if(*entries, [&](const FolderEntry& entry) {
        return entry.info.kind != FileInfo::Kind::regular || isTemporaryName(entry.name)
            || entry.name == justKept.filename().native(); // even if the clock was set back
    });
    if (entries->size() < capacity)
        return;
    std::ranges::sort(*entries, std::greater(), &FolderEntry::name);
    for (size_t i = capacity - 1; i < entries->size(); ++i)
        static_cast<void>(m_disk.remove(m_folder / (*entries)[i].name));
}

Result<std::vector<RecoveredText>> RecoveryStore::list()
{
    auto entries = m_disk.list(m_folder);
    if (!entries && entries.error().code == ENOENT)
        return std::vector<RecoveredText>();
    if (!entries)
        return std::unexpected(entries.error());
    std::ranges::sort(*entries, std::greater(), &FolderEntry::name);
    std::vector<RecoveredText> texts;
    for (const FolderEntry& entry : *entries) {
        if (entry.info.kind == FileInfo::Kind::regular && !isTemporaryName(entry.name))
            texts.push_back({m_folder / entry.name, entry.info.size, entry.info.modified});
    }
    return texts;
}

} // namespace quillmark
