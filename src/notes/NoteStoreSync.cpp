// Following what other programs do in the notes folder.
#include "notes/NoteStore.h"

#include "io/FileVerdict.h"
#include "notes/NoteFiles.h"
#include "notes/NoteNames.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <unordered_map>

namespace quillmark {
namespace {

using namespace std::chrono_literals;

constexpr Duration syncDelay = 400ms; ///< from the last notice of a burst
constexpr Duration unreachablePause = 2s; ///< before a disk that did not answer is asked again
constexpr Duration timeTolerance = 1s; ///< a save stamps its record a little later than its file

using Files = std::unordered_map<std::string_view, const FolderEntry*>; ///< by name

bool differs(const Note& note, const FileInfo& file)
{
    return std::chrono::abs(note.modifiedAt - file.modified) > timeTolerance || note.byteSize != file.size;
}

} // namespace

/// A note's file that its record does not show as it is.
struct NoteStore::OtherVersion {
    size_t place = 0; ///< of the record
    FileInfo file;
    bool isKnown = false; ///< the file is as it was last read or written here
};

void NoteStore::startWatchingFolder()
{
    m_folderWatcher = m_services.watching.watchFolder(folderURL.get(), [this] { scheduleSync(); });
}

void NoteStore::watchAnew()
{
    startWatchingFolder();
    scheduleSync();
}

void NoteStore::scheduleSync()
{
    m_syncTask = m_services.scheduler.after(syncDelay, [this] { syncWithDisk(); });
}

void NoteStore::syncWithDisk()
{
    m_syncTask.cancel();
    const auto folder = m_services.files.openFolder(folderURL.get());
    const auto entries = folder ? listNoteFiles(m_services.scheduler, **folder)
                                : Result<std::vector<FolderEntry>>(std::unexpected(folder.error()));
    if (!entries && !isMissing(m_services.files, folderURL.get(), entries.error(), m_folderDevice)) {
        m_syncTask = m_services.scheduler.after(unreachablePause, [this] { syncWithDisk(); });
        return; // a disk that does not answer, or is not mounted, says nothing of the notes
    }
    Files files; ///< empty when there is no folder; in the end those that are no notes yet
    if (entries) {
        files.reserve(entries->size());
        for (const FolderEntry& entry : *entries)
            files.emplace(entry.name, &entry);
    }

    std::vector<Uuid> changedIDs;
    std::vector<Uuid> removedIDs;
    m_notes.modify([&](Notes& all) {
        std::vector<OtherVersion> versions;
        size_t kept = 0;
        for (Note& note : all) {
            const auto file = files.extract(fileName(note));
            if (file.empty() && !isOnItsWay(note)) {
                removedIDs.push_back(note.id);
                continue;
            }
            if (file)
                m_unmade.erase(note.id);
            if (auto version = file ? otherVersion(note, file.mapped()->info) : std::nullopt) {
                version->place = kept;
                versions.push_back(*version);
            }
            assert(&all[kept] <= &note);
            if (&all[kept] != &note)
                all[kept] = std::move(note);
            ++kept;
        }
        all.resize(kept);
        std::vector<std::string> newFiles;
        if (folder) {
            changedIDs = bringUpToDate(all, versions, **folder);
            for (const auto& [name, entry] : files)
                newFiles.emplace_back(name);
            std::ranges::move(makeRecords(m_services.scheduler, **folder, folderURL.get(), newFiles),
                std::back_inserter(all));
        }
        const bool isSorted = isNewestFirst(all);
        sortNewestFirst(all);
        return !versions.empty() || !removedIDs.empty() || !newFiles.empty() || !isSorted;
    });
    if (onExternalChanges && !(changedIDs.empty() && removedIDs.empty()))
        onExternalChanges(changedIDs, removedIDs);
}

/// Whether a note without a file is about to get one: its text is queued, or its first save has yet to come.
bool NoteStore::isOnItsWay(const Note& note) const
{
    return m_services.writeQueue.pendingText(note.url).has_value() || m_unmade.contains(note.id);
}

/// A version stays another program's until somebody reads it, and is news only once.
bool NoteStore::wasReported(const Uuid& id, const FileInfo& file)
{
    const auto [entry, isFirst] = m_reported.try_emplace(id, FileStamp(file, {}));
    const bool isSame = !isFirst && entry->second.matches(file);
    entry->second = FileStamp(file, {});
    return isSame;
}

std::optional<NoteStore::OtherVersion> NoteStore::otherVersion(const Note& note, const FileInfo& file)
{
    if (m_services.writeQueue.pendingText(note.url))
        return std::nullopt;
    const auto state = m_services.known.stateOf(m_services.files, note.url, file, KnownFiles::comparedAtOnce);
    if (state == KnownFiles::State::undecided) {
        compareLater(note, file);
        return std::nullopt;
    }
    const bool isOther = state == KnownFiles::State::changed && !wasReported(note.id, file);
    if (!isOther && !differs(note, file))
        return std::nullopt;
    return OtherVersion{.place = 0, .file = file, .isKnown = state == KnownFiles::State::asKnown};
}

/// The verdict is remembered, for the next look at the folder.
void NoteStore::compareLater(const Note& note, const FileInfo& file)
{
    m_comparisons[note.id] = m_services.scheduler.background(
        Priority::utility,
        [&known = m_services.known, &files = m_services.files, url = note.url, file](
            const CancelToken&) { return known.stateOf(files, url, file); },
        [this, id = note.id](KnownFiles::State state) {
            m_comparisons.erase(id);
            const bool isUnreadable = state == KnownFiles::State::undecided;
            m_syncTask = m_services.scheduler.after(
                isUnreadable ? unreachablePause : Duration::zero(), [this] { syncWithDisk(); });
        });
}

/// Returns the notes that another program has changed. A save of our own, finished or queued, is not a
/// change.
std::vector<Uuid> NoteStore::bringUpToDate(Notes& all, std::span<const OtherVersion> versions, Folder& folder)
{
    std::vector<TitleAndPreview> read(versions.size());
    m_services.scheduler.parallel(versions.size(), [&](size_t first, size_t end) {
        for (size_t i = first; i < end; ++i)
            read[i] = titleAndPreview(readLeadingText(folder, std::string(fileName(all[versions[i].place]))));
    });
    std::vector<Uuid> changed;
    for (size_t i = 0; i < versions.size(); ++i) {
        const OtherVersion& version = versions[i];
        Note& note = all[version.place];
        auto& [title, preview] = read[i];
        // A file that was opened since it changed is known, but its record is not up to date.
        if (!version.isKnown || note.title != title || note.preview != preview)
            changed.push_back(note.id);
        note.modifiedAt = version.file.modified;
        note.byteSize = version.file.size;
        note.title = std::move(title);
        note.preview = std::move(preview);
    }
    return changed;
}

} // namespace quillmark
