#include "io/StandardPaths.h"

#include "io/ReadFile.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>

#include <pwd.h>
#include <unistd.h>

namespace quillmark {
namespace {

constexpr auto program = "quillmark";
constexpr int64_t largestUserDirs = 1024 * 1024; ///< bytes

Path homeFolder(const Environment& environment)
{
    const auto home = environment("HOME");
    if (home && home->starts_with('/'))
        return *home;
    std::array<char, 4096> buffer;
    passwd record{};
    passwd* found = nullptr;
    getpwuid_r(getuid(), &record, buffer.data(), buffer.size(), &found);
    return found && found->pw_dir && *found->pw_dir == '/' ? Path(found->pw_dir) : Path("/");
}

/// A relative value is invalid and counts as absent, the standard says.
Path baseFolder(const Environment& environment, const char* name, const Path& otherwise)
{
    const auto value = environment(name);
    return value && value->starts_with('/') ? Path(*value) : otherwise;
}

/// The value of a line such as XDG_DOCUMENTS_DIR="$HOME/Документы": absolute or below $HOME, with the shell's
/// escapes by backslash.
std::optional<Path> userFolder(std::string_view line, std::string_view name, const Path& home)
{
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    if (!line.starts_with(name) || !line.substr(name.size()).starts_with("=\""))
        return std::nullopt;
    line.remove_prefix(name.size() + 2);
    std::string value;
    if (line.starts_with("$HOME")) {
        line.remove_prefix(5);
        value = home.native();
        if (!line.starts_with('/') && !line.starts_with('"'))
            return std::nullopt;
    } else if (!line.starts_with('/')) {
        return std::nullopt;
    }
    for (size_t i = 0; i < line.size() && line[i] != '"'; ++i) {
        if (line[i] == '\\' && i + 1 < line.size())
            ++i;
        value += line[i];
    }
    Path folder = Path(value).lexically_normal();
    return folder.has_filename() || !folder.has_relative_path() ? folder : folder.parent_path();
}

} // namespace

Environment processEnvironment()
{
    return [](const char* name) -> std::optional<std::string> {
        const char* value = std::getenv(name);
        return value ? std::optional<std::string>(value) : std::nullopt;
    };
}

JournalFolders StandardPaths::journal() const
{
    JournalFolders folders{.own = state / "journal", .fallbacks = {}, .lastResorts = {temporary}};
    if (runtime)
        folders.fallbacks.push_back(*runtime);
    return folders;
}

StandardPaths StandardPaths::find(FileSystem& disk, const Environment& environment)
{
    const Path home = homeFolder(environment);
    const Path config = baseFolder(environment, "XDG_CONFIG_HOME", home / ".config");
    StandardPaths paths{
        .config = config / program,
        .state = baseFolder(environment, "XDG_STATE_HOME", home / ".local/state") / program,
        .documents = home / "Documents",
        .runtime = std::nullopt,
        .temporary
        = baseFolder(environment, "TMPDIR", "/tmp") / (std::string(program) + "-" + std::to_string(getuid())),
    };
    if (const Path runtime = baseFolder(environment, "XDG_RUNTIME_DIR", {}); !runtime.empty())
        paths.runtime = runtime / program;
    const auto userDirs = readFile(disk, config / "user-dirs.dirs", largestUserDirs);
    std::string_view rest = userDirs ? std::string_view(userDirs->bytes) : std::string_view();
    while (!rest.empty()) {
        const size_t length = std::min(rest.find('\n'), rest.size());
        if (auto folder = userFolder(rest.substr(0, length), "XDG_DOCUMENTS_DIR", home))
            paths.documents = std::move(*folder); // the last one counts, as for the shell
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    return paths;
}

} // namespace quillmark
