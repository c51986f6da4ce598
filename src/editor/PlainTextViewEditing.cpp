// Editing: typing, deletion, undo and the clipboard. All of it goes through perform().
#include "editor/Indentation.h"
#include "editor/PlainTextView.h"
#include "editor/PlainTextViewImpl.h"
#include "text/Unicode.h"

#include <cassert>
#include <ranges>
#include <utility>

namespace quillmark {
namespace {

using Kind = UndoManager::Kind;

UndoManager::Selection recorded(const Selection& selection)
{
    return {.anchor = selection.anchor, .caret = selection.caret};
}

} // namespace

bool PlainTextView::perform(UndoManager::Kind kind, const EditCommand& command)
{
    commitComposition();
    Impl& self = *m_impl;
    if (!self.isEditable)
        return false;
    const Selection before = self.selection;
    const std::optional<Edit> edit = command(text(), before);
    if (!edit)
        return false;
    assert(fits(*edit, text()));
    self.undo.begin(kind, recorded(before), self.scheduler.now());
    for (const Replacement& replacement : edit->replacements | std::views::reverse) { // the others stay put
        std::visit(
            [&](const auto& with) { self.storage.replace(replacement.range, with); }, replacement.with);
    }
    self.undo.end(recorded(edit->selection));
    self.finishEdit(before, edit->selection);
    return true;
}

/// The last step of all that changes the text by the user's will.
void PlainTextView::Impl::finishEdit(const Selection& before, Selection after)
{
    const auto outsidePairs = [this](int64_t offset) { // of which an edit may join the halves
        return offset - (splitsPair(storage.text(), offset) ? 1 : 0);
    };
    selection = after;
    selection.caret = outsidePairs(after.caret);
    selection.anchor = after.isEmpty() ? selection.caret : outsidePairs(after.anchor);
    goalX.reset();
    finish(before, Changed::text, Reveal::caret);
}

void PlainTextView::insertText(std::u16string_view text)
{
    if (text.empty())
        return;
    perform(Kind::typing, [text](const Rope& rope, const Selection& selection) {
        return typeText(rope, selection, withLineFeeds(text));
    });
}

void PlainTextView::insertNewline()
{
    insertText(u"\n");
}

void PlainTextView::insertTab()
{
    if (spansLines(text(), m_impl->selection))
        perform(Kind::other, indent);
    else
        insertText(u"\t");
}

void PlainTextView::unindent()
{
    perform(Kind::other, quillmark::unindent);
}

/// A selection that goes is a step of its own.
void PlainTextView::Impl::erase(UndoManager::Kind kind, CaretTarget target)
{
    owner.perform(selection.isEmpty() ? kind : Kind::other,
        [target](const Rope& text, const Selection& selected) { return eraseTo(text, selected, target); });
}

void PlainTextView::deleteBackward()
{
    m_impl->erase(Kind::deletingBackward, backwardDeletion);
}

void PlainTextView::deleteForward()
{
    m_impl->erase(Kind::deletingForward, nextGrapheme);
}

void PlainTextView::deleteWordBackward()
{
    m_impl->erase(Kind::deletingBackward, previousWordStart);
}

void PlainTextView::deleteWordForward()
{
    m_impl->erase(Kind::deletingForward, nextWordEnd);
}

void PlainTextView::deleteSelection()
{
    perform(Kind::other, eraseSelection);
}

void PlainTextView::replace(Range range, std::u16string_view with)
{
    range = m_impl->afterComposing(range);
    perform(Kind::other, [range, with](const Rope& text, const Selection&) {
        return replaceRange(text, range, std::u16string(with));
    });
}

// Undo

bool PlainTextView::canUndo() const
{
    return m_impl->isEditable && m_impl->undo.canUndo();
}

bool PlainTextView::canRedo() const
{
    return m_impl->isEditable && m_impl->undo.canRedo();
}

void PlainTextView::Impl::moveInHistory(std::optional<UndoManager::Selection> (UndoManager::*step)())
{
    owner.commitComposition();
    if (!isEditable)
        return;
    const Selection before = selection;
    if (const auto restored = (undo.*step)())
        finishEdit(before, {.anchor = restored->anchor, .caret = restored->caret});
}

void PlainTextView::undo()
{
    m_impl->moveInHistory(&UndoManager::undo);
}

void PlainTextView::redo()
{
    m_impl->moveInHistory(&UndoManager::redo);
}

void PlainTextView::breakUndoJoin()
{
    m_impl->undo.breakJoin();
}

// The clipboard

void PlainTextView::copy()
{
    const Range selected = m_impl->selection.range();
    if (!selected.isEmpty())
        m_impl->clipboard.setText(text().slice(selected));
}

void PlainTextView::cut()
{
    if (!m_impl->isEditable)
        return;
    copy();
    deleteSelection();
}

void PlainTextView::paste(Clipboard::Buffer buffer)
{
    if (!m_impl->isEditable)
        return;
    const std::u16string pasted = withLineFeeds(m_impl->clipboard.text(buffer));
    const bool isPasted = perform(Kind::other,
        [&](const Rope& text, const Selection& selection) { return typeText(text, selection, pasted); });
    if (isPasted && m_impl->delegate)
        m_impl->delegate->textViewDidPaste(pasted);
}

// Drag and drop

void PlainTextView::drop(std::u16string_view text, int64_t offset)
{
    const int64_t place = m_impl->afterComposing({offset, 0}).location;
    perform(Kind::other,
        [&](const Rope& rope, const Selection&) { return dropText(rope, place, withLineFeeds(text)); });
}

void PlainTextView::dropOwn(Range dragged, int64_t offset, DropKind kind)
{
    const int64_t place = m_impl->afterComposing({offset, 0}).location; // and nothing is selected then
    perform(Kind::other,
        [&](const Rope& text, const Selection&) { return dropOwnText(text, dragged, place, kind); });
}

} // namespace quillmark
