#include "editor/Edit.h"

#include "text/Unicode.h"

namespace quillmark {

int64_t Replacement::change() const
{
    const auto* units = std::get_if<std::u16string>(&with);
    return (units ? static_cast<int64_t>(units->size()) : std::get<Rope>(with).length()) - range.length;
}

bool fits(const Edit& edit, const Rope& text)
{
    int64_t free = 0; // behind the replacement before
    int64_t length = text.length();
    for (const Replacement& replacement : edit.replacements) {
        const Range range = replacement.range;
        if (range.location < free || range.length < 0 || range.end() > text.length()
            || splitsPair(text, range.location) || splitsPair(text, range.end()))
            return false;
        free = range.end();
        length += replacement.change();
    }
    const Range selected = edit.selection.range();
    return !edit.replacements.empty() && selected.location >= 0 && selected.end() <= length;
}

} // namespace quillmark
