// Text becomes rows of glyphs here: an interface that desktop/ implements with a real text engine and tests
// with fixed advances. All lengths are device-independent pixels. Main thread only.
#pragma once

#include "base/Range.h"
#include "text/Direction.h"

#include <memory>
#include <string_view>

namespace quillmark {

/// The heights that every row has, whichever font its characters come from.
struct RowMetrics {
    double height = 0; ///< from a row to the next, whole device pixels
    double baseline = 0; ///< from the top of the row
    double averageAdvance = 0; ///< width of a typical character
};

/// On which side of a wrap the caret stands when an offset ends one row and starts the next.
enum class Affinity { upstream, downstream };

/// A stretch of a row on the screen.
struct Span {
    double left = 0;
    double right = 0;
    bool operator==(const Span&) const = default;
};

/// A stretch of a line, wrapped to a width. Offsets are units from the start of the stretch, places are
/// counted from the left edge of that width: a line that runs from right to left starts at its right edge.
class ShapedText {
public:
    virtual ~ShapedText() = default;

    virtual int rowCount() const = 0; ///< at least 1
    virtual Range row(int row) const = 0; ///< the units of a row, wrapping spaces included
    virtual Direction direction() const = 0;
    virtual Span edges(int row) const = 0; ///< of the row's text; spaces at a wrap may reach beyond the width
    virtual double xOfOffset(int row, int64_t offset) const = 0; ///< where the caret stands before this unit
    virtual int64_t offsetAtX(int row, double x) const = 0; ///< the caret stop that is nearest to x

    /// Whether a row is certain to be the same picture as one of another text of the same shaper. False where
    /// finding out would take long.
    virtual bool isDrawnAlike(int row, const ShapedText& other, int otherRow) const
    {
        return this == &other && row == otherRow;
    }
};

class Shaper {
public:
    virtual ~Shaper() = default;

    virtual RowMetrics metrics() const = 0;

    /// Shapes text without a line feed that is a line, or a part of one, of this direction, breaking rows at
    /// `wrapWidth`. Never fails; a character wider than the width has a row of its own.
    virtual std::unique_ptr<ShapedText> shape(std::u16string_view text, double wrapWidth, Direction direction)
        = 0;
};

} // namespace quillmark
