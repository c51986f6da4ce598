// The editing model without a screen: a key from the command to the laid-out screen, and a file from the disk
// to it. Shaping is the tests' fixed advances: what a real font costs is measured with the widget.
#include "EditorTexts.h"
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
#include <string>

namespace {

using namespace quillmark;
using namespace quillmark::bench;

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

/// One command with many edits, taken back again: what replacing all matches costs.
void editMany(benchmark::State& state, int64_t size, int64_t count)
{
    Editor editor;
    editor.view.setText(makeRope(size));
    const int64_t step = editor.view.text().length() / count;
    for (auto _ : state) {
        editor.view.perform(UndoManager::Kind::other, [&](const Rope&, const Selection& selection) {
            Edit edit{.replacements = {}, .selection = selection};
            for (int64_t i = 0; i < count; ++i)
                edit.replacements.push_back({{i * step, 3}, u"other"});
            return edit;
        });
        editor.view.undo();
    }
}
BENCHMARK_CAPTURE(editMany, large, large, 100'000)
    ->Name("EditMany/100kIn20MB")
    ->Unit(benchmark::kMillisecond);

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

/// What the layout alone costs when a text is installed: 1 GB that takes little memory, since it shares
/// leaves.
void installGigabyte(benchmark::State& state, Lines lines)
{
    Rope text = makeRope(1'000'000, lines);
    for (int doubling = 0; doubling < 10; ++doubling)
        text.append(Rope(text));
    std::optional<TextStorage> storage;
    std::optional<LayoutManager> layout;
    test::FixedShaper shaper;
    for (auto _ : state) {
        state.PauseTiming();
        layout.reset();
        storage.emplace();
        layout.emplace(*storage, shaper);
        layout->setWrapWidth(1600);
        state.ResumeTiming();
        storage->replace({0, 0}, text);
        benchmark::DoNotOptimize(layout->rowAt(0));
    }
}
BENCHMARK_CAPTURE(installGigabyte, log, Lines::ofWords)
    ->Name("Layout/Install1GB")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(installGigabyte, line, Lines::one)
    ->Name("Layout/InstallLongLine1GB")
    ->Unit(benchmark::kMillisecond);

/// All idle moments together.
void settle(benchmark::State& state, int64_t size, Lines lines)
{
    TextStorage storage;
    storage.replace({0, 0}, makeRope(size, lines));
    test::FixedShaper shaper;
    LayoutManager layout(storage, shaper);
    int width = 800;
    for (auto _ : state) {
        layout.setWrapWidth(++width);
        while (!layout.isSettled())
            layout.settleNear(size / 2);
        benchmark::DoNotOptimize(layout.rowCount());
    }
}
BENCHMARK_CAPTURE(settle, log, large, Lines::ofWords)
    ->Name("Layout/Settle20MB")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(settle, line, longLine, Lines::one)
    ->Name("Layout/SettleLongLine10MB")
    ->Unit(benchmark::kMillisecond);

} // namespace
