// A disk in memory that obeys the test: files are stamped with the scheduler's wall clock, and it can be
// full, slow, failing at the n-th call, or lose everything that was not synced. It has neither links nor
// attributes nor devices: those are tried on the real disk. Any thread.
#pragma once

#include "base/Scheduler.h"
#include "platform/FileSystem.h"

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace quillmark::test {

enum class DiskOperation {
    list,
    stat,
    resolveLinks,
    openForReading,
    createNew,
    openForWriting,
    rename,
    renameNoReplace,
    remove,
    makeFolders,
    syncFolder,
    read,
    write,
    fileInfo,
    truncate,
    sync,
    lock,
    copyAttributes,
};

class FakeFileSystem : public FileSystem {
public:
    struct Call {
        DiskOperation operation;
        Path path; ///< of a rename: what it was called before
        bool operator==(const Call&) const = default;
    };

    explicit FakeFileSystem(const Scheduler& clock);

    // The disk as another program sees and changes it: never fails, is not logged, counts as synced.
    void putFile(const Path& path, std::string_view bytes); ///< with the folders above; an inode stays
    void putFolder(const Path& path);
    void move(const Path& from, const Path& to); ///< with everything below
    void erase(const Path& path); ///< with everything below
    std::optional<std::string> bytes(const Path& path) const; ///< nothing unless it is a file
    std::vector<std::string> names(const Path& folder) const; ///< sorted
    FileInfo infoOf(const Path& path) const; ///< throws when there is nothing, as those below do
    void setMode(const Path& path, uint32_t mode); ///< only the owner's bits are obeyed
    void setModified(const Path& path, WallTime time);

    // Faults. They add up; heal() ends them all.
    void failCall(int64_t n, int code)
    {
        add({.call = n, .code = code, .once = true});
    } ///< from now, 1 first
    void failFrom(int64_t n, int code) { add({.call = n, .code = code}); } ///< this call and all that follow
    /// Where the path contains the part.
    void failAlways(DiskOperation operation, int code, std::string pathPart = {})
    {
        add({.operation = operation, .code = code, .pathPart = std::move(pathPart)});
    }
    void failOnce(DiskOperation operation, int code, std::string pathPart = {})
    {
        add({.operation = operation, .code = code, .pathPart = std::move(pathPart), .once = true});
    }
    /// Of all files together; a write at the edge is short, the next fails.
    void setCapacity(int64_t bytes)
    {
        guarded([&] { m_capacity = bytes; });
    }
    void setLargestRead(size_t bytes)
    {
        guarded([&] { m_largestRead = bytes; });
    } ///< longer ones are short
    void heal();
    /// Called before each operation, without a lock held: may crank a clock, block, or change the disk.
    void setHook(std::function<void(const Call&)> hook)
    {
        guarded([&] { m_hook = std::move(hook); });
    }

    int64_t callCount() const; ///< since the start
    std::vector<Call> calls() const; ///< since the start or clearCalls()
    void clearCalls()
    {
        guarded([&] { m_calls.clear(); });
    }

    /// The power goes and comes back. Bytes that were not synced are lost in either case.
    enum class UnsyncedEntries { lost, kept }; ///< names made, moved or removed since their folder was synced
    void crash(UnsyncedEntries entries);

    Result<std::vector<FolderEntry>> list(const Path& folder) override;
    Result<std::unique_ptr<Folder>> openFolder(const Path& folder) override;
    Result<FileInfo> stat(const Path& path) override;
    Result<Path> resolveLinks(const Path& path) override;
    Result<std::unique_ptr<File>> openForReading(const Path& path) override;
    Result<std::unique_ptr<File>> createNew(const Path& path, uint32_t mode) override;
    Result<std::unique_ptr<File>> openForWriting(const Path& path) override;
    Status rename(const Path& from, const Path& to) override;
    Status renameNoReplace(const Path& from, const Path& to) override;
    Status remove(const Path& path) override;
    Status makeFolders(const Path& folder) override;
    Status makePrivateFolder(const Path& folder) override;
    Status syncFolder(const Path& folder) override;

private:
    class OpenFile;
    class OpenFolder;
    struct Node;
    using NodePointer = std::shared_ptr<Node>;
    using Tree = std::map<std::string, NodePointer>; ///< by the whole path
    using Lock = std::unique_lock<std::mutex>;

    struct Fault {
        std::optional<DiskOperation> operation
            = {}; ///< nothing: the call with this number, or all from it on
        int64_t call = 0;
        int code = 0;
        std::string pathPart = {};
        bool once = false;
    };

    /// What an operation on the tree throws when it must fail.
    struct Refusal {
        int code = 0;
    };
    static void require(bool condition, int code);

    /// Logs an operation, calls the hook, fails when it must. Holds the disk's mutex from then on.
    Result<Lock> begin(DiskOperation operation, const Path& path);
    template <class F> auto perform(DiskOperation operation, const Path& path, F f) -> Result<decltype(f())>
    {
        const auto turn = begin(operation, path);
        if (!turn)
            return std::unexpected(turn.error());
        try {
            if constexpr (std::is_void_v<decltype(f())>)
                return f(), Status();
            else
                return f();
        } catch (const Refusal& refusal) {
            return systemFailure(refusal.code);
        }
    }
    void add(Fault fault);
    template <class F> auto guarded(F f) const -> decltype(f())
    {
        const Lock lock(m_mutex);
        return f();
    }

    // The tree; the mutex is held.
    NodePointer make(FileInfo::Kind kind, uint32_t mode);
    NodePointer find(const Path& path) const; ///< refuses, as those below do
    Node& findFolder(const Path& path) const;
    Node& writableFolderOf(const Path& path) const;
    void ensureFolder(const Path& path);
    void put(const Path& path, const NodePointer& node);
    std::unique_ptr<File> open(const Path& path, uint32_t permission);
    void moveEntry(const Path& from, const Path& to, bool replace);

    const Scheduler& m_clock;
    mutable std::mutex m_mutex;
    uint64_t m_nextInode = 2;
    Tree m_tree;
    Tree m_synced; ///< what a power cut leaves of it
    std::optional<int64_t> m_capacity;
    size_t m_largestRead = SIZE_MAX;
    std::vector<Fault> m_faults;
    std::function<void(const Call&)> m_hook;
    std::vector<Call> m_calls;
    int64_t m_callCount = 0;
};

} // namespace quillmark::test
