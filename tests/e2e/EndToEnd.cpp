#include "EndToEnd.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>
#include <utility>

namespace quillmark::test {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

Desk::Desk(XServer* screen)
    : m_screen(screen)
{
    std::string pattern = (fs::temp_directory_path() / "quillmark-desk-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
        throw std::runtime_error("mkdtemp");
    m_home = pattern;
    for (const char* folder : {"Documents", ".config", ".local/state", ".local/share", ".cache", "run"})
        fs::create_directories(m_home / folder);
    fs::permissions(m_home / "run", fs::perms::owner_all);
    m_environment = {{"HOME", m_home}, {"XDG_CONFIG_HOME", m_home / ".config"},
        {"XDG_STATE_HOME", m_home / ".local/state"}, {"XDG_DATA_HOME", m_home / ".local/share"},
        {"XDG_CACHE_HOME", m_home / ".cache"}, {"XDG_RUNTIME_DIR", m_home / "run"},
        {"XDG_DOCUMENTS_DIR", m_home / "Documents"}, {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"},
        {"QT_QPA_PLATFORM", screen ? "xcb" : "offscreen"}, {"QT_SCALE_FACTOR", "1"},
        {"DISPLAY", screen ? screen->display() : ""}, {"WAYLAND_DISPLAY", ""}};
}

Desk::~Desk()
{
    if (m_process)
        killAndWait(m_process);
    std::error_code ignored;
    fs::remove_all(m_home, ignored);
}

void Desk::setEnvironment(const std::string& name, const std::string& value)
{
    m_environment[name] = value;
}

void Desk::startOnly(std::vector<std::string> arguments)
{
    m_process = spawn({.program = QUILLMARK_PROGRAM,
        .arguments = std::move(arguments),
        .environment = m_environment,
        .outputFile = m_home / "log"});
}

void Desk::start(std::vector<std::string> arguments)
{
    startOnly(std::move(arguments));
    if (m_screen && !m_screen->waitForWindow(m_process, 20s))
        throw std::runtime_error("no window: " + log());
    std::this_thread::sleep_for(150ms); // the focus arrives a moment after the window
}

std::optional<int> Desk::quit()
{
    m_screen->key("ctrl+q");
    const auto code = waitForExit(m_process, 10s);
    if (code)
        m_process = 0;
    return code;
}

std::optional<int> Desk::signal(int number)
{
    ::kill(m_process, number);
    const auto code = waitForExit(m_process, 10s);
    if (code)
        m_process = 0;
    return code;
}

void Desk::kill()
{
    killAndWait(std::exchange(m_process, 0));
}

std::string Desk::log() const
{
    return contents(m_home / "log");
}

std::vector<std::string> Desk::noteNames() const
{
    std::vector<std::string> names;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(notes(), ignored))
        names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
}

std::string Desk::everythingKept() const
{
    std::string all;
    for (const fs::path& folder : {notes(), state()})
        if (fs::exists(folder))
            for (const auto& entry : fs::recursive_directory_iterator(folder))
                if (entry.is_regular_file())
                    all += contents(entry.path()) + "\n";
    return all;
}

std::vector<fs::path> Desk::temporaries() const
{
    std::vector<fs::path> found;
    for (const auto& entry : fs::recursive_directory_iterator(m_home))
        if (entry.path().filename().string().starts_with(".lq-"))
            found.push_back(entry.path());
    return found;
}

std::string contents(const fs::path& file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void write(const fs::path& file, std::string_view bytes)
{
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
}

bool eventually(const std::function<bool()>& condition, Duration limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

} // namespace quillmark::test
