// One key in the sidebar's search field over ten thousand notes.
#include "QtDesk.h"
#include "app/window/sidebar/SearchField.h"
#include "app/window/sidebar/SidebarList.h"
#include "app/window/sidebar/SidebarView.h"

#include <benchmark/benchmark.h>

#include <time.h>

#include <QScrollBar>
#include <QTest>

namespace {

using namespace quillmark;
using namespace quillmark::bench;

constexpr int noteCount = 10'000;

Desk& desk()
{
    static Desk* const all = [] {
        startToolkit();
        return new Desk(noteCount); // to the end of the process, as the toolkit
    }();
    return *all;
}

/// What the user types, a key a round: words that many notes have, then all of it taken back.
struct Typist {
    SearchField& field = desk().window.sidebar().searchField();
    const QString query = QStringLiteral("план 77");
    int typed = 0;

    void nextKey()
    {
        if (typed == query.size()) {
            QTest::keyClick(&field, Qt::Key_Escape);
            typed = 0;
            return;
        }
        const QChar next = query.at(typed++);
        QTest::sendKeyEvent(
            QTest::Click, &field, Qt::Key(next.toUpper().unicode()), QString(next), Qt::NoModifier);
    }
};

/// The key alone: matching titles and previews, and the rows of the list.
void key(benchmark::State& state)
{
    Typist typist;
    for (auto _ : state)
        typist.nextKey();
    desk().app.store.updateSearchQuery("");
}

/// The key and the picture that it leads to.
void frame(benchmark::State& state)
{
    Typist typist;
    Window::settle();
    for (auto _ : state) {
        typist.nextKey();
        Window::settle();
    }
    desk().app.store.updateSearchQuery("");
}

/// A wheel step through the whole list.
void scroll(benchmark::State& state)
{
    QScrollBar& bar = *desk().window.sidebar().list().verticalScrollBar();
    for (auto _ : state) {
        bar.setValue((bar.value() + 60) % bar.maximum());
        Window::settle();
    }
}

/// What this thread has worked so far, whoever else wants its core.
double workedMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

/// A search of the files that finds all notes. The counter: how long it holds the main thread at worst, from
/// its start to the rows of the list, before they are painted.
void search(benchmark::State& state)
{
    NoteStore& store = desk().app.store;
    QWidget& viewport = *desk().window.sidebar().list().viewport();
    viewport.setUpdatesEnabled(false);
    double longest = 0;
    for (auto _ : state) {
        store.updateSearchQuery("the rest");
        while (store.contentMatchIDs->empty()) {
            const double began = workedMilliseconds();
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            longest = std::max(longest, workedMilliseconds() - began);
        }
        store.updateSearchQuery("");
    }
    viewport.setUpdatesEnabled(true);
    state.counters["hold_ms"] = longest;
}

BENCHMARK(search)
    ->Name("Sidebar/SearchHold10k")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(10);
BENCHMARK(key)->Name("Sidebar/Key10k")->Unit(benchmark::kMillisecond);
BENCHMARK(frame)->Name("Sidebar/Frame10k")->Unit(benchmark::kMillisecond);
BENCHMARK(scroll)->Name("Sidebar/Scroll10k")->Unit(benchmark::kMillisecond);

} // namespace
