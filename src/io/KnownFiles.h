// What this program last read of or wrote to each file, by path: so that its own save is never taken for a
// change from outside, and a change from outside never for its own. Any thread.
#pragma once

#include "io/ContentHash.h"
#include "platform/FileSystem.h"

#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace quillmark {

/// A state of a file: which one it is, when it was written, and its bytes as a hash.
struct FileStamp {
    uint64_t device = 0;
    uint64_t inode = 0;
    int64_t size = 0; ///< bytes
    WallTime modified = distantPast;
    ContentHash hash{};

    FileStamp() = default;
    FileStamp(const FileInfo& info, const ContentHash& contentHash);
    bool matches(const FileInfo& info) const; ///< nobody has written the file since
    bool isMissing() const { return inode == 0; } ///< there was no file
    bool operator==(const FileStamp&) const = default;
};

class KnownFiles {
public:
    void remember(const Path& path, const FileStamp& stamp);
    /// The file is about to get this state, and still has the one remembered: both are ours.
    void expect(const Path& path, const FileStamp& stamp);
    void rememberMissing(const Path& path); ///< whatever appears there is somebody else's, unless empty
    void forget(const Path& path);
    void move(const Path& from, const Path& to); ///< the file has been renamed by us
    std::optional<FileStamp> stampOf(const Path& path) const; ///< as remembered

    enum class State {
        unknown, ///< the file was neither read nor written here
        asKnown,
        changed, ///< by somebody else
        undecided, ///< written anew, and too large to be compared here, or its bytes cannot be read
    };
    /// For where somebody waits: the bytes of larger files are compared on another thread.
    static constexpr int64_t comparedAtOnce = 512 * 1024;
    static constexpr int64_t largestCompared = 32 * 1024 * 1024; ///< larger than any that can be edited

    /// What a look at the file says. Cheap unless the file was written anew: then its bytes are read and
    /// compared, where there are at most `mostBytes`, and the verdict is remembered. Files that are too large
    /// to be compared at all count as changed.
    State stateOf(
        FileSystem& disk, const Path& path, const FileInfo& info, int64_t mostBytes = largestCompared);

private:
    struct Entry {
        FileStamp stamp;
        std::optional<FileStamp> expected;
        std::optional<FileStamp> different; ///< a state whose bytes were compared and are others
    };
    std::optional<Entry> find(const Path& path) const;

    mutable std::mutex m_mutex;
    std::map<std::string, Entry> m_entries; ///< by the bytes of the path
};

} // namespace quillmark
