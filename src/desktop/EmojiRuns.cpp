#include "desktop/EmojiRuns.h"

#include "text/Unicode.h"

#include <algorithm>
#include <unicode/uchar.h>
#include <unicode/utf16.h>

namespace quillmark {

namespace {

constexpr char16_t emojiSelector = 0xFE0F;
constexpr char16_t textSelector = 0xFE0E;

/// Whether a unit says that its character may be an emoji; every emoji has one that does. Letters of most
/// scripts are below all of them.
bool mayBeOfEmoji(char16_t unit)
{
    if (unit < 0x231A)
        return false;
    if (unit <= 0x2B55)
        return u_hasBinaryProperty(unit, UCHAR_EMOJI_PRESENTATION);
    return unit == emojiSelector || (unit >= 0xD83C && unit <= 0xD83E);
}

bool isEmoji(std::u16string_view character)
{
    const auto length = static_cast<int32_t>(character.size());
    bool isFirst = true;
    for (int32_t i = 0; i < length;) {
        UChar32 c = 0;
        U16_NEXT(character.data(), i, length, c);
        const char16_t next = i < length ? character[static_cast<size_t>(i)] : u'\0';
        if (isFirst && next == textSelector)
            return false;
        if (u_hasBinaryProperty(c, UCHAR_EMOJI_PRESENTATION)
            || (next == emojiSelector && u_hasBinaryProperty(c, UCHAR_EMOJI)))
            return true;
        isFirst = false;
    }
    return false;
}

} // namespace

std::vector<Range> emojiRuns(std::u16string_view text)
{
    std::vector<Range> runs;
    const auto length = static_cast<int64_t>(text.size());
    int64_t reached = 0;
    while (true) {
        const auto found = std::find_if(text.begin() + reached, text.end(), mayBeOfEmoji);
        if (found == text.end())
            return runs;
        // U+FE0F stands behind what it belongs to.
        const int64_t end = nextGrapheme(text, found - text.begin());
        const int64_t start = std::max(reached, previousGrapheme(text, end));
        if (isEmoji(text.substr(static_cast<size_t>(start), static_cast<size_t>(end - start)))) {
            if (!runs.empty() && runs.back().end() == start)
                runs.back().length = end - runs.back().location;
            else
                runs.push_back(Range::between(start, end));
        }
        reached = std::min(end, length);
    }
}

} // namespace quillmark
