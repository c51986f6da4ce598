// The one ledger of words that are not in their file: whose they are, where they belong and what has become
// of them. Journal, write queue and recovery folder are its hands; it alone knows what is safe.
#pragma once

#include "io/Journal.h"
#include "io/TextFormat.h"
#include "io/WriteQueue.h"

#include <functional>
#include <map>
#include <optional>

namespace quillmark {

/// Where the words of a document belong, and how they get there.
struct DocumentFacts {
    Path file;
    std::optional<Uuid> note; ///< the note whose file it is; none for a file opened by its path
    TextEncoding encoding = TextEncoding::utf8;
    LineEnds lineEnds = LineEnds::lf;
    bool isLossy = false; ///< some of the file's bytes are no text, and no copy of them is kept yet
    std::optional<Error> unreadable; ///< bytes are there that could not be read: never written over

    bool mayBeWritten() const { return !isLossy && !unreadable && !file.empty(); }
    OutsideVersion outsideVersion() const
    {
        return note ? OutsideVersion::refuse : OutsideVersion::replaceKept;
    }
};

/// One record a document and a file. It follows renames and outlives its tab, its note and its folder until
/// its words are safe. Main thread only.
class UnsavedWords {
public:
    enum class State {
        typed, ///< in the editor and, a moment later, in the journal
        queued, ///< on their way to the file
        refused, ///< neither file nor recovery folder took them: held here, and tried again
        kept, ///< in the recovery folder
    };
    struct Events {
        /// The text that the editor shows, if it is this document's.
        std::function<std::optional<Rope>(const Uuid& document)> liveText;
        struct Saved {
            Uuid document;
            DocumentFacts facts;
            SavedFile file;
            bool isAll = false; ///< nothing has been typed since
        };
        std::function<void(const Saved&)> saved; ///< a queued text has reached its file
        /// A queued text of a note met another program's version. It is in no queue any more.
        std::function<void(const Uuid& document, const DocumentFacts&, const Rope& text)> metOutsideVersion;
        std::function<void()> changed; ///< what is safe, or why not
    };
    struct Services {
        Scheduler& scheduler;
        FileSystem& files;
        Log& log;
        DocumentWriter& writer;
        RecoveryStore& recovery;
        JournalFolders journalFolders;
    };

    UnsavedWords(Services services, Events events);

    WriteQueue& queue() { return m_queue; } ///< whoever is to touch a file lets its queued write finish first

    /// Moves the journals of dead processes to the recovery folder; returns how many there were.
    size_t recoverLeftovers() { return m_journal.recoverLeftovers(); }

    void typed(const Uuid& document, const DocumentFacts& facts); ///< after every edit in the editor

    /// Writes a text at once. On failure the words stay where they are, and the ledger knows why.
    Result<SavedFile> write(const Uuid& document, const DocumentFacts& facts, const Rope& text);
    void enqueue(const Uuid& document, const DocumentFacts& facts, const Rope& text);

    enum class Retry {
        fileAndRecovery,
        recoveryOnly, ///< the file has gone, and no save shall make it again
    };
    /// Puts a text into the recovery folder, unless that has it and nothing was typed since. Where that
    /// fails, the text is held and tried again. True when the words are safe.
    bool keep(const Uuid& document, const DocumentFacts& facts, const Rope& text,
        Retry retry = Retry::fileAndRecovery);

    /// The words of a document are safe elsewhere, or not wanted.
    void forget(const Uuid& document);
    void closed(
        const Uuid& document); ///< the editor shows another one: what is kept needs no record any more
    void moved(const Path& from, const Path& to); ///< a file has been renamed
    void giveUp(const Path& file); ///< is about to go: its queued text is written or kept

    struct Held {
        Uuid document;
        DocumentFacts facts;
        Rope text;
    };
    /// Words that nothing took, for the editor, which has them from now on.
    std::optional<Held> takeBack(const Path& file);
    std::optional<State> stateOf(const Path& file) const; ///< nothing when all its words are in it

    bool isSafe(const Uuid& document) const;
    bool areAllSafe() const;

    struct Unsafe {
        DocumentFacts facts;
        Error error; ///< why the last attempt failed
        bool isInMemoryOnly = false; ///< not even the journal has them
        bool operator==(const Unsafe& other) const;
    };
    /// Words that a save could not bring to their file and that are not safe; those of `preferred` first.
    std::optional<Unsafe> unsafe(const Uuid& preferred) const;

    /// The process is about to end: whatever fails once more is kept, or left to the journal. What not even
    /// that took is logged.
    void finish();

    void checkInvariants() const; ///< asserts them

private:
    struct Record {
        DocumentFacts facts;
        State state = State::typed;
        std::optional<Rope> text; ///< of queued and refused words
        uint64_t version = 0; ///< of the text that was last queued
        std::optional<Error> error; ///< of the last attempt
        Retry retry = Retry::fileAndRecovery;
    };
    Record* find(const Uuid& document);
    const Record* find(const Uuid& document) const;
    std::optional<Journal::Snapshot> snapshot(const Uuid& document) const;
    WriteRequest requestFor(const Uuid& document, const DocumentFacts& facts, const Rope& text) const;
    void forgetOlder(const Uuid& document, const Path& file);
    void erase(const Uuid& document);
    void refuse(const Uuid& document, const DocumentFacts& facts, const Rope& text, const Error& error);
    void queuedWriteEnded(const WriteQueue::Outcome& outcome);
    void scheduleRetry();
    void retry();

    Scheduler& m_scheduler;
    RecoveryStore& m_recovery;
    Log& m_log;
    Events m_events;
    std::map<Uuid, Record> m_records;
    WriteQueue m_queue;
    Journal m_journal;
    Task m_retry;
    size_t m_retries = 0;
};

} // namespace quillmark
