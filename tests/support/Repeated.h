#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quillmark::test {

template <class Unit> std::basic_string<Unit> repeatedPiece(std::basic_string_view<Unit> piece, int64_t count)
{
    std::basic_string<Unit> text;
    text.reserve(piece.size() * static_cast<size_t>(count));
    for (; count > 0; --count)
        text += piece;
    return text;
}

inline std::string repeated(std::string_view piece, int64_t count)
{
    return repeatedPiece(piece, count);
}

inline std::u16string repeated(std::u16string_view piece, int64_t count)
{
    return repeatedPiece(piece, count);
}

} // namespace quillmark::test
