// The private side of AppState. Its operations are grouped by topic, a file each: tabs, loading, saving,
// changes by other programs, what happens to text that would be given up, the session.
#pragma once

#include "core/AppState.h"
#include "io/Journal.h"
#include "io/ReadFile.h"

#include <map>

namespace quillmark {

/// From this size on (512 KiB) a document is read, and where nobody waits for it written, in the background.
inline constexpr int64_t backgroundThreshold = 512 * 1024;

/// How much of a text tells its language.
inline constexpr int64_t sniffedCharacters = 2048;
inline constexpr int64_t sniffedUnits = 64 * sniffedCharacters; // bounds what endless combining marks cost

struct AppState::Impl {
    /// The active document as it was loaded.
    struct Document {
        Uuid id = Uuid::random(); ///< names its journal; another one at every load from disk
        std::optional<Uuid>
            tabID; ///< whose text it is: a flush never writes one tab's text to another one's file
        std::optional<Error> unreadable; ///< bytes are there that could not be read: never written over
        bool isLossy = false; ///< some of its bytes were no text, and writing it replaces them
        Task keeping; ///< of these bytes, before a save that nobody waits for
    };
    /// A document whose text the write queue has taken over.
    struct QueuedSave {
        Uuid document;
        std::optional<Uuid> note; ///< whose record learns the size of the file as written
        LineEnds lineEnds = LineEnds::lf;
    };

    Impl(AppState& owner, AppServices world);

    // Tabs.
    std::shared_ptr<EditorTab> findTab(const Uuid& id) const;
    std::shared_ptr<EditorTab> findTab(const TabSource& source) const;
    void appendAndSelect(std::shared_ptr<EditorTab> tab);
    void finishTyping();
    void leaveActiveDocument();
    bool isBlankDocument() const;
    bool isStillEmpty(const Note& note, bool wasActive);
    void removeTab(Uuid id);
    void showOnly(const Note& note);
    void showFreshNote();
    void showFirstNote();
    std::optional<Path> urlOf(const EditorTab& tab) const;

    // Loading.
    void loadActiveDocument();
    bool loadQueuedText(const Path& url);
    void loadInBackground(const Path& url);
    void publish(const Path& url, Result<TextFile> read);
    void applyLoadedDocument(TextFileReader::Result result);
    void replaceText(Rope text);
    void detectLanguageFromContent();

    // Saving.
    void scheduleSave();
    void keepBytesThenSave(const Path& url);
    Result<int64_t> write(const EditorTab& tab, const Path& url, AllowBackground allowBackground);
    Status keepBytes(const Path& url);
    Status mayReplace(const Path& url);
    bool isGone(const Path& url);
    LineEnds lineEnds() const;
    void announceEncoding(EditorTab& tab);

    // The document as a whole.
    void countNow();
    Status writeUnder(const Path& url);
    void adoptSavedAsFile(const Path& url, EditorTab& tab);

    // Other programs.
    void watchActiveFile(const EditorTab& tab);
    void scheduleFileCheck(Duration delay);
    void checkActiveFileOnDisk();
    void handleExternalNoteChanges(const std::vector<Uuid>& changedIDs, const std::vector<Uuid>& removedIDs);
    void activeFileChanged(const Path& url);
    void activeNoteHasAnotherVersion(const Path& url);
    void activeNoteChanged(Path url);
    void activeNoteRemoved(const Uuid& tabID);
    void keepAsConflictCopy(const Uuid& id, const Rope& text, const Path& url);
    void queuedNoteWasChanged(const Path& url);
    void ifChanged(const Path& url, std::function<void()> then);
    bool isWrittenAlready(const Path& url, const FileInfo& info);

    // What would be given up.
    void rescueUnsavedText();
    void keep(const Uuid& document, Journal::Snapshot text);
    void settleQueuedText(const Path& url);
    void keepWhatCouldNotBeKept();
    void keepWhatCouldNotBeWritten();
    std::optional<Journal::Snapshot> journalSnapshot(const Uuid& id) const;
    void queuedWriteEnded(const WriteQueue::Outcome& outcome);

    // Session.
    void restoreSession();

    AppState& app;
    AppServices services;
    WriteQueue writeQueue;
    Journal journal;

    Document document;
    Rope currentText;
    PlainTextView* textView = nullptr;
    std::map<std::string, QueuedSave> queuedSaves; ///< by the bytes of the path
    std::map<Uuid, Journal::Snapshot> unkept; ///< by document: not even the recovery folder took them
    std::optional<Uuid> rescued; ///< the document whose text was last kept

    bool isSessionRestored = false; ///< before, nothing may be written over the stored one
    std::unique_ptr<FSWatcher> activeFileWatcher; ///< while a file tab is active
    Task fileCheckTask;
    Task comparing; ///< a large file with what we know of it
    std::optional<SteadyTime> lastFlushAt;

    Task saveTask;
    Task loadTask;
    Task statsTask;
    Task noticeTask;
    std::vector<Connection> connections;
};

inline constexpr const char* fileChangedNotice = "Файл изменён снаружи — ваша версия будет сохранена поверх";

/// Whether an error says that there is no file, rather than that it cannot be read.
bool saysMissing(const Error& error);

/// Absolute, without "." and "..", and without a slash at the end.
Path standardised(const Path& path);

/// A file's name for the user; bytes that are not UTF-8 show as U+FFFD.
std::string displayName(const Path& url);

} // namespace quillmark
