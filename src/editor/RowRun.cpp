#include "editor/RowRun.h"

#include "editor/LineWalk.h"
#include "editor/SegmentCuts.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace quillmark {
namespace {

/// The part of the line at an offset that lies in a stretch.
struct LineInStretch {
    LineInStretch(const Rope& text, Range stretch, int64_t offset)
    {
        const Range line = text.lineRange(text.lineAt(offset));
        endsInStretch = line.end() < stretch.end();
        part.lineStart = line.location;
        part.units
            = Range::between(std::max(line.location, stretch.location), std::min(line.end(), stretch.end()));
    }
    bool isOneRun() const { return endsInStretch && part.units.location == part.lineStart && part.isShort(); }

    LinePart part;
    bool endsInStretch = false;
};

bool areAlike(const RowRun& a, const RowRun& b)
{
    return a.kind == RowRun::Kind::lines && b.kind == RowRun::Kind::lines
        && a.rowsPerLine() == b.rowsPerLine();
}

} // namespace

void RowRuns::add(const RowRun& run)
{
    if (run.units == 0)
        return;
    assert(run.units >= run.lines && run.lines >= 0 && run.rows >= 1);
    if (m_runs.empty() || !areAlike(m_runs.back(), run)) {
        m_runs.push_back(run);
        return;
    }
    m_runs.back().units += run.units;
    m_runs.back().lines += run.lines;
    m_runs.back().rows += run.rows;
}

void RowRuns::add(const RowRuns& runs)
{
    for (const RowRun& run : runs.all())
        add(run);
}

bool RowRuns::hasOnlyLines() const
{
    return std::ranges::all_of(m_runs, [](const RowRun& run) { return run.kind == RowRun::Kind::lines; });
}

int64_t RowEstimate::rowsOf(int64_t units) const
{
    return units <= m_columns ? 1 : (units + m_columns - 1) / m_columns;
}

int64_t RowEstimate::linesIn(Range stretch) const
{
    const auto lineFeedsBefore = [this](int64_t offset) {
        return offset > m_text.length() ? m_text.lineCount() : number(m_text.lineAt(offset));
    };
    return lineFeedsBefore(stretch.end()) - lineFeedsBefore(stretch.location);
}

/// Calls `visit(run)` for each line and each segment of a long line.
template <class Visit> void RowEstimate::forEachRun(Range stretch, Visit visit) const
{
    const int64_t firstLineStart = m_text.startOf(m_text.lineAt(stretch.location));
    const bool endsInsideLine = stretch.end() <= m_text.length() && m_text.at(stretch.end() - 1) != u'\n';
    const Range inside{stretch.location, stretch.length - (endsInsideLine ? 0 : 1)};
    forEachLine(m_text, inside, [&](Range units) {
        const bool startsInsideLine = units.location == inside.location && firstLineStart < inside.location;
        const int64_t lines = endsInsideLine && units.end() == inside.end() ? 0 : 1;
        const LinePart part{startsInsideLine ? firstLineStart : units.location, units};
        if (!startsInsideLine && lines == 1 && part.isShort()) {
            visit(RowRun{.units = units.length + 1, .lines = 1, .rows = rowsOf(units.length)});
            return;
        }
        int64_t start = units.location;
        for (const int64_t end : segmentEnds(m_text, part)) {
            const int64_t lineFeed = end == units.end() ? lines : 0;
            visit(RowRun{.units = end - start + lineFeed,
                .lines = lineFeed,
                .rows = rowsOf(end - start),
                .kind = RowRun::Kind::segment});
            start = end;
        }
    });
}

RowRuns RowEstimate::runsOf(Range stretch) const
{
    RowRuns runs;
    forEachRun(stretch, [&runs](const RowRun& run) { runs.add(run); });
    return runs;
}

RowRun RowEstimate::counted(Range stretch) const
{
    RowRun sum{.kind = RowRun::Kind::counted};
    forEachRun(stretch, [&sum](const RowRun& run) {
        sum.units += run.units;
        sum.lines += run.lines;
        sum.rows += run.rows;
    });
    return sum;
}

RowRun RowEstimate::rough(Range stretch) const
{
    constexpr int64_t samples = 16;
    constexpr int64_t sampleLength = 4096; // units
    int64_t extraRows = 0; // besides one for each line feed
    int64_t units = 0;
    for (int64_t sample = 0; sample < samples; ++sample) {
        const int64_t offset = stretch.location + stretch.length / samples * sample;
        const RowRun counted = this->counted(Range::between(borderAtOrBefore(stretch, offset),
            borderAtOrBehind(stretch, std::min(offset + sampleLength, stretch.end()))));
        extraRows += counted.rows - counted.lines;
        units += counted.units;
    }
    assert(units > 0);
    const double extra
        = static_cast<double>(extraRows) / static_cast<double>(units) * static_cast<double>(stretch.length);
    const int64_t lines = linesIn(stretch);
    return {.units = stretch.length,
        .lines = lines,
        .rows = std::max<int64_t>(1, lines + std::llround(extra)),
        .kind = RowRun::Kind::rough};
}

RowRun RowEstimate::partOf(const RowRun& rough, Range part) const
{
    if (part.isEmpty())
        return {};
    assert(rough.kind == RowRun::Kind::rough && part.length <= rough.units);
    const int64_t lines = linesIn(part);
    const double share = static_cast<double>(part.length) / static_cast<double>(rough.units);
    const int64_t extra = std::llround(static_cast<double>(rough.rows - rough.lines) * share);
    return {.units = part.length,
        .lines = lines,
        .rows = std::max<int64_t>(1, lines + extra),
        .kind = RowRun::Kind::rough};
}

int64_t RowEstimate::borderAtOrBefore(Range stretch, int64_t offset) const
{
    if (offset <= stretch.location)
        return stretch.location;
    assert(offset < stretch.end());
    const LineInStretch line(m_text, stretch, offset);
    return line.isOneRun() ? line.part.units.location : cutAtOrBefore(m_text, line.part, offset);
}

int64_t RowEstimate::borderAtOrBehind(Range stretch, int64_t offset) const
{
    if (offset >= stretch.end())
        return stretch.end();
    const LineInStretch line(m_text, stretch, offset);
    const Range units = line.part.units;
    if (offset <= units.location)
        return units.location;
    const int64_t cut = line.isOneRun() ? units.end() : cutAtOrBehind(m_text, line.part, offset);
    return cut == units.end() && line.endsInStretch ? cut + 1 : cut;
}

} // namespace quillmark
