// Where the caret stands and what is selected, and the ways in which the user moves them.
#pragma once

#include "base/Range.h"
#include "platform/Shaper.h"

namespace quillmark {

/// A place for the caret: an offset, and at a wrap the row it belongs to.
struct TextPosition {
    int64_t offset = 0;
    Affinity affinity = Affinity::downstream;

    bool operator==(const TextPosition&) const = default;
};

/// A selection: `caret` is the end that moves, `anchor` the one that stays. Empty when they are equal.
struct Selection {
    int64_t anchor = 0;
    int64_t caret = 0;
    Affinity affinity = Affinity::downstream; ///< of the caret

    static Selection at(TextPosition position)
    {
        return {.anchor = position.offset, .caret = position.offset, .affinity = position.affinity};
    }

    Range range() const { return Range::between(anchor, caret); }
    TextPosition position() const { return {caret, affinity}; }
    bool isEmpty() const { return anchor == caret; }
    bool operator==(const Selection&) const = default;
};

enum class Motion {
    characterLeft,
    characterRight,
    wordLeft,
    wordRight,
    rowUp, ///< on the first row: the start of the text
    rowDown, ///< on the last row: the end of the text
    rowStart, ///< Home: the first character that is not blank, pressed again the start of the row
    rowEnd,
    pageUp,
    pageDown,
    documentStart,
    documentEnd,
};
enum class Extend { no, yes }; ///< whether a motion moves the caret alone (Shift)
enum class DropKind { move, copy };
enum class Granularity { character, word, line }; ///< of a mouse selection

} // namespace quillmark
