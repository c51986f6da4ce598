// What every test program needs around its tests: folders of its own in place of the user's, and a seed.
#pragma once

#include <cstdint>
#include <filesystem>

namespace quillmark::test {

/// The seed of this run's random tests: QUILLMARK_SEED, or a random number. Printed when the program starts.
uint64_t seed();

/// While it lives, HOME, TMPDIR and the XDG folders of this process lie in a fresh temporary folder, which is
/// removed at the end. One a process, before the first thread.
class TemporaryHome {
public:
    TemporaryHome();
    ~TemporaryHome();
    TemporaryHome(const TemporaryHome&) = delete;
    TemporaryHome& operator=(const TemporaryHome&) = delete;

private:
    std::filesystem::path m_root;
};

/// A fresh folder, removed with everything in it at the end of the scope.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    std::filesystem::path operator/(const std::filesystem::path& name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

} // namespace quillmark::test
