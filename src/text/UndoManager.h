// The history of a TextStorage: groups of edits that can be taken back and made again. Keeps edits, not
// snapshots: a short replaced text as units, a long one as a slice of the rope that it was cut from; what was
// put in stands in the document and is not kept at all until it is taken back.
//
// A group is one step. A step of typing takes up the next one when it is of the same kind, goes on where the
// last one ended, comes within `longestPause`, and
// - for typing: no line feed is involved and no word starts behind white space, so that one undo takes back
// one
//   word with the blanks behind it, and a line feed is a step of its own;
// - for deleting backward or forward: always.
// Everything else is a step of its own, an edit outside of any group too.
#pragma once

#include "base/Clock.h"
#include "text/TextStorage.h"

#include <chrono>
#include <memory>
#include <optional>

namespace quillmark {

/// Hears every edit of the storage by itself, also those made by undo() and redo(), which it does not record.
/// The storage must outlive it. Main thread only.
class UndoManager {
public:
    /// What the user sees of an edit; decides what is joined with the step before.
    enum class Kind { typing, deletingBackward, deletingForward, other };

    struct Selection {
        int64_t anchor = 0;
        int64_t caret = 0;
        bool operator==(const Selection&) const = default;
    };

    /// Typing that goes on after a longer pause is a step of its own.
    static constexpr Duration longestPause = std::chrono::milliseconds(1500);

    explicit UndoManager(TextStorage& storage);
    UndoManager(const UndoManager&) = delete;
    UndoManager& operator=(const UndoManager&) = delete;
    ~UndoManager();

    /// Opens a group: all edits until the matching end() are one step. Groups nest; the outermost counts.
    /// `before` is the selection that undo restores. A group without edits leaves no step.
    void begin(Kind kind, Selection before, SteadyTime now);
    void end(Selection after); ///< `after` is the selection that redo restores
    void
    breakJoin(); ///< the next edit starts a step of its own (the caret was moved, the document was saved …)

    bool canUndo() const; ///< never within a group
    bool canRedo() const;
    std::optional<Selection> undo(); ///< takes the last step back and returns the selection it restores
    std::optional<Selection> redo(); ///< makes it again; possible until the next edit
    void removeAll(); ///< forgets all steps, also the edits of an open group

private:
    struct Change;
    struct Step;
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace quillmark
