// A notes folder with ten thousand notes, Russian and English, 20 MB in all.
#include "NotesFolder.h"
#include "notes/NoteNames.h"
#include "notes/NoteSearch.h"
#include "support/ThreadScheduler.h"
#include "support/World.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <fstream>
#include <thread>

namespace {

using namespace quillmark;
using Clock = std::chrono::steady_clock;

constexpr int noteCount = 10'000;

/// The folder on the real disk, made once, and a store of it.
struct Notes : test::RealWorld<test::ThreadScheduler> {
    Notes()
    {
        bench::fillWithNotes(folder, noteCount);
        store = std::make_unique<NoteStore>(test::noteStoreServices(*this, queue, folder));
    }

    const Path folder = notes();
    WriteQueue queue{scheduler, writer, log, [](const WriteQueue::Outcome&) {}};
    std::unique_ptr<NoteStore> store;
};

Notes& notes()
{
    static Notes all;
    return all;
}

void list(benchmark::State& state)
{
    NoteStore& store = *notes().store;
    for (auto _ : state)
        store.reloadNotes();
    if (store.notes->size() != noteCount)
        state.SkipWithError("notes are missing");
}

void sync(benchmark::State& state)
{
    NoteStore& store = *notes().store;
    int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        std::ofstream(notes().folder / "note 77.txt")
            << "changed " << std::string(static_cast<size_t>(++round % 7), 'x');
        state.ResumeTiming();
        store.syncWithDisk();
    }
}

/// One key in the sidebar's field: what the store does, and the list that it gives.
void filter(benchmark::State& state)
{
    NoteStore& store = *notes().store;
    const std::vector<std::string> queries = {"п", "пл", "пла", "план", "план 7", "meeting"};
    size_t next = 0;
    for (auto _ : state) {
        store.updateSearchQuery(queries[next++ % queries.size()]);
        benchmark::DoNotOptimize(store.filteredNotes().size());
    }
    store.updateSearchQuery("");
}

/// The search as the store runs it, a part a thread.
void searchFiles(benchmark::State& state)
{
    std::vector<SearchCandidate> candidates;
    for (const Note& note : notes().store->notes.get())
        candidates.push_back({note.id, std::string(fileName(note))});
    const size_t parts = std::clamp(std::thread::hardware_concurrency(), 1U, 4U);
    const SearchKey key(u"Встреча ЗАВТРА");
    for (auto _ : state) {
        std::vector<size_t> found(parts);
        std::vector<std::jthread> threads;
        for (size_t part = 0; part < parts; ++part)
            threads.emplace_back([&, part] {
                const size_t first = candidates.size() * part / parts;
                const size_t count = candidates.size() * (part + 1) / parts - first;
                found[part] = searchContents(notes().disk, notes().folder, key,
                    std::span(candidates).subspan(first, count), CancelToken())
                                  .size();
            });
        threads.clear();
        benchmark::DoNotOptimize(found.data());
    }
}

[[maybe_unused]] const bool registered = [] {
    const auto add = [](const char* name, void (*run)(benchmark::State&)) {
        benchmark::RegisterBenchmark(name, run)->Unit(benchmark::kMillisecond)->UseRealTime();
    };
    add("Notes/List10k", list);
    add("Notes/Sync10kOneChanged", sync);
    add("Notes/Filter10k", filter);
    add("Notes/SearchContents10k", searchFiles);
    return true;
}();

} // namespace
