// The notes folder and one record for each note file in it: listing, naming and renaming, copies, the Trash.
// Ids and records are taken by value: what they were read from may change meanwhile.
// A failure is never fatal: an unreadable folder is an empty list, and the words of a note that cannot be
// written go to the recovery folder. What other programs do in the folder shows up half a second later. Main
// thread only; files are read and written before an operation returns.
#pragma once

#include "base/Observable.h"
#include "base/Scheduler.h"
#include "io/KnownFiles.h"
#include "io/RecoveryStore.h"
#include "io/WriteQueue.h"
#include "notes/Note.h"
#include "platform/FSWatcher.h"
#include "platform/Log.h"
#include "platform/Trash.h"
#include "platform/UserDefaults.h"
#include "text/SearchKey.h"

#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace quillmark {

/// What the store needs of the world. All of it outlives the store.
struct NoteStoreServices {
    Scheduler& scheduler;
    FileSystem& files;
    Log& log;
    UserDefaults& defaults;
    Trash& trash;
    WriteQueue& writeQueue;
    RecoveryStore& recovery;
    KnownFiles& known;
    FileWatching& watching;
    Path defaultFolder;
};

class NoteStore {
public:
    using Notes = std::vector<Note>;

    /// Takes the folder that the user once chose, or the default one, makes it when it is missing, and lists
    /// it.
    explicit NoteStore(NoteStoreServices services);
    NoteStore(const NoteStore&) = delete;
    NoteStore& operator=(const NoteStore&) = delete;

    /// Newest first; new notes and copies stand in front until something is saved.
    const Observable<Notes>& notes = m_notes;
    const Observable<Path>& folderURL = m_folderURL;

    const Note* find(const Uuid& id) const; ///< null when there is none; valid until `notes` changes

    // The folder.
    bool setNotesFolder(const Path& folder); ///< false, and nothing changes, when it cannot be used
    void resetNotesFolder(); ///< back to the default folder
    void reloadNotes(); ///< lists the folder from scratch; every record gets a new id

    // Search.
    const Observable<std::string>& searchQuery = m_searchQuery; ///< as typed
    const Observable<std::unordered_set<Uuid>>& contentMatchIDs
        = m_contentMatchIDs; ///< notes whose files contain the query
    const Observable<bool>& isSearchingContents = m_isSearchingContents; ///< more matches may come
    /// The notes whose title, preview or file contains the query, in the order of `notes`. Files are searched
    /// in the background, 0.2 s after the last call; titles and previews match at once.
    void updateSearchQuery(std::string_view text);
    std::vector<const Note*> filteredNotes() const; ///< valid until `notes` changes
    bool matchesSearch(const Note& note) const; ///< is among them

    // Other programs in the folder.
    /// Hears the ids of notes whose files changed on disk and of those whose files are gone. A file that has
    /// been renamed is gone, and new under a new id.
    std::function<void(const std::vector<Uuid>& changedIDs, const std::vector<Uuid>& removedIDs)>
        onExternalChanges;
    void watchAnew(); ///< and bring `notes` up to date soon
    void scheduleSync(); ///< 0.4 s after the last call
    void syncWithDisk(); ///< brings `notes` up to date; what is known keeps its id

    // Note files.
    Path uniqueNoteURL(std::string_view baseName); ///< the first of "Plan.txt", "Plan 2.txt" … that is free
    /// An empty "Untitled" note in front of the list. Its file never replaces another one; when it cannot be
    /// made, the first save makes it.
    Note createNote();
    /// Asks for the file to be moved to the Trash and drops the record. `done`, when there is one, hears
    /// whether the Trash has the file; one that stayed is listed again by the next sync.
    void trashNote(Note note, Trash::Done done = nullptr);
    /// Takes the note's file out of the Trash again, under the first free name of its folder, as a new record
    /// in front of the list. `done` gets that record, or why there is none; not once the store is gone.
    void restoreTrashedNote(const Note& note, std::function<void(const Result<Note>&)> done);
    std::optional<Note> duplicateNote(Note note); ///< nothing when the file could not be copied
    /// With line feeds; updates the record. A text that could not be written, which the log says too, is in
    /// the recovery folder if that took it. ENOENT when there is no such note.
    Status saveNoteText(const Rope& text, Uuid id);
    /// Keeps a text that could not be saved over `path` as a new note beside it. Nothing when that failed
    /// too: the caller still has the text.
    std::optional<Path> writeConflictCopy(const Rope& text, const Path& path);

    /// The text of a note is in its file, or queued to be: refreshes the record and sorts the list.
    /// `byteSize` is that of the file as written. The file gets its title's name 5 s after the last save.
    void noteDidSave(Uuid id, const Rope& text, int64_t byteSize);
    void setByteSize(Uuid id, int64_t byteSize); ///< of a file that has been written
    void renameFileIfNeeded(Uuid id); ///< now instead of later

    /// Calls `slot(from, to)`, both paths, after a note's file got another name.
    template <class Slot> [[nodiscard]] Connection onRename(Slot slot)
    {
        return Connection(m_renamed.connect(std::move(slot)));
    }

private:
    Path resolveFolder();
    void useFolder(const Path& folder);
    void clearSearch();
    void startContentSearch();
    void startWatchingFolder();
    bool isOnItsWay(const Note& note) const;
    bool wasReported(const Uuid& id, const FileInfo& file);
    struct OtherVersion;
    std::optional<OtherVersion> otherVersion(const Note& note, const FileInfo& file);
    void compareLater(const Note& note, const FileInfo& file);
    std::vector<Uuid> bringUpToDate(Notes& all, std::span<const OtherVersion> versions, Folder& folder);
    void scheduleRename(Uuid id);
    Result<Path> makeFile(
        const Path& folder, std::string_view baseName, const std::function<Status(const Path&)>& make);
    bool isPromised(const Path& path) const;
    Status moveToName(const Note& note, std::string_view baseName);
    Result<Note> takeBack(const Path& trashed, Note note);
    void insertInFront(Note note);
    void update(const Note& note);

    NoteStoreServices m_services;
    Variable<Notes> m_notes;
    Variable<Path> m_folderURL;
    Variable<std::string> m_searchQuery;
    Variable<std::unordered_set<Uuid>> m_contentMatchIDs;
    Variable<bool> m_isSearchingContents{false};
    SearchKey m_searchKey{u""};
    Task m_searchDelay;
    std::vector<Task> m_searchTasks; ///< one for each part of the notes
    std::unique_ptr<FSWatcher> m_folderWatcher;
    Task m_syncTask;
    std::unordered_set<Uuid> m_unmade; ///< new notes whose files could not be made yet
    uint64_t m_folderDevice = 0; ///< on which the folder was last listed
    std::unordered_map<Uuid, Task> m_comparisons; ///< of large files, on other threads
    std::unordered_map<Uuid, FileStamp> m_reported; ///< other programs' versions that were heard of
    std::unordered_map<Uuid, Task> m_renameTasks;
    Signal<const Path&, const Path&> m_renamed;
    std::shared_ptr<NoteStore> m_self; ///< owns nothing; gone with the store, for what comes later
};

} // namespace quillmark
