// Frames of the editor widget on Qt's offscreen platform, 1600 × 1000, with a real font: the whole picture,
// and the one line that a key changed.
#include "QtWindow.h"

#include <QKeyEvent>

#include <benchmark/benchmark.h>

#include <random>

namespace {

using namespace quillmark;
using namespace quillmark::bench;

/// Lines of Russian words, some of them wider than the window.
std::u16string makeText()
{
    std::minstd_rand random(1);
    std::u16string text;
    while (text.size() < 100'000) {
        const auto choice = random() % 128;
        text += choice == 0 ? u'\n' : choice < 20 ? u' ' : static_cast<char16_t>(u'а' + choice % 32);
    }
    return text;
}

void full(benchmark::State& state)
{
    startToolkit();
    Window window{Rope(makeText())};
    for (auto _ : state)
        window.view.repaint();
}

void oneLine(benchmark::State& state)
{
    startToolkit();
    Window window{Rope(makeText())};
    window.view.textView().select({.anchor = 600, .caret = 600});
    Window::settle();
    for (auto _ : state) {
        QKeyEvent key(QEvent::KeyPress, Qt::Key_N, Qt::NoModifier, QStringLiteral("n"));
        QCoreApplication::sendEvent(&window.view, &key);
        Window::settle();
        state.PauseTiming(); // the line must not grow
        window.view.textView().deleteBackward();
        Window::settle();
        state.ResumeTiming();
    }
}

BENCHMARK(full)->Name("Frame/Full")->Unit(benchmark::kMillisecond);
BENCHMARK(oneLine)->Name("Frame/OneLine")->Unit(benchmark::kMillisecond);

} // namespace
