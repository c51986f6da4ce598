// What PlainTextView keeps, for the files that implement it.
#pragma once

#include "editor/EditCommands.h"
#include "editor/PlainTextView.h"

#include <optional>

namespace quillmark {

struct PlainTextView::Impl {
    enum class Changed { nothing, text };
    enum class Reveal { nothing, caret };

    struct ScrollState {
        double top = 0;
        double contentHeight = 0;
        double height = 0;
        bool operator==(const ScrollState&) const = default;
    };
    struct Drag {
        Range origin; ///< what the press selected; never deselected while dragging
        Granularity granularity = Granularity::character;
        bool isPressed = true; ///< afterwards it is kept for a click that extends
    };

    Impl(PlainTextView& ownerOfThis, Scheduler& schedulerToUse, Shaper& shaper, Clipboard& clipboardToUse);

    int64_t length() const { return storage.length(); }
    /// The last step of every command: scrolls, lays out what is visible, then tells whoever listens.
    void finish(const Selection& before, Changed changed, Reveal reveal);
    void tellScrolled();
    void settleWhenIdle();
    void settleForAMoment();
    void shiftWith(const TextEdit& edit);

    void erase(UndoManager::Kind kind, CaretTarget target);
    void moveInHistory(std::optional<UndoManager::Selection> (UndoManager::*step)());
    void finishEdit(const Selection& before, Selection after);

    void showComposition();
    void dropComposition();
    TextEdit finishComposing();
    Range afterComposing(Range range);
    void shareSelection();

    Range granuleAt(int64_t offset) const;
    void extendDrag(double x, double y);

    PlainTextView& owner;
    Scheduler& scheduler;
    Clipboard& clipboard;
    TextStorage storage; // heard by undo, layout and this, in this order
    UndoManager undo;
    LayoutManager layout;
    Viewport viewport;
    Connection edits;

    Delegate* delegate = nullptr;
    bool isEditable = true;
    Selection selection;
    std::optional<double> goalX; ///< where vertical motions want the caret, while they follow one another
    std::optional<Drag> drag;
    std::optional<Composition> composition; ///< stands at the caret
    ScrollState lastScroll;
    Task settling; ///< pending while a row count of the layout rests on samples

    Signal<> needsDisplay;
    Signal<> firstResponderRequested;
    Signal<> scrolled;
    Signal<> commitRequested;
    Signal<> resetRequested;
};

} // namespace quillmark
