// The real program on a real X server, driven by keys and looked at through its files.
#pragma once

#include "probe/Process.h"
#include "probe/XServer.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace quillmark::test {

/// A user's home of its own, removed at the end, and the program started in it.
class Desk {
public:
    explicit Desk(XServer* screen); ///< null: Qt's offscreen platform
    ~Desk();

    void setEnvironment(const std::string& name, const std::string& value); ///< of the next start
    void start(std::vector<std::string> arguments = {}); ///< returns when the window is there
    void startOnly(std::vector<std::string> arguments); ///< does not wait for a window
    std::optional<int> quit(); ///< Ctrl+Q; the exit code
    std::optional<int> signal(int number);
    void kill();
    pid_t process() const { return m_process; }

    std::filesystem::path home() const { return m_home; }
    std::filesystem::path notes() const { return m_home / "Documents" / "Notes"; }
    std::filesystem::path state() const { return m_home / ".local/state/quillmark"; }
    std::string log() const; ///< standard output and error of all runs

    std::vector<std::string> noteNames() const; ///< sorted, hidden files included
    std::string
    everythingKept() const; ///< the bytes of all notes and of all that was recovered or journalled
    std::vector<std::filesystem::path> temporaries() const; ///< leftovers of saves anywhere in the home

private:
    XServer* m_screen;
    std::filesystem::path m_home;
    std::map<std::string, std::string> m_environment;
    pid_t m_process = 0;
};

std::string contents(const std::filesystem::path& file);
void write(const std::filesystem::path& file, std::string_view bytes);

/// Looks every few milliseconds until the condition holds; false when the limit passes first.
bool eventually(const std::function<bool()>& condition, Duration limit = std::chrono::seconds(5));

} // namespace quillmark::test
