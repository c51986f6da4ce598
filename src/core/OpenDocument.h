// The active document: its file, its text as loaded and as the editor shows it, encoding, line ends, whether
// it may be edited, and whether something is not yet written. It loads, saves and compares itself, and knows
// nothing of tabs but an id for whose it is.
#pragma once

#include "base/Observable.h"
#include "core/UnsavedWords.h"
#include "editor/PlainTextView.h"
#include "io/FileVerdict.h"
#include "io/ReadFile.h"

namespace quillmark {

/// From this size on (512 KiB) a document is read, and where nobody waits for it written, in the background.
inline constexpr int64_t backgroundThreshold = 512 * 1024;

/// When a disk that did not answer is asked again.
inline constexpr Duration unreachablePause = std::chrono::seconds(2);

/// Main thread only.
class OpenDocument {
    Variable<TextEncoding> m_encodingName{TextEncoding::utf8};
    Variable<LineEnds> m_lineEndings{LineEnds::lf};
    Variable<bool> m_isReadOnly{false};
    Variable<bool> m_isDirty{false};
    Variable<bool> m_isLoading{false};
    Variable<int64_t> m_loadGeneration{0};

public:
    enum class AllowBackground { no, yes };

    struct Services {
        Scheduler& scheduler;
        FileSystem& files;
        Log& log;
        DocumentWriter& writer;
        RecoveryStore& recovery;
    };
    struct Events {
        std::function<void()> willShow; ///< another text is about to be published
        std::function<void()> didShow; ///< and has been
        std::function<void()> saveAgain; ///< what a save had to wait for is done
        /// The text that is shown may not be the file's: the disk did not give it, or it changed meanwhile.
        std::function<void(Duration delay)> lookAgain;
        std::function<void(const Path& copy)> bytesKept; ///< of a file that is no text, before it is replaced
    };

    OpenDocument(Services services, UnsavedWords& words, Events events);
    OpenDocument(const OpenDocument&) = delete;
    OpenDocument& operator=(const OpenDocument&) = delete;

    const Observable<TextEncoding>& encodingName = m_encodingName;
    const Observable<LineEnds>& lineEndings = m_lineEndings;
    const Observable<bool>& isReadOnly = m_isReadOnly;
    const Observable<bool>& isDirty = m_isDirty; ///< never while it is read-only
    const Observable<bool>& isLoading = m_isLoading;
    const Observable<int64_t>& loadGeneration
        = m_loadGeneration; ///< grows when the editor must take currentText()

    const Uuid& id() const { return m_id; } ///< another one at every load; names its record and its journal
    const std::optional<Uuid>& tabID() const { return m_tabID; } ///< whose text it is
    const Path& file() const { return m_file; } ///< empty while there is none
    bool isUnreadable() const { return m_unreadable.has_value(); }
    const Rope& currentText() const
    {
        return m_currentText;
    } ///< as last loaded or last taken from the editor
    Rope text() const; ///< what the user sees now

    /// The live editor, null when there is none. Words that are not written stay when it goes.
    void setTextView(PlainTextView* view);
    PlainTextView* textView() const { return m_textView; }
    void finishTyping(); ///< what an input method is still working on becomes a part of the text

    // Loading.
    struct Place {
        std::optional<Uuid> tabID;
        Path file;
        std::optional<Uuid> note; ///< whose file it is
        int64_t recordedSize = 0; ///< of a note; the file may have grown since
    };
    /// Brings a document in: at once, or in the background with an empty text until it is there. Words that
    /// nothing took are shown again instead of the file.
    void load(const Place& place);
    void showNothing(std::optional<Uuid> tabID);
    /// Reads the file anew. When the disk does not give it, what is shown stays.
    void reload();
    void moved(const Path& from, const Path& to); ///< a file has been renamed

    // Editing and saving.
    void edited(); ///< by the user
    bool setLineEndings(LineEnds lineEnds); ///< false, and nothing changes, where that makes no sense
    void vanished(); ///< the file has gone: what is shown counts as an edit
    void takeEditorText(); ///< as currentText()
    void becomeUtf8(); ///< as which it is written from now on

    struct Saved {
        int64_t bytes = 0; ///< of the file; of a queued text the least that it can be
        bool hasReplacedOutsideVersion = false;
    };
    /// Writes currentText(), or queues it. Nothing when that has to wait for a copy of bytes that are no
    /// text; saveAgain() comes then. It stays dirty until wasSaved().
    std::optional<Result<Saved>> save(AllowBackground allowBackground);
    Status saveAs(const Path& file); ///< currentText(); which is the document's file afterwards
    void wasSaved();
    void wordsWentElsewhere(); ///< to a conflict copy, the recovery folder or the ledger

    /// The unsaved words go to the recovery folder. False when not even that takes them: the ledger holds
    /// them.
    bool rescue(UnsavedWords::Retry retry = UnsavedWords::Retry::fileAndRecovery);
    bool isWrittenAlready() const; ///< another program has written just what a save would write
    DocumentFacts facts() const;

    void checkInvariants() const; ///< asserts them

private:
    enum class Reading { first, again };
    void begin(const Place& place);
    void read(Reading reading, int64_t size);
    void readInBackground(Reading reading);
    void publish(Reading reading, Result<TextFile> read);
    void couldNotRead(Reading reading, const Error& error);
    void showHeld(UnsavedWords::Held held);
    void show(Rope text);
    void replaceText(Rope text);
    void setDirty(bool isUnsaved);
    Status mayReplace();
    bool isGone() const;
    Status keepBytes();
    void keepBytesThenSave();

    Services m_services;
    UnsavedWords& m_words;
    Events m_events;

    Uuid m_id = Uuid::random();
    std::optional<Uuid> m_tabID;
    Path m_file;
    std::optional<Uuid> m_note;
    std::optional<Error> m_unreadable; ///< bytes are there that could not be read: never written over
    bool m_isLossy = false; ///< some of its bytes are no text, and no copy of them is kept yet
    Rope m_currentText;
    Rope m_shownBefore; ///< while the file is read again
    PlainTextView* m_textView = nullptr;
    Task m_reading;
    Task m_keeping; ///< of the bytes that are no text, before a save that nobody waits for
};

} // namespace quillmark
