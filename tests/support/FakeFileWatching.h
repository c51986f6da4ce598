// Notices of a disk in memory: a test says when they arrive, as the kernel would when the program is idle.
#pragma once

#include "platform/FSWatcher.h"
#include "support/FakeFileSystem.h"

#include <algorithm>

namespace quillmark::test {

class FakeFileWatching : public FileWatching {
public:
    explicit FakeFileWatching(FakeFileSystem& disk)
        : m_disk(disk)
    {
    }

    std::unique_ptr<FSWatcher> watchFile(const Path& path, std::function<void()> handler) override
    {
        return std::make_unique<Watcher>(*this, path, &FakeFileWatching::stateOfFile, std::move(handler));
    }
    std::unique_ptr<FSWatcher> watchFolder(const Path& path, std::function<void()> handler) override
    {
        return std::make_unique<Watcher>(*this, path, &FakeFileWatching::stateOfFolder, std::move(handler));
    }

    /// Tells the watchers of all that was changed since the last time.
    void deliver()
    {
        for (Watcher* const watcher : std::vector(m_watchers)) {
            if (std::ranges::find(m_watchers, watcher) == m_watchers.end())
                continue; // destroyed by another one's handler
            const std::string now = (this->*watcher->state)(watcher->path);
            if (std::exchange(watcher->seen, now) != now) {
                const auto handler = watcher->handler;
                handler();
            }
        }
    }

private:
    using State = std::string (FakeFileWatching::*)(const Path&) const;

    struct Watcher : FSWatcher {
        Watcher(FakeFileWatching& owner, Path watched, State stateOf, std::function<void()> whenChanged)
            : watching(owner)
            , path(std::move(watched))
            , state(stateOf)
            , handler(std::move(whenChanged))
            , seen((owner.*stateOf)(path))
        {
            watching.m_watchers.push_back(this);
        }
        ~Watcher() override { std::erase(watching.m_watchers, this); }

        FakeFileWatching& watching;
        const Path path;
        const State state;
        const std::function<void()> handler;
        std::string seen;
    };

    std::string stateOfFile(const Path& path) const
    {
        const auto bytes = m_disk.bytes(path);
        return bytes ? std::to_string(m_disk.infoOf(path).inode) + ' ' + *bytes : "none";
    }
    std::string stateOfFolder(const Path& path) const
    {
        std::string state;
        for (const std::string& name : m_disk.names(path)) {
            if (const Path entry = path / name; m_disk.bytes(entry))
                state += name + '/' + std::to_string(m_disk.infoOf(entry).inode) + '/';
        }
        return state;
    }

    FakeFileSystem& m_disk;
    std::vector<Watcher*> m_watchers;
};

} // namespace quillmark::test
