#include "io/Encode.h"

#include "io/Utf8.h"
#include "text/Units.h"

#include <algorithm>
#include <cassert>
#include <vector>

namespace quillmark {
namespace {

constexpr size_t bufferSize = 256 * 1024;
constexpr size_t largestStep = 16 * 1024; ///< units encoded at a time
constexpr size_t mostBytesPerUnit = 3; ///< also of a line feed that becomes a pair

char* convert(std::span<const uint8_t> units, char* target)
{
    return latin1ToUtf8(units, target);
}
char* convert(std::span<const char16_t> units, char* target)
{
    return utf16ToUtf8(units, target);
}

size_t stepLength(std::span<const uint8_t> units)
{
    return std::min(units.size(), largestStep);
}

size_t stepLength(std::span<const char16_t> units)
{
    if (units.size() <= largestStep)
        return units.size();
    const bool wouldSplitPair = isHighSurrogate(units[largestStep - 1]);
    return largestStep - wouldSplitPair;
}

/// Makes "\r\n" of each line feed, from the end on so that every byte moves once. Returns the new end.
char* widenLineFeeds(char* start, char* end)
{
    char* source = end;
    char* target = end + std::count(start, end, '\n');
    char* const newEnd = target;
    while (source != target) {
        const char byte = *--source;
        *--target = byte;
        if (byte == '\n')
            *--target = '\r';
    }
    return newEnd;
}

/// Collects encoded bytes and hands full buffers on.
class Encoder {
public:
    Encoder(LineEnds lineEnds, const Sink& take)
        : m_lineEnds(lineEnds)
        , m_take(take)
    {
    }

    template <class Unit> Status add(std::span<const Unit> units)
    {
        while (!units.empty()) {
            const size_t length = stepLength(units);
            if (m_used + mostBytesPerUnit * length > bufferSize) {
                if (auto status = flush(); !status)
                    return status;
            }
            assert(length > 0 && m_used + mostBytesPerUnit * length <= bufferSize);
            char* const start = m_buffer.data() + m_used;
            char* end = convert(units.first(length), start);
            if (m_lineEnds == LineEnds::crlf)
                end = widenLineFeeds(start, end);
            m_used = static_cast<size_t>(end - m_buffer.data());
            units = units.subspan(length);
        }
        return {};
    }

    Status flush()
    {
        const size_t size = std::exchange(m_used, 0);
        return size > 0 ? m_take({m_buffer.data(), size}) : Status();
    }

private:
    LineEnds m_lineEnds;
    const Sink& m_take;
    std::vector<char> m_buffer = std::vector<char>(bufferSize);
    size_t m_used = 0;
};

int64_t utf8Length(std::span<const uint8_t> latin1)
{
    int64_t bytes = 0;
    for (const uint8_t unit : latin1)
        bytes += 1 + (unit >> 7);
    return bytes;
}

int64_t utf8Length(std::span<const char16_t> units)
{
    int64_t bytes = 0;
    for (const char16_t unit : units)
        bytes += 1 + (unit >= 0x80) + (unit >= 0x800) - isSurrogate(unit);
    return bytes;
}

} // namespace

int64_t utf8Length(const Rope& text)
{
    int64_t bytes = 0;
    text.forEachChunk({0, text.length()}, [&](const Rope::Chunk& chunk) {
        bytes += std::visit([](const auto& units) { return utf8Length(units); }, chunk);
        return true;
    });
    return bytes;
}

Status encode(const Rope& text, LineEnds lineEnds, const Sink& take)
{
    Encoder encoder(lineEnds, take);
    Status status;
    text.forEachChunk({0, text.length()}, [&](const Rope::Chunk& chunk) { // never splits a surrogate pair
        status = std::visit([&](const auto& units) { return encoder.add(units); }, chunk);
        return status.has_value();
    });
    return status ? encoder.flush() : status;
}

FileContent contentOf(const Rope& text, LineEnds lineEnds)
{
    return [text, lineEnds](const Sink& sink) { return encode(text, lineEnds, sink); };
}

} // namespace quillmark
