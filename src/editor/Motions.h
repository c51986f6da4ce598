// Where a motion leads from a selection: functions of the text, its rows and the selection, which change
// nothing but what the layout manager has measured. Main thread only.
#pragma once

#include "editor/LayoutManager.h"
#include "editor/Selection.h"

namespace quillmark {

struct MotionContext {
    double goalX = 0; ///< where vertical motions want the caret
    int64_t rowsPerPage = 1;
};

/// Where `motion` moves the caret of `selection`.
TextPosition target(Motion motion, const Selection& selection, Extend extend, LayoutManager& layout,
    const MotionContext& context);

/// Pixels from the start of its row to the caret at `position`.
double xOf(TextPosition position, LayoutManager& layout);

/// The position of the caret stop of a row of `text` that is nearest to x, between two characters.
TextPosition positionInRow(const RowLayout& row, double x, const Rope& text);

constexpr bool isVertical(Motion motion)
{
    return motion == Motion::rowUp || motion == Motion::rowDown || motion == Motion::pageUp
        || motion == Motion::pageDown;
}

} // namespace quillmark
