// How many rows each piece of a text has: measured, counted from its length or, where nobody has looked yet,
// inferred from samples. Found by offset or by row in O(log n), shifted by edits. A new text of any size
// takes a few samples; a place is looked at when somebody asks for it, and the rest bit by bit (countNear).
// Long lines are kept as segments whose borders stay where they are while the text between others is edited.
#pragma once

#include "base/SumTree.h"
#include "editor/RowRun.h"
#include "platform/Shaper.h"
#include "text/TextStorage.h"

#include <string>

namespace quillmark {

/// In units. Tests make them small, so that a short text has many stretches.
struct StretchSizes {
    int64_t walked = 32 * 1024; ///< how much around a place is looked at at once
    int64_t longest = 256 * 1024; ///< a longer text is not walked when it comes in
};

class RowMap {
public:
    /// A line, or a segment of a long one. Good until the text changes.
    struct Piece {
        Range units; ///< in the text, without the line feed
        Line line{};
        bool startsLine = true;
        bool endsLine = true;
        Row firstRow{};
        int64_t rows = 1;
    };

    /// What an edit made anew: whole pieces.
    struct Change {
        Range replaced; ///< in the old text
        int64_t changeInLength = 0;
        int64_t changeInLines = 0;
        bool startsInsideLine = false; ///< a segment of the same line comes before
        bool endsInsideLine = false; ///< a segment of the same line follows
    };

    struct Place {
        int64_t offset = 0; ///< in the piece
        int64_t rowInPiece = 0;
    };

    RowMap(); ///< of the empty text

    void setSizes(StretchSizes sizes) { m_sizes = sizes; } ///< before a rebuild

    /// Forgets all measurements. `columns` is how many characters a row takes, for estimates.
    void rebuild(const Rope& text, int64_t columns);
    Change applyEdit(const Rope& oldText, const Rope& text, const TextEdit& edit);

    // All of them want the text that the map was made of.

    int64_t rowCount() const { return m_runs.summary().rows; }
    Row firstRowAt(const Rope& text, int64_t offset) const; ///< of the piece that starts there
    /// Where a row is, 0 ≤ row < rowCount(). Looks at what is there, which may move the row: then the place
    /// is near by.
    Place placeOf(const Rope& text, Row row);
    /// The piece that shows the caret at an offset; between two of a line the affinity decides.
    Piece pieceAt(const Rope& text, int64_t offset, Affinity affinity);
    void setMeasured(const Piece& piece, int64_t rows);

    bool isCounted() const { return m_runs.summary().rough == 0; } ///< no samples are left
    /// Counts some text that was not looked at yet, as near to an offset as there is any.
    void countNear(const Rope& text, int64_t offset);

    /// Goes up whenever the number of rows changes somewhere.
    uint64_t version() const { return m_version; }

    /// The first broken rule in words; empty when the map fits the text. Walks the text: for tests.
    std::string checkInvariants(const Rope& text) const;

private:
    using Found = SumTree<RowRun>::Found;

    Found runAt(int64_t offset) const { return m_runs.find<&RowRun::Sum::units>(offset); }
    RowEstimate estimate(const Rope& text) const { return {text, m_columns}; }
    RowRuns runsOf(const Rope& text, Range stretch) const;
    void open(const Rope& text, int64_t offset);
    Piece growToLeft(Piece left, const Piece& right, const Rope& oldText, const Rope& text, int64_t change);
    Piece growToRight(const Piece& left, Piece right, const Rope& oldText, const Rope& text, int64_t change);
    void replaceRuns(int64_t first, int64_t last, const RowRuns& middle);
    std::string checkRun(const Rope& text, const RowRun& run, Range stretch) const;

    SumTree<RowRun> m_runs;
    int64_t m_columns = 80;
    StretchSizes m_sizes;
    uint64_t m_version = 0;
};

} // namespace quillmark
