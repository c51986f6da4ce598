#include "support/MarkedText.h"

#include "support/TestEditor.h"
#include "text/Unicode.h"

#include <optional>

namespace quillmark::test {

MarkedText parseMarks(std::string_view marked)
{
    MarkedText result;
    std::optional<int64_t> first;
    std::optional<int64_t> last;
    std::optional<int64_t> caret;
    for (const char16_t unit : utf16(marked)) {
        const auto here = static_cast<int64_t>(result.text.size());
        if (unit == u'«')
            first = here;
        else if (unit == u'»')
            last = here;
        else if (unit == u'|')
            caret = here;
        else
            result.text += unit;
    }
    if (!first)
        result.selection = {.anchor = caret.value_or(0), .caret = caret.value_or(0)};
    else if (caret == first)
        result.selection = {.anchor = *last, .caret = *first};
    else
        result.selection = {.anchor = *first, .caret = *last};
    return result;
}

std::string withMarks(const std::u16string& text, const Selection& selection)
{
    const Range range = selection.range();
    const auto part = [&](int64_t from, int64_t to) {
        return text.substr(static_cast<size_t>(from), static_cast<size_t>(to - from));
    };
    const std::u16string before = part(0, range.location);
    const std::u16string after = text.substr(static_cast<size_t>(range.end()));
    if (range.isEmpty())
        return utf8(before + u"|" + after);
    const std::u16string open = selection.caret < selection.anchor ? u"«|" : u"«";
    return utf8(before + open + part(range.location, range.end()) + u"»" + after);
}

void install(PlainTextView& view, std::string_view marked)
{
    const MarkedText parsed = parseMarks(marked);
    view.setText(Rope(parsed.text));
    view.select(parsed.selection);
}

std::string marked(const PlainTextView& view)
{
    return withMarks(view.text().text(), view.selection());
}

std::string resultOf(const ViewCommand& command, std::string_view before)
{
    TestEditor editor;
    install(editor.view, before);
    command(editor.view);
    return marked(editor.view);
}

} // namespace quillmark::test
