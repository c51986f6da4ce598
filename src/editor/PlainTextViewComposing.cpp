// Input methods: text that is shown before it is typed, and what is typed by them.
#include "editor/PlainTextView.h"
#include "editor/PlainTextViewImpl.h"
#include "editor/SegmentCuts.h"
#include "text/Unicode.h"

#include <algorithm>
#include <utility>

namespace quillmark {
namespace {

constexpr int64_t contextUnits = 1024; ///< on each side of the caret that an input method may see

bool splitsPair(const Rope& text, int64_t offset)
{
    const auto isHigh = [](char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; };
    const auto isLow = [](char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; };
    return offset > 0 && isHigh(text.at(offset - 1)) && isLow(text.at(offset));
}

} // namespace

void PlainTextView::Impl::showComposition()
{
    layout.showInsertion(selection.caret, composition->text, composition->caret);
}

void PlainTextView::Impl::dropComposition()
{
    if (!std::exchange(composition, std::nullopt))
        return;
    layout.showInsertion(selection.caret, {}, 0);
}

void PlainTextView::compose(Composition composition)
{
    Impl& self = *m_impl;
    if (!self.isEditable || self.composition == composition)
        return;
    if (composition.text.empty()) {
        self.dropComposition();
        return self.finish(self.selection, Impl::Changed::nothing, Impl::Reveal::nothing);
    }
    if (!self.composition) {
        if (!self.selection.isEmpty())
            self.edit(UndoManager::Kind::typing, self.selection.range(), {});
        self.selection = Selection::at({self.selection.caret});
        self.goalX.reset();
        self.drag.reset();
    }
    const auto length = static_cast<int64_t>(composition.text.size());
    composition.caret = std::clamp<int64_t>(composition.caret, 0, length);
    self.composition = std::move(composition);
    self.showComposition();
    self.finish(self.selection, Impl::Changed::nothing, Impl::Reveal::caret);
}

const Composition* PlainTextView::composition() const
{
    return m_impl->composition ? &*m_impl->composition : nullptr;
}

void PlainTextView::insertComposed(std::u16string_view text, Range replaced)
{
    Impl& self = *m_impl;
    if (!self.isEditable)
        return;
    self.dropComposition();
    if (replaced.length > 0)
        self.replaceNearCaret(replaced, withLineFeeds(text));
    else if (!text.empty())
        insertText(text);
    else
        self.finish(self.selection, Impl::Changed::nothing, Impl::Reveal::nothing);
}

/// Replaces a stretch that is counted from the caret, and the selection with it.
void PlainTextView::Impl::replaceNearCaret(Range replaced, std::u16string_view with)
{
    const Selection before = selection;
    undo.begin(UndoManager::Kind::typing, recorded(before), scheduler.now());
    storage.replace(before.range(), u"");
    const Range context = owner.inputContext();
    const auto placeOf = [&](int64_t fromCaret) {
        return std::clamp(selection.caret + fromCaret, context.location, context.end());
    };
    int64_t start = placeOf(replaced.location);
    int64_t end = placeOf(replaced.end());
    start -= splitsPair(storage.text(), start) ? 1 : 0;
    end += splitsPair(storage.text(), end) ? 1 : 0;
    storage.replace(Range::between(start, end), with);
    selection = Selection::at({start + static_cast<int64_t>(with.size())});
    undo.end(recorded(selection));
    goalX.reset();
    finish(before, Changed::text, Reveal::caret);
}

void PlainTextView::commitComposition()
{
    Impl& self = *m_impl;
    if (!self.composition)
        return;
    self.commitRequested.emit();
    if (!self.composition)
        return; // the input method knows best what it was going to type
    const std::u16string text = self.composition->text;
    self.dropComposition();
    insertText(text);
    self.resetRequested.emit();
}

/// The same, and what it did to the places of the text.
TextEdit PlainTextView::Impl::finishComposing()
{
    if (!composition)
        return {};
    const int64_t caret = selection.caret;
    const int64_t before = length();
    owner.commitComposition();
    const int64_t added = std::max<int64_t>(0, length() - before);
    return {.edited = {caret, added}, .changeInLength = added};
}

/// Where a range of the text as it was stands once what is being composed is a part of it.
Range PlainTextView::Impl::afterComposing(Range range)
{
    const TextEdit commit = finishComposing();
    return Range::between(commit.moved(range.location), commit.moved(range.end()));
}

Range PlainTextView::inputContext() const
{
    const int64_t caret = m_impl->selection.caret;
    const Range line = text().lineRange(text().lineAt(caret));
    const Range near = intersection(line, {caret - contextUnits, 2 * contextUnits});
    const int64_t start = characterBoundaryAtOrBefore(text(), near.location);
    const int64_t end = characterBoundaryAtOrBefore(text(), near.end());
    return Range::between(std::max(start, line.location), std::max(end, caret));
}

} // namespace quillmark
