// Decodes a file that is handed over in pieces, so that a large one need never be in memory as bytes. The
// result is the one that TextFileReader::decode gives for all bytes at once, whatever the pieces are. Any
// thread, one at a time.
#pragma once

#include "io/TextFileReader.h"

#include <array>
#include <memory>
#include <optional>

namespace quillmark {

class TextDecoder {
public:
    enum class Behind { more, nothing }; ///< what comes behind the bytes

    static constexpr size_t mostLeft = 1024; ///< bytes of a window that are not taken while more is behind

    TextDecoder();
    ~TextDecoder();
    TextDecoder(const TextDecoder&) = delete;
    TextDecoder& operator=(const TextDecoder&) = delete;

    /// Takes bytes from the start of a window on the file and returns how many; the next window starts behind
    /// them. With nothing behind the window it takes all of it. Nothing: the bytes are not in the encoding
    /// that is being tried, and the file must come again from its beginning, to be tried in the next one.
    std::optional<size_t> take(std::string_view window, Behind behind);

    TextFileReader::Result finish(); ///< once, when everything was taken

private:
    class Attempt;
    class ByteAttempt;
    class Utf8;
    class Utf16;
    class EightBit;
    struct Candidate;
    static const std::array<Candidate, 7> candidates;

    size_t m_candidate = 0; ///< being tried, or the first to be tried next
    std::unique_ptr<Attempt> m_attempt; ///< null at the file's beginning
};

} // namespace quillmark
