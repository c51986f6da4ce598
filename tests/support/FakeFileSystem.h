// A disk in memory that obeys the test: files are stamped with the scheduler's wall clock, and it can be
// full, slow, short-writing, failing at the n-th call, or lose everything that was not synced. Any thread.
#pragma once

#include "base/Scheduler.h"
#include "platform/FileSystem.h"

#include <atomic>
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
    struct Node;

    struct Call {
        DiskOperation operation;
        Path path; ///< of a rename: what it was called before
        bool operator==(const Call&) const = default;
    };

    explicit FakeFileSystem(const Scheduler& clock);
    ~FakeFileSystem() override;

    // The disk as another program sees and changes it: never fails, is not logged, counts as synced. What is
    // read follows links.
    void putFile(const Path& path, std::string_view bytes); ///< with the folders above; an inode stays
    void putFolder(const Path& path);
    void putLink(const Path& path, const Path& target);
    void putDevice(const Path& path); ///< neither file nor folder
    void move(const Path& from, const Path& to);
    void erase(const Path& path); ///< with everything below
    std::optional<std::string> bytes(const Path& path) const; ///< nothing unless it is a regular file
    std::vector<std::string> names(const Path& folder) const; ///< sorted
    FileInfo infoOf(const Path& path) const; ///< throws when there is nothing, as those below do
    bool isLink(const Path& path) const;
    void setMode(const Path& path, uint32_t mode); ///< only the owner's bits are obeyed
    void setModified(const Path& path, WallTime time);
    void setAttribute(const Path& path, const std::string& name, const std::string& value);
    std::string attribute(const Path& path, const std::string& name) const;

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
    void setCapacity(int64_t bytes) { set(m_limits.capacity, bytes); }
    void setLargestWrite(size_t bytes) { set(m_limits.largestWrite, bytes); } ///< longer ones are short
    void setLargestRead(size_t bytes) { set(m_limits.largestRead, bytes); }
    void heal();
    /// Called before each operation, without a lock held: may crank a clock, block, or change the disk.
    void setHook(std::function<void(const Call&)> hook) { set(m_hook, std::move(hook)); }

    int64_t callCount() const; ///< since the start
    std::vector<Call> calls() const; ///< since the start or clearCalls()
    void clearCalls() { set(m_calls, {}); }

    /// The power goes and comes back. Bytes that were not synced are lost in either case.
    enum class UnsyncedEntries { lost, kept }; ///< names made, moved or removed since their folder was synced
    void crash(UnsyncedEntries entries);

    Result<std::vector<FolderEntry>> list(const Path& folder) override;
    Result<FileInfo> stat(const Path& path) override;
    Result<Path> resolveLinks(const Path& path) override;
    Result<std::unique_ptr<File>> openForReading(const Path& path) override;
    Result<std::unique_ptr<File>> createNew(const Path& path, uint32_t mode) override;
    Result<std::unique_ptr<File>> openForWriting(const Path& path) override;
    Status rename(const Path& from, const Path& to) override;
    Status renameNoReplace(const Path& from, const Path& to) override;
    Status remove(const Path& path) override;
    Status makeFolders(const Path& folder) override;
    Status syncFolder(const Path& folder) override;

private:
    class OpenFile;
    using NodePointer = std::shared_ptr<Node>;
    using Lock = std::unique_lock<std::mutex>;

    struct Fault {
        std::optional<DiskOperation> operation
            = {}; ///< nothing: the call with this number, or all from it on
        int64_t call = 0;
        int code = 0;
        std::string pathPart = {};
        bool once = false;
    };
    struct Limits {
        std::optional<int64_t> capacity;
        std::optional<size_t> largestWrite;
        std::optional<size_t> largestRead;
    };
    /// Where a path leads; without a node there is a folder to make it in.
    struct Place {
        Path path;
        NodePointer node;
    };

    /// Logs an operation, calls the hook, fails when it must. Holds the disk's mutex from then on.
    Result<Lock> begin(DiskOperation operation, const Path& path);
    void add(Fault fault);
    template <class T> void set(T& place, std::type_identity_t<T> value)
    {
        const Lock lock(m_mutex);
        place = std::move(value);
    }

    // The tree; the mutex is held.
    NodePointer make(FileInfo::Kind kind, uint32_t mode);
    Result<Place> follow(const Path& path, int links = 0) const;
    Result<NodePointer> find(const Path& path) const; ///< follows links
    Result<NodePointer> folderOf(const Path& path) const;
    Result<NodePointer> writableFolderOf(const Path& path) const;
    NodePointer ensureFolder(const Path& path);
    void put(const Path& path, NodePointer node);
    void sync(const Path& entry);
    Result<std::unique_ptr<File>> open(DiskOperation operation, const Path& path, uint32_t permission);
    std::unique_ptr<File> openFile(NodePointer node, const Path& path, uint32_t permission);
    Status move(const Path& from, const Path& to, bool replace);

    const Scheduler& m_clock;
    mutable std::mutex m_mutex;
    uint64_t m_nextInode = 2;
    std::shared_ptr<std::atomic<int64_t>> m_used = std::make_shared<std::atomic<int64_t>>(0); ///< bytes
    NodePointer m_root; ///< made with the two above
    Limits m_limits;
    std::vector<Fault> m_faults;
    std::function<void(const Call&)> m_hook;
    std::vector<Call> m_calls;
    int64_t m_callCount = 0;
};

} // namespace quillmark::test
