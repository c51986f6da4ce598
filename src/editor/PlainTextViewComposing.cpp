// Input methods: text that is shown before it is typed, and what is typed by them.
#include "editor/PlainTextView.h"
#include "editor/PlainTextViewImpl.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace quillmark {

void PlainTextView::Impl::showComposition()
{
    assert(composition && selection.isEmpty());
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
        perform(UndoManager::Kind::typing, eraseSelection);
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
    const auto command = [&](const Rope& rope, const Selection& selection) {
        std::u16string typed = withLineFeeds(text);
        return replaced.length > 0 ? replaceNearCaret(rope, selection, replaced, std::move(typed))
                                   : typeText(rope, selection, std::move(typed));
    };
    if (!perform(UndoManager::Kind::typing, command))
        self.finish(self.selection, Impl::Changed::nothing, Impl::Reveal::nothing);
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
    assert(!self.composition);
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
    return inputContextAt(text(), m_impl->selection.caret);
}

} // namespace quillmark
