// What a text file is besides its text: its encoding and its line ends, and what they are called.
#pragma once

#include <string_view>

namespace quillmark {

enum class LineEnds { lf, crlf };

enum class TextEncoding {
    utf8,
    utf16,
    cp1251,
    cp1252,
    repairedUtf8, ///< some bytes were no text: U+FFFD stands for them
};

constexpr std::string_view nameOf(LineEnds lineEnds)
{
    return lineEnds == LineEnds::crlf ? "CRLF" : "LF";
}

constexpr std::string_view nameOf(TextEncoding encoding)
{
    constexpr std::string_view names[] = {"UTF-8", "UTF-16", "CP1251", "CP1252", "UTF-8?"};
    return names[static_cast<int>(encoding)];
}

/// Whether a document in this encoding is written as one of another name: all are written as UTF-8.
constexpr bool changesWhenWritten(TextEncoding encoding)
{
    return encoding == TextEncoding::cp1251 || encoding == TextEncoding::cp1252;
}

} // namespace quillmark
