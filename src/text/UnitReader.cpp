#include "text/UnitReader.h"

#include "text/Units.h"

#include <algorithm>
#include <cassert>
#include <unicode/utf16.h>

namespace quillmark {

char32_t UnitReader::codePointAt(int64_t offset)
{
    const char16_t unit = (*this)[offset];
    if (!isHighSurrogate(unit) || offset + 1 == m_length)
        return unit;
    const char16_t next = (*this)[offset + 1];
    return isLowSurrogate(next) ? static_cast<char32_t>(U16_GET_SUPPLEMENTARY(unit, next)) : unit;
}

char32_t UnitReader::codePointBefore(int64_t offset)
{
    assert(offset > 0);
    const char16_t unit = (*this)[offset - 1];
    if (!isLowSurrogate(unit) || offset == 1)
        return unit;
    const char16_t previous = (*this)[offset - 2];
    return isHighSurrogate(previous) ? static_cast<char32_t>(U16_GET_SUPPLEMENTARY(previous, unit)) : unit;
}

int64_t UnitReader::startOfCodePoint(int64_t offset)
{
    const bool isInsidePair = offset > 0 && offset < m_length && isLowSurrogate((*this)[offset])
        && isHighSurrogate((*this)[offset - 1]);
    return isInsidePair ? offset - 1 : offset;
}

std::u16string_view UnitReader::contiguous(Range range, std::u16string& storage) const
{
    assert(range.location >= 0 && range.length >= 0 && range.end() <= m_length);
    if (!m_rope)
        return {m_units + range.location, static_cast<size_t>(range.length)};
    storage = m_rope->text(range);
    return storage;
}

void UnitReader::moveWindow(int64_t offset)
{
    assert(m_rope && "a string is one window");
    constexpr auto size = static_cast<int64_t>(std::tuple_size_v<decltype(m_buffer)>);
    const int64_t latestStart = std::max<int64_t>(0, m_length - size);
    m_window.location = std::clamp<int64_t>(offset - size / 2, 0, latestStart);
    m_window.length = std::min(size, m_length);
    char16_t* to = m_buffer.data();
    m_rope->forEachSpan(m_window, [&to](auto units) {
        units::copy(units, to);
        to += units.size();
        return true;
    });
    m_units = m_buffer.data();
}

} // namespace quillmark
