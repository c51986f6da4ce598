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

    // The disk as another program sees and changes it: never fails, is not logged, counts as synced.
    void putFile(
        const Path& path, std::string_view bytes); ///< makes the folders above; keeps the inode when there
    void putFolder(const Path& path);
    void putLink(const Path& path, const Path& target);
    void putDevice(const Path& path); ///< neither file nor folder
    void move(const Path& from, const Path& to);
    void erase(const Path& path); ///< with everything below
    std::optional<std::string> bytes(
        const Path& path) const; ///< nothing unless it is a regular file; follows links
    std::vector<std::string> names(const Path& folder) const; ///< sorted
    FileInfo infoOf(const Path& path) const; ///< aborts the test when there is nothing
    bool isLink(const Path& path) const;
    void setMode(const Path& path, uint32_t mode); ///< only the owner's bits are obeyed
    void setModified(const Path& path, WallTime time);
    void setAttribute(const Path& path, const std::string& name, const std::string& value);
    std::optional<std::string> attribute(const Path& path, const std::string& name) const;

    // Faults. They add up; heal() ends them all.
    void failCall(int64_t n, int code); ///< the n-th call from now, 1 first, once
    void failFrom(int64_t n, int code); ///< the n-th call from now and all that follow: the disk is gone
    void failAlways(
        DiskOperation operation, int code, std::string pathPart = {}); ///< where the path contains the part
    void failOnce(DiskOperation operation, int code, std::string pathPart = {});
    void setCapacity(int64_t bytes); ///< of all files together; a write at the edge is short, the next ENOSPC
    void setLargestWrite(size_t bytes); ///< every longer write is short
    void setLargestRead(size_t bytes); ///< every longer read is short
    void heal();
    /// Called before each operation, without a lock held: may crank a clock, block, or change the disk.
    void setHook(std::function<void(const Call&)> hook);

    int64_t callCount() const; ///< since the start
    std::vector<Call> calls() const; ///< since the start or clearCalls()
    void clearCalls();

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

    struct Fault {
        std::optional<DiskOperation>
            operation; ///< nothing: the call with the number `call`, or all from it on
        int64_t call = 0;
        int code = 0;
        std::string pathPart;
        bool once = false;
    };

    Status begin(DiskOperation operation, const Path& path); ///< logs, calls the hook, fails when it must
    NodePointer make(FileInfo::Kind kind, uint32_t mode);
    Result<Path> follow(const Path& path) const;
    Result<NodePointer> find(const Path& path) const; ///< follows links
    NodePointer findLink(const Path& path) const; ///< the entry itself
    Result<NodePointer> folderOf(const Path& path) const;
    NodePointer ensureFolder(const Path& path);
    void put(const Path& path, NodePointer node);
    Result<std::unique_ptr<File>> open(const Path& path, uint32_t permission);
    Status move(const Path& from, const Path& to, bool replace);
    void touch(Node& folder);
    void sync(Node& folder, const std::string& name);

    const Scheduler& m_clock;
    mutable std::mutex m_mutex;
    NodePointer m_root;
    uint64_t m_nextInode = 2;
    std::shared_ptr<std::atomic<int64_t>> m_used = std::make_shared<std::atomic<int64_t>>(0);
    std::optional<int64_t> m_capacity;
    std::optional<size_t> m_largestWrite;
    std::optional<size_t> m_largestRead;
    std::vector<Fault> m_faults;
    std::function<void(const Call&)> m_hook;
    std::vector<Call> m_calls;
    int64_t m_callCount = 0;
};

} // namespace quillmark::test
