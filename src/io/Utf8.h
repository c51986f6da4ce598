// UTF-8 to and from UTF-16, as fast as a file needs it. Well-formed means table 3-7 of the Unicode standard:
// no surrogates, no overlong forms, nothing above U+10FFFF. Any thread.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace quillmark {

/// True when all bytes are below 0x80.
bool isAscii(std::string_view bytes);

bool isWellFormedUtf8(std::string_view bytes);

/// What stopped a conversion, and where.
struct Utf8Progress {
    const char* source; ///< first byte that was not converted; the end when all were
    char16_t* target; ///< behind the last unit that was written
};

/// Converts until the end or the first ill-formed sequence. `target` has room for as many units as there are
/// bytes.
Utf8Progress utf8ToUtf16(std::string_view bytes, char16_t* target);

/// The length in bytes of the maximal ill-formed subpart at the start of `bytes`, which must be ill-formed
/// there.
size_t illFormedLength(std::string_view bytes);

/// Behind the last byte written; `target` has room for three bytes a unit. A surrogate without its partner
/// becomes U+FFFD.
char* utf16ToUtf8(std::span<const char16_t> units, char* target);
char* latin1ToUtf8(std::span<const uint8_t> units, char* target); ///< room for two bytes a unit

} // namespace quillmark
