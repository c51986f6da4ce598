// A pattern and a text of the user's: refused, searched or given up, always within the time allowed.
#include "text/Regex.h"
#include "text/Unicode.h"

#include <cstdlib>

using namespace quillmark;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const size_t middle = std::min<size_t>(bytes[0] & 0x3f, size - 1) + 1;
    const std::u16string pattern = utf16(bytes.substr(1, middle - 1));
    const std::u16string text = utf16(bytes.substr(middle));

    int64_t reached = -1;
    const auto inOrder = [&](const Regex::Match& match) {
        const Range range = match.range();
        if (range.location < reached || range.end() > static_cast<int64_t>(text.size()))
            std::abort();
        reached = range.end();
        return true;
    };
    const Regex::Limits limits{.cancel = {}, .time = std::chrono::milliseconds(200)};
    if (auto regex = Regex::compile(pattern))
        regex->forEachMatch(text, {0, static_cast<int64_t>(text.size())}, limits, inOrder);
    return 0;
}
