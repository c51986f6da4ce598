// The editing model without a screen: a key from the command to the laid-out screen, and a file from the disk
// to it. Shaping is the tests' fixed advances: what a real font costs is measured with the widget.
#include "editor/LineIndex.h"
#include "editor/PlainTextView.h"
#include "io/PosixFileSystem.h"
#include "io/ReadFile.h"
#include "support/FakeClipboard.h"
#include "support/FixedShaper.h"
#include "support/ManualScheduler.h"
#include "support/TestEnvironment.h"

#include <benchmark/benchmark.h>

#include <fstream>
#include <optional>
#include <random>
#include <string>

namespace {

using namespace quillmark;

constexpr int64_t small = 100'000;
constexpr int64_t large = 20'000'000;

/// Lines of words of about 95 units.
std::string makeText(int64_t size)
{
    std::minstd_rand random(1);
    std::string text;
    text.reserve(static_cast<size_t>(size));
    while (text.size() < static_cast<size_t>(size)) {
        const auto choice = random() % 96;
        text += choice == 0 ? '\n' : choice < 14 ? ' ' : static_cast<char>('a' + choice % 26);
    }
    return text;
}

Rope makeRope(int64_t size)
{
    const std::string text = makeText(size);
    Rope::Builder builder;
    builder.appendLatin1({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
    return builder.finish();
}

/// A view of 160 × 50 characters with the gutter's index, and a delegate that only counts.
struct Editor final : PlainTextView::Delegate {
    Editor()
    {
        view.setVerticalInset(16);
        view.setVisibleSize(1600, 1000);
        view.setDelegate(this);
        indexing = view.storage().onEdit(
            [this](const TextEdit& edit, const Rope&) { lines.applyEdit(edit, view.text()); });
    }
    void textDidChange() override { ++edits; }
    void textViewDidChangeSelection() override { ++moves; }

    test::ManualScheduler scheduler;
    test::FixedShaper shaper;
    test::FakeClipboard clipboard;
    PlainTextView view{scheduler, shaper, clipboard};
    LineIndex lines;
    Connection indexing;
    int64_t edits = 0;
    int64_t moves = 0;
};

void keystroke(benchmark::State& state, int64_t size)
{
    Editor editor;
    editor.view.setText(makeRope(size));
    const int64_t middle = editor.view.text().length() / 2;
    editor.view.select({.anchor = middle, .caret = middle});
    editor.view.scrollToCaret();
    int64_t column = 0;
    for (auto _ : state) {
        editor.view.insertText(++column % 96 == 0 ? u"\n" : u"x");
        benchmark::DoNotOptimize(editor.view.visibleRows().data());
    }
}
BENCHMARK_CAPTURE(keystroke, small, small)->Name("Keystroke/100KB")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(keystroke, large, large)->Name("Keystroke/20MB")->Unit(benchmark::kMicrosecond);

void open(benchmark::State& state, int64_t size)
{
    const test::TemporaryFolder folder;
    const Path path = folder / "text.txt";
    std::ofstream(path, std::ios::binary) << makeText(size);
    PosixFileSystem disk;
    std::optional<Editor> editor;
    for (auto _ : state) {
        state.PauseTiming(); // the window is there, and nobody waits for the last text to go
        editor.emplace();
        state.ResumeTiming();
        auto file = readTextFile(disk, path);
        editor->view.setText(std::move(file->content.text));
        benchmark::DoNotOptimize(editor->view.visibleRows().data());
    }
}
BENCHMARK_CAPTURE(open, small, small)->Name("Open/100KB")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(open, large, large)->Name("Open/20MB")->Unit(benchmark::kMillisecond);

} // namespace
