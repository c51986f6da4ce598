// Turns the lines of a TextStorage into rows at a width. Shapes what is visible or asked for; how many rows
// other lines have is estimated from their length, and in a large text from samples until it is settled. No
// call takes longer in a longer text. Draws nothing itself. Main thread only; pixels are device-independent.
#pragma once

#include "editor/Segment.h"
#include "text/TextStorage.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace quillmark {

struct StretchSizes;

class LayoutManager {
public:
    LayoutManager(TextStorage& storage, Shaper& shaper);
    ~LayoutManager();

    const Rope& text() const;

    /// The rows must be made anew: another width, or another font behind the shaper. Until a width above 0 is
    /// set, nothing is wrapped.
    void setWrapWidth(double width);
    void fontChanged();
    /// How many rows are on the screen at once; about three screens of shaped text are kept.
    void setVisibleRowCount(int64_t rows);

    /// Shows text that is not in the document at an offset, as if it stood there, with the caret at `caret`
    /// units of it; the offset moves with edits. Another call replaces it, an empty text takes it away.
    void showInsertion(int64_t offset, std::u16string_view text, int64_t caret);

    RowMetrics metrics() const; ///< the height is at least 1
    int64_t rowCount() const; ///< measured rows and estimates of the others; at least 1

    /// The row that shows the caret at `offset`; measures the segment that holds it.
    Row rowAt(int64_t offset, Affinity affinity = Affinity::downstream);
    /// The layout of a row; `row` is cut to 0 … rowCount() − 1. Measures the segment that it falls into;
    /// where that has fewer rows than were estimated, its last one stands for them.
    RowLayout layoutOf(Row row);
    /// The segment that shows the caret at `offset` (cut to the text), shaped and measured. Between two
    /// segments of a line the affinity decides.
    Segment segmentAt(int64_t offset, Affinity affinity = Affinity::downstream);
    std::optional<Segment> segmentBefore(const Segment& segment); ///< none at the start of the text
    std::optional<Segment> segmentAfter(const Segment& segment); ///< none at the end of the text
    Row firstRowOf(const Segment& segment) const;
    Direction directionAt(int64_t offset) const; ///< of the line that holds the offset

    /// Calls `slot()` when rows moved because a line got more or fewer of them, by an edit or because an
    /// estimate was corrected.
    template <class Slot> [[nodiscard]] Connection onRowsMoved(Slot slot)
    {
        return Connection(rowsMoved().connect(std::move(slot)));
    }

    /// Whether rowCount() rests on each line of the text. If not, settleNear() looks at some lines more, as
    /// near to an offset as there are any; it takes about 0.1 ms.
    bool isSettled() const;
    void settleNear(int64_t offset);
    void setStretchSizes(StretchSizes sizes); ///< for tests

    /// The first broken rule in words; empty when what is kept fits the text. Walks the whole text: for
    /// tests.
    std::string checkInvariants() const;

private:
    struct Impl;
    Signal<>& rowsMoved();
    std::unique_ptr<Impl> m_impl;
};

} // namespace quillmark
