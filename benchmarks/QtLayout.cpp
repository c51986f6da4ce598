// Large texts with a real font, from the command to the painted picture: a page, another width, and keys in a
// line of ten million characters.
#include "EditorTexts.h"
#include "QtWindow.h"

#include <benchmark/benchmark.h>

namespace {

using namespace quillmark;
using namespace quillmark::bench;

void pageDown(benchmark::State& state)
{
    startToolkit();
    Window window(makeRope(large));
    PlainTextView& text = window.view.textView();
    for (auto _ : state) {
        text.move(Motion::pageDown);
        window.view.repaint();
        if (text.selection().caret == text.text().length()) {
            state.PauseTiming();
            text.setText(makeRope(large)); // nothing of it is laid out
            Window::settle();
            state.ResumeTiming();
        }
    }
}
BENCHMARK(pageDown)->Name("Scroll/PageDown20MB")->Unit(benchmark::kMillisecond);

/// To a place that nobody has looked at, as by the scroll bar.
void scrollFar(benchmark::State& state, int64_t size, Lines lines)
{
    startToolkit();
    Window window(makeRope(size, lines));
    PlainTextView& text = window.view.textView();
    std::minstd_rand random(1);
    for (auto _ : state) {
        text.scrollTo(text.contentHeight() * static_cast<double>(random() % 100'000) / 1e5);
        window.view.repaint();
    }
}
BENCHMARK_CAPTURE(scrollFar, log, large, Lines::ofWords)
    ->Name("Scroll/Far20MB")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(scrollFar, line, longLine, Lines::one)
    ->Name("Scroll/FarLongLine10MB")
    ->Unit(benchmark::kMillisecond);

void resize(benchmark::State& state, int64_t size, Lines lines)
{
    startToolkit();
    Window window(makeRope(size, lines));
    PlainTextView& text = window.view.textView();
    text.scrollTo(text.contentHeight() / 2);
    int step = 0;
    for (auto _ : state) {
        window.view.setFixedSize(1000 + ++step * 7 % 600, 1000);
        window.view.repaint();
    }
}
BENCHMARK_CAPTURE(resize, log, large, Lines::ofWords)->Name("Resize/20MB")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(resize, line, longLine, Lines::one)
    ->Name("Resize/LongLine10MB")
    ->Unit(benchmark::kMillisecond);

void keyInLongLine(benchmark::State& state, double place)
{
    startToolkit();
    Window window(makeRope(longLine, Lines::one));
    PlainTextView& text = window.view.textView();
    const auto caret = static_cast<int64_t>(place * static_cast<double>(text.text().length()));
    text.select({.anchor = caret, .caret = caret});
    text.scrollToCaret();
    for (auto _ : state) {
        text.insertText(u"x");
        benchmark::DoNotOptimize(text.visibleRows().data());
    }
}
BENCHMARK_CAPTURE(keyInLongLine, start, 0.0)
    ->Name("Keystroke/LongLine10MB/start")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(keyInLongLine, middle, 0.5)
    ->Name("Keystroke/LongLine10MB/middle")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(keyInLongLine, end, 1.0)->Name("Keystroke/LongLine10MB/end")->Unit(benchmark::kMillisecond);

} // namespace
