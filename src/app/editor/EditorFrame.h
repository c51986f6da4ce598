// What the window shows at a moment, in values: enough to paint it and to tell which part of the next
// moment's picture differs. Pixels are device-independent and count from the corner of the EditorView.
#pragma once

#include "editor/PlainTextView.h"

#include <QRectF>
#include <QRegion>

#include <optional>
#include <vector>

namespace quillmark {

struct FrameRow {
    double top = 0;
    std::shared_ptr<const ShapedText> shaped;
    int rowInShaped = 0;
    Range selected; ///< in units of `shaped`
    bool isLineFeedSelected = false;
    std::vector<Composition::Clause> clauses; ///< of an input method; in units of `shaped`

    bool isSameAs(const FrameRow& other) const; ///< the same row of the same shaped text, selected alike
    bool looksLike(const FrameRow& other) const; ///< the same picture, wherever it stands
};

struct EditorFrame {
    double rowHeight = 1;
    std::vector<FrameRow> rows; ///< from the top
    std::optional<QRectF> caret; ///< nothing while it is off the window or not to be seen
};

/// The visible rows with their parts of the selection, without a caret.
EditorFrame frameOf(PlainTextView& text);

/// The way from one picture to the next.
struct FrameChange {
    int scroll = 0; ///< pixels to move the old picture down by, before the rest is painted
    QRegion dirty; ///< to paint then
};

enum class MayScroll { no, yes };

/// `size` is that of the view. Scrolls by whole pixels only, where most of the picture just moves.
FrameChange changeBetween(const EditorFrame& from, const EditorFrame& to, QSize size, MayScroll mayScroll);

} // namespace quillmark
