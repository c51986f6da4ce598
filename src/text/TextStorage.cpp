#include "text/TextStorage.h"

#include <cassert>

namespace quillmark {

int64_t TextEdit::moved(int64_t offset) const
{
    const Range old = replaced();
    if (offset <= old.location)
        return offset;
    return offset >= old.end() ? offset + changeInLength : edited.end();
}

void TextStorage::replace(Range range, std::u16string_view with)
{
    edit(range, with, static_cast<int64_t>(with.size()));
}

void TextStorage::replace(Range range, const Rope& with)
{
    edit(range, with, with.length());
}

template <class Text> void TextStorage::edit(Range range, const Text& with, int64_t length)
{
    assert(!m_isTelling && "an observer edits the text that the others have not heard of yet");
    assert(range.length >= 0 && length >= 0);
    range = intersection(range, {0, m_text.length()});
    if (range.isEmpty() && length == 0)
        return;
    const Rope oldText = m_text;
    m_text.replace(range, with);
    assert(m_text.length() == oldText.length() + length - range.length);
    m_isTelling = true;
    m_edited.emit({.edited = {range.location, length}, .changeInLength = length - range.length}, oldText);
    m_isTelling = false;
}

} // namespace quillmark
