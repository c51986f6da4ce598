// Turns the lines of a TextStorage into rows at a width. Shapes what is visible or asked for; the heights of
// lines not yet seen are estimated from their length. Draws nothing itself. Main thread only; pixels are
// device-independent.
#pragma once

#include "platform/Shaper.h"
#include "text/TextStorage.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace quillmark {

/// One row on the screen: the stretch of text it shows and the shaped text that knows its glyphs.
struct RowLayout {
    std::shared_ptr<const ShapedText> shaped;
    int rowInShaped = 0;
    int64_t shapedStart = 0; ///< offset in the text where `shaped` begins
    Range range; ///< units of the row in the text, without the line feed
    Line line{};
    bool startsLine = false;
    bool endsLine = false; ///< a line feed or the end of the text follows

    double xOfOffset(int64_t offset) const; ///< `offset` is cut to the row
    int64_t offsetAtX(double x) const; ///< the caret stop of the row that is nearest to x
    double width() const;
};

/// What is shaped at once: a line, or a piece of about 2,000 units of a line that is longer. A segment starts
/// a row. Good until the text, the width or the font changes.
struct Segment {
    std::shared_ptr<const ShapedText> shaped;
    Range range; ///< without the line feed
    Line line{};
    bool startsLine = false;
    bool endsLine = false;

    int rowCount() const { return shaped->rowCount(); }
    RowLayout row(int index) const;
    /// The row that shows the caret at `offset`, which is cut to the segment.
    int rowOf(int64_t offset, Affinity affinity) const;
};

class LayoutManager {
public:
    LayoutManager(TextStorage& storage, Shaper& shaper);
    ~LayoutManager();

    const Rope& text() const;

    /// The rows must be made anew: another width, or another font behind the shaper. One pass over the text.
    /// Until a width above 0 is set, nothing is wrapped.
    void setWrapWidth(double width);
    void fontChanged();
    /// How many rows are on the screen at once; about three screens of shaped text are kept.
    void setVisibleRowCount(int64_t rows);

    RowMetrics metrics() const; ///< the height is at least 1
    int64_t rowCount() const; ///< measured rows and estimates of the others; at least 1

    /// The row that shows the caret at `offset`; measures the segment that holds it.
    Row rowAt(int64_t offset, Affinity affinity = Affinity::downstream);
    /// The layout of a row; `row` is cut to 0 … rowCount() − 1. Measures the segment that it falls into;
    /// where that has fewer rows than were estimated, its last one stands for them.
    RowLayout layoutOf(Row row);
    /// The first row of a line, as far as is known, without measuring.
    Row firstRowOf(Line line) const;

    /// The segment that shows the caret at `offset` (cut to the text), shaped and measured. Between two
    /// segments of a line the affinity decides.
    Segment segmentAt(int64_t offset, Affinity affinity = Affinity::downstream);
    std::optional<Segment> segmentBefore(const Segment& segment); ///< none at the start of the text
    std::optional<Segment> segmentAfter(const Segment& segment); ///< none at the end of the text
    Row firstRowOf(const Segment& segment) const;

    /// Calls `slot(Row first, int64_t change)` when rows from `first` on moved by `change` because a line got
    /// more or fewer rows, by an edit or because an estimate was corrected.
    template <class Slot> [[nodiscard]] Connection onRowsMoved(Slot slot)
    {
        return Connection(rowsMoved().connect(std::move(slot)));
    }

    /// The first broken rule in words; empty when what is kept fits the text. Walks the whole text: for
    /// tests.
    std::string checkInvariants() const;

private:
    struct Impl;
    Signal<Row, int64_t>& rowsMoved();
    std::unique_ptr<Impl> m_impl;
};

} // namespace quillmark
