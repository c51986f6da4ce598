// Editing: typing, deletion, undo and the clipboard.
#include "editor/PlainTextView.h"
#include "editor/PlainTextViewImpl.h"
#include "editor/SegmentCuts.h"
#include "text/Unicode.h"

#include <string>
#include <utility>

namespace quillmark {
/// CR LF and CR as line feeds, which are the only line breaks of a text in memory.
std::u16string withLineFeeds(std::u16string_view text)
{
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

UndoManager::Selection recorded(const Selection& selection)
{
    return {.anchor = selection.anchor, .caret = selection.caret};
}

/// Replaces a range by the user's will, as a step of undo, and leaves the caret behind what came in.
void PlainTextView::Impl::edit(UndoManager::Kind kind, Range range, std::u16string_view with)
{
    range = intersection(range, {0, length()});
    if (!isEditable || (range.isEmpty() && with.empty()))
        return;
    const Selection before = selection;
    undo.begin(kind, recorded(before), scheduler.now());
    storage.replace(range, with);
    selection = Selection::at({range.location + static_cast<int64_t>(with.size())});
    undo.end(recorded(selection));
    goalX.reset();
    finish(before, Changed::text, Reveal::caret);
}

/// Makes a prepared edit a step of undo.
void PlainTextView::Impl::makeEdit(std::optional<Edit> edit)
{
    if (!isEditable || !edit)
        return;
    const Selection before = selection;
    undo.begin(UndoManager::Kind::other, recorded(before), scheduler.now());
    storage.replace(edit->range, edit->text);
    selection = edit->selection;
    undo.end(recorded(selection));
    goalX.reset();
    finish(before, Changed::text, Reveal::caret);
}

/// Deletes the selection, or without one the text from the caret to `end`.
void PlainTextView::Impl::deleteTo(int64_t end, UndoManager::Kind kind)
{
    if (selection.isEmpty())
        edit(kind, Range::between(selection.caret, end), {});
    else
        edit(UndoManager::Kind::other, selection.range(), {});
}

void PlainTextView::insertText(std::u16string_view text)
{
    if (text.empty())
        return;
    commitComposition();
    const Range selected = m_impl->selection.range();
    if (text.find(u'\r') == std::u16string_view::npos)
        m_impl->edit(UndoManager::Kind::typing, selected, text);
    else
        m_impl->edit(UndoManager::Kind::typing, selected, withLineFeeds(text));
}

void PlainTextView::insertNewline()
{
    insertText(u"\n");
}

void PlainTextView::insertTab()
{
    commitComposition();
    if (spansLines(text(), m_impl->selection))
        m_impl->makeEdit(indent(text(), m_impl->selection));
    else
        insertText(u"\t");
}

void PlainTextView::unindent()
{
    commitComposition();
    m_impl->makeEdit(quillmark::unindent(text(), m_impl->selection));
}

void PlainTextView::deleteBackward()
{
    commitComposition();
    m_impl->deleteTo(backwardDeletion(text(), m_impl->selection.caret), UndoManager::Kind::deletingBackward);
}

void PlainTextView::deleteForward()
{
    commitComposition();
    m_impl->deleteTo(nextGrapheme(text(), m_impl->selection.caret), UndoManager::Kind::deletingForward);
}

void PlainTextView::deleteWordBackward()
{
    commitComposition();
    m_impl->deleteTo(previousWordStart(text(), m_impl->selection.caret), UndoManager::Kind::deletingBackward);
}

void PlainTextView::deleteWordForward()
{
    commitComposition();
    m_impl->deleteTo(nextWordEnd(text(), m_impl->selection.caret), UndoManager::Kind::deletingForward);
}

void PlainTextView::deleteSelection()
{
    commitComposition();
    m_impl->edit(UndoManager::Kind::other, m_impl->selection.range(), {});
}

void PlainTextView::replace(Range range, std::u16string_view with)
{
    m_impl->edit(UndoManager::Kind::other, m_impl->afterComposing(range), with);
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

void PlainTextView::Impl::travel(std::optional<UndoManager::Selection> (UndoManager::*step)())
{
    if (!isEditable)
        return;
    const Selection before = selection;
    const auto restored = (undo.*step)();
    if (!restored)
        return;
    selection = {.anchor = restored->anchor, .caret = restored->caret};
    goalX.reset();
    finish(before, Changed::text, Reveal::caret);
}

void PlainTextView::undo()
{
    commitComposition();
    m_impl->travel(&UndoManager::undo);
}

void PlainTextView::redo()
{
    commitComposition();
    m_impl->travel(&UndoManager::redo);
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
    commitComposition();
    if (!m_impl->isEditable)
        return;
    const std::u16string text = withLineFeeds(m_impl->clipboard.text(buffer));
    if (text.empty())
        return;
    m_impl->edit(UndoManager::Kind::other, m_impl->selection.range(), text);
    if (m_impl->delegate)
        m_impl->delegate->textViewDidPaste(text);
}

// Drag and drop

void PlainTextView::drop(std::u16string_view text, int64_t offset)
{
    const std::u16string dropped = withLineFeeds(text);
    offset = characterBoundaryAtOrBefore(this->text(), m_impl->afterComposing({offset, 0}).location);
    const int64_t end = offset + static_cast<int64_t>(dropped.size());
    if (!dropped.empty())
        m_impl->makeEdit(Edit{{offset, 0}, dropped, {.anchor = offset, .caret = end}});
}

void PlainTextView::dropOwn(Range dragged, int64_t offset, DropKind kind)
{
    Impl& self = *m_impl;
    const Range place = self.afterComposing({offset, 0}); // nothing is dragged while something is composed
    dragged = intersection(dragged, {0, self.length()});
    offset = characterBoundaryAtOrBefore(text(), place.location);
    const bool isWithin = offset >= dragged.location && offset <= dragged.end();
    if (!self.isEditable || dragged.isEmpty() || isWithin)
        return;
    const Selection before = self.selection;
    const Rope moved = text().slice(dragged);
    self.undo.begin(UndoManager::Kind::other, recorded(before), self.scheduler.now());
    if (kind == DropKind::move) {
        self.storage.replace(dragged, u"");
        if (offset > dragged.location)
            offset -= dragged.length;
    }
    self.storage.replace({offset, 0}, moved);
    self.selection = {.anchor = offset, .caret = offset + moved.length()};
    self.undo.end(recorded(self.selection));
    self.goalX.reset();
    self.finish(before, Impl::Changed::text, Impl::Reveal::caret);
}

} // namespace quillmark
