// Decoding and saving, beside what the machine takes for the bare bytes.
#include "io/DocumentWriter.h"
#include "io/Journal.h"
#include "io/PosixFileSystem.h"
#include "io/TextFileReader.h"
#include "support/ManualScheduler.h"
#include "support/RecordingLog.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>

#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace quillmark;

constexpr size_t textSize = 20'000'000; // bytes

/// Lines of words, with the punctuation that such a text has.
std::string makeText(const std::vector<std::string>& letters, const std::vector<std::string>& between)
{
    std::minstd_rand random(1);
    const auto pick = [&](const auto& from) { return from[random() % from.size()]; };
    std::string text;
    while (text.size() < textSize) {
        for (size_t word = 0, words = random() % 14; word < words; ++word) {
            for (size_t letter = 0, count = 1 + random() % 10; letter < count; ++letter)
                text += pick(letters);
            text += pick(between);
        }
        text += '\n';
    }
    return text;
}

std::vector<std::string> ascii()
{
    std::vector<std::string> letters;
    for (char c = 'a'; c <= 'z'; ++c)
        letters.emplace_back(1, c);
    return letters;
}

std::vector<std::string> russian()
{
    std::vector<std::string> letters;
    for (char32_t c = 0x430; c < 0x450; ++c)
        letters.push_back({static_cast<char>(0xC0 | c >> 6), static_cast<char>(0x80 | (c & 0x3F))});
    return letters;
}

std::vector<std::string> cp1251()
{
    std::vector<std::string> letters;
    for (int c = 0xE0; c <= 0xFF; ++c)
        letters.emplace_back(1, static_cast<char>(c));
    return letters;
}

const std::vector<std::string> plainGaps = {" ", " ", " ", " ", ", ", ". "};
const std::vector<std::string> russianGaps = {" ", " ", " ", " ", ", ", ". ", " ", " ", " ", " ", " ", " — "};

void decode(benchmark::State& state, const std::string& bytes, const char* encoding)
{
    for (auto _ : state) {
        auto result = TextFileReader::decode(bytes);
        if (nameOf(result.encodingName) != encoding)
            state.SkipWithError("unexpected encoding");
        state.PauseTiming();
        result.text = Rope();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes.size()));
}

void copyMemory(benchmark::State& state)
{
    const std::string bytes = makeText(ascii(), plainGaps);
    std::string target = bytes;
    for (auto _ : state) {
        std::memcpy(target.data(), bytes.data(), bytes.size());
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes.size()));
}

/// Removed with everything that the benchmark writes there.
struct Folder {
    Path path;
    Folder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "quillmark-bench-XXXXXX").string();
        path = mkdtemp(name.data());
    }
    ~Folder() { std::filesystem::remove_all(path); }
};

void writeRaw(benchmark::State& state)
{
    const std::string bytes = makeText(ascii(), plainGaps);
    const Folder folder;
    const Path target = folder.path / "text.txt";
    const Path temporary = folder.path / "text.new";
    for (auto _ : state) {
        const int file = open(temporary.c_str(), O_CREAT | O_WRONLY | O_TRUNC | O_CLOEXEC, 0600);
        size_t written = 0;
        while (written < bytes.size()) {
            const ssize_t count = write(file, bytes.data() + written, bytes.size() - written);
            if (count <= 0) {
                state.SkipWithError("write failed");
                break;
            }
            written += static_cast<size_t>(count);
        }
        fsync(file);
        close(file);
        rename(temporary.c_str(), target.c_str());
        const int directory = open(folder.path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        fsync(directory);
        close(directory);
    }
}

void writeDocument(benchmark::State& state)
{
    const Rope text = TextFileReader::decode(makeText(ascii(), plainGaps)).text;
    const Folder folder;
    PosixFileSystem disk;
    test::ManualScheduler scheduler;
    test::RecordingLog log;
    RecoveryStore recovery(disk, scheduler, log, folder.path / "recovered");
    DocumentWriter writer(disk, recovery, scheduler);
    for (auto _ : state) {
        if (!writer.write(text, folder.path / "text.txt", LineEnds::lf))
            state.SkipWithError("save failed");
    }
}

/// The real disk, whose speed makes the clock go on.
class TimedDisk final : public PosixFileSystem {
public:
    explicit TimedDisk(test::ManualScheduler& clock)
        : m_clock(clock)
    {
    }
    Result<std::unique_ptr<File>> createNew(const Path& path, uint32_t mode) override
    {
        m_begun = std::chrono::steady_clock::now();
        return PosixFileSystem::createNew(path, mode);
    }
    Status syncFolder(const Path& folder) override
    {
        auto status = PosixFileSystem::syncFolder(folder);
        m_clock.advance(std::chrono::steady_clock::now() - m_begun);
        ++writes;
        return status;
    }

    int writes = 0;

private:
    test::ManualScheduler& m_clock;
    std::chrono::steady_clock::time_point m_begun;
};

/// What the journal costs in a minute in which a key a second is typed, each saved before the next one.
void journalKeys(benchmark::State& state)
{
    Rope text = TextFileReader::decode(makeText(ascii(), plainGaps)).text;
    const Folder folder;
    test::ManualScheduler scheduler;
    TimedDisk disk(scheduler);
    test::RecordingLog log;
    RecoveryStore recovery(disk, scheduler, log, folder.path / "recovered");
    Journal journal(disk, scheduler, recovery, log,
        {.own = folder.path / "journal", .fallbacks = {}, .lastResorts = {}},
        [&](const Uuid&) { return Journal::Snapshot{.original = "text.txt", .text = text}; });
    const Uuid document = Uuid::random();
    for (auto _ : state) {
        for (int second = 0; second < 60; ++second) {
            const SteadyTime start = scheduler.now();
            text.replace({0, 1}, u"x");
            journal.textChanged(document);
            for (int step = 0; step < 8; ++step) {
                scheduler.advance(std::chrono::milliseconds(100));
                scheduler.settle();
            }
            journal.saved(document, journal.version(document));
            scheduler.settle();
            scheduler.advance(start + std::chrono::seconds(1) - scheduler.now());
        }
    }
    state.counters["writes"] = static_cast<double>(disk.writes) / static_cast<double>(state.iterations());
}

[[maybe_unused]] const bool registered = [] {
    using benchmark::RegisterBenchmark;
    const auto addDecode = [](const char* name, auto letters, const auto& gaps, const char* encoding) {
        RegisterBenchmark(name, [=](benchmark::State& state) {
            decode(state, makeText(letters(), gaps), encoding);
        })->Unit(benchmark::kMillisecond);
    };
    RegisterBenchmark("Memcpy/20MB", copyMemory)->Unit(benchmark::kMillisecond);
    addDecode("Decode/Ascii20MB", ascii, plainGaps, "UTF-8");
    addDecode("Decode/Russian20MB", russian, russianGaps, "UTF-8");
    addDecode("Decode/Cp1251_20MB", cp1251, plainGaps, "CP1251");
    RegisterBenchmark("Save/RawWrite20MB", writeRaw)->Unit(benchmark::kMillisecond)->UseRealTime();
    RegisterBenchmark("Save/Write20MB", writeDocument)->Unit(benchmark::kMillisecond)->UseRealTime();
    RegisterBenchmark("Journal/KeyASecond20MB", journalKeys)->Unit(benchmark::kMillisecond)->UseRealTime();
    return true;
}();

} // namespace
