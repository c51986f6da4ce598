// Following what other programs do in the notes folder.
#include "notes/NoteStore.h"

#include "notes/NoteFiles.h"
#include "notes/NoteNames.h"

#include <algorithm>
#include <chrono>
#include <unordered_map>

namespace quillmark {
namespace {

using namespace std::chrono_literals;

constexpr Duration syncDelay = 400ms; ///< from the last notice of a burst
constexpr Duration timeTolerance = 1s; ///< a save stamps its record a little later than its file

using Files = std::unordered_map<std::string_view, const FolderEntry*>; ///< by name

bool differs(const Note& note, const FileInfo& file)
{
    return std::chrono::abs(note.modifiedAt - file.modified) > timeTolerance || note.byteSize != file.size;
}

} // namespace

void NoteStore::startWatchingFolder()
{
    m_folderWatcher = m_services.watching.watchFolder(folderURL.get(), [this] { scheduleSync(); });
}

void NoteStore::scheduleSync()
{
    m_syncTask = m_services.scheduler.after(syncDelay, [this] { syncWithDisk(); });
}

void NoteStore::syncWithDisk()
{
    m_syncTask.cancel();
    const auto entries = m_services.files.list(folderURL.get());
    Files files; ///< empty when there is no folder
    if (entries) {
        for (const FolderEntry& entry : *entries) {
            if (isNoteFile(entry))
                files.emplace(entry.name, &entry);
        }
    }

    Notes kept;
    kept.reserve(files.size());
    std::vector<Uuid> changedIDs;
    std::vector<Uuid> removedIDs;
    for (const Note& note : notes.get()) {
        auto file = files.extract(note.url.filename().native());
        if (file.empty() && isOnItsWay(note))
            kept.push_back(note);
        else if (file.empty())
            removedIDs.push_back(note.id);
        else if (bringUpToDate(kept.emplace_back(note), file.mapped()->info))
            changedIDs.push_back(note.id);
    }
    std::vector<const FolderEntry*> newFiles;
    for (const auto& [name, entry] : files)
        newFiles.push_back(entry);
    std::ranges::move(makeRecords(m_services.files, folderURL.get(), newFiles), std::back_inserter(kept));
    sortNewestFirst(kept);
    notes.set(std::move(kept));
    if (onExternalChanges && !(changedIDs.empty() && removedIDs.empty()))
        onExternalChanges(changedIDs, removedIDs);
}

/// Whether a note without a file is about to get one: its text is queued, or its first save has yet to come.
bool NoteStore::isOnItsWay(const Note& note) const
{
    return m_services.writeQueue.pendingText(note.url).has_value() || m_unmade.contains(note.id);
}

/// True when another program has changed the file. A save of our own, finished or queued, is not one.
bool NoteStore::bringUpToDate(Note& note, const FileInfo& file)
{
    if (m_services.writeQueue.pendingText(note.url))
        return false;
    const auto state = m_services.known.stateOf(m_services.files, note.url, file);
    const bool isOther = state == KnownFiles::State::changed && note.modifiedAt != file.modified;
    if (!isOther && !differs(note, file))
        return false;
    note.modifiedAt = file.modified;
    note.byteSize = file.size;
    auto [title, preview] = titleAndPreview(readLeadingText(m_services.files, note.url));
    // A file that was opened since it changed is known, but its record is not up to date.
    const bool isNew = state != KnownFiles::State::asKnown || note.title != title || note.preview != preview;
    note.title = std::move(title);
    note.preview = std::move(preview);
    return isNew;
}

} // namespace quillmark
