// Bytes of a file into text: finds the encoding, turns every line break into a line feed, and says what was
// found. A pure function that never fails; any thread.
#pragma once

#include "io/TextFormat.h"
#include "text/Rope.h"

#include <string_view>

namespace quillmark {

struct TextFileReader {
    struct Result {
        Rope text; ///< without carriage returns and byte order mark
        TextEncoding encodingName = TextEncoding::utf8;
        LineEnds lineEndings = LineEnds::lf; ///< crlf when the text had at least one pair of CR and LF
        bool lossy = false; ///< replacement characters stand for bytes that are not text

        bool operator==(const Result&) const = default;
    };

    /// Tries, in this order: a byte order mark (UTF-8, UTF-16), UTF-8, Windows-1251, Windows-1252; the first
    /// encoding in which all bytes are well-formed wins. Otherwise UTF-8 with one U+FFFD for each maximal
    /// ill-formed subpart.
    static Result decode(std::string_view bytes);
};

} // namespace quillmark
