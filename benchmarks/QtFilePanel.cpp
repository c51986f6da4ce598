// The panel that opens files, on a folder of 10,000 files whose names do not say what they are: the longest
// time in milliseconds in which the main thread answered nobody, until all are listed.
#include "QtDesk.h"
#include "app/window/panels/FilePanels.h"

#include <QFileDialog>
#include <QTreeView>

#include <benchmark/benchmark.h>

namespace {

using namespace quillmark;
using namespace quillmark::bench;

constexpr int fileCount = 10'000;

/// Closes the panel once everything is listed and nothing has moved for a while.
void closeWhenListed()
{
    auto* look = new QTimer;
    QObject::connect(look, &QTimer::timeout, look, [look, looks = 0]() mutable {
        for (QWidget* top : QApplication::topLevelWidgets()) {
            auto* panel = qobject_cast<QFileDialog*>(top);
            auto* list = panel ? panel->findChild<QTreeView*>(QStringLiteral("treeView")) : nullptr;
            if (!list || list->model()->rowCount(list->rootIndex()) < fileCount || ++looks < 20)
                continue;
            look->deleteLater();
            panel->reject();
        }
    });
    look->start(20ms);
}

void listsAFolder(benchmark::State& state)
{
    startToolkit();
    Desk desk;
    const Path folder = desk.home / "many";
    std::filesystem::create_directory(folder);
    for (int i = 0; i < fileCount; ++i)
        std::ofstream(folder / ("file" + std::to_string(i))) << "words\n";
    for (auto _ : state) {
        const Heartbeat heartbeat;
        closeWhenListed();
        runOpenPanel(desk.window, folder);
        state.counters["hold"] = heartbeat.longestHold();
    }
    desk.app.willTerminate();
}

BENCHMARK(listsAFolder)->Name("FilePanel/List10k")->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace
