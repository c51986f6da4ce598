// The text itself: edits, snapshots, lines and whole passes over twenty million units.
#include "text/Rope.h"

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace quillmark;

constexpr size_t textBytes = 20'000'000;

/// Lines of words in ASCII, like a log or a source file.
const std::vector<uint8_t>& ascii()
{
    static const std::vector<uint8_t> text = [] {
        std::vector<uint8_t> bytes(textBytes);
        std::minstd_rand random(1);
        for (uint8_t& byte : bytes) {
            const auto choice = random() % 64;
            byte = choice == 0 ? '\n' : choice < 10 ? ' ' : static_cast<uint8_t>('a' + choice % 26);
        }
        return bytes;
    }();
    return text;
}

Rope build()
{
    Rope::Builder builder;
    builder.appendLatin1(ascii());
    return builder.finish();
}

/// Offsets in no order, the same in each run.
std::vector<int64_t> places(int64_t below)
{
    std::vector<int64_t> offsets(1 << 16);
    std::mt19937_64 random(2);
    for (int64_t& offset : offsets)
        offset = std::uniform_int_distribution<int64_t>(0, below - 1)(random);
    return offsets;
}

void insertAtCaret(benchmark::State& state)
{
    Rope text = build();
    int64_t caret = text.length() / 2;
    for (auto _ : state)
        text.replace({caret++, 0}, u"x");
}
BENCHMARK(insertAtCaret)->Name("Rope/InsertAtCaret");

void insertRandom(benchmark::State& state)
{
    Rope text = build();
    const auto offsets = places(text.length());
    size_t i = 0;
    for (auto _ : state)
        text.replace({offsets[i++ % offsets.size()], 0}, u"x");
}
BENCHMARK(insertRandom)->Name("Rope/InsertRandom");

void insertAfterSnapshot(benchmark::State& state)
{
    Rope text = build();
    const auto offsets = places(text.length());
    size_t i = 0;
    for (auto _ : state) {
        const Rope snapshot = text;
        text.replace({offsets[i++ % offsets.size()], 0}, u"x");
    }
}
BENCHMARK(insertAfterSnapshot)->Name("Rope/InsertAfterSnapshot");

void snapshot(benchmark::State& state)
{
    const Rope text = build();
    for (auto _ : state) {
        Rope copy = text;
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(snapshot)->Name("Rope/Snapshot");

void lineOfOffset(benchmark::State& state)
{
    const Rope text = build();
    const auto offsets = places(text.length());
    size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(text.lineAt(offsets[i++ % offsets.size()]));
}
BENCHMARK(lineOfOffset)->Name("Rope/LineOfOffset");

void offsetOfLine(benchmark::State& state)
{
    const Rope text = build();
    const auto lines = places(text.lineCount());
    size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(text.startOf(Line{lines[i++ % lines.size()]}));
}
BENCHMARK(offsetOfLine)->Name("Rope/OffsetOfLine");

void iterate(benchmark::State& state)
{
    const Rope text = build();
    for (auto _ : state) {
        uint64_t sum = 0;
        text.forEachSpan({0, text.length()}, [&sum](auto units) {
            sum = std::accumulate(units.begin(), units.end(), sum);
            return true;
        });
        benchmark::DoNotOptimize(sum);
    }
}
BENCHMARK(iterate)->Name("Rope/Iterate20M")->Unit(benchmark::kMillisecond);

size_t allocatedBytes()
{
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void build20MB(benchmark::State& state)
{
    ascii();
    for (auto _ : state) {
        Rope text = build();
        benchmark::DoNotOptimize(text);
    }
    const size_t before = allocatedBytes();
    const Rope text = build();
    state.counters["bytes_per_unit"]
        = static_cast<double>(allocatedBytes() - before) / static_cast<double>(text.length());
}
BENCHMARK(build20MB)->Name("Rope/Build20MB")->Unit(benchmark::kMillisecond);

} // namespace
