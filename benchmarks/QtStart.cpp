// Process start to first painted frame, on a virtual display without a window manager, told from the screen's
// pixels.
#include "NotesFolder.h"
#include "probe/Process.h"
#include "probe/XServer.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>

namespace quillmark {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

class Home {
public:
    Home()
    {
        std::string pattern = (fs::temp_directory_path() / "quillmark-bench-XXXXXX").string();
        m_path = mkdtemp(pattern.data());
        fs::create_directories(m_path / "run");
        fs::permissions(m_path / "run", fs::perms::owner_all);
    }
    ~Home()
    {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    const fs::path& path() const { return m_path; }

private:
    fs::path m_path;
};

void measureStart(benchmark::State& state, const char* program, int noteCount = 0)
{
    test::XServer screen(test::XServer::WindowManager::none);
    const Home home;
    const fs::path documents = home.path() / "Documents";
    bench::fillWithNotes(documents / "Notes", noteCount);
    const auto start = [&] {
        return test::spawn({.program = program,
            .environment = {{"HOME", home.path()}, {"XDG_CONFIG_HOME", home.path() / "config"},
                {"XDG_STATE_HOME", home.path() / "state"}, {"XDG_DATA_HOME", home.path() / "data"},
                {"XDG_CACHE_HOME", home.path() / "cache"}, {"XDG_RUNTIME_DIR", home.path() / "run"},
                {"XDG_DOCUMENTS_DIR", documents}, {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"},
                {"DISPLAY", screen.display()}, {"WAYLAND_DISPLAY", ""}, {"QT_QPA_PLATFORM", "xcb"}},
            .quiet = true});
    };
    bool warm = false;
    for (auto _ : state) {
        if (!warm) { // the first run fills the page cache and the font cache
            const pid_t first = start();
            screen.waitForPaint(20s);
            test::killAndWait(first);
            screen.waitForBareRoot(5s);
            warm = true;
        }
        const auto began = std::chrono::steady_clock::now();
        const pid_t process = start();
        const bool painted = screen.waitForPaint(20s);
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count());
        test::killAndWait(process);
        screen.waitForBareRoot(5s);
        if (!painted) {
            state.SkipWithError("nothing was painted");
            break;
        }
    }
}

void startEmpty(benchmark::State& state)
{
    measureStart(state, QUILLMARK_PROGRAM);
}
void startMinimalQt(benchmark::State& state)
{
    measureStart(state, QUILLMARK_MINIMAL_QT);
}
void startNotes(benchmark::State& state)
{
    measureStart(state, QUILLMARK_PROGRAM, 10'000);
}
BENCHMARK(startMinimalQt)
    ->Name("Start/MinimalQt")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(15);
BENCHMARK(startEmpty)->Name("Start/Empty")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(15);
BENCHMARK(startNotes)->Name("Start/Notes10k")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(15);

} // namespace
} // namespace quillmark
