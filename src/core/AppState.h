// The central model: the open tabs, the active document with its text and facts, loading, saving, the session
// and notices. There is one; LedgerlyApp makes it before any window and it lives until the process ends. Main
// thread only; slow work runs on others and hands values back.
#pragma once

#include "base/Observable.h"
#include "base/Scheduler.h"
#include "core/EditorSettings.h"
#include "core/EditorTab.h"
#include "core/RecoveredTexts.h"
#include "editor/PlainTextView.h"
#include "io/DocumentWriter.h"
#include "io/JournalFiles.h"
#include "io/RecoveryStore.h"
#include "io/TextFileReader.h"
#include "io/WriteQueue.h"
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

class AppState {
    struct Impl;
    std::unique_ptr<Impl> m_impl; // made before and destroyed after what is public

public:
    /// Lists the notes, restores the session and loads the active document. Afterwards there is always an
    /// active tab.
    explicit AppState(AppServices services);
    ~AppState(); ///< writes what is queued, but not the active document: that is willTerminate()
    AppState(const AppState&) = delete;
    AppState& operator=(const AppState&) = delete;

    /// The one that lives, null before and after. For the application delegate alone.
    static AppState* shared();

    using Tabs = std::vector<std::shared_ptr<EditorTab>>;

    NoteStore store;
    EditorSettings settings;
    RecoveredTexts recovered;

    // The view toggles; setting one stores it and takes effect at once.
    Variable<AppearanceMode> appearanceMode{AppearanceMode::system};
    Variable<bool> showLineNumbers{true};
    Variable<bool> showMinimap{true};

    // What the views show.
    Variable<double> viewportStart{0.0}; ///< top of the visible part as a fraction of the document's height
    Variable<double> viewportFraction{1.0}; ///< its height, likewise
    Variable<Language> syntaxLanguage{Language::plain};
    Variable<Tabs> tabs;
    Variable<std::optional<Uuid>> activeTabID;
    Variable<std::string> encodingName{std::string("UTF-8")};
    Variable<std::string> lineEndings{std::string("LF")}; ///< "LF" or "CRLF"
    Variable<bool> isReadOnly{false};
    Variable<bool> isDirty{false};
    Variable<int64_t> cursorLine{1}; ///< 1-based
    Variable<int64_t> cursorColumn{1}; ///< 1-based, in units
    Variable<int64_t> loadGeneration{0}; ///< grows when the editor must take `currentText`
    Variable<bool> isLoading{false};
    Variable<TextStats> stats; ///< of the active text, a moment old
    Variable<std::vector<float>> minimapSamples; ///< of the same text
    Variable<bool> showInvisibles{false};
    Variable<bool> goToLineVisible{false}; ///< the field for a line number is shown
    Variable<std::optional<std::string>> notice;

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
    void commitActiveNoteTitle(); ///< gives the active note's file its title's name now

    // Editing and saving.
    void textDidChange(); ///< the editor calls it after each edit by the user
    enum class AllowBackground { no, yes };
    /// Writes the active document when it is dirty. On failure it stays dirty and the next flush tries again.
    void flushSave(AllowBackground allowBackground);

    // The document as a whole.
    void setLineEndings(std::string_view value); ///< "LF" or "CRLF"; the file is written anew
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
};

} // namespace quillmark
