// The editing model of one text: storage, selection, undo, motions, insertion and deletion, clipboard, and
// what part of the text is visible. It is complete without a screen; EditorView paints it and forwards events
// to it.
#pragma once

#include "base/Scheduler.h"
#include "editor/LayoutManager.h"
#include "editor/Selection.h"
#include "editor/Viewport.h"
#include "platform/Clipboard.h"
#include "text/UndoManager.h"

#include <memory>
#include <string_view>
#include <vector>

namespace quillmark {

/// Main thread only. After each edit and motion by the user the caret is scrolled into view.
class PlainTextView {
public:
    /// Hears what happened once the view is in order again: first of the text, then of the selection.
    class Delegate {
    public:
        virtual ~Delegate() = default;
        virtual void textDidChange() = 0; ///< after each edit, undo and redo included, but not after setText
        virtual void textViewDidChangeSelection() = 0;
    };

    PlainTextView(Scheduler& scheduler, Shaper& shaper, Clipboard& clipboard);
    ~PlainTextView();

    TextStorage& storage(); ///< to observe; edits go through the commands below
    const Rope& text() const;
    LayoutManager& layoutManager();
    void setDelegate(Delegate* delegate); ///< may be null; must outlive the view or be reset

    /// Installs a document's text: caret at 0, scrolled to the start, undo emptied. The delegate hears the
    /// selection only. The old text is let go on a background thread.
    void setText(Rope text);
    bool isEditable() const;
    void setEditable(bool editable);

    // Selection.
    const Selection& selection() const;
    void select(Selection selection); ///< cut to the text and moved to character boundaries; does not scroll
    void move(Motion motion, Extend extend = Extend::no);
    void selectAll(); ///< does not scroll

    // Editing: each is one step for undo unless said otherwise, and does nothing while not editable. Line
    // breaks that come in as CR LF or CR become line feeds.
    void insertText(std::u16string_view text); ///< replaces the selection; joined with the typing before
    void insertNewline();
    void insertTab();
    void deleteBackward();
    void deleteForward();
    void deleteWordBackward();
    void deleteWordForward();
    void replace(Range range, std::u16string_view with); ///< a programmatic edit; the caret stands behind it
    bool canUndo() const;
    bool canRedo() const;
    void undo();
    void redo();
    void
    breakUndoJoin(); ///< the next typing is a step of its own (the document was saved, the focus moved …)
    void cut();
    void copy(); ///< nothing while the selection is empty
    void paste(Clipboard::Buffer buffer = Clipboard::Buffer::clipboard);
    void deleteSelection();

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
    double contentHeight() const; ///< of all rows, estimates included, and both insets
    void scrollTo(
        double top); ///< lands near by where estimates are corrected on the way; both ends are exact
    void scrollToCaret(); ///< as little as makes the caret's row visible

    using CaretPlace = quillmark::CaretPlace;
    CaretPlace caretPlace(); ///< of the selection's caret
    CaretPlace placeOf(int64_t offset, Affinity affinity = Affinity::downstream);

    // The mouse; coordinates from the corner of the visible area.
    int64_t offsetAt(double x, double y);
    TextPosition positionAt(double x, double y);
    void mousePressed(double x, double y, Granularity granularity, Extend extend);
    void mouseDragged(double x, double y); ///< outside the area it scrolls (call it again on a timer)
    /// Puts the selection into the primary selection, unless it is empty or of more than a million units.
    void mouseReleased();

    // What the widget obeys.
    Signal<>& needsDisplay(); ///< text, selection, scroll position or layout changed
    Signal<>& becomeFirstResponder();
    Signal<>& scrolled(); ///< scrollTop, contentHeight or the visible height changed

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace quillmark
