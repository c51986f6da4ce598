#include "text/TextStatistics.h"

#include "text/BreakIterator.h"
#include "text/Unicode.h"
#include "text/Units.h"

#include <algorithm>
#include <array>
#include <unicode/uchar.h>
#include <unicode/utf16.h>

namespace quillmark {
namespace {

enum UnitClass : uint8_t {
    white = 1,
    lineFeed = 2,
    odd = 4, ///< may be less or more than a character: marks, surrogates, Indic letters …
};

/// Whether a unit is always a character of its own unless an odd one stands beside it.
bool isOdd(char32_t unit)
{
    if (U_IS_SURROGATE(unit)
        || (unit >= 0x900 && unit < 0xE00)) // Indic consonants join by rules of their own
        return true;
    switch (u_getIntPropertyValue(static_cast<UChar32>(unit), UCHAR_GRAPHEME_CLUSTER_BREAK)) {
    case U_GCB_OTHER:
    case U_GCB_CONTROL:
    case U_GCB_LF:
    case U_GCB_LV:
    case U_GCB_LVT:
        return false;
    default:
        return true;
    }
}

bool isWordSeparator(char32_t c)
{
    return isWhiteSpace(c); // which all line and paragraph separators are
}

using ClassTable = std::array<uint8_t, 0x10000>;

const ClassTable& unitClasses()
{
    static const auto table = [] {
        auto classes = std::make_unique<ClassTable>();
        for (char32_t unit = 0; unit < classes->size(); ++unit)
            (*classes)[unit] = static_cast<uint8_t>((isWordSeparator(unit) ? white : 0)
                | (unit == '\n' ? lineFeed : 0) | (isOdd(unit) ? odd : 0));
        return classes;
    }();
    return *table;
}

/// Pairs of CR and LF, which are one character each and end no line. (Texts from files have none.)
int64_t pairCount(const Rope& text)
{
    int64_t pairs = 0;
    int64_t start = 0;
    text.forEachSpan({0, text.length()}, [&](auto units) {
        for (auto at = std::ranges::find(units, '\r'); at != units.end();
            at = std::find(at + 1, units.end(), '\r'))
            pairs += text.at(start + (at - units.begin()) + 1) == u'\n';
        start += static_cast<int64_t>(units.size());
        return true;
    });
    return pairs;
}

class Counter {
public:
    explicit Counter(int64_t lines)
        : m_lines(lines)
    {
        const int64_t rows = std::min(lines, TextStatistics::mostSamples);
        m_samples.reserve(static_cast<size_t>(rows));
        m_rows = rows;
    }

    template <class Unit> void add(std::span<const Unit> units)
    {
        while (!units.empty()) {
            if (m_odd.empty())
                units = units.subspan(addPlain(units));
            else
                units = units.subspan(addToStretch(units));
        }
    }

    TextStatistics finish()
    {
        closeStretch(std::nullopt);
        endLine();
        return {.stats = {.lines = m_lines, .words = m_words, .chars = m_chars},
            .minimapSamples = std::move(m_samples)};
    }

private:
    static constexpr size_t longestStretch = 32 * 1024; ///< units that are given to ICU at once

    /// Counts up to the first odd unit, which begins a stretch. Returns how many units are dealt with.
    template <class Unit> size_t addPlain(std::span<const Unit> units)
    {
        size_t i = 0;
        bool isInWord = m_isInWord;
        int64_t words = 0;
        for (; i < units.size(); ++i) {
            const uint8_t unitClass = m_classes[units[i]];
            if (unitClass & (odd | lineFeed)) {
                if (unitClass & odd)
                    break;
                m_chars += static_cast<int64_t>(i) + 1 - m_counted;
                m_counted = static_cast<int64_t>(i) + 1;
                endLine();
            }
            const bool isWord = !(unitClass & white);
            words += isWord && !isInWord;
            isInWord = isWord;
        }
        m_isInWord = isInWord;
        m_words += words;
        m_chars += static_cast<int64_t>(i) - m_counted;
        m_counted = 0;
        if (i > 0)
            m_lastPlain = units[i - 1];
        if (i == units.size())
            return i;
        if (m_lastPlain)
            m_odd.push_back(*m_lastPlain);
        m_begin = m_odd.size();
        m_odd.push_back(units[i]);
        return i + 1;
    }

    template <class Unit> size_t addToStretch(std::span<const Unit> units)
    {
        const auto end = std::ranges::find_if(units, [&](Unit unit) { return !(m_classes[unit] & odd); });
        m_odd.append(units.begin(), end);
        if (end != units.end())
            closeStretch(static_cast<char16_t>(*end));
        else if (m_odd.size() > longestStretch)
            shorten();
        const auto taken = static_cast<size_t>(end - units.begin());
        if (!m_isNextJoined)
            return taken;
        m_isNextJoined = false; // it belongs to the character before it
        m_lastPlain = static_cast<char16_t>(*end);
        return taken + 1;
    }

    /// Counts the characters that begin in a stretch from `m_begin` to `end`; the text goes on behind it.
    void countStretch(size_t end)
    {
        UBreakIterator* const iterator = breakIterator(UBRK_CHARACTER, m_odd);
        for (auto start = static_cast<int32_t>(m_begin); start < static_cast<int32_t>(end);
            start = ubrk_following(iterator, start)) {
            if (start == UBRK_DONE)
                break;
            if (!ubrk_isBoundary(iterator, start))
                continue; // joins the plain character before the stretch
            char32_t first;
            const auto at = static_cast<size_t>(start);
            U16_GET(m_odd.data(), 0, at, m_odd.size(), first);
            const bool isWord = !isWordSeparator(first);
            m_words += isWord && !m_isInWord;
            m_isInWord = isWord;
            ++m_chars;
        }
    }

    void closeStretch(std::optional<char16_t> next)
    {
        if (m_odd.empty())
            return;
        const size_t end = m_odd.size();
        if (next)
            m_odd.push_back(*next);
        countStretch(end);
        m_isNextJoined
            = next && !ubrk_isBoundary(breakIterator(UBRK_CHARACTER, m_odd), static_cast<int32_t>(end));
        m_odd.clear();
        m_lastPlain.reset();
    }

    /// Counts all but the last character of a long stretch, which may go on.
    void shorten()
    {
        UBreakIterator* const iterator = breakIterator(UBRK_CHARACTER, m_odd);
        const int32_t last = ubrk_preceding(iterator, static_cast<int32_t>(m_odd.size()));
        const auto keep = static_cast<size_t>(std::max(last, 0));
        if (keep <= m_begin) { // one endless character
            m_odd.erase(m_begin + 1, m_odd.size() - m_begin - 2);
            return;
        }
        countStretch(keep);
        m_odd.erase(0, keep);
        m_begin = 0;
    }

    /// Takes a sample of the line where one is due.
    void endLine()
    {
        const int64_t length = m_chars - m_lineStart - (m_line + 1 < m_lines ? 1 : 0);
        const auto row = static_cast<int64_t>(m_samples.size());
        if (row < m_rows && row * m_lines / m_rows == m_line) {
            const double part = static_cast<double>(length) / TextStatistics::fullWidth;
            m_samples.push_back(static_cast<float>(std::min(part, 1.0)));
        }
        ++m_line;
        m_lineStart = m_chars;
    }

    const ClassTable& m_classes = unitClasses();
    const int64_t m_lines;
    int64_t m_rows = 0;
    std::vector<float> m_samples;
    int64_t m_words = 0;
    int64_t m_chars = 0;
    int64_t m_line = 0;
    int64_t m_lineStart = 0; ///< as a number of characters
    int64_t m_counted = 0; ///< of the units at hand, those in m_chars already
    bool m_isInWord = false;

    std::optional<char16_t> m_lastPlain; ///< which what follows may join
    std::u16string m_odd; ///< a stretch, with the plain unit before it, to be cut by ICU
    size_t m_begin = 0; ///< where the stretch begins in it
    bool m_isNextJoined = false;
};

} // namespace

std::optional<TextStatistics> countText(const Rope& text, const CancelToken& cancel)
{
    Counter counter(text.lineCount() - pairCount(text));
    bool isCancelled = false;
    text.forEachSpan({0, text.length()}, [&](auto units) {
        counter.add(units);
        isCancelled = cancel.isCancelled();
        return !isCancelled;
    });
    if (isCancelled)
        return std::nullopt;
    return counter.finish();
}

} // namespace quillmark
