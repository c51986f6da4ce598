#include "editor/Indentation.h"

#include <algorithm>
#include <cassert>
#include <string_view>

namespace quillmark {
namespace {

/// What happens at the start of a line.
struct LineChange {
    int64_t removed = 0; ///< units
    std::u16string_view added;

    int64_t change() const { return static_cast<int64_t>(added.size()) - removed; }
};
using ChangeOfLine = LineChange (*)(std::u16string_view line);

/// From the start of the first line to the end of the last one that a selection touches.
Range touchedLines(const Rope& text, Range selected)
{
    assert(selected.location >= 0 && selected.end() <= text.length());
    const Range first = text.lineRange(text.lineAt(selected.location));
    Range last = text.lineRange(text.lineAt(selected.end()));
    if (last.location == selected.end() && last.location > first.location)
        last = text.lineRange(text.lineAt(selected.end() - 1));
    return Range::between(first.location, last.end());
}

/// Where a place of the old text stands, given the change at the start of its line and before that line.
int64_t moved(int64_t offset, int64_t lineStart, const LineChange& line, int64_t before)
{
    const bool isAtStart = offset == lineStart; // stays there, so that what was put in is selected too
    return before + (isAtStart ? offset : std::max(lineStart, offset + line.change()));
}

std::optional<Edit> changeLines(const Rope& text, const Selection& selection, ChangeOfLine changeOf)
{
    const Range block = touchedLines(text, selection.range());
    const std::u16string old = text.text(block);
    const std::u16string_view rest(old);
    std::u16string changed;
    changed.reserve(old.size() + old.size() / 8);
    Selection moving = selection;

    int64_t change = 0; // so far
    bool changes = false;
    for (size_t start = 0; start <= rest.size();) {
        const size_t end = std::min(rest.find(u'\n', start), rest.size());
        const LineChange line = changeOf(rest.substr(start, end - start));
        changed += line.added;
        changed += rest.substr(
            start + static_cast<size_t>(line.removed), end + 1 - start - static_cast<size_t>(line.removed));
        const Range range{block.location + static_cast<int64_t>(start), static_cast<int64_t>(end - start)};
        const auto follow = [&](int64_t offset, int64_t& to) {
            if (offset >= range.location && offset <= range.end())
                to = moved(offset, range.location, line, change);
        };
        follow(selection.anchor, moving.anchor);
        follow(selection.caret, moving.caret);
        change += line.change();
        changes = changes || line.removed > 0 || !line.added.empty();
        start = end + 1;
    }
    const auto followBehind = [&](int64_t offset, int64_t& to) {
        if (offset > block.end())
            to = offset + change;
    };
    followBehind(selection.anchor, moving.anchor);
    followBehind(selection.caret, moving.caret);
    if (!changes)
        return std::nullopt;
    Edit edit{.replacements = {}, .selection = moving};
    edit.replacements.push_back({block, std::move(changed)});
    return edit;
}

} // namespace

bool spansLines(const Rope& text, const Selection& selection)
{
    const Range selected = selection.range();
    return !selected.isEmpty() && text.lineAt(selected.location) != text.lineAt(selected.end());
}

std::optional<Edit> indent(const Rope& text, const Selection& selection)
{
    return changeLines(text, selection, [](std::u16string_view line) {
        return line.empty() ? LineChange{} : LineChange{.removed = 0, .added = u"\t"};
    });
}

std::optional<Edit> unindent(const Rope& text, const Selection& selection)
{
    return changeLines(text, selection, [](std::u16string_view line) {
        if (line.starts_with(u'\t'))
            return LineChange{.removed = 1, .added = {}};
        const auto spaces = std::ranges::find_if_not(line, [](char16_t unit) { return unit == u' '; });
        return LineChange{.removed = std::min<int64_t>(spaces - line.begin(), spacesPerIndent), .added = {}};
    });
}

} // namespace quillmark
