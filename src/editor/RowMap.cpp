#include "editor/RowMap.h"

#include "editor/LineWalk.h"
#include "editor/SegmentCuts.h"

#include <algorithm>
#include <cassert>

namespace quillmark {

/// Runs in order, equal neighbours as one.
class RowMap::Runs {
public:
    void add(RowRun run)
    {
        if (run.lines == 0 && !run.isSegment())
            return;
        if (!m_runs.empty() && canJoin(m_runs.back(), run))
            m_runs.back().lines += run.lines;
        else
            m_runs.push_back(run);
    }
    const std::vector<RowRun>& all() const { return m_runs; }

private:
    static bool canJoin(const RowRun& a, const RowRun& b)
    {
        return !a.isSegment() && !b.isSegment() && a.rows == b.rows && a.isMeasured == b.isMeasured;
    }

    std::vector<RowRun> m_runs;
};

/// The piece of the old text in which an edit starts or ends.
struct RowMap::Edge {
    Range lineRange;
    Piece piece;

    int64_t start() const { return lineRange.location + piece.units.location; }
    int64_t end() const { return lineRange.location + piece.units.end(); }
    bool startsInsideLine() const { return piece.units.location > 0; }
};

RowRun::Sum& RowRun::Sum::operator+=(const Sum& other)
{
    lines += other.lines;
    rows += other.rows;
    units += other.units;
    return *this;
}

RowMap::RowMap()
{
    rebuild(Rope(), m_columns);
}

void RowMap::rebuild(const Rope& text, int64_t columns)
{
    m_columns = std::max<int64_t>(1, columns);
    Runs runs;
    appendLines(runs, text, {0, text.length()}, false, false);
    m_runs = SumTree<RowRun>(runs.all());
}

int32_t RowMap::estimatedRows(int64_t units) const
{
    return units <= m_columns ? 1 : static_cast<int32_t>((units + m_columns - 1) / m_columns);
}

/// The runs of a stretch of text that begins and ends at borders of pieces.
void RowMap::appendLines(
    Runs& runs, const Rope& text, Range range, bool startsInsideLine, bool endsInsideLine) const
{
    forEachLine(text, range, [&](Range part) {
        const bool continuesLine = startsInsideLine && part.location == range.location;
        const bool isContinued = endsInsideLine && part.end() == range.end();
        if (!continuesLine && !isContinued && part.length <= longestWholeLine)
            return runs.add({.lines = 1, .rows = estimatedRows(part.length)});
        int64_t lines = continuesLine ? 0 : 1;
        for (const int64_t length : segmentLengths(text, part)) {
            runs.add({.lines = lines, .rows = estimatedRows(length), .units = static_cast<int16_t>(length)});
            lines = 0;
        }
    });
}

Row RowMap::firstRowOf(Line line) const
{
    const auto found = m_runs.find<&RowRun::Sum::lines>(number(line));
    if (!found.item)
        return Row{rowCount()};
    const int64_t linesBefore = number(line) - found.before.lines;
    return Row{found.before.rows + linesBefore * found.item->rows};
}

RowMap::Place RowMap::placeOf(Row row) const
{
    const auto found = m_runs.find<&RowRun::Sum::rows>(number(row));
    assert(found.item);
    if (!found.item->isSegment()) {
        const int64_t lineInRun = (number(row) - found.before.rows) / found.item->rows;
        return {.line = Line{found.before.lines + lineInRun},
            .firstRow = Row{found.before.rows + lineInRun * found.item->rows}};
    }
    const Line line{found.before.lines - (found.item->lines == 0 ? 1 : 0)};
    const auto lineStart = m_runs.find<&RowRun::Sum::lines>(number(line));
    return {.line = line,
        .start = found.before.units - lineStart.before.units,
        .firstRow = Row{found.before.rows}};
}

RowMap::Piece RowMap::pieceAt(Line line, int64_t length, int64_t offset, Affinity affinity) const
{
    const auto found = m_runs.find<&RowRun::Sum::lines>(number(line));
    assert(found.item);
    if (!found.item->isSegment()) {
        const int64_t lineInRun = number(line) - found.before.lines;
        return {.line = line,
            .units = {0, length},
            .firstRow = Row{found.before.rows + lineInRun * found.item->rows},
            .rows = found.item->rows,
            .isMeasured = found.item->isMeasured,
            .index = found.index,
            .lineInRun = lineInRun};
    }
    const int64_t unit
        = std::clamp<int64_t>(offset - (affinity == Affinity::upstream ? 1 : 0), 0, length - 1);
    const auto segment = m_runs.find<&RowRun::Sum::units>(found.before.units + unit);
    assert(segment.item);
    const Range units{segment.before.units - found.before.units, segment.item->units};
    return {.line = line,
        .units = units,
        .endsLine = units.end() == length,
        .firstRow = Row{segment.before.rows},
        .rows = segment.item->rows,
        .isMeasured = segment.item->isMeasured,
        .index = segment.index};
}

void RowMap::setMeasured(const Piece& piece, int rows)
{
    if (piece.isMeasured && piece.rows == rows)
        return;
    const RowRun run = m_runs[piece.index];
    if (run.isSegment()) {
        m_runs.edit(piece.index, [rows](RowRun& segment) {
            segment.rows = rows;
            segment.isMeasured = true;
        });
        return;
    }
    const auto lines = [&run](int64_t count) {
        RowRun part = run;
        part.lines = count;
        return part;
    };
    Runs middle;
    middle.add(lines(piece.lineInRun));
    middle.add({.lines = 1, .rows = rows, .isMeasured = true});
    middle.add(lines(run.lines - piece.lineInRun - 1));
    replaceRuns(piece.index, piece.index + 1, middle);
}

/// Replaces runs and joins what is put in with its equals on both sides.
void RowMap::replaceRuns(int64_t first, int64_t last, const Runs& middle)
{
    Runs joined;
    if (first > 0)
        joined.add(m_runs[--first]);
    for (const RowRun& run : middle.all())
        joined.add(run);
    if (last < m_runs.size())
        joined.add(m_runs[last++]);
    m_runs.replace(first, last, joined.all());
}

RowMap::Edge RowMap::edgeAt(const Rope& text, int64_t offset) const
{
    const Line line = text.lineAt(offset);
    const Range lineRange = text.lineRange(line);
    return {lineRange, pieceAt(line, lineRange.length, offset - lineRange.location, Affinity::upstream)};
}

/// Takes in segments before the edit until what is made anew begins at the start of a line, or inside a line
/// that is still long, between two characters, and with enough units for a segment.
void RowMap::growToLeft(Edge& left, const Edge& right, const Rope& text, int64_t changeInLength) const
{
    constexpr int mostSteps = 4; // a character may be longer than a segment
    const auto grow = [&](int64_t offset) {
        left.piece = pieceAt(left.piece.line, left.lineRange.length, offset, Affinity::upstream);
    };
    for (int step = 0; step < mostSteps && left.startsInsideLine(); ++step) {
        const Range line = text.lineRange(left.piece.line);
        if (line.length <= segmentTarget)
            return grow(0);
        const int64_t part = std::min(line.end(), right.end() + changeInLength) - left.start();
        if (part >= shortestSegment && isCharacterBoundary(text, left.start()))
            return;
        grow(left.piece.units.location);
    }
}

void RowMap::growToRight(const Edge& left, Edge& right, const Rope& text, int64_t changeInLength) const
{
    constexpr int mostSteps = 4;
    const auto grow = [&](int64_t offset) {
        right.piece = pieceAt(right.piece.line, right.lineRange.length, offset, Affinity::downstream);
    };
    for (int step = 0; step < mostSteps && !right.piece.endsLine; ++step) {
        const int64_t end = right.end() + changeInLength;
        const Range line = text.lineRange(text.lineAt(end));
        if (line.length <= segmentTarget)
            return grow(right.lineRange.length);
        const int64_t part = end - std::max(line.location, left.start());
        if (part >= shortestSegment && isCharacterBoundary(text, end))
            return;
        grow(right.piece.units.end());
    }
}

RowMap::Change RowMap::applyEdit(const Rope& oldText, const Rope& text, const TextEdit& edit)
{
    const Range replaced = edit.replaced();
    Edge left = edgeAt(oldText, replaced.location);
    Edge right = edgeAt(oldText, replaced.end());
    growToLeft(left, right, text, edit.changeInLength);
    growToRight(left, right, text, edit.changeInLength);

    const Range oldRange = Range::between(left.start(), right.end());
    const Range newRange{oldRange.location, oldRange.length + edit.changeInLength};
    const RowRun::Sum before = m_runs.summary();

    Runs middle;
    const auto addRest = [&](const Piece& piece, int64_t lines) {
        RowRun run = m_runs[piece.index];
        if (run.isSegment())
            return;
        run.lines = lines;
        middle.add(run);
    };
    addRest(left.piece, left.piece.lineInRun);
    appendLines(middle, text, newRange, left.startsInsideLine(), !right.piece.endsLine);
    addRest(right.piece, m_runs[right.piece.index].lines - right.piece.lineInRun - 1);
    replaceRuns(left.piece.index, right.piece.index + 1, middle);

    const RowRun::Sum after = m_runs.summary();
    return {.replaced = oldRange,
        .changeInLength = edit.changeInLength,
        .changeInLines = after.lines - before.lines,
        .endsInsideLine = !right.piece.endsLine,
        .first = left.piece.firstRow,
        .changeInRows = after.rows - before.rows};
}

std::string RowMap::checkInvariants(const Rope& text) const
{
    if (std::string broken = m_runs.checkInvariants(); !broken.empty())
        return broken;
    if (lineCount() != text.lineCount())
        return "lines: " + std::to_string(lineCount()) + ", in the text: " + std::to_string(text.lineCount());
    std::string broken;
    int64_t line = 0;
    int64_t units = 0; // of segments of the line so far
    int64_t length = 0;
    m_runs.forEach(0, m_runs.size(), [&](const RowRun& run) {
        if (run.lines > 0) {
            if (units != 0 && units != length)
                broken = "the segments before line " + std::to_string(line) + " do not add up";
            units = 0;
            length = text.lineRange(Line{line}).length;
        }
        units += run.units;
        if (run.rows < 1 || run.units > longestWholeLine || (run.isSegment() && units > length))
            broken = "a run at line " + std::to_string(line) + " is out of bounds";
        line += run.lines;
        return broken.empty();
    });
    if (broken.empty() && units != 0 && units != length)
        broken = "the segments of the last line do not add up";
    return broken;
}

} // namespace quillmark
