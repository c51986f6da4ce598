#include "text/Unicode.h"

#include "text/Units.h"

#include <algorithm>
#include <cassert>
#include <unicode/uchar.h>
#include <unicode/unorm.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

namespace quillmark {
namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

/// ICU counts in 32 bits; longer texts are mapped in pieces of this many units, cut at a line feed where
/// there is one.
constexpr size_t longestPiece = size_t{1} << 28;

bool isAscii(std::u16string_view text)
{
    return std::ranges::all_of(text, [](char16_t unit) { return unit < 0x80; });
}

std::u16string_view firstPiece(std::u16string_view text)
{
    if (text.size() <= longestPiece)
        return text;
    const size_t lineFeed = text.rfind(u'\n', longestPiece - 1);
    return text.substr(0, lineFeed == text.npos ? longestPiece : lineFeed + 1);
}

void appendLowercase(std::u16string& result, std::u16string_view piece)
{
    constexpr const char* rootLocale = "";
    const size_t start = result.size();
    size_t capacity = piece.size() + 16; // few characters grow
    for (;;) {
        result.resize(start + capacity);
        UErrorCode status = U_ZERO_ERROR;
        const int32_t length = u_strToLower(result.data() + start, static_cast<int32_t>(capacity),
            piece.data(), static_cast<int32_t>(piece.size()), rootLocale, &status);
        if (status != U_BUFFER_OVERFLOW_ERROR) {
            assert(U_SUCCESS(status));
            result.resize(start + static_cast<size_t>(length));
            return;
        }
        capacity = static_cast<size_t>(length);
    }
}

template <class IsSpace> std::u16string_view trimmedOf(std::u16string_view text, IsSpace isSpace)
{
    const auto first = std::ranges::find_if_not(text, isSpace); // all spaces lie in the BMP
    const auto last = std::find_if_not(text.rbegin(), std::make_reverse_iterator(first), isSpace).base();
    return {first, last};
}

} // namespace

bool splitsPair(const Rope& text, int64_t offset)
{
    assert(offset >= 0 && offset <= text.length());
    return offset > 0 && isLowSurrogate(text.at(offset)) && isHighSurrogate(text.at(offset - 1));
}

std::u16string utf16(std::string_view utf8)
{
    std::u16string result;
    result.reserve(utf8.size());
    const auto size = static_cast<int64_t>(utf8.size());
    for (int64_t i = 0; i < size;) {
        UChar32 c;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion" // inside the macro
        U8_NEXT_OR_FFFD(utf8.data(), i, size, c);
#pragma GCC diagnostic pop
        if (c <= 0xFFFF)
            result += static_cast<char16_t>(c);
        else
            result += {static_cast<char16_t>(U16_LEAD(c)), static_cast<char16_t>(U16_TRAIL(c))};
    }
    return result;
}

std::string utf8(std::u16string_view text)
{
    const auto unitsFrom = [&](char16_t lowest) {
        return static_cast<size_t>(
            std::ranges::count_if(text, [=](char16_t unit) { return unit >= lowest; }));
    };
    const size_t most = text.size() + unitsFrom(0x80) + unitsFrom(0x800);
    std::string result;
    result.resize_and_overwrite(most, [&](char* bytes, size_t) {
        size_t used = 0;
        for (size_t i = 0; i < text.size();) {
            char32_t c;
            U16_NEXT(text.data(), i, text.size(), c);
            if (U_IS_SURROGATE(c))
                c = replacementCharacter;
            U8_APPEND_UNSAFE(bytes, used, c);
        }
        return used;
    });
    return result;
}

bool isWhiteSpace(char32_t c)
{
    return u_isUWhiteSpace(static_cast<UChar32>(c));
}

bool isHorizontalSpace(char32_t c)
{
    return c == '\t' || u_charType(static_cast<UChar32>(c)) == U_SPACE_SEPARATOR;
}

std::u16string_view trimmedHorizontally(std::u16string_view text)
{
    return trimmedOf(text, isHorizontalSpace);
}

std::u16string_view trimmed(std::u16string_view text)
{
    return trimmedOf(text, isWhiteSpace);
}

std::u16string lowercase(std::u16string_view text)
{
    std::u16string result;
    while (!text.empty()) {
        const std::u16string_view piece = firstPiece(text);
        appendLowercase(result, piece);
        text.remove_prefix(piece.size());
    }
    return result;
}

bool canonicallyEqual(std::u16string_view a, std::u16string_view b)
{
    if (a == b)
        return true;
    if (isAscii(a) && isAscii(b))
        return false;
    assert(a.size() <= longestPiece && b.size() <= longestPiece);
    UErrorCode status = U_ZERO_ERROR;
    const int32_t order = unorm_compare(
        a.data(), static_cast<int32_t>(a.size()), b.data(), static_cast<int32_t>(b.size()), 0, &status);
    return U_SUCCESS(status) && order == 0;
}

} // namespace quillmark
