// The editing model of one text: storage, selection, undo, motions, insertion and deletion, clipboard, and
// what part of the text is visible. It is complete without a screen; EditorView paints it and forwards events
// to it.
#pragma once

#include "base/Scheduler.h"
#include "editor/Composition.h"
#include "editor/Edit.h"
#include "editor/LayoutManager.h"
#include "editor/Selection.h"
#include "editor/Viewport.h"
#include "platform/Clipboard.h"
#include "text/UndoManager.h"

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace quillmark {

/// Main thread only. While an input method composes, nothing is selected; every command that selects, moves
/// or edits commits what is being composed first. After each edit and motion by the user the caret is
/// scrolled into view.
class PlainTextView {
public:
    /// Hears what happened once the view is in order again: first of the text, then of the selection.
    class Delegate {
    public:
        virtual ~Delegate() = default;
        virtual void textDidChange() = 0; ///< after each edit, undo and redo included, but not after setText
        virtual void textViewDidChangeSelection() = 0; ///< and after each edit: its line may be another one
        virtual void textViewDidPaste(std::u16string_view) {} ///< from the clipboard, with line feeds
    };

    PlainTextView(Scheduler& scheduler, Shaper& shaper, Clipboard& clipboard);
    ~PlainTextView();

    const TextStorage& storage() const; ///< to observe
    const Rope& text() const;
    LayoutManager& layoutManager();
    void setDelegate(Delegate* delegate); ///< may be null; must outlive the view or be reset

    /// Installs a document's text: caret at 0, scrolled to the start, undo emptied. The delegate hears the
    /// selection only. The old text is let go on a background thread.
    void setText(Rope text);
    bool isEditable() const;
    void setEditable(bool editable);

    // Selection. What the user selects becomes the primary selection: with the mouse when the button is
    // released, by keys at once.
    const Selection& selection() const;
    void select(Selection selection); ///< cut to the text and moved to character boundaries; does not scroll
    void move(Motion motion, Extend extend = Extend::no);
    void selectAll(); ///< does not scroll

    /// The only door to the text: makes what a command wants of it, as one step of undo, and tells the
    /// delegate once. Returns whether there was anything to do; nothing is done while not editable.
    bool perform(UndoManager::Kind kind, const EditCommand& command);

    // Editing: each is one step for undo unless said otherwise, and does nothing while not editable. Line
    // breaks that come in as CR LF or CR become line feeds.
    void insertText(std::u16string_view text); ///< replaces the selection; joined with the typing before
    void insertNewline();
    void insertTab(); ///< a selection of several lines is indented instead
    void unindent(); ///< the lines of the selection, or the caret's
    void deleteBackward();
    void deleteForward();
    void deleteWordBackward();
    void deleteWordForward();
    void replace(Range range, std::u16string_view with); ///< a programmatic edit; the caret stands behind it
    bool canUndo() const;
    bool canRedo() const;
    void undo();
    void redo();
    void breakUndoJoin(); ///< the next typing is a step of its own (the focus moved …)
    void cut();
    void copy(); ///< nothing while the selection is empty
    void paste(Clipboard::Buffer buffer = Clipboard::Buffer::clipboard);
    void deleteSelection();

    // Drag and drop; afterwards what was dropped is selected.
    void drop(std::u16string_view text, int64_t offset);
    /// A stretch of the text itself, moved or copied. Nothing when `offset` lies within it or at its edges.
    void dropOwn(Range dragged, int64_t offset, DropKind kind);

    // Input methods.
    /// Shows text at the caret that is not in the document; the next call replaces it, an empty text takes it
    /// away. A selection is deleted when composing begins. Nothing while not editable.
    void compose(Composition composition);
    const Composition* composition() const; ///< null while nothing is being composed
    /// What an input method types, in place of what it composed. `replaced` is counted from the caret, after
    /// a selection was deleted, and cut to inputContext().
    void insertComposed(std::u16string_view text, Range replaced = {});
    /// Makes what is being composed a part of the document. The input method is asked for it first.
    void commitComposition();
    /// What input methods may see and change: the caret's line, cut to a bounded length around it.
    Range inputContext() const;

    // The visible area. Its origin is a place in the text plus pixels, so that a corrected estimate above
    // does not move what the eye rests on.
    /// The width is that of the text without its horizontal insets (the wrap width); the height is that of
    /// the window on the text, over which the vertical insets scroll.
    void setVisibleSize(double width, double height);
    void setVerticalInset(double inset); ///< empty pixels above the first and below the last row; 0 at first
    void fontChanged(); ///< the shaper's font is another one
    const std::vector<VisibleRow>& visibleRows(); ///< good until the next call of any other function
    void scrollBy(double pixels); ///< down when positive; stops at both ends
    double scrollTop() const; ///< pixels from the top of the content to the top of the visible area
    double visibleHeight() const; ///< as set
    double contentHeight() const; ///< of all rows, estimates included, and both insets
    void scrollTo(
        double top); ///< lands near by where estimates are corrected on the way; both ends are exact
    void scrollToCaret(); ///< as little as makes the caret's row visible
    /// Nothing where the offset's row is visible; otherwise it stands a third from the top then.
    void bringIntoView(int64_t offset);

    using CaretPlace = quillmark::CaretPlace;
    CaretPlace caretPlace() const; ///< of the selection's caret
    CaretPlace placeOf(int64_t offset, Affinity affinity = Affinity::downstream) const;

    // The mouse; coordinates from the corner of the visible area.
    int64_t offsetAt(double x, double y);
    TextPosition positionAt(double x, double y);
    /// Extending goes on with the granularity and from the origin of the press before, if it still stands.
    void mousePressed(double x, double y, Granularity granularity, Extend extend);
    void mouseDragged(double x, double y); ///< outside the area it scrolls (call it again on a timer)
    void mouseReleased();

    void becomeFirstResponder(); ///< asks for the keyboard

    // What the widget obeys; each for as long as the Connection is kept.
    using Slot = std::function<void()>;
    /// Text, selection, scroll position or layout changed.
    [[nodiscard]] Connection onNeedsDisplay(Slot slot);
    [[nodiscard]] Connection onFirstResponderRequested(Slot slot);
    /// scrollTop, contentHeight or the visible height changed.
    [[nodiscard]] Connection onScrolled(Slot slot);
    /// The input method is to insert what it composes, if it can, at once.
    [[nodiscard]] Connection onCommitRequested(Slot slot);
    /// The input method is to forget what it composes: it is in the text, or gone.
    [[nodiscard]] Connection onResetRequested(Slot slot);

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace quillmark
