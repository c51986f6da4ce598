// The two 8-bit encodings that files are read in, as published.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace quillmark {

/// The unit that each byte stands for.
using CodePage = std::array<char16_t, 256>;

inline constexpr char16_t unassigned = 0xFFFF; ///< in a CodePage: the byte stands for nothing

extern const CodePage cp1251; ///< Windows-1251, Cyrillic
extern const CodePage cp1252; ///< Windows-1252, Western European

} // namespace quillmark
