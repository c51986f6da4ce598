// What the layout hands out: a shaped piece of a line and the rows that it has. Values, good until the text,
// the width or the font changes.
#pragma once

#include "platform/Shaper.h"
#include "text/TextStorage.h"

#include <memory>

namespace quillmark {

/// Text that is shown within a segment but is not in the document: what an input method is working on. Units
/// are counted from the start of the segment.
struct Insertion {
    int64_t at = 0; ///< in the document's text
    int64_t length = 0; ///< 0: nothing is shown but the document's text
    int64_t caret = 0; ///< where in the inserted text the caret stands

    int64_t shownUnit(int64_t textUnit) const; ///< at the insertion: where its caret stands
    int64_t textUnit(int64_t shownUnit) const;
};

/// One row on the screen: the stretch of text it shows and the shaped text that knows its glyphs.
struct RowLayout {
    std::shared_ptr<const ShapedText> shaped;
    int rowInShaped = 0;
    int64_t shapedStart = 0; ///< offset in the text where `shaped` begins
    Range range; ///< units of the row in the text, without the line feed
    Line line{};
    bool startsLine = false;
    bool endsLine = false; ///< a line feed or the end of the text follows
    Insertion insertion; ///< units from `shapedStart`; offsets of the row leave it out

    double xOfOffset(int64_t offset) const; ///< `offset` is cut to the row
    int64_t offsetAtX(double x) const; ///< the caret stop of the row that is nearest to x
    Span edges() const;
};

/// What is shaped at once: a line, or a piece of about 2,000 units of a line that is longer. A segment starts
/// a row. Good until the text, the width or the font changes.
struct Segment {
    std::shared_ptr<const ShapedText> shaped;
    Range range; ///< without the line feed
    Line line{};
    bool startsLine = false;
    bool endsLine = false;
    Insertion insertion;

    int rowCount() const { return shaped->rowCount(); }
    RowLayout row(int index) const;
    /// The row that shows the caret at `offset`, which is cut to the segment.
    int rowOf(int64_t offset, Affinity affinity) const;
};

} // namespace quillmark
