// Any bytes are a text, and what is written of a text reads as the same text again.
#include "io/Encode.h"
#include "io/TextFileReader.h"
#include "text/Unicode.h"

#include <cstdlib>

using namespace quillmark;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto read = TextFileReader::decode(bytes);
    const std::u16string text = read.text.text();
    if (text.find(u'\r') != std::u16string::npos
        || read.lossy != (read.encodingName == TextEncoding::repairedUtf8))
        std::abort();
    std::string written;
    const auto take = [&](std::string_view piece) {
        written += piece;
        return Status();
    };
    if (!encode(read.text, LineEnds::lf, take) || written != utf8(text))
        std::abort();
    // A byte order mark at the start of a text would be taken for one of the file.
    if (!text.starts_with(u'\uFEFF') && TextFileReader::decode(written).text.text() != text)
        std::abort();
    return 0;
}
