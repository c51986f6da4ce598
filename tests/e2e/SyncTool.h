// Plays the other programs in a notes folder: a sync tool, other machines behind it, another editor.
// Everything that it writes is a numbered version, told from whatever else is in a file; everything that it
// replaces or takes away it has read before, so that what is lost in the end was lost by the program under
// test.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace quillmark::test {

class SyncTool {
public:
    /// `away` is a folder on the same disk where files are that are not there for a while.
    SyncTool(std::filesystem::path notes, std::vector<std::filesystem::path> files,
        std::filesystem::path away, uint64_t seed);

    void putFirstVersions(); ///< of the files, and a few notes
    void step(); ///< one operation

    /// Reads what is new in the recovery folder, which keeps only so much.
    void lookAtRecovered(const std::filesystem::path& folder);
    /// Texts that were on the disk and may not be there any more: read before they were replaced, taken away
    /// or dropped.
    const std::vector<std::string>& seen() const { return m_seen; }
    const std::map<std::string, int>& operations() const { return m_operations; }
    int conflictCopies() const { return static_cast<int>(m_conflictCopies.size()); } ///< of the program's
    int recovered() const { return static_cast<int>(m_recovered.size()); }

    /// The version that a text holds, whatever was typed into it: versions have no ASCII, what is typed has
    /// nothing else. 0 when it holds none, −1 when it holds something that is not exactly one whole version.
    int versionIn(const std::string& text) const;
    /// Versions that were complete on the disk and belong there, or in what was seen.
    const std::set<int>& written() const { return m_written; }
    /// New files that nobody else has a reason to touch, and were found changed or missing.
    const std::vector<std::string>& disturbed() const { return m_disturbed; }

private:
    using Path = std::filesystem::path;
    struct Away {
        Path file;
        Path original;
        int stepsLeft = 0;
    };

    int64_t below(int64_t end) { return std::uniform_int_distribution<int64_t>(0, end - 1)(m_random); }
    void count(const std::string& operation) { ++m_operations[operation]; }
    std::vector<Path> noteFiles();
    Path pickFile();
    int makeVersion();
    Path freshName(const std::string& stem);

    void renameOver();
    void writeInPlace();
    void rewriteSameBytes();
    void takeAway();
    void bringBack(size_t index);
    void giveOtherName();
    void addOne();
    void addMany();
    void changeMany();
    void removeMany();

    bool replace(const Path& target, const std::string& bytes, bool keepTime);
    bool add(const Path& target, const std::string& bytes);

    Path m_notes;
    std::vector<Path> m_files;
    Path m_away;
    std::mt19937_64 m_random;
    int m_serial = 0;
    std::map<int, std::string> m_versions; ///< the whole text of each
    std::set<int> m_written;
    std::vector<std::string> m_seen;
    std::vector<Away> m_taken;
    std::map<Path, int> m_mass; ///< version of each
    std::vector<std::string> m_disturbed;
    std::set<Path> m_conflictCopies;
    std::set<Path> m_recovered;
    std::map<std::string, int> m_operations;
};

} // namespace quillmark::test
