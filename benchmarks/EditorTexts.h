// The texts that the editor is measured with: the same at each run.
#pragma once

#include "text/Rope.h"

#include <cstdint>
#include <random>
#include <string>

namespace quillmark::bench {

constexpr int64_t small = 100'000;
constexpr int64_t large = 20'000'000;
constexpr int64_t longLine = 10'000'000;

enum class Lines { ofWords, one };

/// Words in lines of about 95 units, or in a single line.
inline std::string makeText(int64_t size, Lines lines = Lines::ofWords)
{
    std::minstd_rand random(1);
    std::string text;
    text.reserve(static_cast<size_t>(size));
    while (text.size() < static_cast<size_t>(size)) {
        const auto choice = random() % 96;
        const bool isBreak = choice == 0 && lines == Lines::ofWords;
        text += isBreak ? '\n' : choice < 14 ? ' ' : static_cast<char>('a' + choice % 26);
    }
    return text;
}

inline Rope makeRope(int64_t size, Lines lines = Lines::ofWords)
{
    const std::string text = makeText(size, lines);
    Rope::Builder builder;
    builder.appendLatin1({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
    return builder.finish();
}

} // namespace quillmark::bench
