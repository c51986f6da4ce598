#include "io/JournalFiles.h"

#include "io/Encode.h"
#include "io/FileNames.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <set>

namespace quillmark {
namespace {

constexpr uint32_t ownerOnly = 0600; ///< the document may be private
constexpr size_t uuidLength = 36;
constexpr std::string_view lockSuffix = ".lock";

} // namespace

Path JournalFiles::Place::lockOf(const std::string& name) const
{
    return folder / (name + std::string(lockSuffix));
}

JournalFiles::JournalFiles(FileSystem& disk, RecoveryStore& recovery, Log& log, JournalFolders folders)
    : m_disk(disk)
    , m_recovery(recovery)
    , m_log(log)
    , m_inUse(1 + folders.fallbacks.size())
{
    assert(!folders.own.empty());
    m_places.push_back({.folder = std::move(folders.own)});
    for (const auto* shared : {&folders.fallbacks, &folders.lastResorts}) {
        for (const Path& folder : *shared)
            m_places.push_back({.folder = folder, .isShared = true});
    }
    m_told = &m_places.front();
}

Result<WrittenFile> JournalFiles::write(const Uuid& document, const Path& original, const Rope& text)
{
    const std::lock_guard guard(m_mutex);
    Error refusal; // of the program's own folder
    for (size_t i = 0; i < m_inUse; ++i) {
        auto written = writeIn(m_places[i], document, original, text);
        if (!written) {
            if (i == 0)
                refusal = written.error();
            continue;
        }
        tell(&m_places[i], refusal);
        for (Place& other : m_places) {
            if (&other != &m_places[i])
                static_cast<void>(removeFrom(other, document)); // or with the document
        }
        return written;
    }
    tell(nullptr, refusal);
    return std::unexpected(refusal);
}

Result<WrittenFile> JournalFiles::writeIn(
    Place& place, const Uuid& document, const Path& original, const Rope& text)
{
    if (auto status = open(place); !status)
        return std::unexpected(status.error());
    assert(place.lock && place.process.size() == uuidLength);
    const FileContent content = contentOf(text, LineEnds::lf);
    if (const auto old = place.texts.find(document); old != place.texts.end()) {
        auto written = replaceFile(m_disk, old->second, content);
        if (written || written.error().code != ENOENT)
            return written;
    }
    const std::string prefix = place.process + "." + document.toString() + ".";
    const std::string name = original.filename();
    const Path path = place.folder / (prefix + std::string(nameEnding(name, longestName - prefix.size())));
    place.texts[document] = path; // also after a failure: when syncing the folder failed, the file is there
    return createFile(m_disk, path, ownerOnly, content);
}

Status JournalFiles::open(Place& place)
{
    if (place.lock)
        return {};
    const Status made
        = place.isShared ? m_disk.makePrivateFolder(place.folder) : m_disk.makeFolders(place.folder);
    if (!made)
        return made;
    auto file = createLocked(
        m_disk,
        [&] {
            place.process = Uuid::random().toString();
            return place.lockOf(place.process);
        },
        ownerOnly);
    if (!file)
        return std::unexpected(file.error());
    place.lock = std::move(*file);
    return {};
}

/// Once for each place that texts go to, and again when that changes.
void JournalFiles::tell(const Place* place, const Error& refusal)
{
    if (std::exchange(m_told, place) == place || place == &m_places.front())
        return;
    const std::string kept = place ? "; kept in " + printable(place->folder) : "";
    m_log.line("Quillmark: journal not written: " + refusal.message + kept);
}

Status JournalFiles::remove(const Uuid& document)
{
    const std::lock_guard guard(m_mutex);
    Status all;
    for (Place& place : m_places) {
        if (auto status = removeFrom(place, document); !status)
            all = status;
    }
    return all;
}

Status JournalFiles::removeFrom(Place& place, const Uuid& document)
{
    const auto text = place.texts.find(document);
    if (text == place.texts.end())
        return {};
    if (auto status = m_disk.remove(text->second); !status && status.error().code != ENOENT)
        return status;
    place.texts.erase(text);
    return {};
}

void JournalFiles::useLastResorts()
{
    const std::lock_guard guard(m_mutex);
    m_inUse = m_places.size();
}

void JournalFiles::close()
{
    const std::lock_guard guard(m_mutex);
    for (Place& place : m_places) {
        if (place.lock && place.texts.empty())
            static_cast<void>(m_disk.remove(place.lockOf(place.process)));
        place.lock.reset();
    }
}

size_t JournalFiles::recoverLeftovers()
{
    const std::lock_guard guard(m_mutex);
    size_t count = 0;
    for (const Place& place : m_places) {
        // What somebody else put where a shared folder holds ours is not taken for words of this user's.
        const bool isOurs = !place.isShared
            || (m_disk.exists(place.folder) && m_disk.makePrivateFolder(place.folder).has_value());
        if (isOurs)
            count += recoverFrom(place);
    }
    return count;
}

size_t JournalFiles::recoverFrom(const Place& place)
{
    const auto entries = m_disk.list(place.folder);
    if (!entries)
        return 0;
    removeStaleTemporaries(m_disk, place.folder, *entries);
    std::set<std::string> processes;
    for (const FolderEntry& entry : *entries) {
        if (!isTemporaryName(entry.name) && entry.name.size() > uuidLength && entry.name[uuidLength] == '.')
            processes.insert(entry.name.substr(0, uuidLength));
    }
    processes.erase(place.process);
    size_t count = 0;
    for (const std::string& process : processes) {
        const auto lock = m_disk.openForWriting(place.lockOf(process));
        const bool isDead = lock ? (*lock)->tryLock() : lock.error().code == ENOENT;
        if (isDead)
            count += recoverTextsOf(process, place, *entries);
    }
    return count;
}

size_t JournalFiles::recoverTextsOf(
    const std::string& dead, const Place& place, const std::vector<FolderEntry>& entries)
{
    assert(dead.size() == uuidLength && dead != place.process);
    size_t count = 0;
    bool isComplete = true;
    for (const FolderEntry& entry : entries) {
        if (!entry.name.starts_with(dead) || entry.name == dead + std::string(lockSuffix))
            continue;
        const size_t nameStart = std::min(entry.name.size(), 2 * (uuidLength + 1));
        const bool isMoved
            = m_recovery.adopt(place.folder / entry.name, entry.name.substr(nameStart)).has_value();
        count += isMoved;
        isComplete &= isMoved;
    }
    if (isComplete)
        static_cast<void>(m_disk.remove(place.lockOf(dead)));
    return count;
}

} // namespace quillmark
