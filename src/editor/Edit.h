// What a command makes of a text: replacements, counted in the text as it is, and the selection that follows
// them.
#pragma once

#include "editor/Selection.h"
#include "text/Rope.h"

#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace quillmark {

/// A stretch of the text and what comes in its place: short texts as units, parts of other texts as they are.
struct Replacement {
    Range range;
    std::variant<std::u16string, Rope> with;

    int64_t change() const; ///< of the text's length
};

struct Edit {
    /// In the order of the text, disjoint, splitting no surrogate pair; at least one.
    std::vector<Replacement> replacements;
    Selection selection; ///< in the new text
};

/// A pure function of a text and a selection; nothing where nothing is to be changed. Others of its
/// parameters are bound by the caller.
using EditCommand = std::function<std::optional<Edit>(const Rope& text, const Selection& selection)>;

/// Whether an edit keeps to the rules above. Costs by its replacements.
bool fits(const Edit& edit, const Rope& text);

} // namespace quillmark
