// A large file from the disk to the first painted screen, read as the program reads it, with the editor
// widget on Qt's offscreen platform. Counters: read_ms until the text is there and show_ms from then to the
// screen; longest_hold_ms is the longest time in which the main thread answered nobody, to half a second
// behind the screen.
#include "QtHeartbeat.h"
#include "QtWindow.h"
#include "SampleFile.h"
#include "io/PosixFileSystem.h"
#include "io/ReadFile.h"

#include <benchmark/benchmark.h>

namespace {

using namespace quillmark;
using namespace quillmark::bench;
using namespace std::chrono_literals;

/// An editor that says when it has painted.
class PaintedWindow final : public EditorView {
public:
    PaintedWindow(Scheduler& scheduler, Clipboard& clipboard)
        : EditorView(scheduler, clipboard)
    {
        setFixedSize(1600, 1000);
        show();
        activateWindow();
        setFocus();
        Window::settle();
    }

    bool hasPainted = false;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        EditorView::paintEvent(event);
        hasPainted = true;
    }
};

void open(benchmark::State& state, int64_t size, Lines lines)
{
    startToolkit();
    const SampleFile file(size, lines);
    PosixFileSystem disk;
    test::FakeClipboard clipboard;
    double readTime = 0;
    double showTime = 0;
    double longestHold = 0;
    for (auto _ : state) {
        QtScheduler scheduler;
        PaintedWindow window(scheduler, clipboard);
        const Heartbeat heartbeat;
        std::optional<Clock::time_point> read;
        const auto began = Clock::now();
        const Task load = scheduler.background(
            Priority::userInitiated,
            [&](const CancelToken& token) { return readTextFile(disk, file.path(), token); },
            [&](Result<TextFile> loaded) {
                read = Clock::now();
                window.setEditable(size <= largestEditableFile);
                window.hasPainted = false;
                window.textView().setText(std::move(loaded.value().content.text));
            });
        runUntil([&] { return read && window.hasPainted; });
        const auto shown = Clock::now();
        state.SetIterationTime(std::chrono::duration<double>(shown - began).count());
        runFor(500ms);
        readTime += milliseconds(*read - began);
        showTime += milliseconds(shown - *read);
        longestHold = std::max(longestHold, heartbeat.longestHold());
        window.textView().setText(Rope());
    }
    using benchmark::Counter;
    state.counters["read_ms"] = Counter(readTime, Counter::kAvgIterations);
    state.counters["show_ms"] = Counter(showTime, Counter::kAvgIterations);
    state.counters["longest_hold_ms"] = longestHold;
}

void add(const char* name, int64_t size, Lines lines, int iterations)
{
    benchmark::RegisterBenchmark(name, open, size, lines)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(iterations);
}

[[maybe_unused]] const bool registered = [] {
    add("Open/LongLine10MB", longLine, Lines::one, 5);
    add("Open/Log100MB", 100'000'000, Lines::ofWords, 5);
    add("Open/Log1GB", 1'000'000'000, Lines::ofWords, 2);
    return true;
}();

} // namespace
