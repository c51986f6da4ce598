#include "editor/LayoutManager.h"

#include "editor/LayoutCache.h"
#include "editor/RowMap.h"
#include "editor/SegmentCuts.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <utility>

namespace quillmark {
namespace {

constexpr double noWrapWidth
    = 1e7; ///< wider than a segment gets, and fit for the fixed-point numbers of shapers
constexpr size_t longestInsertion = 2'000; ///< units; no more of it is shown
constexpr int64_t keptScreens = 3;
constexpr int64_t keptLongSegments = 16;

} // namespace

struct LayoutManager::Impl {
    struct ShownInsertion {
        int64_t offset = 0;
        std::u16string text; ///< empty: there is none
        int64_t caret = 0;
    };

    Impl(TextStorage& storageToFollow, Shaper& shaperToUse)
        : storage(storageToFollow)
        , shaper(shaperToUse)
    {
    }

    TextStorage& storage;
    Shaper& shaper;
    double width = 0;
    RowMetrics metrics;
    int64_t visibleRows = 1;
    RowMap rows;
    LayoutCache cache;
    ShownInsertion insertion;
    Signal<> rowsMoved;
    uint64_t toldVersion = 0; ///< of the rows, that was last told
    Connection edits;

    double wrapWidth() const { return width > 0 ? width : noWrapWidth; }
    int64_t columns() const;
    void applyEdit(const TextEdit& edit, const Rope& oldText);
    void turnLines(const RowMap::Change& change);
    void layOutAnew();
    void updateCapacity();
    Segment segmentAt(int64_t offset, Affinity affinity);
    Insertion insertionIn(Range range, bool endsLine) const;
    void showAnew(int64_t offset);
    void tellRowsMoved();
};

int64_t LayoutManager::Impl::columns() const
{
    return std::max<int64_t>(1, static_cast<int64_t>(wrapWidth() / std::max(metrics.averageAdvance, 1.0)));
}

void LayoutManager::Impl::applyEdit(const TextEdit& edit, const Rope& oldText)
{
    const RowMap::Change change = rows.applyEdit(oldText, storage.text(), edit);
    cache.applyEdit(change);
    turnLines(change);
    insertion.offset = edit.moved(insertion.offset);
    tellRowsMoved();
}

/// The edit may have changed the first strong character of a long line, which tells where all its segments
/// stand.
void LayoutManager::Impl::turnLines(const RowMap::Change& change)
{
    const Rope& text = storage.text();
    const auto turnLineAt = [&](int64_t offset) {
        const Range line = text.lineRange(text.lineAt(offset));
        cache.keepDirection(line, directionOf(text, line));
        return line.end();
    };
    const int64_t end = change.replaced.end() + change.changeInLength;
    const int64_t done = change.startsInsideLine ? turnLineAt(change.replaced.location) : -1;
    if (change.endsInsideLine && end > done)
        turnLineAt(end);
}

void LayoutManager::Impl::layOutAnew()
{
    metrics = shaper.metrics();
    metrics.height = std::max(1.0, metrics.height);
    cache.clear();
    updateCapacity();
    rows.rebuild(storage.text(), columns());
    tellRowsMoved();
}

void LayoutManager::Impl::tellRowsMoved()
{
    if (std::exchange(toldVersion, rows.version()) != rows.version())
        rowsMoved.emit();
}

void LayoutManager::Impl::updateCapacity()
{
    const int64_t costOfRow = std::min(columns(), longestWholeLine) + LayoutCache::costOfSegment;
    cache.setCapacity(keptScreens * visibleRows * costOfRow + keptLongSegments * longestWholeLine);
}

Segment LayoutManager::Impl::segmentAt(int64_t offset, Affinity affinity)
{
    const Rope& text = storage.text();
    offset = std::clamp<int64_t>(offset, 0, text.length());
    if (const Segment* known = cache.find(offset, affinity))
        return *known;

    const RowMap::Piece piece = rows.pieceAt(text, offset, affinity);
    assert(offset >= piece.units.location && offset <= piece.units.end());
    const Insertion shown = insertionIn(piece.units, piece.endsLine);
    std::u16string units = text.text(piece.units);
    if (shown.length > 0)
        units.insert(static_cast<size_t>(shown.at), insertion.text);
    const bool isLine = piece.startsLine && piece.endsLine;
    const Direction direction = isLine ? directionOf(units) : directionOf(text, text.lineRange(piece.line));
    const Segment segment{.shaped = shaper.shape(units, wrapWidth(), direction),
        .range = piece.units,
        .line = piece.line,
        .startsLine = piece.startsLine,
        .endsLine = piece.endsLine,
        .insertion = shown};
    rows.setMeasured(piece, segment.rowCount());
    cache.insert(segment);
    tellRowsMoved();
    return segment;
}

/// The part of it that a segment shows: between two segments of a line it belongs to the second one.
Insertion LayoutManager::Impl::insertionIn(Range range, bool endsLine) const
{
    const bool holds = range.contains(insertion.offset) || (endsLine && insertion.offset == range.end());
    if (!holds || insertion.text.empty())
        return {};
    return {.at = insertion.offset - range.location,
        .length = static_cast<int64_t>(insertion.text.size()),
        .caret = insertion.caret};
}

/// Shapes the segment at an offset again.
void LayoutManager::Impl::showAnew(int64_t offset)
{
    cache.remove(offset);
    segmentAt(offset, Affinity::downstream);
    rowsMoved.emit(); // the rows look different, also where none was added
}

LayoutManager::LayoutManager(TextStorage& storage, Shaper& shaper)
    : m_impl(std::make_unique<Impl>(storage, shaper))
{
    m_impl->layOutAnew();
    m_impl->edits = storage.onEdit(
        [impl = m_impl.get()](const TextEdit& edit, const Rope& oldText) { impl->applyEdit(edit, oldText); });
}

LayoutManager::~LayoutManager() = default;

const Rope& LayoutManager::text() const
{
    return m_impl->storage.text();
}

void LayoutManager::setWrapWidth(double width)
{
    if (width == m_impl->width)
        return;
    m_impl->width = width;
    m_impl->layOutAnew();
}

void LayoutManager::fontChanged()
{
    m_impl->layOutAnew();
}

void LayoutManager::setVisibleRowCount(int64_t rows)
{
    m_impl->visibleRows = std::max<int64_t>(1, rows);
    m_impl->updateCapacity();
}

void LayoutManager::showInsertion(int64_t offset, std::u16string_view text, int64_t caret)
{
    Impl& self = *m_impl;
    const int64_t before = self.insertion.offset;
    const bool wasShown = !self.insertion.text.empty();
    const auto shown = text.substr(0, longestInsertion);
    self.insertion = {.offset = std::clamp<int64_t>(offset, 0, self.storage.length()),
        .text = std::u16string(shown),
        .caret = std::clamp<int64_t>(caret, 0, static_cast<int64_t>(shown.size()))};
    if (wasShown)
        self.showAnew(before);
    if (!text.empty())
        self.showAnew(self.insertion.offset);
}

RowMetrics LayoutManager::metrics() const
{
    return m_impl->metrics;
}

int64_t LayoutManager::rowCount() const
{
    return m_impl->rows.rowCount();
}

Row LayoutManager::rowAt(int64_t offset, Affinity affinity)
{
    const Segment segment = segmentAt(offset, affinity);
    return firstRowOf(segment) + segment.rowOf(offset, affinity);
}

RowLayout LayoutManager::layoutOf(Row row)
{
    const Row wanted{std::clamp<int64_t>(number(row), 0, rowCount() - 1)};
    const RowMap::Place place = m_impl->rows.placeOf(text(), wanted);
    const Segment segment = segmentAt(place.offset, Affinity::downstream);
    m_impl->tellRowsMoved();
    return segment.row(static_cast<int>(std::min<int64_t>(place.rowInPiece, segment.rowCount() - 1)));
}

Segment LayoutManager::segmentAt(int64_t offset, Affinity affinity)
{
    return m_impl->segmentAt(offset, affinity);
}

std::optional<Segment> LayoutManager::segmentBefore(const Segment& segment)
{
    if (segment.range.location == 0)
        return std::nullopt;
    return segmentAt(segment.range.location - 1);
}

std::optional<Segment> LayoutManager::segmentAfter(const Segment& segment)
{
    const int64_t end = segment.range.end();
    if (segment.endsLine && end >= text().length())
        return std::nullopt;
    return segmentAt(segment.endsLine ? end + 1 : end);
}

Row LayoutManager::firstRowOf(const Segment& segment) const
{
    assert(segment.range.end() <= text().length() && "a segment of another text");
    return m_impl->rows.firstRowAt(text(), segment.range.location);
}

Direction LayoutManager::directionAt(int64_t offset) const
{
    return directionOf(text(), text().lineRange(text().lineAt(offset)));
}

bool LayoutManager::isSettled() const
{
    return m_impl->rows.isCounted();
}

void LayoutManager::settleNear(int64_t offset)
{
    m_impl->rows.countNear(text(), offset);
    m_impl->tellRowsMoved();
}

void LayoutManager::setStretchSizes(StretchSizes sizes)
{
    m_impl->rows.setSizes(sizes);
    m_impl->layOutAnew();
}

std::string LayoutManager::checkInvariants() const
{
    return m_impl->rows.checkInvariants(text());
}

Signal<>& LayoutManager::rowsMoved()
{
    return m_impl->rowsMoved;
}

} // namespace quillmark
