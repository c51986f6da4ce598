// Reading single units around a place of a text, whether it is a string or a rope: a rope is copied out in
// small windows that follow the reader. For one short look at a text; not kept.
#pragma once

#include "text/Rope.h"

#include <array>
#include <cassert>
#include <string>
#include <string_view>

namespace quillmark {

class UnitReader {
public:
    explicit UnitReader(std::u16string_view text)
        : m_units(text.data())
        , m_window{0, static_cast<int64_t>(text.size())}
        , m_length(m_window.length)
    {
    }
    explicit UnitReader(const Rope& text)
        : m_rope(&text)
        , m_length(text.length())
    {
    }
    UnitReader(const UnitReader&) = delete;
    UnitReader& operator=(const UnitReader&) = delete;

    int64_t length() const { return m_length; }

    char16_t operator[](int64_t offset) ///< 0 ≤ offset < length()
    {
        assert(offset >= 0 && offset < m_length);
        if (!m_window.contains(offset))
            moveWindow(offset);
        return m_units[offset - m_window.location];
    }

    char32_t codePointAt(int64_t offset); ///< that starts at the offset; a lone surrogate stands for itself
    char32_t codePointBefore(int64_t offset); ///< that ends at the offset
    int64_t startOfCodePoint(int64_t offset); ///< the offset, or the one before it inside a surrogate pair

    /// The units of a range in one piece; `storage` holds them where they are not in one piece already.
    std::u16string_view contiguous(Range range, std::u16string& storage) const;

private:
    void moveWindow(int64_t offset);

    const Rope* m_rope = nullptr;
    const char16_t* m_units = nullptr; ///< of the window
    Range m_window;
    int64_t m_length;
    std::array<char16_t, 128> m_buffer;
};

/// How many units a code point takes.
constexpr int64_t unitLength(char32_t c)
{
    return c > 0xFFFF ? 2 : 1;
}

} // namespace quillmark
