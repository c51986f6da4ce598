// The private side of AppState: how tabs, the open document, the unsaved words and the notes come together.
// Its operations are grouped by topic, a file each.
#pragma once

#include "core/AppState.h"

namespace quillmark {

/// How much of a text tells its language.
inline constexpr int64_t sniffedCharacters = 2048;
inline constexpr int64_t sniffedUnits = 64 * sniffedCharacters; // bounds what endless combining marks cost

struct AppState::Impl {
    Impl(AppState& owner, AppServices world);

    // Tabs.
    void openAndSelect(TabSource source, std::string title);
    void leaveActiveDocument();
    bool isBlankDocument() const;
    bool isStillEmpty(const Note& note, bool wasActive);
    void offerToRestore(TrashedNote trashed);
    void removeTab(const Uuid& id);
    void showOnly(const Note& note);
    void showFreshNote();
    void showFirstNote();
    std::optional<Path> urlOf(const EditorTab& tab) const;

    // Loading.
    void loadActiveDocument();
    void willShow();
    void didShow();
    void detectLanguageFromContent();

    // Saving.
    void scheduleSave(Duration delay);
    void saved(EditorTab& tab, const OpenDocument::Saved& saved);
    void saveFailed(const Error& error);
    void queuedTextSaved(const UnsavedWords::Events::Saved& saved);
    void announceEncoding(EditorTab& tab);
    void showSafety();

    // The document as a whole.
    void countNow();
    void adoptSavedAsFile(const Path& url, EditorTab& tab);

    // Other programs.
    void watchActiveFile(const EditorTab& tab);
    void scheduleFileCheck(Duration delay);
    void checkActiveFileOnDisk();
    void lookAtFile(const Path& url, std::function<void(FileVerdict)> then);
    void handleExternalNoteChanges(const std::vector<Uuid>& changedIDs, const std::vector<Uuid>& removedIDs);
    void activeFileChanged(FileVerdict verdict);
    void activeNoteHasAnotherVersion();
    void activeNoteChanged();
    void activeNoteRemoved(const Uuid& tabID);
    bool keepAsConflictCopy(const Uuid& document, const DocumentFacts& facts, const Rope& text);
    void queuedNoteWasChanged(const Uuid& document, const DocumentFacts& facts, const Rope& text);

    // Session.
    void restoreSession();

    AppState& app;
    AppServices services;
    TabList tabs;
    UnsavedWords words;
    OpenDocument document;
    FileLook fileLook;

    bool isSessionRestored = false; ///< before, nothing may be written over the stored one
    std::unique_ptr<FSWatcher> activeFileWatcher; ///< while a file tab is active
    Task fileCheckTask;
    Task looking; ///< at a large file, on another thread
    std::optional<SteadyTime> lastFlushAt;
    size_t failedSaves = 0; ///< one after another

    Task saveTask;
    Task statsTask;
    Task noticeTask;
    Task trashedNoteTask;
    std::vector<Connection> connections;
    std::shared_ptr<Impl> self{
        this, [](Impl*) {}}; ///< owns nothing; gone with the model, for what comes later
};

inline constexpr Duration saveDelay = std::chrono::milliseconds(800); ///< from the last edit to its save

inline constexpr const char* fileChangedNotice = "Файл изменён снаружи — ваша версия будет сохранена поверх";

/// Absolute, without "." and "..", and without a slash at the end.
Path standardised(const Path& path);

/// A file's name for the user; bytes that are not UTF-8 show as U+FFFD.
std::string displayName(const Path& url);

/// A path for the user, likewise.
std::string displayPath(const Path& path);

} // namespace quillmark
