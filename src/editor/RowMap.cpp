#include "editor/RowMap.h"

#include "editor/SegmentCuts.h"

#include <algorithm>
#include <cassert>

namespace quillmark {
namespace {

/// A number of equal lines out of a run.
RowRun linesOf(const RowRun& run, int64_t units, int64_t lines)
{
    assert(lines >= 0 && lines <= run.lines && units >= lines);
    return {.units = units, .lines = lines, .rows = lines * run.rowsPerLine()};
}

} // namespace

RowMap::RowMap()
{
    rebuild(Rope(), m_columns);
}

void RowMap::rebuild(const Rope& text, int64_t columns)
{
    m_columns = std::max<int64_t>(1, columns);
    const RowRuns runs = runsOf(text, {0, text.length() + 1});
    m_runs = SumTree<RowRun>(runs.all());
    ++m_version;
}

/// The runs of a stretch that came in: a long one is a single rough run.
RowRuns RowMap::runsOf(const Rope& text, Range stretch) const
{
    if (stretch.length <= m_sizes.longest)
        return estimate(text).runsOf(stretch);
    RowRuns runs;
    runs.add(estimate(text).rough(stretch));
    return runs;
}

// Looking

/// Replaces runs and joins what is put in with its equals on both sides.
void RowMap::replaceRuns(int64_t first, int64_t last, const RowRuns& middle)
{
    assert(0 <= first && first <= last && last <= m_runs.size());
    RowRuns joined;
    if (first > 0)
        joined.add(m_runs[--first]);
    joined.add(middle);
    if (last < m_runs.size())
        joined.add(m_runs[last++]);
    m_runs.replace(first, last, joined.all());
    ++m_version;
}

/// Makes lines and segments of the stretch at an offset; of a rough one, of what is around the offset.
void RowMap::open(const Rope& text, int64_t offset)
{
    const Found found = runAt(offset);
    const RowRun run = *found.item;
    if (!run.isStretch())
        return;
    const Range stretch{found.before.units, run.units};
    const RowEstimate rows = estimate(text);
    if (run.kind == RowRun::Kind::counted)
        return replaceRuns(found.index, found.index + 1, rows.runsOf(stretch));

    const int64_t reach = m_sizes.walked / 2;
    int64_t start = stretch.location;
    if (offset - start >= 2 * reach)
        start = rows.borderAtOrBefore(stretch, offset - reach);
    int64_t end = stretch.end();
    if (end - offset > 2 * reach)
        end = rows.borderAtOrBehind(stretch, offset + reach);
    RowRuns runs;
    runs.add(rows.partOf(run, Range::between(stretch.location, start)));
    runs.add(rows.runsOf(Range::between(start, end)));
    runs.add(rows.partOf(run, Range::between(end, stretch.end())));
    replaceRuns(found.index, found.index + 1, runs);
}

void RowMap::countNear(const Rope& text, int64_t offset)
{
    if (isCounted())
        return;
    const int64_t roughBefore = runAt(std::clamp<int64_t>(offset, 0, text.length())).before.rough;
    const Found behind = m_runs.find<&RowRun::Sum::rough>(roughBefore);
    Found found = behind;
    if (roughBefore > 0) {
        const Found before = m_runs.find<&RowRun::Sum::rough>(roughBefore - 1);
        const int64_t distance = offset - (before.before.units + before.item->units);
        if (!behind.item || distance < behind.before.units - offset)
            found = before;
    }

    const RowRun run = *found.item;
    const Range stretch{found.before.units, run.units};
    const RowEstimate rows = estimate(text);
    int64_t start = stretch.location;
    int64_t end = stretch.end();
    if (stretch.length > 2 * m_sizes.walked) {
        if (found.index == behind.index)
            end = rows.borderAtOrBehind(stretch, start + m_sizes.walked);
        else
            start = rows.borderAtOrBefore(stretch, end - m_sizes.walked);
    }
    RowRuns runs;
    runs.add(rows.partOf(run, Range::between(stretch.location, start)));
    runs.add(rows.counted(Range::between(start, end)));
    runs.add(rows.partOf(run, Range::between(end, stretch.end())));
    replaceRuns(found.index, found.index + 1, runs);
}

RowMap::Piece RowMap::pieceAt(const Rope& text, int64_t offset, Affinity affinity)
{
    assert(offset >= 0 && offset <= text.length());
    assert(m_runs.summary().units == text.length() + 1 && "the map is of another text");
    if (affinity == Affinity::upstream && offset > 0 && text.at(offset - 1) != u'\n')
        --offset;
    open(text, offset);
    const Found found = runAt(offset);
    const RowRun& run = *found.item;
    if (run.kind == RowRun::Kind::segment) {
        const int64_t start = found.before.units;
        return {.units = {start, run.units - run.lines},
            .line = Line{found.before.lines},
            .startsLine = start == 0 || text.at(start - 1) == u'\n',
            .endsLine = run.lines == 1,
            .firstRow = Row{found.before.rows},
            .rows = run.rows};
    }
    const Line line = text.lineAt(offset);
    const int64_t linesBefore = number(line) - found.before.lines;
    return {.units = text.lineRange(line),
        .line = line,
        .firstRow = Row{found.before.rows + linesBefore * run.rowsPerLine()},
        .rows = run.rowsPerLine()};
}

Row RowMap::firstRowAt(const Rope& text, int64_t offset) const
{
    const Found found = runAt(offset);
    const RowRun& run = *found.item;
    if (run.kind == RowRun::Kind::lines) {
        const int64_t linesBefore = number(text.lineAt(offset)) - found.before.lines;
        return Row{found.before.rows + linesBefore * run.rowsPerLine()};
    }
    const double share = static_cast<double>(offset - found.before.units) / static_cast<double>(run.units);
    return Row{found.before.rows + static_cast<int64_t>(static_cast<double>(run.rows) * share)};
}

RowMap::Place RowMap::placeOf(const Rope& text, Row row)
{
    assert(0 <= number(row) && number(row) < rowCount());
    Found found = m_runs.find<&RowRun::Sum::rows>(number(row));
    if (found.item->isStretch()) {
        const double rowsBefore = static_cast<double>(number(row) - found.before.rows);
        const double share = rowsBefore / static_cast<double>(found.item->rows);
        const auto units = static_cast<int64_t>(static_cast<double>(found.item->units) * share);
        const int64_t offset = std::min(found.before.units + units, text.length());
        open(text, offset);
        found = m_runs.find<&RowRun::Sum::rows>(number(row));
        if (!found.item || found.item->isStretch())
            return {pieceAt(text, offset, Affinity::downstream).units.location};
    }
    const int64_t rowInRun = number(row) - found.before.rows;
    if (found.item->kind == RowRun::Kind::segment)
        return {found.before.units, rowInRun};
    const int64_t rowsPerLine = found.item->rowsPerLine();
    return {text.startOf(Line{found.before.lines + rowInRun / rowsPerLine}), rowInRun % rowsPerLine};
}

void RowMap::setMeasured(const Piece& piece, int64_t rows)
{
    assert(rows >= 1);
    const Found found = runAt(piece.units.location);
    const RowRun run = *found.item;
    assert(!run.isStretch());
    if (run.kind == RowRun::Kind::segment) {
        if (run.rows == rows)
            return;
        m_runs.edit(found.index, [rows](RowRun& segment) { segment.rows = rows; });
        ++m_version;
        return;
    }
    if (run.rowsPerLine() == rows)
        return;
    const int64_t linesBefore = number(piece.line) - found.before.lines;
    const int64_t unitsBefore = piece.units.location - found.before.units;
    const int64_t units = piece.units.length + 1;
    RowRuns middle;
    middle.add(linesOf(run, unitsBefore, linesBefore));
    middle.add({.units = units, .lines = 1, .rows = rows});
    middle.add(linesOf(run, run.units - unitsBefore - units, run.lines - linesBefore - 1));
    replaceRuns(found.index, found.index + 1, middle);
}

// Editing

/// Takes in segments before the edit until what is made anew begins at the start of a line, or inside a line
/// that is still long, between two characters, and with enough units for a segment.
RowMap::Piece RowMap::growToLeft(
    Piece left, const Piece& right, const Rope& oldText, const Rope& text, int64_t change)
{
    constexpr int mostSteps = 4; // a character may be longer than a segment
    for (int step = 0; step < mostSteps && !left.startsLine; ++step) {
        const int64_t start = left.units.location;
        const Range line = text.lineRange(text.lineAt(start));
        if (line.length <= segmentTarget)
            return pieceAt(oldText, line.location, Affinity::downstream);
        const int64_t part = std::min(line.end(), right.units.end() + change) - start;
        if (part >= shortestSegment && isCharacterBoundary(text, start))
            break;
        left = pieceAt(oldText, start, Affinity::upstream);
    }
    return left;
}

RowMap::Piece RowMap::growToRight(
    const Piece& left, Piece right, const Rope& oldText, const Rope& text, int64_t change)
{
    constexpr int mostSteps = 4;
    for (int step = 0; step < mostSteps && !right.endsLine; ++step) {
        const int64_t end = right.units.end() + change;
        const Range line = text.lineRange(text.lineAt(end));
        if (line.length <= segmentTarget)
            return pieceAt(oldText, line.end() - change, Affinity::downstream);
        const int64_t part = end - std::max(line.location, left.units.location);
        if (part >= shortestSegment && isCharacterBoundary(text, end))
            break;
        right = pieceAt(oldText, right.units.end(), Affinity::downstream);
    }
    return right;
}

RowMap::Change RowMap::applyEdit(const Rope& oldText, const Rope& text, const TextEdit& edit)
{
    const Range replaced = edit.replaced();
    const int64_t change = edit.changeInLength;
    assert(text.length() == oldText.length() + change && replaced.end() <= oldText.length());
    const int64_t changeInLines = text.lineCount() - oldText.lineCount();
    if (replaced == Range{0, oldText.length()}) {
        rebuild(text, m_columns);
        return {.replaced = replaced, .changeInLength = change, .changeInLines = changeInLines};
    }
    Piece left = pieceAt(oldText, replaced.location, Affinity::upstream);
    Piece right = pieceAt(oldText, replaced.end(), Affinity::upstream);
    left = growToLeft(left, right, oldText, text, change);
    right = growToRight(left, right, oldText, text, change);
    const int64_t start = left.units.location;
    const int64_t oldEnd = right.units.end() + (right.endsLine ? 1 : 0); // with the line feed

    const Found first = runAt(start);
    const Found last = runAt(right.units.location);
    RowRuns middle;
    if (first.item->kind == RowRun::Kind::lines)
        middle.add(linesOf(*first.item, start - first.before.units, number(left.line) - first.before.lines));
    middle.add(runsOf(text, Range::between(start, oldEnd + change)));
    if (last.item->kind == RowRun::Kind::lines)
        middle.add(linesOf(*last.item, last.before.units + last.item->units - oldEnd,
            last.before.lines + last.item->lines - number(right.line) - 1));
    replaceRuns(first.index, last.index + 1, middle);
    assert(m_runs.summary().units == text.length() + 1);
    return {.replaced = Range::between(start, right.units.end()),
        .changeInLength = change,
        .changeInLines = changeInLines,
        .startsInsideLine = !left.startsLine,
        .endsInsideLine = !right.endsLine};
}

// For tests

std::string RowMap::checkRun(const Rope& text, const RowRun& run, Range stretch) const
{
    const std::u16string units = text.text(stretch) + (stretch.end() > text.length() ? u"\n" : u"");
    if (std::count(units.begin(), units.end(), u'\n') != run.lines)
        return "has other lines";
    const bool startsLine = stretch.location == 0 || text.at(stretch.location - 1) == u'\n';
    const bool endsLine = units.back() == u'\n';
    switch (run.kind) {
    case RowRun::Kind::lines:
        if (!startsLine || !endsLine || run.rows < run.lines || run.rows % run.lines != 0)
            return "is not of whole lines";
        return estimate(text).runsOf(stretch).hasOnlyLines() ? "" : "holds a line that is too long";
    case RowRun::Kind::segment:
        if (run.rows < 1 || run.lines > 1 || (run.lines == 1) != endsLine
            || run.units - run.lines > longestWholeLine)
            return "is not a segment";
        return {};
    case RowRun::Kind::counted: // the cuts of a long line move when it is edited before the stretch
        return startsLine && estimate(text).counted(stretch) != run ? "is counted wrongly" : "";
    case RowRun::Kind::rough:
        return run.rows < std::max<int64_t>(1, run.lines) ? "has too few rows" : "";
    }
    return "is of no kind";
}

std::string RowMap::checkInvariants(const Rope& text) const
{
    if (std::string broken = m_runs.checkInvariants(); !broken.empty())
        return broken;
    std::string broken;
    int64_t start = 0;
    m_runs.forEach(0, m_runs.size(), [&](const RowRun& run) {
        const Range stretch{start, run.units};
        start = stretch.end();
        if (run.units < 1 || start > text.length() + 1)
            broken = "does not fit";
        else
            broken = checkRun(text, run, stretch);
        return broken.empty();
    });
    if (!broken.empty())
        return "the run that ends at " + std::to_string(start) + " " + broken;
    return start == text.length() + 1 ? "" : "the runs end at " + std::to_string(start);
}

} // namespace quillmark
