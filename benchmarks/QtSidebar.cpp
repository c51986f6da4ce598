// One key in the sidebar's search field over ten thousand notes.
#include "QtDesk.h"
#include "app/window/SearchField.h"
#include "app/window/SidebarList.h"
#include "app/window/SidebarView.h"

#include <benchmark/benchmark.h>

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

BENCHMARK(key)->Name("Sidebar/Key10k")->Unit(benchmark::kMillisecond);
BENCHMARK(frame)->Name("Sidebar/Frame10k")->Unit(benchmark::kMillisecond);
BENCHMARK(scroll)->Name("Sidebar/Scroll10k")->Unit(benchmark::kMillisecond);

} // namespace
