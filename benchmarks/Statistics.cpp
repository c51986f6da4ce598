// Counting a text of 20 MB, beside ICU cutting the same text into characters.
#include "io/TextFileReader.h"
#include "text/BreakIterator.h"
#include "text/TextStatistics.h"
#include "text/Unicode.h"

#include <benchmark/benchmark.h>

#include <random>

namespace {

using namespace quillmark;

constexpr size_t textSize = 20'000'000; // bytes

std::string makeText(const std::vector<std::string>& words)
{
    std::minstd_rand random(1);
    std::string text;
    while (text.size() < textSize)
        text += words[random() % words.size()] + (random() % 12 == 0 ? "\n" : " ");
    return text;
}

const std::vector<std::string> ascii = {"the", "quick", "brown", "fox", "jumps", "over", "a", "lazy", "dog"};
const std::vector<std::string> russian
    = {"съешь", "ещё", "этих", "мягких", "французских", "булок", "да", "выпей"};
/// About three of a hundred units are odd.
const std::vector<std::string> mixed
    = {"съешь", "the", "quick", "булок", "да", "выпей", "fox", "漢字", "français", "jumps", "over", "lazy",
        "мягких", "этих", "dog", "brown", "👩‍👩‍👧", "हिन्दी", "é", "straße"};

void count(benchmark::State& state, const std::vector<std::string>& words)
{
    const Rope text = TextFileReader::decode(makeText(words)).text;
    for (auto _ : state)
        benchmark::DoNotOptimize(countText(text, CancelToken()));
}

void countByIcu(benchmark::State& state, const std::vector<std::string>& words)
{
    const std::u16string text = utf16(makeText(words));
    for (auto _ : state) {
        UBreakIterator* const iterator = breakIterator(UBRK_CHARACTER, text);
        int64_t characters = 0;
        while (ubrk_next(iterator) != UBRK_DONE)
            ++characters;
        benchmark::DoNotOptimize(characters);
    }
}

[[maybe_unused]] const bool registered = [] {
    const auto add = [](const std::string& name, const auto& words) {
        benchmark::RegisterBenchmark(("Stats/" + name).c_str(), count, words)->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("Stats/Icu" + name).c_str(), countByIcu, words)
            ->Unit(benchmark::kMillisecond);
    };
    add("Ascii20MB", ascii);
    add("Russian20MB", russian);
    add("Mixed20MB", mixed);
    return true;
}();

} // namespace
