#include "support/TestEnvironment.h"

#include <cstdlib>
#include <random>
#include <string>
#include <system_error>

namespace quillmark::test {
namespace {

std::filesystem::path makeFreshFolder()
{
    std::string name = std::filesystem::temp_directory_path() / "quillmark-test-XXXXXX";
    if (!mkdtemp(name.data()))
        throw std::system_error(errno, std::generic_category(), name);
    return name;
}

void removeWithContents(const std::filesystem::path& folder)
{
    std::error_code ignored; // a test that made a folder unreadable leaves it behind
    std::filesystem::remove_all(folder, ignored);
}

uint64_t seedOfThisRun()
{
    if (const char* given = std::getenv("QUILLMARK_SEED"))
        return std::strtoull(given, nullptr, 10);
    return std::random_device()();
}

} // namespace

uint64_t seed()
{
    static const uint64_t value = seedOfThisRun();
    return value;
}

TemporaryHome::TemporaryHome()
    : m_root(makeFreshFolder())
{
    constexpr std::pair<const char*, const char*> folders[] = {
        {"HOME", "home"},
        {"XDG_CONFIG_HOME", "home/.config"},
        {"XDG_DATA_HOME", "home/.local/share"},
        {"XDG_STATE_HOME", "home/.local/state"},
        {"XDG_CACHE_HOME", "home/.cache"},
        {"XDG_RUNTIME_DIR", "run"},
        {"TMPDIR", "tmp"},
    };
    for (const auto& [variable, folder] : folders) {
        std::filesystem::create_directories(m_root / folder);
        setenv(variable, (m_root / folder).c_str(), 1);
    }
    std::filesystem::permissions(m_root / "run", std::filesystem::perms::owner_all);
}

TemporaryHome::~TemporaryHome()
{
    removeWithContents(m_root);
}

TemporaryFolder::TemporaryFolder()
    : m_path(makeFreshFolder())
{
}

TemporaryFolder::~TemporaryFolder()
{
    removeWithContents(m_path);
}

} // namespace quillmark::test
