#include "editor/EditCommands.h"

#include "editor/SegmentCuts.h"
#include "text/Unicode.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace quillmark {
namespace {

constexpr int64_t contextUnits = 1024; ///< on each side of the caret that an input method may see

/// One replacement with the caret behind what came in.
std::optional<Edit> replacement(Range range, std::u16string with)
{
    if (range.isEmpty() && with.empty())
        return std::nullopt;
    const int64_t caret = range.location + static_cast<int64_t>(with.size());
    Edit edit{.replacements = {}, .selection = Selection::at({caret})};
    edit.replacements.push_back({range, std::move(with)});
    return edit;
}

/// The range, cut to the text, and with the whole of the pairs that it would split.
Range withWholePairs(const Rope& text, Range range)
{
    const int64_t start = std::clamp<int64_t>(range.location, 0, text.length());
    const int64_t end = std::clamp<int64_t>(range.end(), start, text.length());
    return Range::between(start - (splitsPair(text, start) ? 1 : 0), end + (splitsPair(text, end) ? 1 : 0));
}

} // namespace

std::u16string withLineFeeds(std::u16string_view text)
{
    if (text.find(u'\r') == text.npos)
        return std::u16string(text);
    std::u16string folded;
    folded.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        const bool isCarriageReturn = text[i] == u'\r';
        folded += isCarriageReturn ? u'\n' : text[i];
        if (isCarriageReturn && i + 1 < text.size() && text[i + 1] == u'\n')
            ++i;
    }
    return folded;
}

std::optional<Edit> typeText(const Rope&, const Selection& selection, std::u16string typed)
{
    if (typed.empty())
        return std::nullopt;
    return replacement(selection.range(), std::move(typed));
}

std::optional<Edit> eraseTo(const Rope& text, const Selection& selection, CaretTarget target)
{
    if (!selection.isEmpty())
        return eraseSelection(text, selection);
    return replacement(Range::between(selection.caret, target(text, selection.caret)), {});
}

std::optional<Edit> eraseSelection(const Rope&, const Selection& selection)
{
    return replacement(selection.range(), {});
}

std::optional<Edit> replaceRange(const Rope& text, Range range, std::u16string with)
{
    return replacement(withWholePairs(text, range), std::move(with));
}

std::optional<Edit> replaceNearCaret(
    const Rope& text, const Selection& selection, Range fromCaret, std::u16string with)
{
    const Range selected = selection.range();
    const int64_t caret = selected.location;
    Rope rest = text;
    rest.replace(selected, u"");
    const Range context = inputContextAt(rest, caret);
    const auto inContext
        = [&](int64_t offset) { return std::clamp(caret + offset, context.location, context.end()); };
    const Range near
        = withWholePairs(rest, Range::between(inContext(fromCaret.location), inContext(fromCaret.end())));
    if (near.location <= caret && caret <= near.end())
        return replacement({near.location, near.length + selected.length}, std::move(with));

    Edit edit{
        .replacements = {}, .selection = Selection::at({near.location + static_cast<int64_t>(with.size())})};
    const auto add = [&edit](Range range, std::u16string units) {
        if (!range.isEmpty() || !units.empty())
            edit.replacements.push_back({range, std::move(units)});
    };
    if (near.location > caret) {
        add(selected, {});
        add({near.location + selected.length, near.length}, std::move(with));
    } else {
        add(near, std::move(with));
        add(selected, {});
    }
    return edit.replacements.empty() ? std::nullopt : std::optional(std::move(edit));
}

Range inputContextAt(const Rope& text, int64_t caret)
{
    assert(caret >= 0 && caret <= text.length());
    const Range line = text.lineRange(text.lineAt(caret));
    const Range near = intersection(line, {caret - contextUnits, 2 * contextUnits});
    const int64_t start = characterBoundaryAtOrBefore(text, near.location);
    const int64_t end = characterBoundaryAtOrBefore(text, near.end());
    return Range::between(std::max(start, line.location), std::max(end, caret));
}

std::optional<Edit> dropText(const Rope& text, int64_t offset, std::u16string dropped)
{
    if (dropped.empty())
        return std::nullopt;
    offset = characterBoundaryAtOrBefore(text, offset);
    auto edit = replacement({offset, 0}, std::move(dropped));
    edit->selection.anchor = offset;
    return edit;
}

std::optional<Edit> dropOwnText(const Rope& text, Range dragged, int64_t offset, DropKind kind)
{
    dragged = withWholePairs(text, dragged);
    offset = characterBoundaryAtOrBefore(text, offset);
    const bool isWithin = offset >= dragged.location && offset <= dragged.end();
    if (dragged.isEmpty() || isWithin)
        return std::nullopt;
    const bool isMove = kind == DropKind::move;
    const bool isBehind = offset > dragged.location;
    Edit edit;
    edit.replacements.push_back({{offset, 0}, text.slice(dragged)});
    if (isMove)
        edit.replacements.insert(
            isBehind ? edit.replacements.begin() : edit.replacements.end(), {dragged, u""});
    const int64_t start = offset - (isMove && isBehind ? dragged.length : 0);
    edit.selection = {.anchor = start, .caret = start + dragged.length};
    return edit;
}

} // namespace quillmark
