// Watches files and folders through one inotify instance. A name is watched by way of its folder, so that a
// file which is replaced, or is away for a while, stays watched. What the kernel cannot tell (its watches or
// instances are used up, the folder of a file is not there) is looked at every two seconds instead. Main
// thread only; it outlives its watchers.
#pragma once

#include "base/Scheduler.h"
#include "io/PosixFile.h"
#include "platform/FSWatcher.h"
#include "platform/Log.h"

#include <map>
#include <string>
#include <vector>

namespace quillmark {

class InotifyWatching : public FileWatching {
public:
    static constexpr Duration lookInterval = std::chrono::seconds(2);

    InotifyWatching(Scheduler& scheduler, FileSystem& files, Log& log);
    ~InotifyWatching() override;
    InotifyWatching(const InotifyWatching&) = delete;
    InotifyWatching& operator=(const InotifyWatching&) = delete;

    [[nodiscard]] std::unique_ptr<FSWatcher> watchFile(
        const Path& path, std::function<void()> handler) override;
    [[nodiscard]] std::unique_ptr<FSWatcher> watchFolder(
        const Path& path, std::function<void()> handler) override;

private:
    class Watcher;
    using Looks = std::vector<std::pair<uint64_t, std::string>>; ///< what a look at each watcher's path saw

    int arm(const Path& folder);
    void disarm(int watch);
    void read();
    void tell(const std::vector<uint64_t>& heard);
    Watcher* find(uint64_t id) const;
    void lookLater();
    void look();
    void looked(const Looks& looks);
    void sayOnce(int code);

    Scheduler& m_scheduler;
    FileSystem& m_files;
    Log& m_log;
    Descriptor m_inotify;
    Task m_readable;
    std::map<int, int> m_uses; ///< of the kernel's watches, which one folder has one of
    std::vector<Watcher*> m_watchers;
    uint64_t m_lastID = 0;
    Task m_lookTask;
    bool m_hasSaidSo = false;
};

} // namespace quillmark
