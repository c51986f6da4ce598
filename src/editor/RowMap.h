// How many rows each line of a text has: measured or estimated, found by line or by row in O(log n), shifted
// by edits. Long lines are kept as segments whose borders stay where they are while the text between other
// borders is edited.
#pragma once

#include "base/SumTree.h"
#include "platform/Shaper.h"
#include "text/TextStorage.h"

#include <string>
#include <vector>

namespace quillmark {

/// An item of the map: lines with equally many rows, or one segment of a long line.
struct RowRun {
    struct Sum {
        int64_t lines = 0;
        int64_t rows = 0;
        int64_t units = 0; ///< of segments alone

        Sum& operator+=(const Sum& other);
        bool operator==(const Sum&) const = default;
    };

    int64_t lines = 0; ///< how many; of segments, the first one of its line counts 1 and the others 0
    int32_t rows = 1; ///< of each line, or of the segment
    int16_t units = 0; ///< of a segment; 0 when these are lines
    bool isMeasured = false;

    bool isSegment() const { return units > 0; }
    Sum summary() const { return {lines, isSegment() ? rows : rows * lines, units}; }
    bool operator==(const RowRun&) const = default;
};

class RowMap {
public:
    /// A line, or a segment of a long one. Good until the map changes.
    struct Piece {
        Line line{};
        Range units; ///< in the line
        bool endsLine = true;
        Row firstRow{};
        int64_t rows = 1;
        bool isMeasured = false;

        int64_t index = 0; ///< of the run that holds it
        int64_t lineInRun = 0;
    };

    /// What an edit made anew: whole pieces.
    struct Change {
        Range replaced; ///< in the old text
        int64_t changeInLength = 0;
        int64_t changeInLines = 0;
        bool endsInsideLine = false; ///< a segment of the same line follows
        Row first{};
        int64_t changeInRows = 0;
    };

    struct Place {
        Line line{};
        int64_t start = 0; ///< of the piece, in the line
        Row firstRow{};
    };

    RowMap(); ///< of the empty text

    /// Forgets all measurements. `columns` is how many characters a row takes, for estimates.
    void rebuild(const Rope& text, int64_t columns);
    Change applyEdit(const Rope& oldText, const Rope& text, const TextEdit& edit);

    int64_t lineCount() const { return m_runs.summary().lines; }
    int64_t rowCount() const { return m_runs.summary().rows; }
    Row firstRowOf(Line line) const;
    Place placeOf(Row row) const; ///< 0 ≤ row < rowCount()

    /// The piece that shows the caret at an offset in a line of `length` units; between two the affinity
    /// decides.
    Piece pieceAt(Line line, int64_t length, int64_t offset, Affinity affinity) const;
    void setMeasured(const Piece& piece, int rows);

    /// The first broken rule in words; empty when the map fits the text. Walks the text: for tests.
    std::string checkInvariants(const Rope& text) const;

private:
    class Runs;
    struct Edge;

    int32_t estimatedRows(int64_t units) const;
    void appendLines(
        Runs& runs, const Rope& text, Range range, bool startsInsideLine, bool endsInsideLine) const;
    Edge edgeAt(const Rope& text, int64_t offset) const;
    void growToLeft(Edge& left, const Edge& right, const Rope& text, int64_t changeInLength) const;
    void growToRight(const Edge& left, Edge& right, const Rope& text, int64_t changeInLength) const;
    void replaceRuns(int64_t first, int64_t last, const Runs& middle);

    SumTree<RowRun> m_runs;
    int64_t m_columns = 80;
};

} // namespace quillmark
