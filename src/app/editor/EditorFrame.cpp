#include "app/editor/EditorFrame.h"

#include <algorithm>
#include <cmath>

namespace quillmark {

namespace {

constexpr double tolerance = 1e-6; // pixels; what sums of row heights may be off by

bool same(double a, double b)
{
    return std::abs(a - b) < tolerance;
}

std::vector<Composition::Clause> clausesOf(const RowLayout& row, const Composition* composition)
{
    std::vector<Composition::Clause> clauses;
    if (!composition || row.insertion.length == 0)
        return clauses;
    const Range inserted{row.insertion.at, row.insertion.length};
    const Range onRow = intersection(inserted, row.shaped->row(row.rowInShaped));
    for (Composition::Clause clause : composition->clauses) {
        clause.units = intersection({inserted.location + clause.units.location, clause.units.length}, onRow);
        if (!clause.units.isEmpty())
            clauses.push_back(clause);
    }
    return clauses;
}

FrameRow frameRowOf(const VisibleRow& visible, Range selection, int64_t textLength)
{
    const RowLayout& layout = visible.layout; // without an insertion where anything is selected
    Range selected = intersection(selection, layout.range);
    selected.location -= layout.shapedStart;
    const int64_t lineFeed = layout.range.end();
    return {
        .top = visible.top,
        .shaped = layout.shaped,
        .rowInShaped = layout.rowInShaped,
        .selected = selected.isEmpty() ? Range{} : selected,
        .isLineFeedSelected = layout.endsLine && lineFeed < textLength && selection.contains(lineFeed),
        .clauses = {},
    };
}

QRect covering(const QRectF& rect)
{
    // Painting moves edges to whole device pixels, at most half a pixel away.
    const bool isWhole
        = same(rect.top(), std::round(rect.top())) && same(rect.height(), std::round(rect.height()));
    const QRect aligned = isWhole
        ? QRectF(rect.left(), std::round(rect.top()), rect.width(), std::round(rect.height())).toAlignedRect()
        : rect.toAlignedRect().adjusted(0, -1, 0, 1);
    return aligned.adjusted(-1, 0, 1, 0);
}

const FrameRow* rowAtTop(const EditorFrame& frame, double top)
{
    const auto row = std::ranges::lower_bound(frame.rows, top - tolerance, {}, &FrameRow::top);
    return row != frame.rows.end() && same(row->top, top) ? &*row : nullptr;
}

/// How far the first row that both pictures have has moved; nothing when they have none in common.
std::optional<double> movedBy(const EditorFrame& from, const EditorFrame& to)
{
    for (const FrameRow& old : from.rows) {
        const auto now
            = std::ranges::find_if(to.rows, [&](const FrameRow& row) { return row.isSameAs(old); });
        if (now != to.rows.end())
            return now->top - old.top;
    }
    return std::nullopt;
}

} // namespace

bool FrameRow::isSameAs(const FrameRow& other) const
{
    return shaped == other.shaped && rowInShaped == other.rowInShaped && selected == other.selected
        && isLineFeedSelected == other.isLineFeedSelected && clauses == other.clauses;
}

bool FrameRow::looksLike(const FrameRow& other) const
{
    const auto isPlain = [](const FrameRow& row) {
        return row.selected.isEmpty() && row.clauses.empty() && !row.isLineFeedSelected;
    };
    return isSameAs(other)
        || (isPlain(*this) && isPlain(other)
            && shaped->isDrawnAlike(rowInShaped, *other.shaped, other.rowInShaped));
}

EditorFrame frameOf(PlainTextView& text)
{
    EditorFrame frame{.rowHeight = text.layoutManager().metrics().height, .rows = {}, .caret = {}};
    const Range selection = text.selection().range();
    const int64_t length = text.text().length();
    const std::vector<VisibleRow>& visible = text.visibleRows();
    frame.rows.reserve(visible.size());
    for (const VisibleRow& row : visible) {
        frame.rows.push_back(frameRowOf(row, selection, length));
        frame.rows.back().clauses = clausesOf(row.layout, text.composition());
    }
    return frame;
}

FrameChange changeBetween(const EditorFrame& from, const EditorFrame& to, QSize size, MayScroll mayScroll)
{
    FrameChange change;
    if (!same(from.rowHeight, to.rowHeight)) {
        change.dirty = QRect(QPoint(), size);
        return change;
    }
    if (mayScroll == MayScroll::yes) {
        const double moved = movedBy(from, to).value_or(0);
        if (same(moved, std::round(moved)) && std::abs(moved) < size.height())
            change.scroll = static_cast<int>(std::round(moved));
    }
    const auto markRow
        = [&](double top) { change.dirty += covering(QRectF(0, top, size.width(), to.rowHeight)); };
    for (const FrameRow& row : to.rows) {
        const FrameRow* old = rowAtTop(from, row.top - change.scroll);
        if (!old || !old->looksLike(row))
            markRow(row.top);
    }
    for (const FrameRow& row : from.rows) {
        if (!rowAtTop(to, row.top + change.scroll))
            markRow(row.top + change.scroll);
    }
    const auto oldCaret = from.caret ? std::optional(from.caret->translated(0, change.scroll)) : std::nullopt;
    if (oldCaret != to.caret) {
        for (const auto& caret : {oldCaret, to.caret}) {
            if (caret)
                change.dirty += covering(*caret);
        }
    }
    change.dirty &= QRect(QPoint(), size);
    return change;
}

} // namespace quillmark
