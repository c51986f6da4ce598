#include "editor/Viewport.h"

#include "editor/Motions.h"
#include "text/Unicode.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <utility>

namespace quillmark {
namespace {

constexpr double walkedScreens = 4; ///< a farther scroll goes by the row map instead of row by row

bool isSameRow(const RowLayout& a, const RowLayout& b)
{
    return a.shapedStart == b.shapedStart && a.rowInShaped == b.rowInShaped && a.line == b.line;
}

} // namespace

Viewport::Viewport(LayoutManager& layout)
    : m_layout(layout)
    , m_rowsMoved(layout.onRowsMoved([this] { m_isStale = true; }))
{
}

void Viewport::setSize(double width, double height)
{
    m_height = std::max(0.0, height);
    m_layout.setVisibleRowCount(static_cast<int64_t>(m_height / m_layout.metrics().height) + 2);
    m_layout.setWrapWidth(width);
    m_isStale = true;
}

void Viewport::setVerticalInset(double inset)
{
    const bool isAtStart = m_anchorOffset == 0 && m_anchorTop == m_inset;
    m_inset = std::max(0.0, inset);
    if (isAtStart)
        m_anchorTop = m_inset;
    m_isStale = true;
}

void Viewport::scrollToStart()
{
    m_anchorOffset = 0;
    m_anchorTop = m_inset;
    m_isStale = true;
}

void Viewport::applyEdit(const TextEdit& edit)
{
    const Range replaced = edit.replaced();
    if (replaced.end() <= m_anchorOffset && replaced.location < m_anchorOffset)
        m_anchorOffset += edit.changeInLength;
    else if (replaced.location < m_anchorOffset)
        m_anchorOffset = replaced.location;
    assert(m_anchorOffset >= 0 && m_anchorOffset <= m_layout.text().length());
    m_isStale = true;
}

// Rows from one to the next

Viewport::Cursor Viewport::cursorAt(TextPosition position, double top)
{
    Segment segment = m_layout.segmentAt(position.offset, position.affinity);
    const int index = segment.rowOf(position.offset, position.affinity);
    return {.segment = std::move(segment), .index = index, .top = top};
}

bool Viewport::stepUp(Cursor& cursor)
{
    if (cursor.index > 0) {
        --cursor.index;
    } else if (auto before = m_layout.segmentBefore(cursor.segment)) {
        cursor.segment = std::move(*before);
        cursor.index = cursor.segment.rowCount() - 1;
    } else {
        return false;
    }
    cursor.top -= m_layout.metrics().height;
    return true;
}

bool Viewport::stepDown(Cursor& cursor)
{
    if (cursor.index + 1 < cursor.segment.rowCount()) {
        ++cursor.index;
    } else if (auto after = m_layout.segmentAfter(cursor.segment)) {
        cursor.segment = std::move(*after);
        cursor.index = 0;
    } else {
        return false;
    }
    cursor.top += m_layout.metrics().height;
    return true;
}

/// Goes up to the first visible row. Where the text starts too low, it moves up to its inset.
void Viewport::climb(Cursor& cursor)
{
    while (cursor.top > 0) {
        if (!stepUp(cursor)) {
            cursor.top = std::min(cursor.top, m_inset);
            return;
        }
    }
}

/// Lays out from the first visible row down to the bottom. Returns how many pixels stay free below the text.
double Viewport::fill(const Cursor& first)
{
    m_rows.clear();
    m_firstSegment = first.segment;
    Row row = m_layout.firstRowOf(first.segment) + first.index;
    Cursor cursor = first;
    const double rowHeight = m_layout.metrics().height;
    do {
        m_rows.push_back({.row = row, .top = cursor.top, .layout = cursor.segment.row(cursor.index)});
        row = row + 1;
    } while (cursor.top + rowHeight < m_height && stepDown(cursor));
    assert(!m_rows.empty());
    return endsText(m_rows.back().layout) ? m_height - (cursor.top + rowHeight + m_inset) : 0;
}

void Viewport::anchorAt(const Cursor& first)
{
    assert(first.top <= std::max(0.0, m_inset) && "a row above would be visible");
    const Range row = first.segment.row(first.index).range;
    const bool isInRow = m_anchorOffset == row.location
        || (row.contains(m_anchorOffset) && first.segment.range.contains(m_anchorOffset));
    if (!isInRow)
        m_anchorOffset = row.location;
    m_anchorTop = first.top;
}

void Viewport::settle()
{
    m_isStale = false;
    if (m_height <= 0) {
        m_rows.clear();
        return;
    }
    Cursor first = cursorAt({m_anchorOffset, Affinity::downstream}, m_anchorTop);
    while (first.top + m_layout.metrics().height <= 0 && stepDown(first)) {}
    climb(first);
    const double free = fill(first);
    const bool isScrolled = first.top < m_inset || first.index > 0 || first.segment.range.location > 0;
    if (free > 0 && isScrolled) {
        first.top += free;
        climb(first);
        fill(first);
    }
    anchorAt(first);
    m_isStale = false;
}

const std::vector<VisibleRow>& Viewport::rows()
{
    if (m_isStale)
        settle();
    return m_rows;
}

// Scrolling

double Viewport::top()
{
    if (rows().empty())
        return 0;
    const Row first = m_layout.firstRowOf(m_firstSegment) + m_rows.front().layout.rowInShaped;
    return static_cast<double>(number(first)) * m_layout.metrics().height + m_inset - m_rows.front().top;
}

double Viewport::contentHeight() const
{
    return static_cast<double>(m_layout.rowCount()) * m_layout.metrics().height + 2 * m_inset;
}

void Viewport::scrollTo(double top)
{
    const double rowHeight = m_layout.metrics().height;
    const double lowest = contentHeight() - m_height;
    if (top <= 0 || lowest <= 0)
        return scrollToStart();
    if (top >= lowest) {
        m_anchorOffset = m_layout.text().length();
        m_anchorTop = m_height - m_inset - rowHeight;
    } else {
        const double row = std::max(0.0, std::floor((top - m_inset) / rowHeight));
        m_anchorOffset = m_layout.layoutOf(Row{static_cast<int64_t>(row)}).range.location;
        m_anchorTop = row * rowHeight + m_inset - top;
    }
    m_isStale = true;
}

void Viewport::scrollBy(double pixels)
{
    if (rows().empty())
        return;
    if (std::abs(pixels) > walkedScreens * m_height)
        return scrollTo(top() + pixels);
    m_anchorTop -= pixels;
    settle();
}

bool Viewport::endsText(const RowLayout& row) const
{
    return row.endsLine && row.range.end() == m_layout.text().length();
}

/// Where a row that is to be shown whole stands, given where it would stand now.
double Viewport::restingTop(const Cursor& row, double top) const
{
    const RowLayout layout = row.segment.row(row.index);
    const bool isFirst = layout.range.location == 0;
    const bool isLast = endsText(layout);
    const double highest = isFirst ? m_inset : 0;
    const double lowest = m_height - m_layout.metrics().height - (isLast ? m_inset : 0);
    return std::max(highest, std::min(top, lowest));
}

const VisibleRow* Viewport::find(const Cursor& row) const
{
    const RowLayout layout = row.segment.row(row.index);
    const auto found = std::find_if(m_rows.begin(), m_rows.end(),
        [&](const VisibleRow& visible) { return isSameRow(visible.layout, layout); });
    return found == m_rows.end() ? nullptr : &*found;
}

void Viewport::reveal(TextPosition position, Landing landing)
{
    if (rows().empty())
        return;
    const Cursor row = cursorAt(position, 0);
    rows(); // measuring the row may have moved the others
    const VisibleRow* visible = find(row);
    if (visible && restingTop(row, visible->top) == visible->top)
        return;
    if (visible && landing == Landing::nearest)
        return scrollBy(visible->top - restingTop(row, visible->top));
    const int64_t start = row.segment.row(row.index).range.location;
    const bool isAbove = start < m_rows.front().layout.range.location;
    m_anchorOffset = start;
    if (landing == Landing::third)
        m_anchorTop = restingTop(row, std::floor(m_height / 3));
    else
        m_anchorTop = restingTop(row, isAbove ? 0 : m_height);
    settle();
}

// Places

CaretPlace Viewport::placeOf(TextPosition position)
{
    const Cursor row = cursorAt(position, 0);
    const double scrolled = top();
    const double height = m_layout.metrics().height;
    const VisibleRow* visible = find(row);
    const double fromStart
        = static_cast<double>(number(m_layout.firstRowOf(row.segment)) + row.index) * height + m_inset;
    const double top = visible ? visible->top : fromStart - scrolled;
    return {.x = row.segment.row(row.index).xOfOffset(position.offset),
        .top = top,
        .height = height,
        .isVisible = visible && top < m_height && top + height > 0};
}

const RowLayout& Viewport::rowAtY(double y) const
{
    assert(!m_rows.empty());
    const double index = std::floor((y - m_rows.front().top) / m_layout.metrics().height);
    const double last = static_cast<double>(m_rows.size() - 1);
    return m_rows[static_cast<size_t>(std::clamp(index, 0.0, last))].layout;
}

TextPosition Viewport::hitTest(double x, double y)
{
    if (rows().empty())
        return {};
    const VisibleRow& first = m_rows.front();
    const VisibleRow& last = m_rows.back();
    if (first.layout.range.location == 0 && y < first.top - m_inset)
        return {0};
    if (endsText(last.layout) && y >= last.top + m_layout.metrics().height + m_inset)
        return {m_layout.text().length()};
    return positionInRow(rowAtY(y), x, m_layout.text());
}

int64_t Viewport::characterAt(double x, double y)
{
    const TextPosition nearest = hitTest(x, y);
    if (m_rows.empty())
        return nearest.offset;
    const RowLayout& row = rowAtY(y);
    const bool isInRow = nearest.offset > row.range.location && nearest.offset <= row.range.end();
    if (!isInRow)
        return nearest.offset;
    const int64_t before = previousGrapheme(m_layout.text(), nearest.offset);
    const auto [left, right] = std::minmax({row.xOfOffset(before), row.xOfOffset(nearest.offset)});
    return x >= left && x < right ? before : nearest.offset;
}

int64_t Viewport::rowsPerPage() const
{
    return std::max<int64_t>(1, static_cast<int64_t>(m_height / m_layout.metrics().height) - 1);
}

} // namespace quillmark
