// The items of the row map, and how many rows a text may have before it is shaped: estimates from lengths.
// Pure functions of a text. A stretch is counted with the line feeds in it; the end of the text counts as one
// more, so that each line ends with one.
#pragma once

#include "text/Rope.h"

#include <cassert>
#include <cstdint>
#include <span>
#include <vector>

namespace quillmark {

/// A stretch of text and its rows. One that begins or ends inside a line does so where a long line is cut.
struct RowRun {
    enum class Kind : uint8_t {
        lines, ///< whole lines with equally many rows each
        segment, ///< one of a long line
        counted, ///< any; all its lines were looked at, but only their sum is kept
        rough, ///< any; its rows are inferred from samples
    };
    struct Sum {
        int64_t units = 0;
        int64_t lines = 0; ///< that end here
        int64_t rows = 0;
        int64_t rough = 0; ///< units of rough stretches

        Sum& operator+=(const Sum& other)
        {
            units += other.units;
            lines += other.lines;
            rows += other.rows;
            rough += other.rough;
            return *this;
        }
        bool operator==(const Sum&) const = default;
    };

    int64_t units = 0;
    int64_t lines = 0; ///< that end here: of segments, the last one of its line counts 1 and the others 0
    int64_t rows = 0; ///< of all lines together
    Kind kind = Kind::lines;

    int64_t rowsPerLine() const ///< of lines
    {
        assert(kind == Kind::lines && lines > 0 && rows % lines == 0);
        return rows / lines;
    }
    bool isStretch() const { return kind == Kind::counted || kind == Kind::rough; }
    Sum summary() const { return {units, lines, rows, kind == Kind::rough ? units : 0}; }
    bool operator==(const RowRun&) const = default;
};

/// Runs in order; lines with equally many rows are joined.
class RowRuns {
public:
    void add(const RowRun& run); ///< nothing when it has no units
    void add(const RowRuns& runs);
    std::span<const RowRun> all() const& { return m_runs; }
    std::span<const RowRun> all() && = delete;
    bool hasOnlyLines() const;

private:
    std::vector<RowRun> m_runs;
};

class RowEstimate {
public:
    /// `columns` is how many characters a row takes.
    RowEstimate(const Rope& text, int64_t columns)
        : m_text(text)
        , m_columns(columns)
    {
    }

    RowRuns runsOf(Range stretch) const; ///< lines and segments; walks the stretch
    RowRun counted(Range stretch) const; ///< walks the stretch
    RowRun rough(Range stretch) const; ///< walks some samples
    /// A part of a rough run, as if its rows were spread evenly. Walks nothing.
    RowRun partOf(const RowRun& rough, Range part) const;

    // The nearest places where a stretch may be cut in two, else its own ends: where lines begin or long
    // lines are cut.
    int64_t borderAtOrBefore(Range stretch, int64_t offset) const;
    int64_t borderAtOrBehind(Range stretch, int64_t offset) const;

private:
    template <class Visit> void forEachRun(Range stretch, Visit visit) const;
    int64_t rowsOf(int64_t units) const;
    int64_t linesIn(Range stretch) const;

    const Rope& m_text;
    int64_t m_columns;
};

} // namespace quillmark
