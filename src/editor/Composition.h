// What an input method is still working on: text that is shown at the caret but is not in the document until
// it is committed.
#pragma once

#include "base/Range.h"

#include <string>
#include <vector>

namespace quillmark {

struct Composition {
    enum class Underline { none, solid, dashed, dotted, wavy };

    /// A stretch that is drawn alike. The clauses cover the text, in its order.
    struct Clause {
        Range units; ///< of `text`
        Underline underline = Underline::solid;
        bool isHighlighted = false; ///< the one that is being converted
        bool operator==(const Clause&) const = default;
    };

    std::u16string text;
    int64_t caret = 0; ///< in units of `text`
    bool isCaretVisible = true;
    std::vector<Clause> clauses;

    bool operator==(const Composition&) const = default;
};

} // namespace quillmark
