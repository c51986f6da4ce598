// Memory of the real program with a file open, beyond that with an empty window: MB of 10^6 bytes, resident,
// once it has settled (beyond_empty), at its peak (peak_beyond_empty) and after its tab was closed
// (after_close).
#include "SampleFile.h"
#include "probe/Process.h"
#include "probe/XServer.h"

#include <benchmark/benchmark.h>

#include <sstream>
#include <thread>

namespace quillmark::bench {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

/// The number behind a name in a file of /proc, in MB.
double megabytes(pid_t process, const char* file, std::string_view name)
{
    std::ifstream in("/proc/" + std::to_string(process) + "/" + file);
    for (std::string line; std::getline(in, line);)
        if (line.starts_with(name))
            return std::stod(line.substr(name.size())) * 1024 / 1e6;
    return 0;
}

double resident(pid_t process)
{
    return megabytes(process, "smaps_rollup", "Rss:");
}

double peak(pid_t process)
{
    return megabytes(process, "status", "VmHWM:");
}

int64_t bytesRead(pid_t process)
{
    std::ifstream in("/proc/" + std::to_string(process) + "/io");
    for (std::string line; std::getline(in, line);)
        if (line.starts_with("rchar: "))
            return std::stoll(line.substr(7));
    return 0;
}

/// In ticks of the kernel, 10 ms each.
int64_t usedTime(pid_t process)
{
    std::ifstream in("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    std::getline(in, text);
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string skipped;
    for (int field = 3; field < 14; ++field)
        fields >> skipped;
    int64_t user = 0;
    int64_t system = 0;
    fields >> user >> system;
    return user + system;
}

/// Until it has read so many bytes in all, which a program that waits for the disk does without working.
void waitUntilRead(pid_t process, int64_t size)
{
    const auto deadline = std::chrono::steady_clock::now() + 120s;
    while (bytesRead(process) < size && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(100ms);
}

/// Until it has done next to nothing for half a second.
void settle(pid_t process)
{
    const auto deadline = std::chrono::steady_clock::now() + 60s;
    for (int64_t before = -100; std::chrono::steady_clock::now() < deadline;) {
        const int64_t now = usedTime(process);
        if (now - before <= 2)
            return;
        before = now;
        std::this_thread::sleep_for(500ms);
    }
}

class Program {
public:
    explicit Program(const std::vector<std::string>& arguments)
    {
        for (const char* folder : {"documents", "run"})
            fs::create_directories(m_home / folder);
        fs::permissions(m_home / "run", fs::perms::owner_all);
        m_process = test::spawn({.program = QUILLMARK_PROGRAM,
            .arguments = arguments,
            .environment = {{"HOME", m_home.path()}, {"XDG_CONFIG_HOME", m_home / "config"},
                {"XDG_STATE_HOME", m_home / "state"}, {"XDG_DATA_HOME", m_home / "data"},
                {"XDG_CACHE_HOME", m_home / "cache"}, {"XDG_RUNTIME_DIR", m_home / "run"},
                {"XDG_DOCUMENTS_DIR", m_home / "documents"},
                {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"}, {"DISPLAY", m_screen.display()},
                {"WAYLAND_DISPLAY", ""}, {"QT_QPA_PLATFORM", "xcb"}},
            .quiet = true});
        m_screen.waitForWindow(m_process, 20s);
        settle(m_process);
    }
    ~Program() { test::killAndWait(m_process); }

    void press(std::string_view keys)
    {
        m_screen.key(keys);
        settle(m_process);
    }
    pid_t process() const { return m_process; }

private:
    test::XServer m_screen;
    test::TemporaryFolder m_home;
    pid_t m_process = 0;
};

void measure(benchmark::State& state, int64_t size)
{
    const SampleFile file(size);
    for (auto _ : state) {
        double empty = 0;
        double emptyPeak = 0;
        {
            const Program program({});
            empty = resident(program.process());
            emptyPeak = peak(program.process());
        }
        Program program({file.path()});
        waitUntilRead(program.process(), size);
        settle(program.process());
        state.counters["empty"] = empty;
        state.counters["beyond_empty"] = resident(program.process()) - empty;
        state.counters["peak_beyond_empty"] = peak(program.process()) - emptyPeak;
        program.press("ctrl+w");
        state.counters["after_close"] = resident(program.process()) - empty;
    }
}

[[maybe_unused]] const bool registered = [] {
    const auto add = [](const char* name, int64_t size) {
        benchmark::RegisterBenchmark(name, measure, size)->Unit(benchmark::kMillisecond)->Iterations(1);
    };
    add("Memory/Log20MB", 20'000'000);
    add("Memory/Log100MB", 100'000'000);
    add("Memory/Log1GB", 1'000'000'000);
    return true;
}();

} // namespace
} // namespace quillmark::bench
