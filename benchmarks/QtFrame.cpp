// Frames of the editor widget on Qt's offscreen platform, 1600 × 1000, with a real font: the whole picture,
// and the one line that a key changed.
#include "app/editor/EditorView.h"
#include "desktop/Fonts.h"
#include "desktop/QtScheduler.h"
#include "support/FakeClipboard.h"

#include <QApplication>
#include <QKeyEvent>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <random>

namespace {

using namespace quillmark;

void startToolkit()
{
    static int count = 1;
    static char name[] = "quillmark-bench";
    static char* arguments[] = {name, nullptr};
    if (!QCoreApplication::instance()) {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        new QApplication(count, arguments); // to the end of the process: the toolkit is started once
    }
}

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

struct Window {
    Window()
    {
        view.setFixedSize(1600, 1000); // also on a smaller screen
        view.textView().setText(Rope(makeText()));
        view.show();
        view.activateWindow();
        view.setFocus();
        settle();
    }
    static void settle()
    {
        for (int turn = 0; turn < 3;
            ++turn) // a refresh, the painting that it asks for, and what that asks for
            QCoreApplication::processEvents();
    }

    QtScheduler scheduler;
    test::FakeClipboard clipboard;
    EditorView view{scheduler, clipboard};
};

void full(benchmark::State& state)
{
    startToolkit();
    Window window;
    for (auto _ : state)
        window.view.repaint();
}

void oneLine(benchmark::State& state)
{
    startToolkit();
    Window window;
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
