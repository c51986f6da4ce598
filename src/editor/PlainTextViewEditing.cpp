// Editing: typing, deletion, undo and the clipboard.
#include "editor/PlainTextView.h"
#include "editor/PlainTextViewImpl.h"
#include "text/Unicode.h"

#include <string>
#include <utility>

namespace quillmark {
namespace {

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

} // namespace

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
    const Range selected = m_impl->selection.range();
    if (text.empty())
        return;
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
    insertText(u"\t");
}

void PlainTextView::deleteBackward()
{
    m_impl->deleteTo(backwardDeletion(text(), m_impl->selection.caret), UndoManager::Kind::deletingBackward);
}

void PlainTextView::deleteForward()
{
    m_impl->deleteTo(nextGrapheme(text(), m_impl->selection.caret), UndoManager::Kind::deletingForward);
}

void PlainTextView::deleteWordBackward()
{
    m_impl->deleteTo(previousWordStart(text(), m_impl->selection.caret), UndoManager::Kind::deletingBackward);
}

void PlainTextView::deleteWordForward()
{
    m_impl->deleteTo(nextWordEnd(text(), m_impl->selection.caret), UndoManager::Kind::deletingForward);
}

void PlainTextView::deleteSelection()
{
    m_impl->edit(UndoManager::Kind::other, m_impl->selection.range(), {});
}

void PlainTextView::replace(Range range, std::u16string_view with)
{
    m_impl->edit(UndoManager::Kind::other, range, with);
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
    m_impl->travel(&UndoManager::undo);
}

void PlainTextView::redo()
{
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
        m_impl->clipboard.setText(text().text(selected));
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
    const std::u16string text = withLineFeeds(m_impl->clipboard.text(buffer));
    if (!text.empty())
        m_impl->edit(UndoManager::Kind::other, m_impl->selection.range(), text);
}

} // namespace quillmark
