// The central model: the open tabs, the active document with its text and facts, loading, saving, the session
// and notices. There is one; LedgerlyApp makes it before any window and it lives until the process ends. Main
// thread only; slow work runs on others and hands values back.
#pragma once

#include "base/Observable.h"
#include "base/Scheduler.h"
#include "core/EditorSettings.h"
#include "core/OpenDocument.h"
#include "core/RecoveredTexts.h"
#include "core/TabList.h"
#include "io/JournalFiles.h"
#include "notes/NoteStore.h"
#include "platform/Appearance.h"
#include "platform/UserDefaults.h"
#include "text/TextStatistics.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmark {

/// What the model needs of the world. All of it outlives the AppState.
struct AppServices {
    Scheduler& scheduler;
    FileSystem& files;
    Log& log;
    UserDefaults& defaults;
    Trash& trash;
    Appearance& appearance;
    DocumentWriter& writer;
    RecoveryStore& recovery;
    FileWatching& watching;
    Path defaultNotesFolder;
    JournalFolders journalFolders; ///< hold the text of documents while they are dirty
};

/// Words that are not in their file because a save failed.
struct UnsafeWords {
    std::string name; ///< of the document, UTF-8
    std::string text; ///< what happened and where the words are, in Russian

    bool operator==(const UnsafeWords&) const = default;
};

/// A note that was deleted a moment ago and can be taken back.
struct TrashedNote {
    Note note; ///< as it was
    std::string name; ///< its title, UTF-8
    std::optional<Rope> lastWords; ///< that its file does not have

    bool operator==(const TrashedNote& other) const { return note == other.note; }
};

class AppState {
    struct Impl;
    std::unique_ptr<Impl> m_impl; // made before and destroyed after what is public

    Variable<AppearanceMode> m_appearanceMode{AppearanceMode::system};
    Variable<bool> m_showLineNumbers{true};
    Variable<bool> m_showMinimap{true};
    Variable<bool> m_showInvisibles{false};
    Variable<bool> m_goToLineVisible{false};
    Variable<double> m_viewportStart{0.0};
    Variable<double> m_viewportFraction{1.0};
    Variable<int64_t> m_cursorLine{1};
    Variable<int64_t> m_cursorColumn{1};
    Variable<Language> m_syntaxLanguage{Language::plain};
    Variable<TextStats> m_stats;
    Variable<std::vector<float>> m_minimapSamples;
    Variable<std::optional<std::string>> m_notice;
    Variable<std::optional<UnsafeWords>> m_unsafeWords;
    Variable<std::optional<TrashedNote>> m_trashedNote;
    Variable<bool> m_isSaved{true};

public:
    /// Lists the notes, restores the session and loads the active document. Afterwards there is always an
    /// active tab.
    explicit AppState(AppServices services);
    ~AppState(); ///< writes what is queued, but not the active document: that is willTerminate()
    AppState(const AppState&) = delete;
    AppState& operator=(const AppState&) = delete;

    /// The one that lives, null before and after. For the application delegate alone.
    static AppState* shared();

    using Tabs = TabList::Tabs;
    using AllowBackground = OpenDocument::AllowBackground;

    NoteStore store;
    EditorSettings settings;
    RecoveredTexts recovered;

    // The view toggles; setting one of the first three stores it.
    const Observable<AppearanceMode>& appearanceMode = m_appearanceMode;
    const Observable<bool>& showLineNumbers = m_showLineNumbers;
    const Observable<bool>& showMinimap = m_showMinimap;
    const Observable<bool>& showInvisibles = m_showInvisibles;
    const Observable<bool>& goToLineVisible = m_goToLineVisible; ///< the field for a line number is shown
    void setAppearanceMode(AppearanceMode mode); ///< takes effect at once
    void setShowLineNumbers(bool isShown);
    void setShowMinimap(bool isShown);
    void setShowInvisibles(bool isShown);
    void setGoToLineVisible(bool isShown);

    // What the views show.
    const Observable<double>& viewportStart
        = m_viewportStart; ///< top of the visible part as a fraction of the document's height
    const Observable<double>& viewportFraction = m_viewportFraction; ///< its height, likewise
    const Observable<Language>& syntaxLanguage = m_syntaxLanguage;
    const Observable<Tabs>& tabs;
    const Observable<std::optional<Uuid>>& activeTabID;
    const Observable<TextEncoding>& encodingName;
    const Observable<LineEnds>& lineEndings;
    const Observable<bool>& isReadOnly;
    const Observable<bool>& isDirty;
    /// Every word of the active document is in its file or in the recovery folder.
    const Observable<bool>& isSaved = m_isSaved;
    const Observable<int64_t>& cursorLine = m_cursorLine; ///< 1-based
    const Observable<int64_t>& cursorColumn = m_cursorColumn; ///< 1-based, in units
    const Observable<int64_t>& loadGeneration; ///< grows when the editor must take `currentText`
    const Observable<bool>& isLoading;
    const Observable<TextStats>& stats = m_stats; ///< of the active text, a moment old
    const Observable<std::vector<float>>& minimapSamples = m_minimapSamples; ///< of the same text
    const Observable<std::optional<std::string>>& notice = m_notice;
    /// Set as soon as a save fails, until the words are safe; those of the active document first.
    const Observable<std::optional<UnsafeWords>>& unsafeWords = m_unsafeWords;
    /// Set for 10 s once the Trash has a note that the user deleted.
    const Observable<std::optional<TrashedNote>>& trashedNote = m_trashedNote;

    // What the editor reports.
    void setCursor(int64_t line, int64_t column); ///< both 1-based
    void setViewport(double start, double fraction); ///< of the document's height

    // The active document.
    const Rope& currentText() const; ///< as last loaded or last taken from the editor
    Rope editorText() const; ///< what the user sees now
    std::shared_ptr<EditorTab> activeTab() const; ///< null when there is none
    std::optional<Uuid> activeNoteID() const;
    Tabs fileTabs() const;
    /// The live editor; null when there is none. The editor sets it and resets it when it goes. It takes
    /// `currentText` while it is told of a new `loadGeneration`, so that its text and the model's never
    /// belong to different documents.
    void setTextView(PlainTextView* view);
    PlainTextView* textView() const;

    // Tabs.
    void newNote(); ///< an empty "Untitled" note in a new tab at the end
    void openNote(Uuid noteID);
    void openFile(const Path& path); ///< any path, also of nothing; the same file never gets a second tab
    void selectTab(Uuid tabID);
    void selectAdjacentTab(int offset); ///< +1 next, −1 previous, around the ends
    void closeTab(Uuid tabID); ///< the last one is replaced by a fresh note
    void deleteNote(const Note& note); ///< moves its file to the Trash and closes its tab
    void restoreTrashedNote(); ///< with its last words, in a tab of its own; nothing when there is none
    void commitActiveNoteTitle(); ///< gives the active note's file its title's name now

    // Editing and saving.
    void textDidChange(); ///< the editor calls it after each edit by the user
    /// Writes the active document when it is dirty. On failure it stays dirty and the next flush tries again.
    void flushSave(AllowBackground allowBackground);

    // The document as a whole.
    void setLineEndings(LineEnds value); ///< the file is written anew
    void setLanguageOverride(Language language); ///< stays with the tab
    /// Chooses the language of a text that has none by what was pasted into it. For the editor's own view.
    void detectLanguageAfterPaste(std::u16string_view text, const PlainTextView& view);
    /// Brings the place at this fraction of the document's height to the middle, where there is room.
    void scrollEditorToFraction(double fraction); ///< 0 to 1
    void goToLine(int64_t line); ///< 1-based; the last line where there are fewer
    /// What the save panel starts with.
    struct SaveSuggestion {
        Path folder;
        std::string name; ///< UTF-8, with the extension
        std::string extension; ///< without the dot
    };
    std::optional<SaveSuggestion> saveSuggestion() const; ///< nothing without a document
    void saveAs(const Path& path); ///< writes the text there; the tab shows the new file from then on
    /// Where a panel starts: beside the active file, else where a file was last chosen in a panel, in this
    /// run or an earlier one. Nothing when there is no such folder.
    std::optional<Path> panelFolder() const;
    void rememberPanelFolder(const Path& chosenFile);
    enum class Immediate { no, yes };
    void scheduleStats(Immediate immediate); ///< counts in the background, else 0.3 s after the last call

    /// Makes a note of a copy of it; one that is too large to be edited is opened where it is.
    void openRecovered(const RecoveredEntry& entry);

    // The notes folder.
    void chooseNotesFolder(const Path& folder);
    void reloadNotesFolder(); ///< after it changed: its newest note in front of the file tabs

    // Session, notices, appearance.
    void saveSession();
    void showNotice(std::string text);
    void dismissNotice();
    void applyAppearance();

    // What the application delegate does.
    void willResignActive();
    void didBecomeActive(); ///< looks whether files have changed meanwhile
    void willTerminate(); ///< when it returns, every word is on the disk, or in the recovery folder

    void checkInvariants() const; ///< asserts those of the tabs, the document and the unsaved words
};

} // namespace quillmark
