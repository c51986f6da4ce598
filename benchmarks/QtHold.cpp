// The whole window on the real disk, on Qt's offscreen platform, with two files of 20 MB: for each thing that
// a user does, the longest time in milliseconds in which the main thread answered nobody, from the key until
// all is quiet.
#include "QtDesk.h"
#include "SampleFile.h"

#include <benchmark/benchmark.h>

namespace {

using namespace quillmark;
using namespace quillmark::bench;

void holds(benchmark::State& state)
{
    startToolkit();
    const SampleFile first(large);
    const SampleFile second(large);
    for (auto _ : state) {
        Desk desk;
        const auto tab = [&](size_t index) { return desk.app.tabs->at(index)->id; };
        const auto count = [&](const char* name, double hold) { state.counters[name] = hold; };
        count("open", desk.hold([&] { desk.app.openFile(first.path()); }));
        count("open_2nd", desk.hold([&] { desk.app.openFile(second.path()); }));
        count("switch", desk.hold([&] { desk.app.selectTab(tab(1)); }));
        count("key", desk.hold([&] { desk.text().insertText(u"x"); }));
        const auto save = [&] { runUntil([&] { return !desk.app.isDirty.get(); }); };
        count("journal_and_save", desk.hold(save));
        desk.hold([&] { desk.text().insertText(u"y"); });
        count("switch_unsaved", desk.hold([&] { desk.app.selectTab(tab(2)); }));
        count("select_all", desk.hold(&PlainTextView::selectAll));
        count("delete", desk.hold(&PlainTextView::deleteSelection));
        count("undo", desk.hold(&PlainTextView::undo));
        count("redo", desk.hold(&PlainTextView::redo));
        count("undo_again", desk.hold(&PlainTextView::undo));
        count("copy", desk.hold(&PlainTextView::copy));
        count("paste", desk.hold([&] { desk.text().paste(); }));
        count("undo_paste", desk.hold(&PlainTextView::undo));
        count("key_after_undo", desk.hold([&] { desk.text().insertText(u"z"); }));
        desk.hold(save);
        count("close", desk.hold([&] { desk.app.closeTab(tab(2)); }));
        desk.app.willTerminate();
    }
}
/// Read-only.
void holdsOfAHugeFile(benchmark::State& state)
{
    startToolkit();
    const SampleFile file(1'000'000'000);
    for (auto _ : state) {
        Desk desk;
        const auto tab = [&](size_t index) { return desk.app.tabs->at(index)->id; };
        const auto count = [&](const char* name, double hold) { state.counters[name] = hold; };
        const auto move = [&](Motion motion) { return desk.hold([&] { desk.text().move(motion); }); };
        count("open", desk.hold([&] { desk.app.openFile(file.path()); }));
        count("to_end", move(Motion::documentEnd));
        count("page_up", move(Motion::pageUp));
        count("resize", desk.hold([&] { desk.window.resize(1000, 800); }));
        count("select_all", desk.hold(&PlainTextView::selectAll));
        count("switch_away", desk.hold([&] { desk.app.selectTab(tab(0)); }));
        count("switch_back", desk.hold([&] { desk.app.selectTab(tab(1)); }));
        count("close", desk.hold([&] { desk.app.closeTab(tab(1)); }));
        desk.app.willTerminate();
    }
}

BENCHMARK(holdsOfAHugeFile)->Name("Hold/1GB")->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(holds)->Name("Hold/20MB")->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace
