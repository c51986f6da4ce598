// Texts as a search sees them: lower case, by Unicode's default mapping, and canonically composed, so that
// letters are found however they are written. Nothing else is folded: е is not ё. Any thread.
#pragma once

#include <string>
#include <string_view>

namespace quillmark {

/// A query made ready. Immutable; copies may be used on several threads at once.
class SearchKey {
public:
    /// Horizontal white space around the query does not count.
    explicit SearchKey(std::u16string_view query);

    bool isEmpty() const { return m_utf8.empty(); }
    bool isFoundIn(std::u16string_view text) const;
    /// The same for well-formed UTF-8 of common scripts, many times as quick; `mayNotSay` for any other
    /// bytes.
    enum class Answer { no, yes, mayNotSay };
    Answer quickAnswer(std::string_view utf8) const;
    bool isFoundInUtf8(std::string_view utf8) const; ///< ill-formed bytes count as U+FFFD

    bool operator==(const SearchKey&) const = default;

private:
    std::u16string m_text;
    std::string m_utf8;
};

} // namespace quillmark
