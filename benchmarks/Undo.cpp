// A long history: a hundred thousand steps typed, taken back and made again. Counters per step: bytes kept by
// the history (with what the text takes), and microseconds.
#include "text/UndoManager.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <malloc.h>

namespace {

using namespace quillmark;

constexpr int64_t steps = 100'000;

void hundredThousandSteps(benchmark::State& state)
{
    using Clock = std::chrono::steady_clock;
    for (auto _ : state) {
        TextStorage storage;
        UndoManager undo(storage);
        const auto before = mallinfo2();
        const auto began = Clock::now();
        for (int64_t i = 0; i < steps; ++i) {
            undo.begin(UndoManager::Kind::other, {i, i}, SteadyTime());
            storage.replace({i, 0}, u"x");
            undo.end({i + 1, i + 1});
        }
        const auto typed = Clock::now();
        const auto after = mallinfo2();
        while (undo.undo()) {}
        const auto undone = Clock::now();
        while (undo.redo()) {}
        const auto redone = Clock::now();
        undo.removeAll();
        const auto freed = Clock::now();
        const auto each = [](auto duration) {
            return std::chrono::duration<double, std::micro>(duration).count() / double(steps);
        };
        state.counters["bytes_per_step"] = double(after.uordblks - before.uordblks) / double(steps);
        state.counters["type_us"] = each(typed - began);
        state.counters["undo_us"] = each(undone - typed);
        state.counters["redo_us"] = each(redone - undone);
        state.counters["free_us"] = each(freed - redone);
    }
}
BENCHMARK(hundredThousandSteps)->Name("Undo/HundredThousandSteps")->Unit(benchmark::kMillisecond);

} // namespace
